// Move text: the coordinate form for the interface, the long form for logs and
// divide, and SAN read by turning it into a long-form pattern.
#include <cstring>

#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace kbuChess {
namespace {

constexpr char PROMOTION_LETTERS[] = "---nbrq-";

bool isFile(char c) { return c >= 'a' && c <= 'h'; }
bool isRank(char c) { return c >= '1' && c <= '8'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

// Writes the long form (Pe2-e4, Pe4xPd5, Pe7-e8=q) and returns its length.
int writeLongForm(const Move& m, char* out) {
  int n = 0;
  out[n++] = PIECE_LETTERS[m.flags & 7];
  squareText(m.from, out + n);
  n += 2;
  if (m.isCapture()) {
    out[n++] = 'x';
    out[n++] = (m.flags & mf::PAWN_CAPTURED) ? 'P' : PIECE_LETTERS[m.capturedType() & 7];
  } else {
    out[n++] = '-';
  }
  squareText(m.to, out + n);
  n += 2;
  if (m.isPromotion()) {
    out[n++] = '=';
    out[n++] = PROMOTION_LETTERS[m.promotionType() & 7];
  }
  return n;
}

// '?' matches anything; the promotion letter after '=' matches in either case.
bool matchesPattern(const std::string& pattern, const char* longForm, int length) {
  if (static_cast<int>(pattern.size()) != length) return false;
  for (int i = 0; i < length; ++i) {
    const char p = pattern[static_cast<std::size_t>(i)], c = longForm[i];
    if (p == '?' || p == c) continue;
    if (i > 0 && longForm[i - 1] == '=' && (p | 0x20) == c) continue;
    return false;
  }
  return true;
}

struct CoordinateMove {
  u64 from;
  u64 to;
  char promotion;
};

// e2e4, e7e8q or e7e8=q; squares that do not read give 0.
CoordinateMove splitCoordinateMove(std::string_view text) {
  char chars[6] = {0, 0, 0, 0, 0, 0};
  for (std::size_t i = 0; i < 6 && i < text.size(); ++i) chars[i] = text[i];
  const char promotion = chars[4] == '=' ? chars[5] : chars[4];
  return CoordinateMove{squareFromText(chars), squareFromText(chars + 2), promotion};
}

// SAN without the check mark. `first`..`end` are the position's legal moves,
// searched for another piece of the same kind reaching the same square: the
// from-file tells them apart when it can, else the from-rank, else both.
std::string sanBody(const Move& m, const Move* first, const Move* end) {
  constexpr u64 FILE_G = 0x0202020202020202ull;
  if (m.flags & mf::CASTLING) return (m.to & FILE_G) ? "O-O" : "O-O-O";
  const std::string from = squareText(m.from), to = squareText(m.to);
  const int type = m.movingType();
  std::string san;
  if (type == PAWN || (m.flags & mf::EN_PASSANT)) {
    if (m.isCapture() || (m.flags & mf::EN_PASSANT)) san = from.substr(0, 1) + "x";
    san += to;
    if (m.isPromotion()) san += std::string("=") + PIECE_LETTERS[m.promotionType() & 7];
    return san;
  }
  bool rival = false, sameFile = false, sameRank = false;
  for (const Move* other = first; other < end; ++other) {
    if (!other->isMove() || other->to != m.to || other->from == m.from || other->movingType() != type) continue;
    if (other->flags & mf::CASTLING) continue;
    rival = true;
    const std::string otherFrom = squareText(other->from);
    sameFile |= otherFrom[0] == from[0];
    sameRank |= otherFrom[1] == from[1];
  }
  san = PIECE_LETTERS[type & 7];
  if (rival) san += !sameFile ? from.substr(0, 1) : !sameRank ? from.substr(1, 1) : from;
  if (m.isCapture()) san += 'x';
  return san + to;
}

}  // namespace

std::string clsBoard::moveText(const Move* move, bool longForm) {
  if (move == nullptr || move->from == 0 || move->to == 0) return "------";
  char text[16];
  if (longForm) return std::string(text, static_cast<std::size_t>(writeLongForm(*move, text)));
  squareText(move->from, text);
  squareText(move->to, text + 2);
  int n = 4;
  if (move->isPromotion()) {
    text[n++] = '=';
    text[n++] = PROMOTION_LETTERS[move->promotionType() & 7];
  }
  return std::string(text, static_cast<std::size_t>(n));
}

bool clsBoard::readCoordinateMove(std::string_view text) {
  const CoordinateMove c = splitCoordinateMove(text);
  if (!playMove(c.from, c.to, c.promotion)) return false;
  onMovePlayed();
  return true;
}

const Move* clsBoard::findCoordinateMove(std::string_view text) {
  const CoordinateMove c = splitCoordinateMove(text);
  return findLegalMove(c.from, c.to, c.promotion);
}

std::string clsBoard::sanText(const Move& chosen) {
  const Move move = chosen;  // the frame is regenerated below
  const Position before = pos_;
  generateLegal();
  std::string san = sanBody(move, frame_->first, frame_->end);
  makePlayed(move);
  if (ownKingAttacked()) san += generateLegal() == 0 ? '#' : '+';
  pos_ = before;
  savePosition();
  return san;
}

// Builds a pattern laid out like the long form,
// [piece][from-file][from-rank][- or x][captured][to-file][to-rank][=promotion],
// with '?' wherever the SAN text does not say. Text that runs out before the
// to-square gives the empty pattern, which matches nothing.
std::string clsBoard::sanPattern(std::string_view san) {
  while (!san.empty() && san.front() == ' ') san.remove_prefix(1);
  while (!san.empty() && san.back() == ' ') san.remove_suffix(1);
  std::string s;
  for (char c : san)
    if (c != '+' && c != '#') s += c;
  if (s.empty() || s.size() > 15) return std::string();
  if (s[0] == 'O' || s[0] == '0') {
    if (s == "O-O-O" || s == "0-0-0") return "Ke?-c?";
    if (s == "O-O" || s == "0-0") return "Ke?-g?";
    return std::string();
  }
  const bool hasPromotion = s.find('=') != std::string::npos;
  auto at = [&s](std::size_t i) { return i < s.size() ? s[i] : '\0'; };

  // Piece.
  if (s.size() == 2 || hasPromotion) s.insert(0, 1, 'P');
  else if (!isUpper(s[0])) s.insert(0, 1, '?');
  // From-square.
  if ((s.size() == 3 && at(1) != 'x') || (hasPromotion && s.size() < 6)) {
    s.insert(1, "??");
  } else if (at(1) == 'x') {
    s.insert(1, "??");
  } else {
    if (!isFile(at(1))) s.insert(1, 1, '?');
    if (at(2) == 'x') s.insert(2, 1, '?');
    else if (!isRank(at(2))) s.insert(2, 1, '?');
  }
  // Capture sign and captured piece.
  if (at(3) == 'x') {
    if (!isUpper(at(4))) s.insert(4, 1, '?');
  } else if (at(3) != '-') {
    s.insert(3, 1, '-');
  }
  // To-square.
  const std::size_t to = at(3) == 'x' ? 5 : 4;
  if (to > s.size()) return std::string();
  if (!isFile(at(to))) s.insert(to, 1, '?');
  if (!isRank(at(to + 1))) s.insert(to + 1, 1, '?');
  if (at(to) == '?' || at(to + 1) == '?') return std::string();
  return s;
}

const Move* clsBoard::readSANMove(std::string_view text) {
  const std::string pattern = sanPattern(text);
  if (pattern.empty()) return nullptr;
  char longForm[16];
  for (const Move* m = frame_->first; m < frame_->end; ++m) {
    if (!m->isMove()) continue;
    const int length = writeLongForm(*m, longForm);
    if (matchesPattern(pattern, longForm, length)) return m;
  }
  return nullptr;
}

}  // namespace kbuChess
