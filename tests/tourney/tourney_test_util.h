#pragma once
// Helpers shared by the tournament and learning tests: event files, a results
// file's rows, kept output lines, the next reply of an adapter, learning games
// without a board, and a game log that records.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <numeric>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/thread.h"
#include "chess/board/board.h"
#include "chess/tourney/engine_interface.h"
#include "chess/tourney/learning.h"
#include "tests/common/test_files.h"

namespace tourney_test {

using Lines = std::vector<std::string>;

using testFiles::readText;
using testFiles::TempFolder;

// The game lines of a results file, each cut at its tabs into its nine
// fields; the header is checked and left out.
inline std::vector<Lines> resultRows(const std::string& path) {
  std::istringstream in(readText(path));
  std::string line;
  std::getline(in, line);
  EXPECT_EQ(line, "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening") << path;
  std::vector<Lines> rows;
  while (std::getline(in, line)) {
    std::istringstream fields(line + '\t');  // so that an empty last field is read too
    Lines& row = rows.emplace_back();
    for (std::string field; std::getline(fields, field, '\t');) row.push_back(field);
    EXPECT_EQ(row.size(), 9u) << line;
    row.resize(9);
  }
  return rows;
}

// An engine of an event file: name, protocol, program, parameters.
using Engine = std::array<std::string, 4>;

// Writes the event file `name`.xml into the folder: a gauntlet logging into
// the folder with the options and clock given; its path.
inline std::string writeGauntlet(const TempFolder& folder, const std::string& name, const std::string& options,
                                 const std::string& clock, const std::vector<Engine>& engines) {
  std::ostringstream xml;
  xml << "<tourney name=\"" << name << "\" type=\"gauntlet\"><options><logfolder>" << folder.dir() << "</logfolder>"
      << options << "</options>" << clock << "<engines>";
  for (const auto& [engine, protocol, file, parameters] : engines)
    xml << "<engine active=\"true\" name=\"" << engine << "\" protocol=\"" << protocol << "\" filename=\"" << file
        << "\" parameters=\"" << parameters << "\"/>";
  testFiles::writeText(folder.file(name + ".xml"), xml.str() + "</engines></tourney>");
  return folder.file(name + ".xml");
}

inline bool anyHolds(const Lines& lines, const std::string& text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

// The next non-empty reply within timeoutMs, or "<nothing>"; a move made in
// this process comes as "move " and its coordinate text.
inline std::string awaitReply(kbuChess::clsEngineInterface& engine, int timeoutMs) {
  for (const std::int64_t until = kobubase::nowMs() + timeoutMs; kobubase::nowMs() < until; kobubase::sleepMs(1)) {
    engine.Service();
    if (const auto move = engine.takeMove()) return "move " + kbuChess::clsBoard::moveText(&*move, false);
    const std::string reply = engine.nextReply();
    if (!reply.empty()) return reply;
  }
  return "<nothing>";
}

// Learning games without a board: the soul with the larger first value wins,
// equal ones draw. Every game is recorded; the game numbered throwAt throws,
// the one numbered stopAt stops the run and is left unfinished.
class clsFakeLearningGames : public kbuChess::clsLearningGames {
 public:
  struct Game {
    std::string white, black;
    Lines opening;
  };

  kbuChess::GameOutcome play(const kbuChess::Soul& white, const kbuChess::Soul& black, const Lines& opening,
                             int msPerMove, int maxMoves) override {
    std::lock_guard<std::mutex> guard(lock_);
    lastMs = msPerMove;
    lastMaxMoves = maxMoves;
    games.push_back({white.name, black.name, opening});
    if (++calls == throwAt) throw std::runtime_error("runner broke");
    if (calls == stopAt) {
      learning->requestStop();
      return kbuChess::GameOutcome{1, false};
    }
    const int a = white.values[0], b = black.values[0];
    return kbuChess::GameOutcome{a > b ? 2 : a < b ? 0 : 1, true};
  }
  // "white-black move ..." of every game.
  std::multiset<std::string> texts() {
    std::multiset<std::string> texts;
    for (const Game& game : games)
      texts.insert(std::accumulate(game.opening.begin(), game.opening.end(), game.white + "-" + game.black,
                                   [](const std::string& text, const std::string& move) { return text + " " + move; }));
    return texts;
  }

  std::mutex lock_;
  std::vector<Game> games;
  int calls = 0, throwAt = -1, stopAt = -1, lastMs = 0, lastMaxMoves = 0;
  kbuChess::clsLearning* learning = nullptr;
};

// An output buffer that keeps its lines for the test instead of printing them.
struct KeptOutput : kobubase::clsOutBuffer {
  KeptOutput() {
    setEcho(false);
    setKeep(true);
  }
};

// Every line an adapter logs, as "colour text".
class clsRecordingLog : public kbuChess::clsGameLog {
 public:
  void logPlayer(int colour, const std::string& text) override {
    std::lock_guard<std::mutex> guard(lock_);
    lines_.push_back(std::to_string(colour) + " " + text);
  }
  Lines lines() {
    std::lock_guard<std::mutex> guard(lock_);
    return lines_;
  }

 private:
  std::mutex lock_;
  Lines lines_;
};

}  // namespace tourney_test
