#pragma once
// The book key: a fixed hash of the position record. Unlike the per-run
// position key its constants never change, so book files stay valid between
// runs; the constants and the order of the words are part of the file format.
#include "chess/board/types.h"

namespace kbuChess {

inline constexpr u64 BOOK_KEY_A = 0xA10E014701010401ull;
inline constexpr u64 BOOK_KEY_B = 0x00002C070202CDE2ull;

// Feeds kings, queens, rooks, bishops, knights, pawns, side (sign-extended),
// us and (epSquare - unmoved) through a chain of xorshift128+ steps; the
// accumulated sums XOR the occupancy are the key.
inline u64 bookKey(const Position& p) {
  const u64 words[9] = {p.kings(),  p.queens(), p.rooks(),
                        p.bishops(), p.knights(), p.pawns(),
                        static_cast<u64>(static_cast<std::int64_t>(static_cast<i32>(p.side))),
                        p.us(),     p.epSquare - p.unmoved};
  u64 a = BOOK_KEY_A, b = BOOK_KEY_B, accumulator = 0;
  for (u64 word : words) {
    u64 x = a ^ word;
    const u64 y = b;
    a = y;
    x ^= x << 23;
    b = x ^ y ^ (x >> 17) ^ (y >> 26);
    accumulator ^= b + y;
  }
  return accumulator ^ p.occupied;
}

}  // namespace kbuChess
