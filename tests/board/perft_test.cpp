#include "bench/perft_data.h"
#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using PerftTest = BoardTest;

TEST_F(PerftTest, SixPositionsToDepthFour) {
  const auto cases = readPerftCases(PERFT_DATA);
  ASSERT_EQ(cases.size(), 6u);
  for (const auto& c : cases) {
    board.readFEN(c.fen);
    for (const auto& [depth, count] : c.counts) {
      if (depth > 4) break;
      EXPECT_EQ(board.perft(depth, false), count) << c.name << " " << depth;
    }
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
