// Pseudo-legal move generation into the current frame's slice of the move
// buffer, all at once (stage -1) or in six stages, captures first.
#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace kbuChess {
namespace {

// Generator templates: moving type | generator bit.
constexpr u32 PAWN_TEMPLATE = 0x12;
constexpr u32 KNIGHT_TEMPLATE = 0x23;
constexpr u32 BISHOP_TEMPLATE = 0x44;
constexpr u32 ROOK_TEMPLATE = 0x85;
constexpr u32 QUEEN_TEMPLATE = 0x106;
constexpr u32 KING_TEMPLATE = 0x207;
constexpr u32 CASTLING_FLAGS = 0x1007;
constexpr u32 EN_PASSANT_FLAGS = 0x120800;

// Captured-piece bits and values, by captured type.
constexpr u32 CAPTURE_BITS[8] = {0, 0, 0x120000, 0x230000, 0x440000, 0x850000, 0x1060000, 0x2070000};
constexpr i32 CAPTURE_VALUE[8] = {0, 0, PAWN_VALUE, KNIGHT_VALUE, BISHOP_VALUE, ROOK_VALUE, QUEEN_VALUE, KING_VALUE};

// Promotion records in generation order: flags and the gain ORed into word 5.
struct Promotion {
  u32 flags;
  i32 gain;
};
constexpr Promotion QUEEN_PROMOTION = {0x60000000, 0x37F};
constexpr Promotion UNDER_PROMOTIONS[3] = {{0x30000000, 0xC6}, {0x40000000, 0xC6}, {0x50000000, 0x18B}};

// Castling squares of White; Black's are these shifted up 56 bits.
constexpr u64 CASTLING_HOMES = 0x89;  // a1 | e1 | h1
constexpr u64 KING_HOME = 0x08;       // e1
constexpr u64 SHORT_ROOK = 0x01, SHORT_BETWEEN = 0x06, SHORT_PASS = 0x04, SHORT_TARGET = 0x02;
constexpr u64 LONG_ROOK = 0x80, LONG_BETWEEN = 0x70, LONG_PASS = 0x10, LONG_TARGET = 0x20;

// The move groups in the order of one all-at-once generation.
enum Group {
  PAWN_CAPTURES, KNIGHT_CAPTURES, BISHOP_CAPTURES, ROOK_CAPTURES, QUEEN_ORTHOGONAL_CAPTURES,
  QUEEN_DIAGONAL_CAPTURES, KING_CAPTURES, KNIGHT_QUIET, BISHOP_QUIET, ROOK_QUIET, QUEEN_ORTHOGONAL_QUIET,
  QUEEN_DIAGONAL_QUIET, KING_QUIET, PAWN_PUSHES, CASTLING_MOVES, GROUP_END = -1
};

constexpr Group ALL_GROUPS[] = {PAWN_CAPTURES, KNIGHT_CAPTURES, BISHOP_CAPTURES, ROOK_CAPTURES,
                                QUEEN_ORTHOGONAL_CAPTURES, QUEEN_DIAGONAL_CAPTURES, KING_CAPTURES,
                                KNIGHT_QUIET, BISHOP_QUIET, ROOK_QUIET, QUEEN_ORTHOGONAL_QUIET,
                                QUEEN_DIAGONAL_QUIET, KING_QUIET, PAWN_PUSHES, CASTLING_MOVES, GROUP_END};
// Stage 5 puts the pawn pushes before the king's quiet moves.
constexpr Group STAGE_GROUPS[6][4] = {
    {PAWN_CAPTURES, GROUP_END},
    {KNIGHT_CAPTURES, BISHOP_CAPTURES, GROUP_END},
    {ROOK_CAPTURES, GROUP_END},
    {QUEEN_ORTHOGONAL_CAPTURES, QUEEN_DIAGONAL_CAPTURES, KING_CAPTURES, GROUP_END},
    {KNIGHT_QUIET, BISHOP_QUIET, ROOK_QUIET, GROUP_END},
    {QUEEN_ORTHOGONAL_QUIET, QUEEN_DIAGONAL_QUIET, GROUP_END},
};

int capturedTypeAt(const Position& pos, u64 square) {
  if (pos.pawns() & square) return PAWN;
  if (pos.knights() & square) return KNIGHT;
  if (pos.bishops() & square) return BISHOP;
  if (pos.rooks() & square) return ROOK;
  if (pos.queens() & square) return QUEEN;
  return KING;
}

}  // namespace

int clsBoard::generate(int stage) {
  PlyFrame& f = *frame_;
  if (stage == -1) f.end = f.first;
  if (stage <= 0) prepareCheckInfo();
  write_ = f.end;
  Move* const start = write_;
  if (stage == -1) {
    for (const Group* g = ALL_GROUPS; *g != GROUP_END; ++g) generateGroup(*g);
  } else if (stage >= 0 && stage <= 5) {
    for (const Group* g = STAGE_GROUPS[stage]; *g != GROUP_END; ++g) generateGroup(*g);
    // Stage 5 puts pawn pushes before king moves, the reverse of stage -1:
    // kept deliberately, the search's move order and its signature depend on it.
    if (stage == 5) {
      generateGroup(PAWN_PUSHES);
      generateGroup(KING_QUIET);
      generateGroup(CASTLING_MOVES);
    }
  }
  f.current = start;
  f.end = write_;
  f.moveCount = static_cast<i32>(write_ - f.first);
  write_->flags = mf::NOT_A_MOVE;
  return f.moveCount;
}

