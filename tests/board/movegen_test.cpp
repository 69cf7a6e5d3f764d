#include <algorithm>
#include <tuple>

#include "bench/perft_data.h"
#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using MoveGenTest = BoardTest;
using Moves = std::vector<std::string>;

TEST_F(MoveGenTest, SixPerftPositionsToDepthFour) {
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

TEST_F(MoveGenTest, DivideWritesLongFormLinesInGenerationOrder) {
  board.readFEN("");
  EXPECT_EQ(board.perft(1, true), 20u);
  EXPECT_TRUE(board.output().takeAll().empty());
  generated("");
  EXPECT_EQ(board.frame().end->flags, mf::NOT_A_MOVE);  // the list ends in a mark
  EXPECT_EQ(board.perft(2, true), 400u);
  const auto lines = board.output().takeAll();
  ASSERT_EQ(lines.size(), 20u);
  EXPECT_EQ(lines[0], "Ng1-h3 20");
  EXPECT_EQ(lines[2], "Nb1-c3 20");
  EXPECT_EQ(lines[19], "Pa2-a4 20");
  EXPECT_EQ(board.perft(3, true), 8902u);
  EXPECT_EQ(board.output().takeAll()[15], "Pe2-e4 600");
  EXPECT_EQ(board.perft(0, true), 0u);
  EXPECT_EQ(board.perft(-3, false), 0u);
  board.readFEN("4k3/8/8/8/8/8/8/4R2K w - -");  // the king can be taken
  EXPECT_EQ(board.perft(1, false), ~0ull);
  board.readFEN("4k3/8/8/8/8/8/8/4R2K b - -");
  EXPECT_EQ(board.perft(1, false), 4u);
}

// Stage 0 gives the captures; all stages together give the moves of one call.
TEST_F(MoveGenTest, StagesGiveTheMovesOfOneCallInTheKeptOrder) {
  const std::string fen = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
  Moves all = generated(fen);
  board.readFEN(fen);
  board.generate(0);
  EXPECT_EQ(frameMoves(), (Moves{"Pg2xPh3", "Pd5xPe6"}));
  for (int stage = 1; stage <= 5; ++stage) board.generate(stage);
  EXPECT_EQ(board.frame().moveCount, 48);
  Moves staged = frameMoves();
  std::sort(all.begin(), all.end());
  std::sort(staged.begin(), staged.end());
  EXPECT_EQ(all, staged);
}

TEST_F(MoveGenTest, PromotionsComeQueenKnightBishopRook) {
  const Moves moves = generated("r6k/1P6/8/8/8/8/8/K7 w - -");
  ASSERT_GE(moves.size(), 8u);
  EXPECT_EQ(Moves(moves.begin(), moves.begin() + 4), (Moves{"Pb7xRa8=q", "Pb7xRa8=n", "Pb7xRa8=b", "Pb7xRa8=r"}));
  EXPECT_TRUE(has(moves, "Pb7-b8=r"));
  EXPECT_EQ(generated("k7/8/8/8/8/8/6p1/K6N b - -")[0], "Pg2xNh1=q");
}

TEST_F(MoveGenTest, CastlingRules) {
  const Moves moves = generated("r3k2r/8/8/8/8/8/8/R3K2R w KQkq -");
  EXPECT_EQ(Moves(moves.end() - 2, moves.end()), (Moves{"Ke1-g1", "Ke1-c1"}));
  EXPECT_EQ(board.frame().end[-2].extra, sq("h1") | sq("f1"));  // the rook's squares
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"4k3/4r3/8/8/8/8/8/R3K2R w KQ -", "Ke1-g1", false},  // in check
      {"4k3/4r3/8/8/8/8/8/R3K2R w KQ -", "Ke1-c1", false},
      {"4kr2/8/8/8/8/8/8/R3K2R w KQ -", "Ke1-g1", false},  // f1 attacked
      {"4kr2/8/8/8/8/8/8/R3K2R w KQ -", "Ke1-c1", true},
      {"4k1r1/8/8/8/8/8/8/R3K2R w KQ -", "Ke1-g1", false},  // g1 attacked
      {"1r2k3/8/8/8/8/8/8/R3K2R w KQ -", "Ke1-c1", true},   // only b1 attacked
      {"r3k2r/8/8/8/8/8/8/R3K2R b Qk -", "Ke8-g8", true},
      {"r3k2r/8/8/8/8/8/8/R3K2R b Qk -", "Ke8-c8", false},
  };
  for (const auto& [fen, move, offered] : cases)
    EXPECT_EQ(has(generated(fen, true), move), offered) << fen << " " << move;
}

}  // namespace
}  // namespace kbuChess::testing
