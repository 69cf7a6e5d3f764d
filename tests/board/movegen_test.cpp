#include <algorithm>

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using MoveGenTest = BoardTest;
using Moves = std::vector<std::string>;

TEST_F(MoveGenTest, StartPositionOrderIsKnightsThenPawnPushes) {
  const Moves expected = {"Ng1-h3", "Ng1-f3", "Nb1-c3", "Nb1-a3", "Ph2-h3", "Pg2-g3", "Pf2-f3", "Pe2-e3",
                          "Pd2-d3", "Pc2-c3", "Pb2-b3", "Pa2-a3", "Ph2-h4", "Pg2-g4", "Pf2-f4", "Pe2-e4",
                          "Pd2-d4", "Pc2-c4", "Pb2-b4", "Pa2-a4"};
  EXPECT_EQ(generated(""), expected);
  EXPECT_EQ(board.frame().moveCount, 20);
  EXPECT_EQ(board.frame().end->flags, mf::NOT_A_MOVE);
  EXPECT_EQ(board.frame().first[15].flags, 0x412u);  // double push
  EXPECT_EQ(board.frame().first[0].flags, 0x23u);
}

TEST_F(MoveGenTest, StageFivePutsPawnPushesBeforeKingMoves) {
  const std::string fen = "4k3/8/8/8/8/8/4P3/4K3 w - -";
  EXPECT_EQ(generated(fen), (Moves{"Ke1-f1", "Ke1-d1", "Ke1-f2", "Ke1-d2", "Pe2-e3", "Pe2-e4"}));
  board.readFEN(fen);
  board.generate(0);
  board.generate(5);
  EXPECT_EQ(frameMoves(), (Moves{"Pe2-e3", "Pe2-e4", "Ke1-f1", "Ke1-d1", "Ke1-f2", "Ke1-d2"}));
}

TEST_F(MoveGenTest, StagesTogetherGiveTheSameMovesAsOneCall) {
  const std::string fen = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
  Moves all = generated(fen);
  board.readFEN(fen);
  for (int stage = 0; stage <= 5; ++stage) board.generate(stage);
  EXPECT_EQ(board.frame().moveCount, 48);
  Moves staged = frameMoves();
  // Only the king's quiet moves and the pawn pushes swap places.
  std::sort(all.begin(), all.end());
  std::sort(staged.begin(), staged.end());
  EXPECT_EQ(all, staged);
  board.readFEN(fen);
  board.generate(0);
  EXPECT_EQ(frameMoves(), (Moves{"Pg2xPh3", "Pd5xPe6"}));
}

TEST_F(MoveGenTest, CaptureBitsAndValues) {
  board.readFEN("4k3/8/8/3q4/4P3/8/8/4K3 w - -");
  board.generate(0);
  ASSERT_EQ(board.frame().moveCount, 1);
  EXPECT_EQ(board.frame().first->flags, 0x1060012u);
  EXPECT_EQ(board.frame().first->delta, 1000);
  board.readFEN("4k3/8/8/8/8/8/8/4R2K w - -");
  board.generate(-1);
  const Move* kingCapture = findMove("Re1xKe8");
  ASSERT_NE(kingCapture, nullptr);
  EXPECT_EQ(kingCapture->delta, 10000);
  EXPECT_TRUE(kingCapture->flags & mf::KING_CAPTURED);
}

TEST_F(MoveGenTest, PromotionsComeQueenKnightBishopRookWithGainsOred) {
  const Moves moves = generated("r6k/1P6/8/8/8/8/8/K7 w - -");
  ASSERT_GE(moves.size(), 8u);
  EXPECT_EQ(Moves(moves.begin(), moves.begin() + 4), (Moves{"Pb7xRa8=q", "Pb7xRa8=n", "Pb7xRa8=b", "Pb7xRa8=r"}));
  const Move* first = board.frame().first;
  EXPECT_EQ(first[0].delta, 500 | 895);
  EXPECT_EQ(first[1].delta, 502);
  EXPECT_EQ(first[3].delta, 511);
  EXPECT_EQ(first[0].flags, 0x60850012u);
  const Move* push = findMove("Pb7-b8=r");
  ASSERT_NE(push, nullptr);
  EXPECT_EQ(push->delta, 395);
  EXPECT_EQ(generated("k7/8/8/8/8/8/6p1/K6N b - -")[0], "Pg2xNh1=q");
}

TEST_F(MoveGenTest, EnPassantFromTheLastMoveAndItsPinAlongTheRank) {
  Moves moves = generated("8/8/8/K2pP2r/8/8/8/7k w - d6 0 1");
  EXPECT_NE(std::find(moves.begin(), moves.end(), "-e5xPd6"), moves.end());
  const Move* ep = findMove("-e5xPd6");
  EXPECT_EQ(ep->flags, 0x120800u);
  EXPECT_EQ(ep->delta, 105);
  EXPECT_EQ(ep->extra, sq("d5"));
  moves = legal("8/8/8/K2pP2r/8/8/8/7k w - d6 0 1");
  EXPECT_EQ(std::find(moves.begin(), moves.end(), "-e5xPd6"), moves.end());
  // After a double push played on the board the capture is offered.
  board.readFEN("4k3/8/8/8/5p2/8/4P3/4K3 w - -");
  ASSERT_TRUE(play("e2e4"));
  moves = legal(board.fen());
  EXPECT_NE(std::find(moves.begin(), moves.end(), "-f4xPe3"), moves.end());
}

TEST_F(MoveGenTest, CastlingRules) {
  auto has = [](const Moves& moves, const char* m) { return std::find(moves.begin(), moves.end(), m) != moves.end(); };
  Moves moves = generated("r3k2r/8/8/8/8/8/8/R3K2R w KQkq -");
  EXPECT_EQ(Moves(moves.end() - 2, moves.end()), (Moves{"Ke1-g1", "Ke1-c1"}));
  EXPECT_EQ(board.frame().end[-2].extra, sq("h1") | sq("f1"));
  EXPECT_EQ(board.frame().end[-1].flags, 0x1007u);
  moves = generated("4k3/4r3/8/8/8/8/8/R3K2R w KQ -");  // in check
  EXPECT_FALSE(has(moves, "Ke1-g1") || has(moves, "Ke1-c1"));
  moves = generated("4kr2/8/8/8/8/8/8/R3K2R w KQ -");  // f1 attacked
  EXPECT_FALSE(has(moves, "Ke1-g1"));
  EXPECT_TRUE(has(moves, "Ke1-c1"));
  moves = generated("4k1r1/8/8/8/8/8/8/R3K2R w KQ -");  // g1 attacked: generated, then filtered
  EXPECT_TRUE(has(moves, "Ke1-g1"));
  EXPECT_FALSE(has(legal("4k1r1/8/8/8/8/8/8/R3K2R w KQ -"), "Ke1-g1"));
  EXPECT_TRUE(has(legal("1r2k3/8/8/8/8/8/8/R3K2R w KQ -"), "Ke1-c1"));  // only b1 attacked
  moves = generated("r3k2r/8/8/8/8/8/8/R3K2R b Qk -");
  EXPECT_TRUE(has(moves, "Ke8-g8"));
  EXPECT_FALSE(has(moves, "Ke8-c8"));
}

}  // namespace
}  // namespace kbuChess::testing
