#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using MakeTest = BoardTest;

TEST_F(MakeTest, CastlingClearsOnlyTheKingSquaresAsExistingBooksExpect) {
  board.readFEN("r3k2r/8/8/8/8/8/8/R3K2R w KQkq -");
  board.setCastlingBonus(20);
  ASSERT_TRUE(play("e1g1"));
  EXPECT_EQ(board.fen(), "r3k2r/8/8/8/8/8/8/R4RK1 b kq -");
  EXPECT_TRUE(board.position().unmoved & sq("h1"));
  EXPECT_FALSE(board.position().unmoved & sq("e1"));
  EXPECT_EQ(board.position().score, -20);
}

TEST_F(MakeTest, EnPassantKeepsTheCapturedPawnInTheKeyAsTableEntriesExpect) {
  board.readFEN("4k3/3p4/8/4P3/8/8/8/4K3 b - -");
  ASSERT_TRUE(play("d7d5"));
  ASSERT_TRUE(play("e5d6"));
  EXPECT_EQ(board.fen(), "4k3/8/3P4/8/8/8/8/4K3 b - -");
  EXPECT_EQ(board.position().pawnCount[BLACK], 0);
  EXPECT_EQ(board.position().pawnCount[WHITE], 1);
  const u64 viaEnPassant = board.positionKey();
  board.readFEN("4k3/8/3P4/8/8/8/8/4K3 b - -");
  EXPECT_NE(viaEnPassant, board.positionKey());
}

TEST_F(MakeTest, CaptureCountsFollowTheTargetSquareAsTheEvaluationExpects) {
  board.readFEN("4k1r1/8/8/8/8/8/8/4K1N1 b - -");
  ASSERT_TRUE(play("g8g1"));
  EXPECT_EQ(board.position().pawnCount[WHITE], -1);
  EXPECT_EQ(board.position().pieceCount[WHITE], 2);
  board.readFEN("4kr2/8/8/8/8/8/8/4KN2 b - -");
  ASSERT_TRUE(play("f8f1"));
  EXPECT_EQ(board.position().pawnCount[WHITE], 0);
  EXPECT_EQ(board.position().pieceCount[WHITE], 1);
}

TEST_F(MakeTest, PromotionLetters) {
  const std::string fen = "4k3/P7/8/8/8/8/8/4K3 w - -";
  board.readFEN(fen);
  EXPECT_FALSE(play("a7a8"));
  EXPECT_EQ(board.fen(), fen);
  for (const char* move : {"a7a8q", "a7a8Q", "a7a8m", "a7a8=q"}) {
    board.readFEN(fen);
    ASSERT_TRUE(play(move)) << move;
    EXPECT_EQ(board.fen(), "Q3k3/8/8/8/8/8/8/4K3 b - -") << move;
  }
  board.readFEN(fen);
  ASSERT_TRUE(play("a7a8s"));
  EXPECT_EQ(board.pieceAt(sq("a8")), 'B');
  EXPECT_EQ(board.position().pawnCount[WHITE], 0);
  EXPECT_EQ(board.position().pieceCount[WHITE], 2);
}

TEST_F(MakeTest, KeysAgreeAcrossTranspositionsAndSeeCastlingRights) {
  board.readFEN("");
  for (const char* m : {"g1f3", "b8c6", "b1c3"}) ASSERT_TRUE(play(m));
  const u64 first = board.positionKey();
  board.readFEN("");
  for (const char* m : {"b1c3", "b8c6", "g1f3"}) ASSERT_TRUE(play(m));
  EXPECT_EQ(first, board.positionKey());
  EXPECT_EQ(board.position().pieceKey, board.computePieceKey());
  board.readFEN("r3k2r/8/8/8/8/8/8/R3K2R w KQkq -");
  const u64 withRights = board.positionKey();
  for (const char* m : {"h1g1", "h8g8", "g1h1", "g8h8"}) ASSERT_TRUE(play(m));
  EXPECT_EQ(board.fen(), "r3k2r/8/8/8/8/8/8/R3K2R w Qq -");
  EXPECT_NE(withRights, board.positionKey());
}

}  // namespace
}  // namespace kbuChess::testing
