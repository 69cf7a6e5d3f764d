#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

class NotationTest : public BoardTest {
 protected:
  // The long form of the legal move that the SAN text reads as, or "none".
  std::string san(const std::string& fen, const std::string& text) {
    board.readFEN(fen);
    board.generateLegal();
    const Move* m = board.readSANMove(text);
    return m ? clsBoard::moveText(m, true) : "none";
  }
};

TEST_F(NotationTest, PatternsFollowTheLongFormLayout) {
  EXPECT_EQ(clsBoard::sanPattern("e4"), "P??-e4");
  EXPECT_EQ(clsBoard::sanPattern("Nf3+"), "N??-f3");
  EXPECT_EQ(clsBoard::sanPattern("exd5"), "?e?x?d5");
  EXPECT_EQ(clsBoard::sanPattern("Nbd7"), "Nb?-d7");
  EXPECT_EQ(clsBoard::sanPattern("R1a3"), "R?1-a3");
  EXPECT_EQ(clsBoard::sanPattern("Qh4xe1#"), "Qh4x?e1");
  EXPECT_EQ(clsBoard::sanPattern("e8=Q"), "P??-e8=Q");
  EXPECT_EQ(clsBoard::sanPattern("exd8=N"), "Pe?x?d8=N");
  EXPECT_EQ(clsBoard::sanPattern("O-O"), "Ke?-g?");
  EXPECT_EQ(clsBoard::sanPattern("O-O-O+"), "Ke?-c?");
  EXPECT_EQ(clsBoard::sanPattern("  "), "");
  EXPECT_EQ(clsBoard::sanPattern("N"), "");
}

TEST_F(NotationTest, ReadsSanAgainstTheLegalMoves) {
  EXPECT_EQ(san("", "e4"), "Pe2-e4");
  EXPECT_EQ(san("", "Nf3+"), "Ng1-f3");
  EXPECT_EQ(san("", "Nf3"), "Ng1-f3");
  EXPECT_EQ(san("", "e5"), "none");
  EXPECT_EQ(san("r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "O-O"), "Ke1-g1");
  EXPECT_EQ(san("r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "O-O-O"), "Ke1-c1");
  EXPECT_EQ(san("r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "O-O"), "Ke8-g8");
  EXPECT_EQ(san("r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "O-O-O"), "Ke8-c8");
  const std::string mate = "r1bqkbnr/pppp1ppp/2n5/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq -";
  EXPECT_EQ(san(mate, "Qxf7#"), "Qh5xPf7");
  EXPECT_EQ(san(mate, "Qxf7"), "Qh5xPf7");
}

TEST_F(NotationTest, DisambiguationPromotionsAndPawnCaptures) {
  const std::string knights = "4k3/8/8/8/8/8/8/1N2KN2 w - -";
  EXPECT_EQ(san(knights, "Nbd2"), "Nb1-d2");
  EXPECT_EQ(san(knights, "Nfd2"), "Nf1-d2");
  const std::string rooks = "4k3/8/R7/8/8/8/8/R3K3 w - -";
  EXPECT_EQ(san(rooks, "R1a3"), "Ra1-a3");
  EXPECT_EQ(san(rooks, "R6a3"), "Ra6-a3");
  const std::string promotion = "2r1k3/3P4/8/8/8/8/8/4K3 w - -";
  EXPECT_EQ(san(promotion, "d8=Q+"), "Pd7-d8=q");
  EXPECT_EQ(san(promotion, "dxc8=N"), "Pd7xRc8=n");
  EXPECT_EQ(san(promotion, "d8"), "none");
  // "exd5" names the file of the moving piece, whatever the piece.
  EXPECT_EQ(san("4k3/8/8/3p4/4Q3/8/8/4K3 w - -", "exd5"), "Qe4xPd5");
  EXPECT_EQ(san("4k3/8/8/3pP3/8/8/8/4K3 w - d6", "exd6"), "-e5xPd6");
}

TEST_F(NotationTest, CoordinateAndLongForms) {
  board.readFEN("3r1k2/4P3/8/8/8/8/8/4K2R w K -");
  board.generateLegal();
  EXPECT_EQ(clsBoard::moveText(findMove("Pe7xRd8=q"), false), "e7d8=q");
  EXPECT_EQ(clsBoard::moveText(findMove("Pe7-e8=n"), false), "e7e8=n");
  EXPECT_EQ(clsBoard::moveText(findMove("Ke1-g1"), false), "e1g1");
  EXPECT_EQ(clsBoard::moveText(nullptr, false), "------");
  EXPECT_EQ(clsBoard::moveText(nullptr, true), "------");
  EXPECT_TRUE(play("e7e8=q"));
  board.readFEN("5k2/4P3/8/8/8/8/8/4K3 w - -");
  EXPECT_TRUE(play("e7e8q"));
  EXPECT_EQ(board.pieceAt(sq("e8")), 'Q');
  for (const char* bad : {"", "e2", "i1i2", "e7e8x", "zzzzzzzz"}) {
    board.readFEN("5k2/4P3/8/8/8/8/8/4K3 w - -");
    EXPECT_FALSE(play(bad)) << bad;
  }
}

}  // namespace
}  // namespace kbuChess::testing
