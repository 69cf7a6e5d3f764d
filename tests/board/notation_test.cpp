// SAN both ways (written for played moves, read against the legal moves) and
// the coordinate and long forms.
#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

class NotationTest : public BoardTest {
 protected:
  // SAN of one coordinate move in `fen`; the position must be left as it was.
  std::string written(const std::string& fen, const std::string& coordinate) {
    board.readFEN(fen);
    const std::string before = board.fen();
    const Move* move = board.findCoordinateMove(coordinate);
    if (move == nullptr) return "none";
    const std::string san = board.sanText(*move);
    EXPECT_EQ(board.fen(), before) << coordinate;
    return san;
  }
  // The long form of the legal move that the SAN text reads as, or "none".
  std::string read(const std::string& fen, const std::string& text) {
    board.readFEN(fen);
    board.generateLegal();
    const Move* m = board.readSANMove(text);
    return m ? clsBoard::moveText(m, true) : "none";
  }
};

// Each SAN is written for the move as given and read back as the same move.
TEST_F(NotationTest, WrittenSanReadsBackAsTheSameMove) {
  const char* const castling = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
  const char* const pawnToQueen = "k7/4P3/8/8/8/8/8/4K3 w - - 0 1";
  const struct {
    const char* fen;
    const char* move;
    const char* san;
    const char* longForm;
  } cases[] = {
      {clsBoard::START_FEN, "e2e4", "e4", "Pe2-e4"},
      {"4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "e4d5", "exd5", "Pe4xPd5"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", "exd6", "-e5xPd6"},
      // Rivals are told apart by file, then rank, then both.
      {"6k1/8/8/8/8/8/K7/R6R w - - 0 1", "a1d1", "Rad1", "Ra1-d1"},
      {"7k/8/8/R7/8/8/7K/R7 w - - 0 1", "a1a3", "R1a3", "Ra1-a3"},
      {"8/7k/8/8/8/Q7/8/Q1Q3K1 w - - 0 1", "a1b2", "Qa1b2", "Qa1-b2"},   // by file and rank
      {"4k3/8/8/8/1b6/2N5/4N3/4K3 w - - 0 1", "e2d4", "Nd4", "Ne2-d4"},  // the knight on c3 is pinned
      {pawnToQueen, "e7e8=q", "e8=Q+", "Pe7-e8=q"},
      {pawnToQueen, "e7e8=n", "e8=N", "Pe7-e8=n"},
      {"3r3k/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7d8=q", "exd8=Q+", "Pe7xRd8=q"},
      {castling, "e1g1", "O-O", "Ke1-g1"},
      {castling, "e1c1", "O-O-O", "Ke1-c1"},
      {"3k4/8/8/8/8/8/8/R3K3 w Q - 0 1", "e1c1", "O-O-O+", "Ke1-c1"},
      {"r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4", "h5f7", "Qxf7#", "Qh5xPf7"},
      {"4k3/8/8/8/8/8/8/3QK3 w - - 0 1", "d1d7", "Qd7+", "Qd1-d7"},  // the king can take the checker
      {"8/8/8/2k5/8/8/1P6/4K3 w - - 0 1", "b2b4", "b4+", "Pb2-b4"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(written(c.fen, c.move), c.san) << c.move;
    EXPECT_EQ(read(c.fen, c.san), c.longForm) << c.san;
    EXPECT_EQ(clsBoard::moveText(findMove(c.longForm), false), c.move);
  }
  EXPECT_EQ(written(clsBoard::START_FEN, "e2e5"), "none");
}

TEST_F(NotationTest, ReadingToleratesMarksAndRefusesWhatNoLegalMoveFits) {
  EXPECT_EQ(read("", "Nf3+"), "Ng1-f3");
  EXPECT_EQ(read("r1bqkbnr/pppp1ppp/2n5/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq -", "Qxf7"), "Qh5xPf7");
  // "exd5" names the file of the moving piece, whatever the piece.
  EXPECT_EQ(read("4k3/8/8/3p4/4Q3/8/8/4K3 w - -", "exd5"), "Qe4xPd5");
  for (const char* text : {"e5", "d8", "  ", "N", "O-O"})
    EXPECT_EQ(read("2r1k3/3P4/8/8/8/8/8/4K3 w - -", text), "none");
  EXPECT_EQ(clsBoard::sanPattern("Qh4xe1#"), "Qh4x?e1");
  EXPECT_EQ(clsBoard::sanPattern("exd8=N"), "Pe?x?d8=N");
  EXPECT_EQ(clsBoard::sanPattern("  "), "");
  EXPECT_EQ(clsBoard::sanPattern("N"), "");
}

// No move has a text; a text that names no move is not played.
TEST_F(NotationTest, TextsOfNoMove) {
  EXPECT_EQ(clsBoard::moveText(nullptr, false), "------");
  EXPECT_EQ(clsBoard::moveText(nullptr, true), "------");
  for (const char* bad : {"", "e2", "i1i2", "e7e8x", "zzzzzzzz"}) {
    board.readFEN("5k2/4P3/8/8/8/8/8/4K3 w - -");
    EXPECT_FALSE(play(bad)) << bad;
  }
}

}  // namespace
}  // namespace kbuChess::testing
