// Perft and divide: the leaf count of the legal move tree, made move by move
// with the same generator, make and legality test that the search uses.
#include "chess/board/board.h"

namespace kbuChess {

u64 clsBoard::perft(int depth, bool divide) {
  nodes_ = 0;
  perftStop_ = false;
  perftCountdown_ = PERFT_POLL_NODES;
  resetFrames();
  if (depth < 1) return 0;
  maxDepth_ = depth < 128 ? depth : 128;
  divide_ = divide;
  const u64 count = perftNode(depth - 1);
  nodes_ = count;
  return count;
}

// Counts the leaves `remaining` plies below the current frame's moves. Every
// move is made; only those that could expose the own king get the attack test.
// A move that captures a king can only come from an illegal position: the
// count is then all ones.
u64 clsBoard::perftNode(int remaining) {
  if (remaining > 0 && --perftCountdown_ == 0) {
    perftCountdown_ = PERFT_POLL_NODES;
    if (perftPoll && perftPoll()) perftStop_ = true;
  }
  savePosition();
  generate(-1);
  PlyFrame& f = *frame_;
  const u64 lines = lineMask();
  u64 count = 0;
  for (Move* m = f.first; m < f.end; ++m) {
    if (m->flags & mf::KING_CAPTURED) return KING_CAPTURE_COUNT;
    make(*m);
    if (mayExposeKing(*m, lines, f.inCheck) && ownKingAttacked()) {
      m->flags |= mf::NOT_A_MOVE;
      pos_ = f.saved;
      continue;
    }
    if (remaining > 0) {
      f.current = m;
      finish();
      pushFrame();
      const u64 child = perftNode(remaining - 1);
      popFrame();
      count += child;
      if (perftStop_) {
        pos_ = f.saved;
        return count;
      }
      if (frame_ == frames_) {
        if (divide_) output_.print(moveText(m, true) + " " + std::to_string(child));
        if (perftRootDone) perftRootDone(*m, child);
      }
    } else {
      ++count;
    }
    pos_ = f.saved;
  }
  return count;
}

}  // namespace kbuChess
