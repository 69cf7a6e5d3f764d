#pragma once
// The results file of a tournament: a tab-separated text file whose first
// line is exactly
//   round<TAB>game<TAB>white<TAB>black<TAB>result<TAB>reason<TAB>plies<TAB>ms<TAB>opening
// followed by one line per finished game, written when the game ends. The
// result is "1-0", "0-1", "1/2-1/2" or "*"; reason is free text without tabs
// or line ends; ms is the game's duration; opening the coordinate moves
// played before the players took over, blank-separated. Files of earlier
// versions, without the opening field, are read too. Each line is appended, flushed and
// the file closed again, so an interrupted run loses no finished game.
//
// The tournament registers every results file it writes; the console's
// "games" and "standings" tables read the files of this process from there.
#include <cstdint>
#include <string>
#include <vector>

namespace kbuChess {

struct GameResultRow {
  int round = 0;
  int game = 0;
  std::string white, black, result, reason;
  int plies = 0;
  std::int64_t ms = 0;
  std::string opening;
};

inline constexpr const char* RESULTS_HEADER = "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening";

// One line of the file, without its line feed. Tabs and line ends inside the
// texts become blanks, so the line always splits back into nine fields.
std::string resultsLine(const GameResultRow& row);
// Creates the file with the header line when it is missing or empty, then
// appends the row. False when the file cannot be written.
bool appendResultsLine(const std::string& path, const GameResultRow& row);
// Writes the header and the rows as the whole file (through a temporary file
// renamed over it). False when it cannot be written; the old file then stays.
bool rewriteResultsFile(const std::string& path, const std::vector<GameResultRow>& rows);
// Reads every good line of the file into rows; each bad line is skipped and
// reported in problems as "line N: what is wrong". False when the file
// cannot be opened or does not start with the header line.
bool readResultsFile(const std::string& path, std::vector<GameResultRow>& rows, std::vector<std::string>& problems);

// The results files written by this process, in the order first registered.
void registerResultsFile(const std::string& path);
std::vector<std::string> resultsFilesOfThisProcess();

}  // namespace kbuChess
