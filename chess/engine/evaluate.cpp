// The static evaluation: 21 soul-weighed terms, taken after a move was made and
// before the sides are exchanged, so "own" is `us`, the side that just moved.
// Everything is mask arithmetic and popcounts; the pawn terms are cached per frame.
#include <bit>

#include "chess/board/tables.h"
#include "chess/engine/engine.h"

namespace kbuChess {

namespace {

constexpr u64 CENTRE = 0x0000003C3C000000ull;          // c4-f4, c5-f5
constexpr u64 KING_CENTRE = 0x00003C3C3C3C0000ull;     // c3-f6
constexpr u64 EDGE_RING = 0xFF818181818181FFull;       // ranks 1 and 8, files a and h
constexpr u64 KNIGHT_RIM = 0xFFE7C38181C3E7FFull;
constexpr u64 LONE_KING_EDGE = 0xE7818100008181E7ull;
constexpr u64 BISHOP_CORNER_SQUARES = 0xA5A5A5A5A5A5A5A5ull;
constexpr u64 CORNERS_H1_A8 = 0xC080000000000103ull;  // h1 g1 h2, a8 b8 a7
constexpr u64 CORNERS_A1_H8 = 0x03010000000080C0ull;  // a1 b1 a2, h8 g8 h7
constexpr u64 FILES_D_E = 0x1818181818181818ull;
constexpr u64 EVERY_RANK = 0x0101010101010101ull;  // multiplies a file byte into a file mask
constexpr u64 NOT_FILE_A = ~FILE_A;
constexpr u64 NOT_FILE_H = ~FILE_H;

// Tables over the 8-bit set of files that hold pawns (bit 7 = a-file, bit 0 = h-file).
struct FileTables {
  unsigned char islands[256];   // groups of neighbouring pawn files
  unsigned char isolated[256];  // pawn files with no pawn file beside them
};

constexpr FileTables makeFileTables() {
  FileTables t{};
  for (unsigned files = 0; files < 256; ++files) {
    t.islands[files] = static_cast<unsigned char>(std::popcount(files & ~(files >> 1)));
    t.isolated[files] = static_cast<unsigned char>(files & ~((files << 1) | (files >> 1)) & 0xFF);
  }
  return t;
}

constexpr FileTables FILE_TABLES = makeFileTables();

inline u64 towardA(u64 x) { return (x << 1) & NOT_FILE_H; }
inline u64 towardH(u64 x) { return (x >> 1) & NOT_FILE_A; }
inline u64 withSides(u64 x) { return x | towardA(x) | towardH(x); }
inline u64 fillUp(u64 x) {
  x |= x << 8;
  x |= x << 16;
  return x | (x << 32);
}
inline u64 fillDown(u64 x) {
  x |= x >> 8;
  x |= x >> 16;
  return x | (x >> 32);
}
inline unsigned fileByte(u64 x) { return static_cast<unsigned>(fillDown(x) & 0xFF); }
// Bit count: the processor's instruction where the build targets it, else a
// branch-free sum (the baseline x86-64 target has no popcount instruction).
inline int count(u64 x) {
#if defined(__POPCNT__)
  return std::popcount(x);
#else
  x -= (x >> 1) & 0x5555555555555555ull;
  x = (x & 0x3333333333333333ull) + ((x >> 2) & 0x3333333333333333ull);
  x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0Full;
  return static_cast<int>((x * 0x0101010101010101ull) >> 56);
#endif
}
// A missing king (only in test positions) reads as square 0 instead of overrunning a table.
inline int kingSquare(u64 king) { return std::countr_zero(king) & 63; }

inline int doubledPawns(u64 pawns) { return count(pawns) - count(fileByte(pawns)); }
inline int isolatedPawns(u64 pawns) { return count(pawns & (FILE_TABLES.isolated[fileByte(pawns)] * EVERY_RANK)); }
// Files around the king's file with no pawn of the king's side.
inline int bareShelterFiles(u64 king, u64 ownPawns) {
  const unsigned kingFiles = fileByte(withSides(king));
  return count(kingFiles & ~fileByte(ownPawns));
}
// The three squares ahead of a king, seen from its own side.
inline u64 kingFront(u64 king, bool white) { return withSides(white ? king << 8 : king >> 8); }

}  // namespace

// Passed pawns (9), isolated pawns (10) and doubled pawns (15), with the open
// files kept for the rook term; recomputed only when the pawns changed.
i32 clsEngine::pawnTerms(PlyFrame& f) {
  const Position& p = pos_;
  const u64 own = p.pawns() & p.us();
  const u64 opp = p.pawns() & p.them();
  const u64 key = own ^ (opp * 0x9E3779B97F4A7C15ull) ^ (p.side ? 0xC2B2AE3D27D4EB4Full : 0x165667B19E3779F9ull);
  if (key == f.pawnKey) return f.pawnScore;
  const SoulValues& w = soul_.values;
  const u64 white = p.side == WHITE ? own : opp;
  const u64 black = p.side == WHITE ? opp : own;
  const int passedWhite = count(white & ~fillDown(withSides(black) >> 8));
  const int passedBlack = count(black & ~fillUp(withSides(white) << 8));
  const int passed = p.side == WHITE ? passedWhite - passedBlack : passedBlack - passedWhite;
  f.pawnKey = key;
  f.openFiles = (~fileByte(p.pawns()) & 0xFF) * EVERY_RANK;
  f.pawnScore = w[8] * passed + w[9] * (isolatedPawns(opp) - isolatedPawns(own)) +
                w[14] * (doubledPawns(opp) - doubledPawns(own));
  return f.pawnScore;
}

// The lone-king ending (20): drive the bare king to the edge, to the corner
// that the own bishop can cover, and bring the own king next to it.
i32 clsEngine::loneKingTerm() const {
  const Position& p = pos_;
  const u64 ownPieces = p.us() & ~p.kings();
  const u64 minors = p.knights() | p.bishops();
  // Bare kings, a lone minor piece or two knights cannot mate.
  if (ownPieces == 0 || (count(ownPieces) == 1 && (ownPieces & minors)) ||
      (count(ownPieces) == 2 && (ownPieces & ~p.knights()) == 0))
    return DRAW_SCORE;
  const i32 weight = soul_.values[19];
  const u64 loneKing = p.them();
  const u64 ownKing = p.us() & p.kings();
  const u64 corners = (p.us() & p.bishops() & BISHOP_CORNER_SQUARES) ? CORNERS_H1_A8 : CORNERS_A1_H8;
  std::int64_t value = weight;
  if (loneKing & LONE_KING_EDGE) value += weight;
  if (tables.kingAttacks[kingSquare(loneKing)] & ownKing) value += weight;
  if (loneKing & corners) value += 4 * static_cast<std::int64_t>(weight);
  return static_cast<i32>(value);
}

i32 clsEngine::evaluate() {
  const Position& p = pos_;
  const u64 us = p.us();
  const u64 them = p.them();
  if ((them & ~p.kings()) == 0 && (us & p.pawns()) == 0) return loneKingTerm();

  const SoulValues& w = soul_.values;
  PlyFrame& f = frame();
  const bool white = p.side == WHITE;
  const u64 ownKing = us & p.kings();
  const u64 oppKing = them & p.kings();
  const u64 ownPawns = us & p.pawns();
  const u64 oppPawns = them & p.pawns();

  // 16: king area, own pieces beside the own king minus the opponent's.
  const u64 area = tables.kingAttacks[kingSquare(ownKing)];
  std::int64_t sum = std::int64_t{w[15]} * (count(area & us) - count(area & them));
  // 1: centre squares held by pieces other than queens.
  const u64 centre = CENTRE & ~p.queens();
  sum += w[0] * (count(centre & us) - count(centre & them));
  // 2: pawn islands, with a blocked d- or e-pawn making a split structure worse.
  if (p.pieceCount[0] + p.pieceCount[1] > 5) {
    int ownShape = FILE_TABLES.islands[fileByte(ownPawns)];
    int oppShape = FILE_TABLES.islands[fileByte(oppPawns)];
    const u64 ownBlocked = ownPawns & FILES_D_E & (white ? p.occupied >> 8 : p.occupied << 8);
    const u64 oppBlocked = oppPawns & FILES_D_E & (white ? p.occupied << 8 : p.occupied >> 8);
    if (ownShape > 1 && ownBlocked) ownShape += 2;
    if (oppShape > 1 && oppBlocked) oppShape += 2;
    sum += w[1] * (oppShape - ownShape);
  }
  // 3: mobility, the moves of this ply's current generation stage minus
  // those of the parent's current stage.
  if (f.ply > 0) sum += w[2] * (f.movesInStage - frame_[-1].movesInStage);
  // 7: minor pieces on the rim.
  const u64 rim = (p.bishops() & EDGE_RING) | (p.knights() & KNIGHT_RIM);
  sum -= w[6] * (count(rim & us) - count(rim & them));
  // 9, 10, 15: pawn structure (cached); 14: rooks on files without pawns.
  sum += pawnTerms(f);
  sum += w[13] * (count(p.rooks() & us & f.openFiles) - count(p.rooks() & them & f.openFiles));
  // 12: king shelter, files around each king without a pawn of its side.
  sum += w[11] * (bareShelterFiles(oppKing, oppPawns) - bareShelterFiles(ownKing, ownPawns));
  // 13: the own side still has pawns and the opponent has none left.
  if (ownPawns && !oppPawns) sum += w[12];
  // 18: kings that keep their castling rights.
  if (ownKing & p.unmoved) sum += w[17];
  if (oppKing & p.unmoved) sum -= w[17];
  // 19: this formula is 1 for every bishop set, so the term is always 0.
  const u32 ownBishops = static_cast<u32>(p.bishops() & us);
  const u32 oppBishops = static_cast<u32>(p.bishops() & them);
  sum += w[18] * static_cast<i32>((((ownBishops - 1) | ownBishops) & 1) - (((oppBishops - 1) | oppBishops) & 1));
  // 21: king zone, kings kept out of the centre while queens remain and pawns in front of each king.
  const bool ownQueens = (p.queens() & us) != 0;
  const bool oppQueens = (p.queens() & them) != 0;
  int zone = count(kingFront(ownKing, white) & ownPawns) - count(kingFront(oppKing, !white) & oppPawns);
  if (oppQueens && (ownKing & KING_CENTRE)) --zone;
  if (ownQueens && (oppKing & KING_CENTRE)) ++zone;
  sum += w[20] * zone;
  // 17: trade pieces when ahead, keep them when behind.
  const std::int64_t trade = std::int64_t{w[16]} * (p.pawnCount[p.side] - 2 * p.pieceCount[p.side]);
  sum += (p.score + sum <= 0) ? -trade : trade;
  return static_cast<i32>(sum);
}

}  // namespace kbuChess
