// A scriptable chess engine for the adapter and game tests: it speaks xboard
// or UCI, plays the first legal move of its position, and misbehaves on
// request in the ways real engines rarely do on purpose.
//
//   fake_engine xboard|uci [option...]
//     log=FILE      append every line received to FILE
//     ping          (xboard) declare "feature ping=1 done=1"
//     setboard      (xboard) declare "feature setboard=1"; edit mode works without it
//     slowstart=MS  (xboard) say "feature done=0" first and the rest MS later
//     noready       (UCI) never send "uciok" nor "readyok"
//     silent        never move
//     crash=N       end with exit code 3 when asked for move N+1
//     illegal       answer every move request with a2a5
//     claim=TEXT    answer move requests with the line TEXT (xboard: a result
//                   such as "1-0 {claim}"; "resign" resigns)
//     garbage       send a garbage line and a 100 KB line before each move
//     ignorequit    stay alive after "quit"
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "chess/board/board.h"

namespace {

// The options after the protocol's name.
struct Script {
  bool uci = false;
  std::vector<std::string> options;

  bool has(const std::string& flag) const { return std::find(options.begin(), options.end(), flag) != options.end(); }
  // The text after "key=", empty without the option.
  std::string value(const std::string& key) const {
    for (const std::string& option : options) {
      if (option.rfind(key + "=", 0) == 0) return option.substr(key.size() + 1);
    }
    return "";
  }
};

void say(const std::string& line) {
  std::cout << line << std::endl;
}

class FakeEngine {
 public:
  explicit FakeEngine(Script script) : script_(std::move(script)) {}

  // Handles one received line; false ends the program.
  bool handle(const std::string& line) {
    if (!script_.value("log").empty()) std::ofstream(script_.value("log"), std::ios::app) << line << '\n';
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "quit") return script_.has("ignorequit");
    script_.uci ? uciCommand(command, words) : xboardCommand(command, line);
    return true;
  }

 private:
  void xboardCommand(const std::string& command, const std::string& line) {
    if (editing_) return edit(line);
    if (command == "protover") {
      if (!script_.value("slowstart").empty()) {
        say("feature done=0");
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(script_.value("slowstart").c_str())));
      }
      say(std::string("feature myname=\"fake\" ping=") + (script_.has("ping") ? "1" : "0") +
          (script_.has("setboard") ? " setboard=1" : "") + " done=1");
    } else if (command == "ping") {
      say("pong" + line.substr(4));
    } else if (command == "new") {
      board_.readFEN(kbuChess::clsBoard::START_FEN);
      ownSide_ = 1;
    } else if (command == "setboard") {
      board_.readFEN(line.substr(9));
    } else if (command == "edit") {
      editing_ = true;
      editBlack_ = false;
    } else if (command == "force") {
      ownSide_ = -1;
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
      if (!script_.has("noready")) say("uciok");
    } else if (command == "isready") {
      if (!script_.has("noready")) say("readyok");
    } else if (command == "position") {
      std::string word, fen;
      words >> word;
      const bool fromFen = word == "fen";
      for (int field = 0; fromFen && field < 6 && words >> word; ++field) fen += (field ? " " : "") + word;
      board_.readFEN(fen.empty() ? kbuChess::clsBoard::START_FEN : fen);
      while (words >> word) {
        if (word != "moves") board_.readCoordinateMove(word);
      }
    } else if (command == "go") {
      answer(true);
    }
  }

  // Edit mode: "#" empties the board, "c" switches colour, "Pa2" places a
  // piece, "." leaves with castling where kings and rooks stand at home.
  void edit(const std::string& line) {
    if (line == "#") squares_.assign(64, '1');
    if (line == "c") editBlack_ = !editBlack_;
    if (line.size() == 3) squares_[(7 - (line[2] - '1')) * 8 + (line[1] - 'a')] = editBlack_ ? line[0] | 0x20 : line[0];
    if (line != ".") return;
    editing_ = false;
    std::string fen;
    for (int rank = 0; rank < 8; ++rank) fen += squares_.substr(rank * 8, 8) + (rank < 7 ? "/" : "");
    fen += board_.position().side == 0 ? " w " : " b ";
    const auto at = [&](int index, char piece) { return squares_[index] == piece; };
    std::string castling = std::string(at(60, 'K') && at(63, 'R') ? "K" : "") +
                           (at(60, 'K') && at(56, 'R') ? "Q" : "") + (at(4, 'k') && at(7, 'r') ? "k" : "") +
                           (at(4, 'k') && at(0, 'r') ? "q" : "");
    board_.readFEN(fen + (castling.empty() ? "-" : castling) + " -");
  }

  // The reply to a move request, as the script wants it.
  void answer(bool uci) {
    if (script_.has("silent")) return;
    const std::string crash = script_.value("crash");
    if (!crash.empty() && moves_ >= std::atoi(crash.c_str())) std::exit(3);
    if (script_.has("garbage")) {
      say("\x01\x7f garbage \xff\xfe line");
      say(std::string(100 * 1024, 'g'));
    }
    if (!script_.value("claim").empty()) return say(script_.value("claim"));
    std::string move = "a2a5";
    if (!script_.has("illegal")) {
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
  int ownSide_ = 1;  // -1 in force mode
  int moves_ = 0;
  bool editing_ = false, editBlack_ = false;
  std::string squares_ = std::string(64, '1');
};

}  // namespace

int main(int argc, char** argv) {
  FakeEngine engine(Script{argc > 1 && std::string(argv[1]) == "uci", {argv + std::min(argc, 2), argv + argc}});
  for (std::string line; std::getline(std::cin, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!engine.handle(line)) return 0;
  }
  return 0;
}
