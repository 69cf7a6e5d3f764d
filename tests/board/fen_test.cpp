#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using FenTest = BoardTest;

TEST_F(FenTest, EmptyTextReadsTheStartPositionAndScoresAreFromTheSideToMove) {
  EXPECT_EQ(at("").pawnCount[WHITE], 8);
  EXPECT_EQ(board.fen(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  EXPECT_EQ(board.position().pieceCount[BLACK], 8);
  EXPECT_EQ(board.position().score, 0);
  EXPECT_EQ(board.fullMoveNumber(), 1);
  EXPECT_EQ(at("4k3/8/8/8/8/8/8/3QK3 w - -").score, 1000);
  EXPECT_EQ(at("4k3/8/8/8/8/8/8/3QK3 b - -").score, -1000);
}

TEST_F(FenTest, RoundTripsKeepBoardSideCastlingAndEnPassant) {
  for (const char* fen :
       {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3",
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
        "4k3/8/8/8/8/8/8/4K2R w K -", "r3k2r/8/8/8/8/8/8/R3K2R w Kq -"}) {
    board.readFEN(fen);
    EXPECT_EQ(board.fen(), fen);
  }
  // The castling field adds the home squares of king and rook.
  EXPECT_EQ(board.position().unmoved, sq("e1") | sq("h1") | sq("e8") | sq("a8"));
  EXPECT_EQ(board.position().epSquare, 0u);
  EXPECT_EQ(at("r3k2r/8/8/8/8/8/8/R3K2R b - - 0 1").unmoved, 0u);
  EXPECT_EQ(board.position().side, 1u);
  EXPECT_EQ(at("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1").epSquare, sq("e3"));
}

TEST_F(FenTest, AliasesAndQuirksOfTheBoardField) {
  board.readFEN("mskb4/8/8/8/8/8/8/MSKB4 w - -");
  EXPECT_EQ(board.fen(), "qbkb4/8/8/8/8/8/8/QBKB4 w - -");
  EXPECT_EQ(at("8/8/8/8/8/8/8/8 w - -").occupied, 0u);
  // "1" takes one square like any other unknown character; a short rank shifts the rest.
  EXPECT_EQ(at("k1K5/8/8/8/8/8/8/8 w - -").kings(), sq("a8") | sq("c8"));
  EXPECT_EQ(at("kK/8/8/8/8/8/8/8 w - -").kings(), sq("a8") | sq("b8"));
  EXPECT_EQ(board.fen(), "kK6/8/8/8/8/8/8/8 w - -");
}

TEST_F(FenTest, ClocksAndEpdOperations) {
  board.readFEN("4k3/8/8/8/8/8/8/4K3 b - - 12 40");
  EXPECT_EQ(board.halfMoveClock(), 12);
  EXPECT_EQ(board.fullMoveNumber(), 40);
  board.readFEN("4k3/8/8/8/8/8/8/4KQ2 w - - bm Qf7; id \"mate.1\";");
  EXPECT_EQ(board.halfMoveClock(), 0);
  EXPECT_EQ(board.fullMoveNumber(), 1);
  EXPECT_EQ(board.epdOperations(), (std::vector<std::string>{"bm Qf7", "id \"mate.1\""}));
}

}  // namespace
}  // namespace kbuChess::testing
