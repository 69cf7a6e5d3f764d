#include "chess/tourney/engine_learning_games.h"

#include <algorithm>
#include <bit>
#include <map>
#include <memory>

#include "base/thread.h"

namespace kbuChess {

namespace {

enum class GameState { PLAYING, DRAWN, MOVER_MATED };

// Searches for msPerMove (or until the search ends by itself) and returns the
// engine's move; the first legal move when the search found none in time.
Move searchMove(clsEngine& engine, int msPerMove, const std::atomic<bool>& stop) {
  engine.resetFrames();
  engine.setFixedDepth(0);
  engine.start();
  const std::int64_t deadline = kobubase::nowMs() + msPerMove;
  while (engine.searching() && kobubase::nowMs() < deadline && !stop.load()) kobubase::sleepMs(1);
  engine.stop();
  Move move = engine.bestMove();
  if (move.isMove()) return move;
  engine.resetFrames();
  const int count = engine.generateLegal();
  if (count > 0) move = engine.frame().first[0];
  return move;
}

// The state of the game for the side to move on `board`.
GameState judge(clsBoard& board, std::map<std::string, int>& seen) {
  board.resetFrames();
  const int legal = board.generateLegal();
  const bool inCheck = board.ownKingAttacked();
  board.resetFrames();
  if (legal <= 0) return inCheck ? GameState::MOVER_MATED : GameState::DRAWN;
  if (board.halfMoveClock() >= 100) return GameState::DRAWN;
  if (std::popcount(board.position().occupied) <= 2) return GameState::DRAWN;
  if (++seen[board.fen()] >= 3) return GameState::DRAWN;
  return GameState::PLAYING;
}

}  // namespace

clsEngineLearningGames::clsEngineLearningGames(int games) {
  for (int k = 0; k < std::max(games, 1); ++k) {
    for (int side = 0; side < 2; ++side) {
      engines_.push_back(std::make_unique<clsEngine>());
      engines_.back()->output().setEcho(false);
    }
    free_.push_back(static_cast<std::size_t>(k));
  }
}

clsEngineLearningGames::~clsEngineLearningGames() = default;

std::size_t clsEngineLearningGames::borrow() {
  std::unique_lock<std::mutex> guard(lock_);
  returned_.wait(guard, [this] { return !free_.empty(); });
  const std::size_t pair = free_.back();
  free_.pop_back();
  return pair;
}

void clsEngineLearningGames::giveBack(std::size_t pair) {
  {
    std::lock_guard<std::mutex> guard(lock_);
    free_.push_back(pair);
  }
  returned_.notify_one();
}

GameOutcome clsEngineLearningGames::play(const Soul& white, const Soul& black,
                                         const std::vector<std::string>& openingMoves, int msPerMove, int maxMoves) {
  const std::size_t pair = borrow();
  clsEngine* sides[2] = {engines_[2 * pair].get(), engines_[2 * pair + 1].get()};
  sides[0]->applySoulText(soulLine(white));
  sides[1]->applySoulText(soulLine(black));
  for (clsEngine* side : sides) side->readFEN(clsBoard::START_FEN);
  const GameOutcome outcome = playOn(sides, openingMoves, msPerMove, maxMoves);
  giveBack(pair);
  return outcome;
}

GameOutcome clsEngineLearningGames::playOn(clsEngine* sides[2], const std::vector<std::string>& openingMoves,
                                           int msPerMove, int maxMoves) {
  int plies = 0;
  for (const std::string& move : openingMoves) {
    if (!sides[0]->readCoordinateMove(move) || !sides[1]->readCoordinateMove(move)) break;
    ++plies;
  }
  std::map<std::string, int> seen;
  while (true) {
    if (stop_.load()) return GameOutcome{1, false};
    const int mover = sides[0]->position().side;
    // A mate on the last ply before the cap still counts.
    const GameState state = judge(*sides[mover], seen);
    if (state == GameState::MOVER_MATED) return GameOutcome{mover == 0 ? 0 : 2, true};
    if (state == GameState::DRAWN || plies >= 2 * maxMoves) return GameOutcome{1, true};
    const Move move = searchMove(*sides[mover], msPerMove, stop_);
    const std::string text = clsBoard::moveText(&move, false);
    // A move the engine cannot replay loses for it; it cannot happen with a sound engine.
    if (!sides[mover]->readCoordinateMove(text) || !sides[1 - mover]->readCoordinateMove(text)) {
      return GameOutcome{mover == 0 ? 0 : 2, true};
    }
    ++plies;
  }
}

}  // namespace kbuChess
