#pragma once
// A game runner for learning that plays two embedded engines against each
// other directly, without the tournament's game loop: each side gets a fixed
// time per move on its own engine thread, the moves are checked by the other
// engine's board, and the game ends on mate, stalemate, the fifty-move rule,
// a threefold repetition, bare kings or the move cap (a draw).
//
// The engines are built once, two per game that may run at the same time,
// and lent to the games: building a board mixes the shared key tables, which
// must not happen while other engines search.
//
// This is the interim runner of the "\learn" and "\learnt" commands; the
// tournament's game loop, once it can play embedded games, takes its place.
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "chess/tourney/learning.h"

namespace kbuChess {

class clsEngineLearningGames : public clsLearningGames {
 public:
  // games: how many games may be played at the same time.
  explicit clsEngineLearningGames(int games = 1);
  ~clsEngineLearningGames() override;
  GameOutcome play(const Soul& white, const Soul& black, const std::vector<std::string>& openingMoves, int msPerMove,
                   int maxMoves) override;
  void stop() override { stop_.store(true); }

 private:
  // Waits for a free pair of engines and takes it.
  std::size_t borrow();
  void giveBack(std::size_t pair);
  GameOutcome playOn(clsEngine* sides[2], const std::vector<std::string>& openingMoves, int msPerMove, int maxMoves);

  std::atomic<bool> stop_{false};
  std::vector<std::unique_ptr<clsEngine>> engines_;  // pair k: 2k White, 2k+1 Black
  std::vector<std::size_t> free_;
  std::mutex lock_;
  std::condition_variable returned_;
};

}  // namespace kbuChess
