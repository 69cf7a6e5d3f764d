// A scriptable chess engine for the adapter and game tests: it speaks xboard
// or UCI, plays the first legal move of its position, and misbehaves on
// request in the ways real engines rarely do on purpose.
//
//   fake_engine xboard|uci [option...]
//     log=FILE      append every line received to FILE
//     ping          (xboard) declare "feature ping=1 done=1"
//     noready       (UCI) never send "uciok" nor "readyok"
//     silent        never move
//     crash=N       end with exit code 3 when asked for move N+1
//     illegal       answer every move request with a2a5
//     claim=TEXT    answer move requests with the line TEXT (xboard: a result
//                   such as "1-0 {claim}"; "resign" resigns)
//     garbage       send a garbage line and a 100 KB line before each move
//     ignorequit    stay alive after "quit"
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace {

struct Script {
  bool uci = false;
  std::string log;
  bool ping = false, noReady = false, silent = false, illegal = false, garbage = false, ignoreQuit = false;
  int crashAfter = -1;
  std::string claim;
};

Script readScript(int argc, char** argv) {
  Script script;
  script.uci = argc > 1 && std::string(argv[1]) == "uci";
  for (int i = 2; i < argc; ++i) {
    const std::string option = argv[i];
    const std::string value = option.substr(option.find('=') + 1);
    if (option.rfind("log=", 0) == 0) script.log = value;
    if (option.rfind("crash=", 0) == 0) script.crashAfter = std::atoi(value.c_str());
    if (option.rfind("claim=", 0) == 0) script.claim = value;
    script.ping |= option == "ping";
    script.noReady |= option == "noready";
    script.silent |= option == "silent";
    script.illegal |= option == "illegal";
    script.garbage |= option == "garbage";
    script.ignoreQuit |= option == "ignorequit";
  }
  return script;
}

void say(const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

class FakeEngine {
 public:
  explicit FakeEngine(Script script) : script_(std::move(script)) { board_.readFEN(kbuChess::clsBoard::START_FEN); }

  // Handles one received line; false ends the program.
  bool handle(const std::string& line) {
    if (!script_.log.empty()) std::ofstream(script_.log, std::ios::app) << line << '\n';
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "quit") return script_.ignoreQuit;
    script_.uci ? uciCommand(command, words) : xboardCommand(command, words, line);
    return true;
  }

 private:
  void xboardCommand(const std::string& command, std::istringstream& words, const std::string& line) {
    if (command == "protover") {
      say(std::string("feature myname=\"fake\" ping=") + (script_.ping ? "1" : "0") + " done=1");
    } else if (command == "ping") {
      std::string number;
      words >> number;
      say("pong " + number);
    } else if (command == "new") {
      board_.readFEN(kbuChess::clsBoard::START_FEN);
      ownSide_ = 1;
    } else if (command == "go") {
      ownSide_ = static_cast<int>(board_.position().side);
      answer(false);
    } else if (board_.readCoordinateMove(line)) {  // other commands and unplayable moves are ignored
      if (static_cast<int>(board_.position().side) == ownSide_) answer(false);
    }
  }

  void uciCommand(const std::string& command, std::istringstream& words) {
    if (command == "uci") {
      say("id name fake");
      if (!script_.noReady) say("uciok");
    } else if (command == "isready") {
      if (!script_.noReady) say("readyok");
    } else if (command == "position") {
      board_.readFEN(kbuChess::clsBoard::START_FEN);
      for (std::string word; words >> word;) {
        if (word != "startpos" && word != "moves") board_.readCoordinateMove(word);
      }
    } else if (command == "go") {
      answer(true);
    }
  }

  // The reply to a move request, as the script wants it.
  void answer(bool uci) {
    if (script_.silent) return;
    if (script_.crashAfter >= 0 && moves_ >= script_.crashAfter) std::exit(3);
    if (script_.garbage) {
      say("\x01\x7f garbage \xff\xfe line");
      say(std::string(100 * 1024, 'g'));
    }
    if (!script_.claim.empty()) return say(script_.claim);
    std::string move = "a2a5";
    if (!script_.illegal) {
      board_.resetFrames();
      const int count = board_.generateLegal();
      if (count <= 0) return;
      move = kbuChess::clsBoard::moveText(board_.frame().first, false);
      board_.resetFrames();
      board_.readCoordinateMove(move);
    }
    ++moves_;
    if (!uci) return say("move " + move);
    say("info depth 1 score cp 0 pv " + move);
    say("bestmove " + move);
  }

  Script script_;
  kbuChess::clsBoard board_;
  int ownSide_ = 1;
  int moves_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  kbuChess::initTables();
  FakeEngine engine(readScript(argc, argv));
  for (std::string line; std::getline(std::cin, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!engine.handle(line)) return 0;
  }
  return 0;
}
