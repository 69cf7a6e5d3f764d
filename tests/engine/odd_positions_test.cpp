// Positions no game reaches are still searched without harm: boards without
// kings or with many, pawns on the first and last ranks, an empty board.
// Under the sanitizers this catches out-of-range table reads and overflow.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "chess/engine/engine.h"

namespace kbuChess {
namespace {

const char* const ODD_POSITIONS[] = {"8/8/8/8/8/8/8/8 w - - 0 1",
                                     "8/8/8/8/8/8/8/8 b - - 0 1",
                                     "8/8/8/3k4/8/8/8/8 w - - 0 1",
                                     "8/8/8/3K4/8/8/8/8 w - - 0 1",
                                     "4k3/8/8/8/8/8/8/R7 w - - 0 1",
                                     "KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/KKKKKKKK/8/8/8 w KQkq - 0 1",
                                     "kkkkkkkk/8/8/8/8/8/8/KKKKKKKK b - - 0 1",
                                     "PPPPPPPP/pppppppp/8/8/8/8/PPPPPPPP/pppppppp w - - 0 1",
                                     "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/8/8/qqqqqqqq/qqqqqqqq/qqqqqqqq w - - 0 1",
                                     clsBoard::START_FEN};

void searchAndEvaluate(clsEngine& engine, const std::string& fen) {
  engine.readFEN(fen);
  engine.setFixedDepth(3);
  engine.think();
  engine.resetFrames();
  engine.evaluate();
  engine.readFEN(fen);
  engine.perft(3, false);
}

// The odd positions, then random boards of any pieces on any squares.
TEST(OddPositions, AreSearchedEvaluatedAndCounted) {
  clsEngine engine;
  engine.output().setEcho(false);
  for (const char* fen : ODD_POSITIONS) searchAndEvaluate(engine, fen);
  engine.readFEN("8/8/8/8/8/8/8/8 w - - 0 1");
  EXPECT_EQ(engine.perft(3, false), 0u);  // its search: the driver's "# no legal move"
  std::mt19937 rng(2026);
  const std::string pieces = "kqrbnpKQRBNP11234";
  for (int i = 0; i < 150; ++i) {
    std::string fen;
    for (int square = 0; square < 64; ++square) {
      if (square > 0 && square % 8 == 0) fen += '/';
      fen += rng() % 3 ? '1' : pieces[rng() % pieces.size()];
    }
    searchAndEvaluate(engine, fen + (i % 2 ? " w KQkq - 0 1" : " b - - 0 1"));
  }
}

}  // namespace
}  // namespace kbuChess
