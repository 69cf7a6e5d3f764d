// The engine thread's thinking procedure: book probe, iterative deepening in
// steps of two plies with its early decisions, and the random-choice modes.
#include <algorithm>
#include "base/random.h"
#include "base/text.h"
#include "chess/engine/engine.h"

namespace kbuChess {

namespace {
constexpr int DEFAULT_ACCEPT_PERCENT = 60;
}  // namespace

bool clsEngine::start() {
  // Cleared here and not on the new thread, so that a stop right after the
  // start cannot be lost, nor the last search's depth and nodes be read as
  // this one's by a caller that polls at once.
  if (!isRunning()) {
    stopFlag_.store(false);
    iterationDepth_.store(0, std::memory_order_relaxed);
    searchNodes_.store(0, std::memory_order_relaxed);
  }
  return clsThread::start();
}

bool clsEngine::stop() {
  if (stopGuard_.load() < 2) stopFlag_.store(true);
  return wait();
}

void clsEngine::think() {
  stopFlag_.store(false);
  thinkingProcedure();
}

void clsEngine::thinkingProcedure() {
  output().print("# engine's running");
  Move none{};
  none.flags = mf::NOT_A_MOVE;
  none.searchScore = NO_SCORE;
  setBestMove(none);
  nodeCount_ = 0;
  ttHits_ = 0;
  repetitionHits_ = 0;
  searchNodes_.store(0, std::memory_order_relaxed);
  iterationDepth_.store(0, std::memory_order_relaxed);
  const std::int64_t started = kobubase::nowMs();

  const bool random = commandOptions_.has("-random");
  const bool timed = commandOptions_.has("-timed");
  const bool proportional = commandOptions_.has("-proportional");
  ++searchesStarted_;
  // The frames hold at most MAX_DEPTH plies below the root.
  const int fixedDepth = std::min(fixedDepth_, MAX_DEPTH);
  int limit = MAX_DEPTH;
  if (fixedDepth != 0)
    limit = fixedDepth;
  else if (random && !timed && !proportional)
    limit = 2;  // a random mover needs only a shallow look for blunders

  const bool booked = !singlePass_ && probeBook();
  if (!booked) deepen(fixedDepth != 0 ? fixedDepth : 2, limit);
  thinkingMs_ += static_cast<u64>(kobubase::nowMs() - started);
  // A book move stands even in the random modes: they choose among searched root moves.
  if (random && !booked) chooseRandomMove(proportional);
  searchNodes_.store(nodeCount_, std::memory_order_relaxed);
  output().print("# engine stopped");
}

bool clsEngine::probeBook() {
  Move chosen{};
  if (bookProbe_ == nullptr || !bookProbe_->bookMove(*this, chosen)) return false;
  setBestMove(chosen);
  output().print("# book move " + moveText(&chosen, false));
  return true;
}

// Iterative deepening over the root search with the decisions that end it early.
void clsEngine::deepen(int startDepth, int limit) {
  PlyFrame& root = *rootFrame();
  bool first = true;
  for (int depth = startDepth; depth <= limit && !stopped(); depth += 2) {
    iterationDepth_.store(depth, std::memory_order_relaxed);
    rootSearch(depth, first);
    first = false;
    // A stopped iteration holds partial scores that decide nothing.
    if (stopped()) break;
    if (root.moveCount < 2) break;
    sortRootBySearchScore();
    const Move& top = *root.first;
    if (top.searchScore > WIN_THRESHOLD) {
      output().print("# Winning move: " + moveText(&top, false));
      break;
    }
    if (top.searchScore < -WIN_THRESHOLD) {
      output().print("# I will lose :-(");
      break;
    }
    int open = 0;
    for (const Move* m = root.first; m < root.end; ++m)
      if ((m->flags & mf::REFUTED) || m->searchScore > -10000) ++open;
    if (open < 2) {
      output().print("# forced move");
      break;
    }
    if (singlePass_) break;
  }
}

int clsEngine::acceptPercent(const kobubase::clsOptions& options) {
  const std::string& value = options.get("-proportional");
  return value.empty() ? DEFAULT_ACCEPT_PERCENT : static_cast<int>(kobubase::readClamped(value, 0, 100));
}

void clsEngine::chooseRandomMove(bool proportional) {
  PlyFrame& root = *rootFrame();
  const int count = root.moveCount;
  if (!proportional) {
    const int index = count > 0 ? static_cast<int>(kobubase::randomAbs32() % static_cast<u32>(count)) : 0;
    if (index < count) {
      setBestMove(root.first[index]);
    } else {
      Move none{};
      none.flags = mf::NOT_A_MOVE;
      setBestMove(none);
    }
    return;
  }
  orderRootForChoice();
  const u32 accept = static_cast<u32>(acceptPercent(commandOptions_));
  for (const Move* m = root.first; m < root.first + count; ++m) {
    if (kobubase::randomAbs32() % 100 <= accept && m->searchScore > -1000) {
      setBestMove(*m);
      return;
    }
  }
}

// The walk of the proportional mode starts at the search's best move and goes
// on in score order. After a stopped iteration the list still has the order
// of the iteration before, with partial scores, so it is sorted again here.
void clsEngine::orderRootForChoice() {
  PlyFrame& root = *rootFrame();
  sortRootBySearchScore();
  const Move best = bestMove();
  if (!best.isMove()) return;
  for (Move* m = root.first; m < root.end; ++m) {
    if (!m->sameMove(best)) continue;
    const Move found = *m;
    for (; m > root.first; --m) *m = m[-1];
    *root.first = found;
    return;
  }
}

}  // namespace kbuChess
