// Any text given as FEN, coordinate move or SAN is accepted or refused
// without harm; run under the sanitizers this catches memory faults.
#include <random>

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

using RobustnessTest = BoardTest;

// Random text of any bytes, of printable characters or of the characters of a FEN.
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
  const std::string manyKings = "KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/8/8/8 w KQkq e3 x y ;;;";
  std::vector<std::string> texts{std::string(100000, 'Q'), manyKings};
  for (int i = 0; i < 2000; ++i) texts.push_back(randomText(rng, rng() % 90, FEN_ALPHABET));
  for (int i = 0; i < 200; ++i) texts.push_back(randomText(rng, rng() % 200, ANY_BYTE));
  for (const std::string& text : texts) {
    board.readFEN(text);
    board.fen();
    board.boardText();
    board.generateLegal();
    board.perft(2, false);
  }
  board.readFEN(manyKings);
  EXPECT_EQ(std::popcount(board.position().kings()), 40);
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
