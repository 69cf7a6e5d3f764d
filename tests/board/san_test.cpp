// SAN written for played moves: piece letters, disambiguation, captures,
// en passant, promotion, castling and the check and mate marks.
#include "chess/board/game_state.h"
#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

class SanTest : public BoardTest {
 protected:
  // SAN of one coordinate move in `fen`; the position must be left as it was.
  std::string sanOf(const std::string& fen, const std::string& coordinate) {
    board.readFEN(fen);
    const std::string before = board.fen();
    const Move* move = board.findCoordinateMove(coordinate);
    if (move == nullptr) return "none";
    const std::string san = board.sanText(*move);
    EXPECT_EQ(board.fen(), before) << coordinate;
    return san;
  }
};

TEST_F(SanTest, PiecesPawnsAndCaptures) {
  EXPECT_EQ(sanOf(clsBoard::START_FEN, "e2e4"), "e4");
  EXPECT_EQ(sanOf(clsBoard::START_FEN, "g1f3"), "Nf3");
  EXPECT_EQ(sanOf(clsBoard::START_FEN, "b1c3"), "Nc3");
  EXPECT_EQ(sanOf("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "e4d5"), "exd5");
  EXPECT_EQ(sanOf("4k3/8/8/3p4/8/8/8/3RK3 w - - 0 1", "d1d5"), "Rxd5");
  EXPECT_EQ(sanOf("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6"), "exd6");
  EXPECT_EQ(sanOf("4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", "d4e3"), "dxe3");
}

TEST_F(SanTest, RivalsAreToldApartByFileThenRankThenBoth) {
  EXPECT_EQ(sanOf("6k1/8/8/8/8/8/K7/R6R w - - 0 1", "a1d1"), "Rad1");
  EXPECT_EQ(sanOf("6k1/8/8/8/8/8/K7/R6R w - - 0 1", "h1d1"), "Rhd1");
  EXPECT_EQ(sanOf("7k/8/8/R7/8/8/7K/R7 w - - 0 1", "a1a3"), "R1a3");
  EXPECT_EQ(sanOf("7k/8/8/R7/8/8/7K/R7 w - - 0 1", "a5a3"), "R5a3");
  EXPECT_EQ(sanOf("8/7k/8/8/8/Q7/8/Q1Q3K1 w - - 0 1", "a1b2"), "Qa1b2");
  EXPECT_EQ(sanOf("8/7k/8/8/8/Q7/8/Q1Q3K1 w - - 0 1", "c1b2"), "Qcb2");
  EXPECT_EQ(sanOf("8/7k/8/8/8/Q7/8/Q1Q3K1 w - - 0 1", "a3b2"), "Q3b2");
  EXPECT_EQ(sanOf("r1bqkbnr/pppppppp/2n5/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", "g8f6"), "Nf6");
  // The knight on c3 is pinned by the bishop on b4: it is no rival for d4.
  EXPECT_EQ(sanOf("4k3/8/8/8/1b6/2N5/4N3/4K3 w - - 0 1", "e2d4"), "Nd4");
}

TEST_F(SanTest, PromotionCastlingAndMarks) {
  EXPECT_EQ(sanOf("k7/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7e8q"), "e8=Q+");
  EXPECT_EQ(sanOf("k7/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7e8n"), "e8=N");
  EXPECT_EQ(sanOf("k7/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7e8=r"), "e8=R+");
  EXPECT_EQ(sanOf("3r3k/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7d8q"), "exd8=Q+");
  EXPECT_EQ(sanOf("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1g1"), "O-O");
  EXPECT_EQ(sanOf("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1c1"), "O-O-O");
  EXPECT_EQ(sanOf("r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "e8g8"), "O-O");
  EXPECT_EQ(sanOf("3k4/8/8/8/8/8/8/R3K3 w Q - 0 1", "e1c1"), "O-O-O+");
  EXPECT_EQ(sanOf("rnbqkbnr/pppp1ppp/8/4p3/6P1/5P2/PPPPP2P/RNBQKBNR b KQkq g3 0 2", "d8h4"), "Qh4#");
  EXPECT_EQ(sanOf("r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4", "h5f7"), "Qxf7#");
  // Check, but the king can take the checker.
  EXPECT_EQ(sanOf("4k3/8/8/8/8/8/8/3QK3 w - - 0 1", "d1d7"), "Qd7+");
  EXPECT_EQ(sanOf("8/8/8/2k5/8/8/1P6/4K3 w - - 0 1", "b2b4"), "b4+");
  EXPECT_EQ(sanOf(clsBoard::START_FEN, "e2e5"), "none");
}

}  // namespace
}  // namespace kbuChess::testing
