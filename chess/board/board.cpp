#include "chess/board/board.h"

#include "chess/board/tables.h"

namespace kbuChess {

clsBoard::clsBoard() {
  initTables();
  readFEN(START_FEN);
}

// The subtraction and the extra XOR of the occupancy are kept deliberately:
// table entries and the marks of played positions are made with this formula.
u64 clsBoard::positionKey() const {
  return (pos_.epSquare - pos_.unmoved) ^ sideKeys[pos_.side & 1] ^ pos_.pieceKey ^ pos_.occupied;
}

u64 clsBoard::computePieceKey() const {
  u64 key = 0;
  for (int colour = WHITE; colour <= BLACK; ++colour) {
    const u64 own = pos_.colour(colour);
    for (int type = PAWN; type <= KING; ++type)
      for (u64 pieces = pos_.masks[type] & own; pieces; pieces &= pieces - 1)
        key ^= pieceSquareKey(squareIndex(pieces), type, colour);
  }
  return key;
}

void clsBoard::setGamePosition(const GamePosition& game) {
  pos_ = game.position;
  halfMoveClock_ = game.halfMoveClock;
  fullMoveNumber_ = game.fullMoveNumber;
  resetFrames();
}

void clsBoard::resetFrames() {
  const u32 rootSide = pos_.side & 1;
  for (int i = 0; i < FRAME_COUNT; ++i) {
    PlyFrame& f = frames_[i];
    f = PlyFrame{};
    f.ply = i;
    f.sign = (i % 2 == 0) ? -1 : 1;
    f.bestScore = -200000;
    const u32 mover = rootSide ^ static_cast<u32>(i & 1);
    f.colourMask[mover] = ~u64{0};
    f.colourMask[mover ^ 1] = 0;
  }
  frame_ = frames_;
  frame_->first = frame_->current = frame_->end = moveBuffer_;
  write_ = moveBuffer_;
  savePosition();
}

void clsBoard::savePosition() {
  frame_->saved = pos_;
  if (frame_ != frames_) return;  // the last-move record is only read at the root
  lastMove_ = Move{};
  const u64 ep = pos_.epSquare;
  if (ep == 0) return;
  // Seen from the side to move, the opponent's pawn came from one rank beyond
  // the en-passant square and stands one rank short of it.
  const bool whiteToMove = pos_.side == WHITE;
  lastMove_.flags = mf::DOUBLE_PUSH;
  lastMove_.extra = ep;
  lastMove_.from = whiteToMove ? ep << 8 : ep >> 8;
  lastMove_.to = whiteToMove ? ep >> 8 : ep << 8;
}

}  // namespace kbuChess
