// FEN reading and writing, and the board as text.
#include <cstdio>
#include <cstdlib>

#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace kbuChess {
namespace {

// Piece type of a FEN letter, upper or lower case; 'M' and 'S' are accepted as
// queen and bishop, deliberately, for files that use those letters. 0 for
// anything else.
int typeOfLetter(char c) {
  switch (c | 0x20) {
    case 'k': return KING;
    case 'q': case 'm': return QUEEN;
    case 'r': return ROOK;
    case 'b': case 's': return BISHOP;
    case 'n': return KNIGHT;
    case 'p': return PAWN;
    default: return 0;
  }
}

// Type order used when naming the piece on a square.
constexpr int NAMING_ORDER[6] = {PAWN, KNIGHT, QUEEN, BISHOP, ROOK, KING};

std::string_view nextToken(std::string_view text, std::size_t& at) {
  while (at < text.size() && text[at] == ' ') ++at;
  const std::size_t start = at;
  while (at < text.size() && text[at] != ' ') ++at;
  return text.substr(start, at - start);
}

i32 parseLeadingInt(std::string_view token) {
  i32 value = 0;
  for (char c : token) {
    if (c < '0' || c > '9') break;
    value = value * 10 + (c - '0');
    if (value > 100000000) break;
  }
  return value;
}

}  // namespace

void clsBoard::readFEN(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);  // blanks before the board
  if (text.empty()) text = START_FEN;
  for (u64& mask : pos_.masks) mask = 0;
  pos_.unmoved = pos_.epSquare = pos_.occupied = pos_.pieceKey = 0;
  pos_.score = 0;
  pos_.side = WHITE;

  // Board field: a cursor walks from a8 (bit 63) down to h1 (bit 0). White
  // pieces go into `us` for now; every character takes one square.
  int cursor = 63;
  std::size_t last = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    last = i;
    if (c == ' ') break;
    if (c >= '2' && c <= '8') {
      cursor -= c - '1';
    } else if (c == '/') {
      ++cursor;
    } else if (int type = typeOfLetter(c); type != 0 && cursor >= 0) {
      const u64 square = squareMask(cursor);
      pos_.masks[type] |= square;
      pos_.masks[(c >= 'a') ? THEM : US] |= square;
    }
    if (--cursor < 0) break;
  }

  std::size_t at = last + 2;
  if (at < text.size() && text[at] == 'b') pos_.side = BLACK;
  for (at += 2; at < text.size(); ++at) {
    const char c = text[at];
    if (c == 'K') pos_.unmoved |= squareFromText("e1") | squareFromText("h1");
    else if (c == 'Q') pos_.unmoved |= squareFromText("e1") | squareFromText("a1");
    else if (c == 'k') pos_.unmoved |= squareFromText("e8") | squareFromText("h8");
    else if (c == 'q') pos_.unmoved |= squareFromText("e8") | squareFromText("a8");
    else break;
  }
  if (at > text.size()) at = text.size();
  if (at < text.size() && text[at] == '-') ++at;  // "-": no castling rights

  const std::string_view ep = nextToken(text, at);
  if (ep.size() == 2) pos_.epSquare = squareFromText(std::string(ep));

  // Clocks default to 0 and 1 when their tokens are missing or not numbers.
  halfMoveClock_ = 0;
  fullMoveNumber_ = 1;
  std::size_t rest = at;
  const std::string_view half = nextToken(text, rest);
  if (!half.empty() && half[0] >= '0' && half[0] <= '9') {
    halfMoveClock_ = parseLeadingInt(half);
    fullMoveNumber_ = parseLeadingInt(nextToken(text, rest));
    at = rest;
  }

  // EPD operations: the rest, split at ';', leading blanks skipped.
  epdOperations_.clear();
  while (at < text.size()) {
    std::size_t end = text.find(';', at);
    if (end == std::string_view::npos) end = text.size();
    std::size_t start = at;
    while (start < end && text[start] == ' ') ++start;
    if (start < end) epdOperations_.emplace_back(text.substr(start, end - start));
    at = end + 1;
  }

  if (pos_.side == BLACK) std::swap(pos_.masks[US], pos_.masks[THEM]);
  pos_.occupied = pos_.masks[US] | pos_.masks[THEM];
  pos_.pieceKey = computePieceKey();
  for (int colour = WHITE; colour <= BLACK; ++colour) {
    const u64 own = pos_.colour(colour);
    pos_.pawnCount[colour] = std::popcount(pos_.pawns() & own);
    pos_.pieceCount[colour] = std::popcount(own & ~pos_.pawns());
  }
  resetFrames();

  auto material = [this](u64 own) {
    return QUEEN_VALUE * std::popcount(pos_.queens() & own) + ROOK_VALUE * std::popcount(pos_.rooks() & own) +
           BISHOP_VALUE * std::popcount((pos_.bishops() | pos_.knights()) & own) +
           PAWN_VALUE * std::popcount(pos_.pawns() & own);
  };
  pos_.score = material(pos_.us()) - material(pos_.them());
}

char clsBoard::pieceAt(u64 square) const {
  if ((pos_.occupied & square) == 0) return '.';
  const bool white = (pos_.colour(WHITE) & square) != 0;
  for (int type : NAMING_ORDER)
    if (pos_.masks[type] & square) return white ? PIECE_LETTERS[type] : static_cast<char>(PIECE_LETTERS[type] | 0x20);
  return '.';
}

std::string clsBoard::fen() const {
  std::string text;
  text.reserve(90);
  int empty = 0;
  for (int bit = 63; bit >= 0; --bit) {
    const char piece = pieceAt(squareMask(bit));
    if (piece == '.') {
      ++empty;
    } else {
      if (empty) text += static_cast<char>('0' + empty);
      empty = 0;
      text += piece;
    }
    if (bit % 8 == 0) {
      if (empty) text += static_cast<char>('0' + empty);
      empty = 0;
      text += '/';
    }
  }
  text.back() = ' ';
  text += pos_.side == WHITE ? 'w' : 'b';
  text += ' ';
  const u64 u = pos_.unmoved;
  auto has = [u](const char* a, const char* b) {
    const u64 both = squareFromText(a) | squareFromText(b);
    return (u & both) == both;
  };
  const std::size_t castlingStart = text.size();
  if (has("e1", "h1")) text += 'K';
  if (has("e1", "a1")) text += 'Q';
  if (has("e8", "h8")) text += 'k';
  if (has("e8", "a8")) text += 'q';
  if (text.size() == castlingStart) text += '-';
  text += ' ';
  text += pos_.epSquare ? squareText(lowestBit(pos_.epSquare)) : "-";
  return text;
}

std::string clsBoard::boardText() const {
  std::string text;
  text.reserve(80);
  for (int bit = 63; bit >= 0; --bit) {
    text += pieceAt(squareMask(bit));
    if (bit % 8 == 0) text += "\r\n";
  }
  return text;
}

void clsBoard::printBoard(kobubase::clsOutBuffer& out) {
  out.print("#");
  out.print(boardText(), false);
  char value[32];
  std::snprintf(value, sizeof value, "%.2f", pos_.score / static_cast<double>(PAWN_VALUE));
  out.print(std::string("# ") + (pos_.side == WHITE ? "white" : "black") + " value: " + value + " FEN: " + fen());
}

}  // namespace kbuChess
