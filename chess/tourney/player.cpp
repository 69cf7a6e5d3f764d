#include "chess/tourney/player.h"

namespace kbuChess {

int clsPlayer::addGame(int halfPoints) {
  kobubase::clsLock hold(lock_);
  score_ += halfPoints;
  if (halfPoints >= 2)
    ++counts_.wins;
  else if (halfPoints == 1)
    ++counts_.draws;
  else
    ++counts_.losses;
  return score_;
}

int clsPlayer::score() {
  kobubase::clsLock hold(lock_);
  return score_;
}

GameCounts clsPlayer::counts() {
  kobubase::clsLock hold(lock_);
  return counts_;
}

}  // namespace kbuChess
