#pragma once
// A game runner for learning that plays two embedded engines against each
// other directly, without the tournament's game loop: each side gets a fixed
// time per move on its own engine thread, the moves are checked by the other
// engine's board, and the game ends on mate, stalemate, the fifty-move rule,
// a threefold repetition, bare kings or the move cap (a draw).
//
// This is the interim runner of the "\learn" and "\learnt" commands; the
// tournament's game loop, once it can play embedded games, takes its place.
#include <atomic>

#include "chess/tourney/learning.h"

namespace kbuChess {

class clsEngineLearningGames : public clsLearningGames {
 public:
  GameOutcome play(const Soul& white, const Soul& black, const std::vector<std::string>& openingMoves, int msPerMove,
                   int maxMoves) override;
  void stop() override { stop_.store(true); }

 private:
  std::atomic<bool> stop_{false};
};

}  // namespace kbuChess