void clsBoard::prepareCheckInfo() {
  frame_->kingMask = pos_.kings() & pos_.us();
  frame_->inCheck = squareAttacked(frame_->kingMask);
}

void clsBoard::generateGroup(int group) {
  const u64 us = pos_.us();
  switch (group) {
    case PAWN_CAPTURES: pawnCaptures(); enPassantCaptures(); break;
    case KNIGHT_CAPTURES: template_ = KNIGHT_TEMPLATE; leaperMoves(tables.knightAttacks, pos_.knights() & us, true); break;
    case BISHOP_CAPTURES: template_ = BISHOP_TEMPLATE; sliderMoves(UP_LEFT, pos_.bishops() & us, true); break;
    case ROOK_CAPTURES: template_ = ROOK_TEMPLATE; sliderMoves(UP, pos_.rooks() & us, true); break;
    case QUEEN_ORTHOGONAL_CAPTURES: template_ = QUEEN_TEMPLATE; sliderMoves(UP, pos_.queens() & us, true); break;
    case QUEEN_DIAGONAL_CAPTURES: template_ = QUEEN_TEMPLATE; sliderMoves(UP_LEFT, pos_.queens() & us, true); break;
    case KING_CAPTURES: template_ = KING_TEMPLATE; leaperMoves(tables.kingAttacks, pos_.kings() & us, true); break;
    case KNIGHT_QUIET: template_ = KNIGHT_TEMPLATE; leaperMoves(tables.knightAttacks, pos_.knights() & us, false); break;
    case BISHOP_QUIET: template_ = BISHOP_TEMPLATE; sliderMoves(UP_LEFT, pos_.bishops() & us, false); break;
    case ROOK_QUIET: template_ = ROOK_TEMPLATE; sliderMoves(UP, pos_.rooks() & us, false); break;
    case QUEEN_ORTHOGONAL_QUIET: template_ = QUEEN_TEMPLATE; sliderMoves(UP, pos_.queens() & us, false); break;
    case QUEEN_DIAGONAL_QUIET: template_ = QUEEN_TEMPLATE; sliderMoves(UP_LEFT, pos_.queens() & us, false); break;
    case KING_QUIET: template_ = KING_TEMPLATE; leaperMoves(tables.kingAttacks, pos_.kings() & us, false); break;
    case PAWN_PUSHES: pawnPushes(); break;
    case CASTLING_MOVES: castlingMoves(); break;
    default: break;
  }
}

void clsBoard::addMove(u64 from, u64 to) {
  Move* m = write_++;
  m->from = from;
  m->to = to;
  m->flags = template_;
  m->delta = 0;
  m->extra = 0;
}

void clsBoard::addCapture(u64 from, u64 to) {
  const int captured = capturedTypeAt(pos_, to);
  Move* m = write_++;
  m->from = from;
  m->to = to;
  m->flags = template_ | CAPTURE_BITS[captured];
  m->delta = CAPTURE_VALUE[captured];
  m->extra = 0;
}

// Turns the pawn move just written into a queen promotion, followed by the
// knight, bishop and rook promotions. The gain is ORed, not added, into the
// score change of a capture: kept deliberately, the move ordering, the
// incremental score and the bench signature all follow from it.
void clsBoard::addPromotions(Move* record) {
  const Move base = *record;
  record->flags |= QUEEN_PROMOTION.flags;
  record->delta |= QUEEN_PROMOTION.gain;
  for (const Promotion& p : UNDER_PROMOTIONS) {
    Move* m = write_++;
    *m = base;
    m->flags |= p.flags;
    m->delta |= p.gain;
  }
}

void clsBoard::pawnCaptures() {
  template_ = PAWN_TEMPLATE;
  const u64 pawns = pos_.pawns() & pos_.us(), them = pos_.them();
  const bool white = pos_.side == WHITE;
  const u64 lastRank = white ? RANK_8 : RANK_1;
  // Toward the a-file, then toward the h-file; the masks drop wrapped squares.
  const u64 targets[2] = {white ? (pawns << 9) & ~FILE_H & them : (pawns >> 7) & ~FILE_H & them,
                          white ? (pawns << 7) & ~FILE_A & them : (pawns >> 9) & ~FILE_A & them};
  const int back[2] = {white ? 9 : -7, white ? 7 : -9};
  for (int side = 0; side < 2; ++side) {
    for (u64 t = targets[side]; t; t &= t - 1) {
      const u64 to = lowestBit(t);
      const u64 from = back[side] > 0 ? to >> back[side] : to << -back[side];
      addCapture(from, to);
      if (to & lastRank) addPromotions(write_ - 1);
    }
  }
}

