// Making moves, attack tests, the legal filter and playing a move for real.
#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace kbuChess {

bool clsBoard::squareAttacked(u64 square) const {
  if (square == 0) return false;
  const Position& p = pos_;
  const int s = squareIndex(square);
  const u64 them = p.them();
  if ((tables.knightAttacks[s] & p.knights() & them) || (tables.pawnAttacks[p.side & 1][s] & p.pawns() & them) ||
      (tables.kingAttacks[s] & p.kings() & them))
    return true;
  const u64 occupied = p.occupied;
  const u64 diagonal = (p.bishops() | p.queens()) & them;
  if (diagonal & tables.diagonalRays[s]) {
    for (int d = UP_LEFT; d <= DOWN_LEFT; ++d) {
      const u64 ray = tables.rays[d][s];
      if ((ray & diagonal) && (nearest(ray & occupied, d) & diagonal)) return true;
    }
  }
  const u64 orthogonal = (p.rooks() | p.queens()) & them;
  if (orthogonal & tables.orthogonalRays[s]) {
    for (int d = UP; d <= RIGHT; ++d) {
      const u64 ray = tables.rays[d][s];
      if ((ray & orthogonal) && (nearest(ray & occupied, d) & orthogonal)) return true;
    }
  }
  return false;
}

u64 clsBoard::lineMask() const {
  const u64 king = pos_.kings() & pos_.us();
  if (king == 0) return 0;
  const int s = squareIndex(king);
  const u64 them = pos_.them();
  const u64 diagonal = (pos_.bishops() | pos_.queens()) & them;
  const u64 orthogonal = (pos_.rooks() | pos_.queens()) & them;
  u64 mask = 0;
  if (diagonal & tables.diagonalRays[s])
    for (int d = UP_LEFT; d <= DOWN_LEFT; ++d)
      if (tables.rays[d][s] & diagonal) mask |= tables.rays[d][s];
  if (orthogonal & tables.orthogonalRays[s])
    for (int d = UP; d <= RIGHT; ++d)
      if (tables.rays[d][s] & orthogonal) mask |= tables.rays[d][s];
  return mask;
}

int clsBoard::legalFilter() {
  PlyFrame& f = *frame_;
  Move* kept = f.first;
  for (Move* m = f.first; m < f.end; ++m) {
    make(*m);
    const bool illegal = ownKingAttacked();
    pos_ = f.saved;
    if (illegal)
      m->flags |= mf::NOT_A_MOVE;
    else
      *kept++ = *m;
  }
  f.end = kept;
  f.current = f.first;
  f.moveCount = static_cast<i32>(kept - f.first);
  kept->flags = mf::NOT_A_MOVE;
  return f.moveCount;
}

int clsBoard::generateLegal() {
  savePosition();
  generate(-1);
  return legalFilter();
}

namespace {
u32 promotionNibble(char letter) {
  switch (letter) {
    case 'B': case 'S': case 'b': case 's': return 0x40000000;
    case 'M': case 'Q': case 'm': case 'q': return 0x60000000;
    case 'N': case 'n': return 0x30000000;
    case 'R': case 'r': return 0x50000000;
    default: return 0;
  }
}
}  // namespace

const Move* clsBoard::findLegalMove(u64 from, u64 to, char promotion) {
  savePosition();
  if (generate(-1) == 0 || legalFilter() == 0) return nullptr;
  const u32 nibble = promotionNibble(promotion);
  for (const Move* m = frame_->first; m < frame_->end; ++m) {
    if (m->from == from && m->to == to && (m->flags & mf::PROMOTION) == nibble && m->isMove()) return m;
  }
  return nullptr;
}

bool clsBoard::playMove(u64 from, u64 to, char promotion) {
  const Move* found = findLegalMove(from, to, promotion);
  if (found == nullptr) return false;
  const Move chosen = *found;
  playRecord(chosen);
  return true;
}

void clsBoard::playRecord(const Move& move) {
  const bool pawnMoveOrCapture = move.movingType() == PAWN || move.isCapture();
  if (pos_.side == BLACK) ++fullMoveNumber_;
  halfMoveClock_ = pawnMoveOrCapture ? 0 : halfMoveClock_ + 1;
  makePlayed(move);
  savePosition();
}

void clsBoard::makePlayed(const Move& move) {
  make(move);
  pos_.epSquare = 0;
  if (move.flags & mf::DOUBLE_PUSH) pos_.epSquare = pos_.side == WHITE ? move.to >> 8 : move.to << 8;
  finish();
}

}  // namespace kbuChess
