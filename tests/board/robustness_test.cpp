// Any text given as FEN, coordinate move or SAN is accepted or refused
// without harm; run under the sanitizers this catches memory faults.
#include <random>

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using RobustnessTest = BoardTest;

std::string randomText(std::mt19937& rng, std::size_t length, bool printable) {
  std::string text(length, ' ');
  for (char& c : text) c = static_cast<char>(printable ? ' ' + rng() % 95 : rng() % 256);
  return text;
}

void exercise(clsBoard& board) {
  board.fen();
  board.boardText();
  board.generateLegal();
  board.perft(2, false);
}

TEST_F(RobustnessTest, AnyFenTextIsReadWithoutHarm) {
  std::mt19937 rng(12345);
  const std::string alphabet = "kqrbnpmsKQRBNPMS12345678/ -wbKQkqa3e6;";
  for (int i = 0; i < 2000; ++i) {
    std::string text(rng() % 90, ' ');
    for (char& c : text) c = alphabet[rng() % alphabet.size()];
    board.readFEN(text);
    exercise(board);
  }
  for (int i = 0; i < 200; ++i) {
    board.readFEN(randomText(rng, rng() % 200, false));
    exercise(board);
  }
  board.readFEN(std::string(100000, 'Q'));
  exercise(board);
  board.readFEN("KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/8/8/8 w KQkq e3 x y ;;;");
  exercise(board);
  EXPECT_EQ(std::popcount(board.position().kings()), 40);
}

TEST_F(RobustnessTest, AnyMoveTextIsRefusedOrPlayed) {
  std::mt19937 rng(777);
  for (int i = 0; i < 3000; ++i) {
    board.readFEN("");
    const std::string text = randomText(rng, rng() % 12, i % 2 == 0);
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
