#include "chess/board/game_state.h"

#include "chess/board/tables.h"

namespace kbuChess {
namespace {

// a1 (bit 7) is dark: a square is dark when its file and rank indices have an even sum.
constexpr u64 darkSquares() {
  u64 mask = 0;
  for (int bit = 0; bit < 64; ++bit) {
    const int rank = bit / 8, file = 7 - bit % 8;
    if ((rank + file) % 2 == 0) mask |= u64{1} << bit;
  }
  return mask;
}
constexpr u64 DARK_SQUARES = darkSquares();

// splitmix64 finaliser.
constexpr u64 mix(u64 x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

}  // namespace

bool insufficientMaterial(const Position& pos) {
  if (pos.pawns() | pos.rooks() | pos.queens()) return false;
  const u64 minors = pos.knights() | pos.bishops();
  if ((minors & (minors - 1)) == 0) return true;  // none or one
  if (pos.knights()) return false;
  return (pos.bishops() & DARK_SQUARES) == 0 || (pos.bishops() & ~DARK_SQUARES) == 0;
}

GameEnd gameEnd(clsBoard& board) {
  if (board.generateLegal() == 0) return board.ownKingAttacked() ? GameEnd::Mate : GameEnd::Stalemate;
  if (board.halfMoveClock() >= 100) return GameEnd::FiftyMoves;
  if (insufficientMaterial(board.position())) return GameEnd::InsufficientMaterial;
  return GameEnd::None;
}

u64 repetitionKey(const Position& pos) {
  u64 ep = 0;
  if (pos.epSquare) {
    const u64 takers = tables.pawnAttacks[(pos.side & 1) ^ 1][squareIndex(pos.epSquare)];
    if (takers & pos.pawns() & pos.us()) ep = pos.epSquare;
  }
  u64 key = mix(pos.side & 1);
  key = mix(key ^ pos.colour(WHITE));
  key = mix(key ^ pos.colour(BLACK));
  for (int type = PAWN; type <= KING; ++type) key = mix(key ^ pos.masks[type] ^ static_cast<u64>(type));
  key = mix(key ^ pos.unmoved);
  return mix(key ^ ep);
}

bool playCoordinateMove(clsBoard& board, std::string_view text, std::string& san) {
  const Move* found = board.findCoordinateMove(text);
  if (found == nullptr) return false;
  const Move move = *found;
  san = board.sanText(move);
  board.playRecord(move);
  return true;
}

}  // namespace kbuChess
