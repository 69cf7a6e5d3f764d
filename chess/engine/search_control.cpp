#include "chess/engine/search_control.h"

#include "base/thread.h"

namespace kbuChess {

bool clsSearchControl::start(std::int64_t budgetMs, int fixedDepth) {
  abandon();
  startMs_ = kobubase::nowMs();
  deadlineMs_ = startMs_ + (budgetMs < 0 ? 0 : budgetMs);
  engine_.setFixedDepth(fixedDepth < 0 ? 0 : (fixedDepth > clsEngine::MAX_DEPTH ? clsEngine::MAX_DEPTH : fixedDepth));
  engine_.setSinglePass(false);
  // A search that finds a mate at once may be over before start() returns,
  // so the move is awaited either way. Should the thread fail to start, the
  // cleared best move makes collect() fall back to a legal move instead of
  // replaying an old one.
  Move none{};
  none.flags = mf::NOT_A_MOVE;
  engine_.setBestMove(none);
  awaiting_ = true;
  return engine_.start();
}

SearchPoll clsSearchControl::poll() {
  if (!awaiting_) return SearchPoll::IDLE;
  if (!engine_.searching()) return SearchPoll::ENDED;
  if (kobubase::nowMs() <= deadlineMs_) return SearchPoll::RUNNING;
  engine_.stop();
  return SearchPoll::TIME_EXPIRED;
}

// Joins the engine's thread even when its search has just ended: the thread
// may still be on its way out, and the engine must not be touched (or
// destroyed) before it is gone.
void clsSearchControl::stop() { engine_.stop(); }

void clsSearchControl::abandon() {
  stop();
  awaiting_ = false;
}

Move clsSearchControl::collect() {
  stop();
  awaiting_ = false;
  Move move = engine_.bestMove();
  if (move.isMove()) return move;
  engine_.resetFrames();
  if (engine_.generateLegal() > 0) move = engine_.frame().first[0];
  engine_.resetFrames();
  return move;
}

std::int64_t clsSearchControl::elapsedMs() const { return kobubase::nowMs() - startMs_ + 1; }

}  // namespace kbuChess
