#pragma once
// clsConsole is the driver's expression console and table layer: an
// interpreter with the generic functions plus the chess ones (attack sets,
// lines, the engine's position), and an in-memory database whose system
// tables are filled from the program's state before each query that names
// them (book_all is read in place):
//   souls      name, kind ('preset' or 'current'), v1..v21
//   book       the book candidates of the current position: move, key, wins, losses, draws, games, score
//   book_all   every position of the loaded book: key, wins, losses, draws, games, score
//   options    source ('command line' or 'run-time'), name, value
//   games      file, round, game, white, black, result, reason, plies, ms of every results
//              file written by this process or loaded with "results"
//   standings  name, games, points, score (%), draws (%) over games
// Keys are 16 hexadecimal digits (they do not fit SQLite's signed integers).
// The system tables are read-only to queries; book_all is not copied but
// read from the book in place, so it is current and costs one scan.
//
// The driver owns one console for the whole run, so variables and attached
// tables outlive leaving and entering the console. Every answer is a list of
// lines without the comment prefix. The engine must not be searching.
#include <cstdint>
#include <string>
#include <vector>

#include "base/expr/interpreter.h"
#include "base/options.h"
#include "base/sql/database.h"

namespace kbuChess {

class clsBoard;
class clsBook;
class clsEngine;

class clsConsole {
 public:
  // position: the board the chess functions read; its owner keeps it current.
  clsConsole(clsEngine& engine, const clsBoard& position, clsBook& book, const kobubase::clsOptions& commandLine);

  // The sample commands shown on entering.
  static std::vector<std::string> welcomeLines();
  // One console line (formula, assignment, vars, help).
  std::vector<std::string> line(const std::string& text);
  // "\sql" arguments: a query, or "results PATH".
  std::vector<std::string> sqlCommand(const std::string& args);
  // Runs a query after refreshing the system tables it names.
  std::vector<std::string> query(const std::string& sql);
  // Adds an earlier run's results file to the games table.
  std::vector<std::string> loadResults(const std::string& path);
  // "\odbc" arguments: "attach SOURCE AS name".
  std::vector<std::string> odbcCommand(const std::string& args);

  kobubase::clsInterpreter& interpreter() { return interpreter_; }
  kobubase::clsDatabase& database() { return database_; }

 private:
  void addTableFunctions();
  void addBookAll();
  // Refills the system tables the query names; problems get one line each.
  void refreshTables(const std::string& sql, std::vector<std::string>& problems);
  bool fillSouls(std::string& error);
  bool fillBook(std::string& error);
  bool fillOptions(std::string& error);
  bool fillGames(std::vector<std::string>& problems);

  clsEngine& engine_;
  clsBook& book_;
  const kobubase::clsOptions& commandLine_;
  kobubase::clsInterpreter interpreter_;
  kobubase::clsDatabase database_;
  std::vector<std::string> loadedResults_;  // earlier runs' files, loaded by the user
};

// Registers knight, king, pawn, bishop, rook, queen, between, line, fen and
// the position's masks (us, them, white, black, pawns .. kings, occupied).
void addChessFunctions(kobubase::clsInterpreter& interpreter, const clsBoard& position);

}  // namespace kbuChess
