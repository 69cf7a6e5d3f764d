// Any text given as FEN, coordinate move or SAN is accepted or refused
// without harm; run under the sanitizers this catches memory faults.
#include <random>

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using RobustnessTest = BoardTest;

enum Kind { ANY_BYTE, PRINTABLE, FEN_ALPHABET };
std::string randomText(std::mt19937& rng, std::size_t length, Kind kind) {
  static const std::string alphabet = "kqrbnpmsKQRBNPMS12345678/ -wbKQkqa3e6;";
  std::string text(length, ' ');
  for (char& c : text)
    c = kind == FEN_ALPHABET ? alphabet[rng() % alphabet.size()]
                             : static_cast<char>(kind == PRINTABLE ? ' ' + rng() % 95 : rng() % 256);
  return text;
}

TEST_F(RobustnessTest, AnyFenTextIsReadWithoutHarm) {
  std::mt19937 rng(12345);
  for (int i = 0; i < 2200; ++i) {
    board.readFEN(i == 0   ? std::string(100000, 'Q')
                  : i == 1 ? "KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/8/8/8 w KQkq e3 x y ;;;"
                           : randomText(rng, rng() % (i < 2000 ? 90 : 200), i < 2000 ? FEN_ALPHABET : ANY_BYTE));
    EXPECT_TRUE(i != 1 || std::popcount(board.position().kings()) == 40);
    board.fen();
    board.boardText();
    board.generateLegal();
    board.perft(2, false);
  }
}

TEST_F(RobustnessTest, AnyMoveTextIsRefusedOrPlayed) {
  std::mt19937 rng(777);
  for (int i = 0; i < 3000; ++i) {
    board.readFEN("");
    const std::string text = randomText(rng, rng() % 12, i % 2 == 0 ? PRINTABLE : ANY_BYTE);
    board.readCoordinateMove(text);
    board.generateLegal();
    board.readSANMove(text);
  }
  board.generateLegal();
  EXPECT_EQ(board.readSANMove(std::string(100000, 'x')), nullptr);
  EXPECT_FALSE(board.readCoordinateMove(std::string(100000, 'e')));
}

}  // namespace
}  // namespace kbuChess::testing
