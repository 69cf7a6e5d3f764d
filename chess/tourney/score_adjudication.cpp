#include "chess/tourney/score_adjudication.h"

#include "chess/tourney/game_record.h"

namespace kbuChess {

void clsScoreAdjudicator::reset() {
  runs_[0] = runs_[1] = Runs{};
}

std::uint32_t clsScoreAdjudicator::afterMove(int mover, std::optional<int> score, int plies) {
  if (!rules_.enabled) return 0;
  Runs& own = runs_[mover & 1];
  const Runs& other = runs_[(mover & 1) ^ 1];
  if (!score) {
    own = Runs{};
    return 0;
  }
  const int value = *score;
  own.draw = value >= -rules_.drawScore && value <= rules_.drawScore ? own.draw + 1 : 0;
  own.losing = value <= -rules_.resignScore ? own.losing + 1 : 0;
  own.winning = value >= rules_.resignScore ? own.winning + 1 : 0;
  if (own.losing >= rules_.resignMoves && other.winning >= rules_.resignMoves)
    return lossCode(mover & 1, rc::ADJUDICATION | rc::SCORE_RESIGN);
  if (other.losing >= rules_.resignMoves && own.winning >= rules_.resignMoves)
    return lossCode((mover & 1) ^ 1, rc::ADJUDICATION | rc::SCORE_RESIGN);
  if (own.draw >= rules_.drawMoves && other.draw >= rules_.drawMoves && plies / 2 >= rules_.drawAfter)
    return rc::DRAW | rc::ADJUDICATION | rc::SCORE_DRAW;
  return 0;
}

}  // namespace kbuChess