// En-passant captures are found from the move that led here: the parent
// frame's current move, or at the root the last-move record.
void clsBoard::enPassantCaptures() {
  const Move& previous = (frame_ == frames_) ? lastMove_ : *(frame_ - 1)->current;
  if ((previous.flags & mf::DOUBLE_PUSH) == 0) return;
  const u64 advanced = previous.to;
  if ((advanced & pos_.pawns() & pos_.them()) == 0) return;  // nothing to take
  const u64 passed = ((previous.from << 8) & (previous.to >> 8)) | ((previous.from >> 8) & (previous.to << 8));
  const u64 beside = (((advanced << 1) & ~FILE_H) | ((advanced >> 1) & ~FILE_A)) & pos_.pawns() & pos_.us();
  for (u64 b = beside; b; b &= b - 1) {
    Move* m = write_++;
    m->from = lowestBit(b);
    m->to = passed;
    m->flags = EN_PASSANT_FLAGS;
    m->delta = PAWN_VALUE;
    m->extra = advanced;
  }
}

void clsBoard::pawnPushes() {
  template_ = PAWN_TEMPLATE;
  const u64 pawns = pos_.pawns() & pos_.us(), empty = ~pos_.occupied;
  const bool white = pos_.side == WHITE;
  const u64 single = (white ? pawns << 8 : pawns >> 8) & empty;
  const u64 lastRank = white ? RANK_8 : RANK_1;
  for (u64 t = single; t; t &= t - 1) {
    const u64 to = lowestBit(t);
    addMove(white ? to >> 8 : to << 8, to);
    if (to & lastRank) addPromotions(write_ - 1);
  }
  const u64 thirdRank = white ? (RANK_2 << 8) : (RANK_7 >> 8);
  const u64 doubles = (white ? (single & thirdRank) << 8 : (single & thirdRank) >> 8) & empty;
  template_ = PAWN_TEMPLATE | mf::DOUBLE_PUSH;
  for (u64 t = doubles; t; t &= t - 1) {
    const u64 to = lowestBit(t);
    addMove(white ? to >> 16 : to << 16, to);
  }
}

void clsBoard::leaperMoves(const u64* attacks, u64 pieces, bool captures) {
  const u64 allowed = captures ? pos_.them() : ~pos_.occupied;
  for (; pieces; pieces &= pieces - 1) {
    const u64 from = lowestBit(pieces);
    for (u64 t = attacks[squareIndex(from)] & allowed; t; t &= t - 1) {
      if (captures)
        addCapture(from, lowestBit(t));
      else
        addMove(from, lowestBit(t));
    }
  }
}

// Four rays from firstDirection on: each gives at most one capture (its first
// occupied square, when it is the opponent's) and the empty squares before it.
void clsBoard::sliderMoves(int firstDirection, u64 pieces, bool captures) {
  const u64 occupied = pos_.occupied, them = pos_.them();
  for (; pieces; pieces &= pieces - 1) {
    const u64 from = lowestBit(pieces);
    const int square = squareIndex(from);
    for (int d = firstDirection; d < firstDirection + 4; ++d) {
      const u64 ray = tables.rays[d][square];
      const u64 blockers = ray & occupied;
      if (captures) {
        if (blockers) {
          const u64 blocker = nearest(blockers, d);
          if (blocker & them) addCapture(from, blocker);
        }
        continue;
      }
      u64 quiet = ray;
      if (blockers) {
        const u64 blocker = nearest(blockers, d);
        quiet &= ~(tables.rays[d][squareIndex(blocker)] | blocker);
      }
      for (; quiet; quiet &= quiet - 1) addMove(from, lowestBit(quiet));
    }
  }
}

void clsBoard::castlingMoves() {
  const int shift = pos_.side == WHITE ? 0 : 56;
  const u64 unmoved = pos_.unmoved, us = pos_.us(), occupied = pos_.occupied;
  if ((unmoved & ((CASTLING_HOMES) | (CASTLING_HOMES << 56))) == 0) return;
  const u64 king = KING_HOME << shift;
  if ((pos_.kings() & us & king & unmoved) == 0 || frame_->inCheck) return;
  auto add = [&](u64 to, u64 rookSquares) {
    Move* m = write_++;
    m->from = king;
    m->to = to;
    m->flags = CASTLING_FLAGS;
    m->delta = 0;
    m->extra = rookSquares;
  };
  const u64 shortRook = SHORT_ROOK << shift, longRook = LONG_ROOK << shift;
  if ((us & shortRook & unmoved) && !(occupied & (SHORT_BETWEEN << shift)) && !squareAttacked(SHORT_PASS << shift))
    add(SHORT_TARGET << shift, shortRook | (SHORT_PASS << shift));
  if ((us & longRook & unmoved) && !(occupied & (LONG_BETWEEN << shift)) && !squareAttacked(LONG_PASS << shift))
    add(LONG_TARGET << shift, longRook | (LONG_PASS << shift));
}

}  // namespace kbuChess
