#include "chess/board/tables.h"

#include <mutex>

#include "base/random.h"

namespace kbuChess {

Tables tables;
u64 pieceSquareKeys[1024];
u64 sideKeys[2];

namespace {

// Rank and file steps of the eight directions, in direction order 1..8.
// A file step of +1 means toward the a-file (a higher bit number).
constexpr int RANK_STEP[9] = {0, 1, -1, 0, 0, 1, -1, 1, -1};
constexpr int FILE_STEP[9] = {0, 0, 0, 1, -1, 1, -1, -1, 1};

bool onBoard(int rank, int fileBit) { return rank >= 0 && rank < 8 && fileBit >= 0 && fileBit < 8; }

// Squares reached by the given (rank, fileBit) offsets from a square.
u64 leaperTargets(int square, const int (*offsets)[2], int count) {
  u64 targets = 0;
  const int rank = square / 8, fileBit = square % 8;
  for (int i = 0; i < count; ++i) {
    const int r = rank + offsets[i][0], f = fileBit + offsets[i][1];
    if (onBoard(r, f)) targets |= squareMask(r * 8 + f);
  }
  return targets;
}

void buildRays(int square) {
  const int rank = square / 8, fileBit = square % 8;
  for (int d = 1; d <= 8; ++d) {
    u64 ray = 0;
    for (int r = rank + RANK_STEP[d], f = fileBit + FILE_STEP[d]; onBoard(r, f); r += RANK_STEP[d], f += FILE_STEP[d])
      ray |= squareMask(r * 8 + f);
    tables.rays[d][square] = ray;
  }
  tables.orthogonalRays[square] = tables.rays[1][square] | tables.rays[2][square] | tables.rays[3][square] |
                                  tables.rays[4][square];
  tables.diagonalRays[square] = tables.rays[5][square] | tables.rays[6][square] | tables.rays[7][square] |
                                tables.rays[8][square];
}

}  // namespace

namespace {

void buildTables() {
  static const int knight[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
  static const int king[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
  static const int whitePawn[2][2] = {{1, 1}, {1, -1}};
  static const int blackPawn[2][2] = {{-1, 1}, {-1, -1}};
  for (int square = 0; square < 64; ++square) {
    tables.squares[square] = squareMask(square);
    tables.knightAttacks[square] = leaperTargets(square, knight, 8);
    tables.kingAttacks[square] = leaperTargets(square, king, 8);
    tables.pawnAttacks[WHITE][square] = leaperTargets(square, whitePawn, 2);
    tables.pawnAttacks[BLACK][square] = leaperTargets(square, blackPawn, 2);
    buildRays(square);
  }
  tables.bitNumber[0] = 0;
  for (int byte = 1; byte < 256; ++byte) tables.bitNumber[byte] = 0;
  for (int bit = 0; bit < 8; ++bit) tables.bitNumber[1 << bit] = static_cast<unsigned char>(bit + 1);
}

}  // namespace

void initTables() {
  // Once per process: keys that changed in the middle of a game would make
  // equal positions look different, and every board reads these tables
  // without a lock.
  static std::once_flag built;
  std::call_once(built, [] {
    buildTables();
    mixKeyTables();
  });
}

void mixKeyTables() {
  auto mix = [](u64* keys, int count) {
    auto* bytes = reinterpret_cast<unsigned char*>(keys);
    for (int i = 0; i < count * 8; ++i) bytes[i] ^= static_cast<unsigned char>(kobubase::randomAbs32() % 256);
  };
  mix(pieceSquareKeys, 1024);
  mix(sideKeys, 2);
}

u64 squareFromText(const char* text) {
  if (!text || text[0] < 'a' || text[0] > 'h' || text[1] < '1' || text[1] > '8') return 0;
  return squareMask((text[1] - '1') * 8 + (7 - (text[0] - 'a')));
}

u64 squareFromText(const std::string& text) { return text.size() < 2 ? 0 : squareFromText(text.c_str()); }

void squareText(u64 mask, char* out) {
  const int bit = squareIndex(mask);
  out[0] = static_cast<char>('a' + 7 - bit % 8);
  out[1] = static_cast<char>('1' + bit / 8);
}

std::string squareText(u64 mask) {
  if (mask == 0) return "--";
  char text[2];
  squareText(mask, text);
  return std::string(text, 2);
}

}  // namespace kbuChess
