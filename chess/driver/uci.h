#pragma once
// clsUciSession speaks UCI with a GUI for the rest of the program's life once
// the first command was "uci" (or the command line said -use=uci). It drives
// the driver's own engine, search control and book: a "go" computes a budget
// and starts the same timed search the xboard loop starts, and the move it
// collects goes out as "bestmove". Lines come from the driver's input reader;
// only the driver thread runs the session.
#include <cstdint>
#include <functional>
#include <string>

#include "base/output.h"
#include "base/stdin_thread.h"
#include "chess/book/book.h"
#include "chess/driver/uci_go.h"
#include "chess/engine/engine.h"
#include "chess/engine/search_control.h"

namespace kbuChess {

// What the session borrows from the driver that owns it.
struct UciHooks {
  std::function<void(const std::string& word, const std::string& rest)> log;
  // A preset name or a soul text NAME=v1 ... v21.
  std::function<void(const std::string& soul)> loadSoul;
  std::function<bool()> stopRequested;
};

class clsUciSession {
 public:
  clsUciSession(clsEngine& engine, clsSearchControl& search, clsBook& book, kobubase::clsOutBuffer& out,
                UciHooks hooks);
  ~clsUciSession();
  clsUciSession(const clsUciSession&) = delete;
  clsUciSession& operator=(const clsUciSession&) = delete;

  // Handles firstLine (when not empty), then polls the search and the input
  // until "quit" or the end of the input.
  void run(kobubase::clsStdInThread& reader, const std::string& firstLine);
  // One command line; false after "quit".
  bool execute(const std::string& line);
  // One pass without input: the periodic info line, the end of a search.
  void serviceSearch();

 private:
  void cmdUci();
  void cmdSetOption(const std::string& rest);
  void cmdNewGame();
  void cmdPosition(const std::string& rest);
  void cmdGo(const std::string& rest);
  void cmdStop();
  void cmdPonderHit();

  void setBookFile(const std::string& file);
  void setHash(const std::string& value);
  void startSearch(const UciGo& go);
  // Stops a running search and answers it with "bestmove".
  void finishSearch();
  void printInfo(int depth);
  void printBestMove();
  void infoString(const std::string& text) { out_.print("info string " + text); }

  clsEngine& engine_;
  clsSearchControl& search_;
  clsBook& book_;
  kobubase::clsOutBuffer& out_;
  UciHooks hooks_;
  clsBoard game_;  // the position the GUI set up; a search starts from a copy
  std::string bookFile_;
  UciGo lastGo_;
  bool holdMove_ = false;     // "infinite" or "ponder": the move waits for "stop" or "ponderhit"
  bool endReported_ = false;  // the last info of an ended search is out
  int reportedDepth_ = 0;
  std::int64_t lastInfoMs_ = 0;
};

}  // namespace kbuChess
