#pragma once
// Helpers shared by the tournament and learning tests: a results file's rows,
// the next reply of an adapter, and a game log that records.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "base/thread.h"
#include "chess/board/board.h"
#include "chess/tourney/engine_interface.h"
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
