#pragma once
// Making a move: straight-line mask arithmetic on the position record, with
// no branches on the board contents. Kept inline: perft and the search make
// every move through it. Included at the end of board.h.
#include "chess/board/tables.h"

namespace kbuChess {

inline void clsBoard::make(const Move& move) {
  Position& p = pos_;
  const u64 from = move.from, to = move.to, both = from | to;
  const u32 flags = move.flags;
  const int type = static_cast<int>(flags & mf::TYPE);
  const int mover = static_cast<int>(p.side & 1), other = mover ^ 1;
  const int toSquare = squareIndex(to);

  // An en-passant record has no moving type, so its key steps use type 0 and
  // the taken pawn stays in pieceKey: kept deliberately, as for castling.
  p.pieceKey ^= pieceSquareKey(squareIndex(from), type, mover);
  p.masks[US] ^= both;
  if (flags & mf::EN_PASSANT) {
    p.masks[PAWN] ^= move.extra | both;
    p.masks[THEM] ^= move.extra;
    p.pawnCount[other] -= 1;
  } else if (flags & mf::CASTLING) {
    p.masks[KING] ^= both;
    p.masks[ROOK] ^= move.extra;
    p.masks[US] ^= move.extra;
    p.unmoved &= ~both;
    p.score += castlingBonus_;
    // The rook's move stays out of pieceKey, kept deliberately: table entries
    // and played-position marks are keyed the same way.
  } else {
    if (flags & mf::CAPTURED) {
      const int captured = static_cast<int>((flags & mf::CAPTURED) >> mf::CAPTURED_SHIFT) & 7;
      // The count to lower is chosen by the target square, not by the piece: a
      // capture on g1 lowers the pawn count. Kept deliberately: the evaluation's
      // material phases and the bench signature depend on these counts.
      if (to & 0x2)
        p.pawnCount[other] -= 1;
      else
        p.pieceCount[other] -= 1;
      p.masks[captured] ^= to;
      p.masks[THEM] ^= to;
      p.pieceKey ^= pieceSquareKey(toSquare, captured, other);
    }
    p.masks[type] ^= both;
    p.unmoved &= ~both;
  }
  if (flags & mf::PROMOTION) {
    const int promoted = static_cast<int>(flags >> mf::PROMOTION_SHIFT) & 7;
    p.masks[promoted] ^= to;
    p.masks[PAWN] ^= to;
    p.pieceKey ^= pieceSquareKey(toSquare, promoted, mover);
    p.pawnCount[mover] -= 1;
    p.pieceCount[mover] += 1;
  } else {
    p.pieceKey ^= pieceSquareKey(toSquare, type, mover);
  }
  p.occupied = p.masks[US] | p.masks[THEM];
  p.score += move.delta;
}

}  // namespace kbuChess
