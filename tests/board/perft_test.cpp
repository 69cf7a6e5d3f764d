#include <fstream>
#include <sstream>

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

struct PerftCase {
  std::string name, fen;
  std::vector<unsigned long long> counts;  // depth 1 upward
};

// The benchmark's data file: "name | FEN | 1:N 2:N ...".
std::vector<PerftCase> perftCases() {
  std::vector<PerftCase> cases;
  std::ifstream in(PERFT_DATA);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    PerftCase c;
    std::string counts;
    std::getline(fields, c.name, '|');
    std::getline(fields, c.fen, '|');
    std::getline(fields, counts);
    std::istringstream items(counts);
    for (std::string item; items >> item;) c.counts.push_back(std::stoull(item.substr(item.find(':') + 1)));
    cases.push_back(c);
  }
  return cases;
}

using PerftTest = BoardTest;

TEST_F(PerftTest, SixPositionsToDepthFour) {
  const auto cases = perftCases();
  ASSERT_EQ(cases.size(), 6u);
  for (const auto& c : cases) {
    board.readFEN(c.fen);
    for (int depth = 1; depth <= 4; ++depth)
      EXPECT_EQ(board.perft(depth, false), c.counts[static_cast<std::size_t>(depth - 1)]) << c.name << " " << depth;
  }
}

TEST_F(PerftTest, DivideWritesLongFormLinesInGenerationOrder) {
  board.readFEN("");
  EXPECT_EQ(board.perft(1, true), 20u);
  EXPECT_TRUE(board.output().takeAll().empty());
  EXPECT_EQ(board.perft(2, true), 400u);
  const auto lines = board.output().takeAll();
  ASSERT_EQ(lines.size(), 20u);
  EXPECT_EQ(lines[0], "Ng1-h3 20");
  EXPECT_EQ(lines[2], "Nb1-c3 20");
  EXPECT_EQ(lines[19], "Pa2-a4 20");
  EXPECT_EQ(board.perft(3, true), 8902u);
  EXPECT_EQ(board.output().takeAll()[15], "Pe2-e4 600");
}

TEST_F(PerftTest, DepthBelowOneAndKingCaptures) {
  board.readFEN("");
  EXPECT_EQ(board.perft(0, true), 0u);
  EXPECT_EQ(board.perft(-3, false), 0u);
  board.readFEN("4k3/8/8/8/8/8/8/4R2K w - -");
  EXPECT_EQ(board.perft(1, false), ~0ull);
  board.readFEN("4k3/8/8/8/8/8/8/4R2K b - -");
  EXPECT_EQ(board.perft(1, false), 4u);
}

}  // namespace
}  // namespace kbuChess::testing
