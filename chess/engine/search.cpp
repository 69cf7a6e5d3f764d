// The search: one root iteration over a sorted root list, and below it a
// full-width negamax alpha-beta that walks the board's ply frames in a loop
// instead of recursing. Each frame keeps its node's best score; a node starts
// from the best of the frame two plies up (the same side's bound) and is cut
// off when its best reaches minus its parent's best. Positions are never
// unmade: every frame restores its own snapshot before its next move.
#include "chess/engine/engine.h"

namespace kbuChess {

namespace {

// Root moves before the first iteration: largest gain first, then the larger flags word.
std::int64_t gainKey(const Move& move) {
  return static_cast<std::int64_t>((static_cast<std::uint64_t>(static_cast<std::uint32_t>(move.delta)) << 32) |
                                   move.flags);
}

// A stable insertion sort, best first; the root list is short and must not allocate.
template <typename Key>
void sortDescending(Move* first, Move* end, Key key) {
  for (Move* m = first + 1; m < end; ++m) {
    const Move moving = *m;
    const auto value = key(moving);
    Move* hole = m;
    for (; hole > first && key(hole[-1]) < value; --hole) *hole = hole[-1];
    *hole = moving;
  }
}

constexpr u64 NODE_PUBLISH_MASK = 4095;

}  // namespace

void clsEngine::sortRootByGain() {
  sortDescending(rootFrame()->first, rootFrame()->end, gainKey);
}

void clsEngine::sortRootBySearchScore() {
  sortDescending(rootFrame()->first, rootFrame()->end, [](const Move& m) { return m.searchScore; });
}

void clsEngine::countNode() {
  if ((++nodeCount_ & NODE_PUBLISH_MASK) == 0) searchNodes_.store(nodeCount_, std::memory_order_relaxed);
  if (nodeCount_ >= nodeLimit_) stopFlag_.store(true, std::memory_order_relaxed);
}

i32 clsEngine::rootSearch(int depth, bool first) {
  frame_ = rootFrame();
  PlyFrame& root = *frame_;
  savePosition();
  root.legalMoves = 0;
  if (first) {
    // The root list holds legal moves only, so its count is the legal move count.
    if (generate(-1) == 0 || legalFilter() == 0) return root.inCheck ? MATED_AT_ROOT : 0;
    sortRootByGain();
  }
  countNode();
  root.bestScore = NO_SCORE;
  for (Move* m = root.first; m < root.end; ++m) m->searchScore = NO_SCORE;
  for (Move* m = root.first; m < root.end && !stopped(); ++m) {
    root.current = m;
    m->flags &= ~mf::REFUTED;
    if (m->flags & mf::KING_CAPTURED) {
      m->searchScore = KING_CAPTURE;
      root.bestScore = KING_CAPTURE;
      setBestMove(*m);
      return KING_CAPTURE;
    }
    i32 score = m->searchScore;
    if ((m->flags & mf::LOSING) == 0) {
      ++root.legalMoves;
      make(*m);
      finish();
      pushFrame();
      if (!stopped()) score = -nodeSearch(depth);
      popFrame();
      restorePosition();
    }
    if (stopped()) break;
    if ((m->flags & mf::REFUTED) == 0) scoreRootMove(*m, score);
    if (root.bestScore > WIN_THRESHOLD) break;
  }
  frame_ = rootFrame();
  return root.bestScore;
}

// A refuted move's score is only a bound, so it never reaches this point.
void clsEngine::scoreRootMove(Move& move, i32 score) {
  PlyFrame& root = *rootFrame();
  move.searchScore = score;
  if (score < -WIN_THRESHOLD) move.flags |= mf::LOSING;
  // Only this thread writes best_, so reading it here needs no lock.
  const bool previousBest = move.sameMove(best_);
  if (score <= root.bestScore && !previousBest) return;
  root.bestScore = score;
  if (score > best_.searchScore || previousBest) setBestMove(move);
}

void clsEngine::enterNode() {
  PlyFrame& f = *frame_;
  const PlyFrame& parent = frame_[-1];
  savePosition();
  f.bestScore = f.ply >= 2 ? frame_[-2].bestScore : NO_SCORE;
  f.legalMoves = 0;
  f.stage = 0;
  f.first = f.current = f.end = parent.end;
  f.moveCount = 0;
  generate(0);
  f.movesInStage = static_cast<i32>(f.end - f.current);
  f.lineMask = lineMask();
}

// Makes the next legal move of the node and returns it, or null when all six
// stages are exhausted. Only moves that can expose the king get the attack
// test: all of them in check, otherwise king moves, en-passant captures and
// pieces leaving the line mask.
Move* clsEngine::nextLegalMove(PlyFrame& f) {
  for (;;) {
    while (f.current >= f.end) {
      if (f.stage >= 5) {
        f.stage = 6;
        return nullptr;
      }
      generate(++f.stage);
      f.movesInStage = static_cast<i32>(f.end - f.current);
    }
    Move* move = f.current;
    make(*move);
    if (!mayExposeKing(*move, f.lineMask, f.inCheck) || !ownKingAttacked()) return move;
    restorePosition();
    ++f.current;
  }
}

// Takes a move's score into its node; true when the node must be left, either
// for a cutoff (the parent's move is then marked refuted) or for a won line.
bool clsEngine::leaveAfterScore(PlyFrame& f, i32 score) {
  f.current->searchScore = score;
  if (score <= f.bestScore) return false;
  f.bestScore = score;
  PlyFrame& parent = (&f)[-1];
  if (parent.bestScore == NO_SCORE || f.bestScore < -parent.bestScore) return score > WIN_THRESHOLD;
  parent.current->flags |= mf::REFUTED;
  return true;
}

i32 clsEngine::nodeSearch(int depth) {
  PlyFrame* const entry = frame_;
  enterNode();
  for (;;) {
    PlyFrame& f = *frame_;
    Move* move = nextLegalMove(f);
    bool leave = move == nullptr;
    if (leave) {
      // A mate scores the same at every ply, deliberately: deepening stops at the
      // first iteration that finds one, so the shortest mate is still played.
      if (f.legalMoves == 0) f.bestScore = f.inCheck ? MATED : DRAW_SCORE;
    } else {
      countNode();
      ++f.legalMoves;
      if (f.ply < depth) {
        finish();
        pushFrame();
        enterNode();
        continue;
      }
      const i32 score = pos_.score + evaluate();
      restorePosition();
      leave = leaveAfterScore(f, score);
    }
    // Unwind: hand each left node's best to its parent until a parent carries on.
    while (leave) {
      if (frame_ == entry || stopped()) {
        frame_ = entry;
        restorePosition();
        return entry->bestScore;
      }
      const i32 score = -frame_->bestScore;
      popFrame();
      restorePosition();
      leave = leaveAfterScore(*frame_, score);
    }
    ++frame_->current;
  }
}

}  // namespace kbuChess
