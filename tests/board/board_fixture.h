#pragma once
// Helpers shared by the board tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace kbuChess::testing {

inline u64 sq(const char* text) {
  return squareFromText(text);
}
inline bool has(const std::vector<std::string>& moves, const std::string& move) {
  return std::find(moves.begin(), moves.end(), move) != moves.end();
}

class BoardTest : public ::testing::Test {
 protected:
  void SetUp() override {
    board.output().setEcho(false);
    board.output().setKeep(true);
  }
  // Long forms of the current frame's records, in order.
  std::vector<std::string> frameMoves() {
    std::vector<std::string> moves;
    for (const Move* m = board.frame().first; m < board.frame().end; ++m) moves.push_back(clsBoard::moveText(m, true));
    return moves;
  }
  // The position record after reading the FEN.
  const Position& at(const std::string& fen) {
    board.readFEN(fen);
    return board.position();
  }
  // The moves of all stages, or only the legal ones, in the position.
  std::vector<std::string> generated(const std::string& fen, bool legalOnly = false) {
    board.readFEN(fen);
    static_cast<void>(legalOnly ? board.generateLegal() : board.generate(-1));
    return frameMoves();
  }
  const Move* findMove(const std::string& longForm) {
    for (const Move* m = board.frame().first; m < board.frame().end; ++m)
      if (clsBoard::moveText(m, true) == longForm) return m;
    return nullptr;
  }
  bool play(const std::string& coordinate) { return board.readCoordinateMove(coordinate); }

  clsBoard board;
};

}  // namespace kbuChess::testing
