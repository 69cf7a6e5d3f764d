#pragma once
// Attack and ray tables, built once at start-up by initTables(), and the
// hash key tables shared by every board of the process.
#include <string>

#include "chess/board/types.h"

namespace kbuChess {

// Ray directions: 1-4 along ranks and files, 5-8 along diagonals; odd
// directions run toward higher bit numbers.
enum Direction : int { UP = 1, DOWN = 2, LEFT = 3, RIGHT = 4, UP_LEFT = 5, DOWN_RIGHT = 6, UP_RIGHT = 7, DOWN_LEFT = 8 };

inline constexpr u64 FILE_A = 0x8080808080808080ull;
inline constexpr u64 FILE_H = 0x0101010101010101ull;
inline constexpr u64 RANK_1 = 0x00000000000000FFull;
inline constexpr u64 RANK_2 = 0x000000000000FF00ull;
inline constexpr u64 RANK_7 = 0x00FF000000000000ull;
inline constexpr u64 RANK_8 = 0xFF00000000000000ull;

struct Tables {
  u64 knightAttacks[64];
  u64 kingAttacks[64];
  u64 pawnAttacks[2][64];  // squares a pawn of this colour on the square attacks
  u64 rays[9][64];         // [direction][square], excluding the square itself
  u64 orthogonalRays[64];  // union of directions 1-4
  u64 diagonalRays[64];    // union of directions 5-8
  u64 squares[64];         // single-bit masks
  unsigned char bitNumber[256];  // 1-based number of the one set bit of a byte
};

extern Tables tables;

// Hash keys: piece-square keys indexed ((square * 8) + type) * 2 + colour, and
// one key per side to move. Filled with random bytes once, by initTables().
extern u64 pieceSquareKeys[1024];
extern u64 sideKeys[2];

inline u64 pieceSquareKey(int square, int type, int colour) {
  return pieceSquareKeys[((square * 8) + type) * 2 + colour];
}

// Builds the attack tables and draws the keys, once per process; later calls
// do nothing. The program calls it at start-up before any thread starts.
void initTables();
// XORs a fresh set of random bytes into the key tables (initTables does it).
void mixKeyTables();

inline bool isIncreasing(int direction) { return (direction & 1) != 0; }
// The first occupied square along a ray (a non-empty blocker set).
inline u64 nearest(u64 blockers, int direction) {
  return isIncreasing(direction) ? lowestBit(blockers) : (u64{1} << (63 - std::countl_zero(blockers)));
}

// Square text: "a1".."h8" <-> single-bit mask; bad text gives 0.
u64 squareFromText(const char* text);
u64 squareFromText(const std::string& text);
std::string squareText(u64 mask);
void squareText(u64 mask, char* out);  // writes two characters

}  // namespace kbuChess
