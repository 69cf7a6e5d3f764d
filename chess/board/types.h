#pragma once
// Basic records of the board: squares as single-bit masks, the position record
// and the twelve-word move record.
//
// Square numbering: bit = rank * 8 + (7 - file), so h1 = 0, a1 = 7, h8 = 56,
// a8 = 63; one rank up is a left shift by 8, one file toward a is a left shift by 1.
#include <bit>
#include <cstdint>

namespace kbuChess {

using u64 = std::uint64_t;
using u32 = std::uint32_t;
using i32 = std::int32_t;

enum Colour : int { WHITE = 0, BLACK = 1 };

// Type codes index the eight masks of the position: 0 and 1 are the colour masks.
enum PieceType : int { US = 0, THEM = 1, PAWN = 2, KNIGHT = 3, BISHOP = 4, ROOK = 5, QUEEN = 6, KING = 7 };

inline constexpr char PIECE_LETTERS[] = "--PNBRQK";

inline constexpr i32 PAWN_VALUE = 105;
inline constexpr i32 KNIGHT_VALUE = 303;
inline constexpr i32 BISHOP_VALUE = 303;
inline constexpr i32 ROOK_VALUE = 500;
inline constexpr i32 QUEEN_VALUE = 1000;
inline constexpr i32 KING_VALUE = 10000;

// Bits of the move record's flags word.
namespace mf {
inline constexpr u32 TYPE = 0xF;               // moving piece type, 2..7
inline constexpr u32 PAWN_GEN = 0x10;
inline constexpr u32 KNIGHT_GEN = 0x20;
inline constexpr u32 DIAGONAL = 0x40;          // diagonal slider generator
inline constexpr u32 ORTHOGONAL = 0x80;        // orthogonal slider generator
inline constexpr u32 QUEEN_GEN = 0x100;
inline constexpr u32 KING_GEN = 0x200;
inline constexpr u32 DOUBLE_PUSH = 0x400;      // sets the en-passant square
inline constexpr u32 EN_PASSANT = 0x800;
inline constexpr u32 CASTLING = 0x1000;
inline constexpr u32 NOT_A_MOVE = 0x2000;      // illegal, end marker, or empty best move
inline constexpr u32 LOSING = 0x4000;          // root move known to lose
inline constexpr u32 REFUTED = 0x8000;         // a cutoff happened below this move
inline constexpr u32 CAPTURED = 0xF0000;       // captured type, 0 if none
inline constexpr u32 PAWN_CAPTURED = 0x100000;
inline constexpr u32 KING_CAPTURED = 0x2000000;
inline constexpr u32 PROMOTION = 0xF0000000u;  // promotion type, 0 if none
inline constexpr int CAPTURED_SHIFT = 16;
inline constexpr int PROMOTION_SHIFT = 28;
}  // namespace mf

// The position record. Colour masks are relative: `us` is always the side to
// move; after every move us/them are exchanged, side flips, score is negated.
struct Position {
  u64 masks[8];    // [US], [THEM], then pawns, knights, bishops, rooks, queens, kings
  u64 unmoved;     // home squares of kings and rooks still carrying castling rights
  u64 epSquare;    // square passed over by a double pawn advance, or 0
  u64 occupied;    // us | them
  u64 pieceKey;    // incremental piece-square hash
  u32 side;        // colour to move
  i32 score;       // incremental material and placement, side to move's view
  i32 pieceCount[2];  // per colour, pieces other than pawns (king included)
  i32 pawnCount[2];

  u64 us() const { return masks[US]; }
  u64 them() const { return masks[THEM]; }
  u64 pawns() const { return masks[PAWN]; }
  u64 knights() const { return masks[KNIGHT]; }
  u64 bishops() const { return masks[BISHOP]; }
  u64 rooks() const { return masks[ROOK]; }
  u64 queens() const { return masks[QUEEN]; }
  u64 kings() const { return masks[KING]; }
  // Pieces of an absolute colour.
  u64 colour(int c) const { return masks[static_cast<u32>(c) == side ? US : THEM]; }
};

// A generated move: twelve 32-bit words.
//   words 0-1 from mask, 2-3 to mask, 4 flags, 5 score change,
//   6-7 extra mask (en passant: captured pawn; castling: rook from|to),
//   8-11 ordering data; word 10 is the move's search score.
struct Move {
  u64 from;
  u64 to;
  u32 flags;
  i32 delta;
  u64 extra;
  u32 order[2];
  i32 searchScore;
  u32 spare;

  int movingType() const { return static_cast<int>(flags & mf::TYPE); }
  int capturedType() const { return static_cast<int>((flags & mf::CAPTURED) >> mf::CAPTURED_SHIFT); }
  int promotionType() const { return static_cast<int>(flags >> mf::PROMOTION_SHIFT); }
  bool isCapture() const { return (flags & mf::CAPTURED) != 0; }
  bool isPromotion() const { return (flags & mf::PROMOTION) != 0; }
  bool isMove() const { return (flags & mf::NOT_A_MOVE) == 0; }
  // Same squares and the same flags, apart from the search's marks.
  bool sameMove(const Move& other) const {
    constexpr u32 marks = mf::LOSING | mf::REFUTED;
    return from == other.from && to == other.to && (flags & ~marks) == (other.flags & ~marks);
  }
};
static_assert(sizeof(Move) == 48, "the move record is twelve 32-bit words");

inline int squareIndex(u64 mask) { return std::countr_zero(mask); }
inline u64 squareMask(int index) { return u64{1} << index; }
inline u64 lowestBit(u64 mask) { return mask & (~mask + 1); }

}  // namespace kbuChess
