#include "chess/book/pgn_scanner.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/file_io.h"
#include "base/text.h"

namespace kbuChess {
namespace {

// Characters that make up move text tokens: moves, move numbers, results,
// glued annotation marks and NAGs.
struct SymbolTable {
  bool symbol[256] = {};
  constexpr SymbolTable() {
    for (int c = '0'; c <= '9'; ++c) symbol[c] = true;
    for (int c = 'a'; c <= 'z'; ++c) symbol[c] = true;
    for (int c = 'A'; c <= 'Z'; ++c) symbol[c] = true;
    for (const char* p = "+#=-/.!?$:_~"; *p != '\0'; ++p) symbol[static_cast<unsigned char>(*p)] = true;
  }
};
constexpr SymbolTable SYMBOLS;

inline bool isSymbol(char c) { return SYMBOLS.symbol[static_cast<unsigned char>(c)]; }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }
inline bool isTagNameChar(char c) { return isSymbol(c) && c != '"'; }

bool resultToken(std::string_view text, PgnResult& result) {
  if (text != "1-0" && text != "0-1" && text != "1/2-1/2") return false;
  result = pgnResultFromText(text);
  return true;
}

// Drops a leading move number ("12." "12..." or a bare "12"), leading dots and
// the trailing "!" and "?" marks; what is left is the move, or empty. Moves
// begin with a letter, or with "0" for castling written with zeros; other
// tokens ("+-", "=", "--") are evaluation signs or null moves and are passed over.
std::string_view stripDecorations(std::string_view text) {
  std::size_t digits = 0;
  while (digits < text.size() && isDigit(text[digits])) ++digits;
  if (digits == text.size()) return {};
  if (digits > 0 && text[digits] == '.') text.remove_prefix(digits);
  while (!text.empty() && text.front() == '.') text.remove_prefix(1);
  while (!text.empty() && (text.back() == '!' || text.back() == '?')) text.remove_suffix(1);
  if (text.empty()) return text;
  const char first = text.front();
  const bool letter = (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z');
  return letter || text.starts_with("0-0") ? text : std::string_view{};
}

}  // namespace

PgnResult pgnResultFromText(std::string_view text) {
  if (text == "1-0") return PgnResult::WHITE_WIN;
  if (text == "0-1") return PgnResult::BLACK_WIN;
  if (text == "1/2-1/2") return PgnResult::DRAW;
  return PgnResult::UNKNOWN;
}

void clsPGNScanner::feed(const char* data, std::size_t size) {
  const char* p = data;
  const char* const end = data + size;
  const std::uint64_t base = position_;
  while (p < end) {
    position_ = base + static_cast<std::uint64_t>(p - data);
    switch (state_) {
      case State::COMMENT: {
        const auto* close = static_cast<const char*>(std::memchr(p, '}', static_cast<std::size_t>(end - p)));
        if (close == nullptr) {
          p = end;
        } else {
          p = close + 1;
          state_ = State::BETWEEN;
          lineStart_ = false;
        }
        break;
      }
      case State::LINE_SKIP: {
        const auto* lineEnd = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
        if (lineEnd == nullptr) {
          p = end;
        } else {
          p = lineEnd + 1;
          state_ = State::BETWEEN;
          lineStart_ = true;
        }
        break;
      }
      case State::TOKEN:
        while (p < end && isSymbol(*p)) {
          if (tokenLength_ < TOKEN_CHARS) token_[tokenLength_] = *p;
          ++tokenLength_;
          ++p;
        }
        if (p < end) {
          position_ = base + static_cast<std::uint64_t>(p - data);
          endToken();
        }
        break;
      case State::BETWEEN:
        betweenTokens(*p++);
        break;
      case State::TAG_VALUE:
        // The common run of plain characters is copied without a call per character.
        while (p < end && *p != '"' && *p != '\\' && *p != '\n') {
          if (tagValueLength_ < TAG_VALUE_CHARS) tagValue_[tagValueLength_++] = *p;
          ++p;
        }
        if (p < end) tagChar(*p++);
        break;
      default:
        tagChar(*p++);
        break;
    }
  }
  position_ = base + size;
}

void clsPGNScanner::betweenTokens(char c) {
  const bool atLineStart = lineStart_;
  lineStart_ = c == '\n';
  if (c == '\n' || isBlank(c)) return;
  switch (c) {
    case '{':
      state_ = State::COMMENT;
      return;
    case ';':
      state_ = State::LINE_SKIP;
      return;
    case '%':
      if (atLineStart) state_ = State::LINE_SKIP;
      return;
    case '[':
      startTag();
      return;
    case '(':
      if (!gameOpen_) openGame();
      movesSeen_ = true;
      ++depth_;
      return;
    case ')':
      if (depth_ > 0) --depth_;
      return;
    case '*':
      if (depth_ > 0) return;
      if (!gameOpen_) openGame();
      closeGame(PgnResult::UNKNOWN, true);
      return;
    default:
      if (!isSymbol(c)) return;  // stray punctuation or binary junk
      token_[0] = c;
      tokenLength_ = 1;
      state_ = State::TOKEN;
      return;
  }
}

void clsPGNScanner::startTag() {
  if (depth_ > 0) {
    problem("unterminated variation");
    depth_ = 0;
  }
  if (gameOpen_ && movesSeen_) closeGame(PgnResult::UNKNOWN, false);
  if (!gameOpen_) openGame();
  state_ = State::TAG_NAME;
  tagNameLength_ = 0;
  tagValueLength_ = 0;
}

// Tag pairs are one line each: [Name "value"], with \" and \\ inside the value.
void clsPGNScanner::tagChar(char c) {
  if (c == '\n') {
    if (state_ != State::TAG_END) problem("malformed tag pair");
    state_ = State::BETWEEN;
    lineStart_ = true;
    return;
  }
  switch (state_) {
    case State::TAG_NAME:
      if (c == '"') {
        state_ = State::TAG_VALUE;
      } else if (c == ']') {
        state_ = State::BETWEEN;
      } else if (isBlank(c)) {
        if (tagNameLength_ > 0) state_ = State::TAG_GAP;
      } else if (tagNameLength_ < TAG_NAME_CHARS) {
        tagName_[tagNameLength_++] = c;
      }
      return;
    case State::TAG_GAP:
      if (c == '"') state_ = State::TAG_VALUE;
      if (c == ']') state_ = State::BETWEEN;
      return;
    case State::TAG_VALUE:
      if (c == '"') {
        endTag();
      } else if (c == '\\') {
        state_ = State::TAG_ESCAPE;
      } else if (tagValueLength_ < TAG_VALUE_CHARS) {
        tagValue_[tagValueLength_++] = c;
      }
      return;
    case State::TAG_ESCAPE:
      if (tagValueLength_ < TAG_VALUE_CHARS) tagValue_[tagValueLength_++] = c;
      state_ = State::TAG_VALUE;
      return;
    default:  // TAG_END: wait for the closing bracket
      if (c == ']') state_ = State::BETWEEN;
      return;
  }
}

void clsPGNScanner::endTag() {
  state_ = State::TAG_END;
  const std::string_view name(tagName_, tagNameLength_);
  const std::string_view value(tagValue_, tagValueLength_);
  if (name == "Result") tagResult_ = pgnResultFromText(value);
  listener_.onTag(name, value);
}

void clsPGNScanner::endToken() {
  state_ = State::BETWEEN;
  if (depth_ > 0) return;
  const std::string_view text(token_, tokenLength_ < TOKEN_CHARS ? tokenLength_ : TOKEN_CHARS);
  if (text.front() == '$') return;
  if (!gameOpen_) openGame();
  PgnResult result;
  if (resultToken(text, result)) {
    closeGame(result, true);
    return;
  }
  movesSeen_ = true;
  const std::string_view move = stripDecorations(text);
  if (!move.empty() && wantMoves_) moveToken(move);
}

// Writes the forms some files use the way the board reads them: castling with
// zeros as "O-O", and a promotion without "=" (e8Q) as e8=Q.
void clsPGNScanner::moveToken(std::string_view text) {
  char fixed[TOKEN_CHARS + 1];
  std::size_t length = 0;
  if (text.front() == '0') {
    for (char c : text) fixed[length++] = c == '0' ? 'O' : c;
    text = std::string_view(fixed, length);
  } else if (text.front() >= 'a' && text.front() <= 'h') {
    std::size_t last = text.size();
    while (last > 0 && (text[last - 1] == '+' || text[last - 1] == '#')) --last;
    if (last >= 3 && std::strchr("QRBN", text[last - 1]) != nullptr && isDigit(text[last - 2]) &&
        text.size() < TOKEN_CHARS) {
      std::memcpy(fixed, text.data(), last - 1);
      fixed[last - 1] = '=';
      std::memcpy(fixed + last, text.data() + last - 1, text.size() - last + 1);
      text = std::string_view(fixed, text.size() + 1);
    }
  }
  wantMoves_ = listener_.onMove(text);
}

void clsPGNScanner::openGame() {
  ++games_;
  gameOpen_ = true;
  movesSeen_ = false;
  wantMoves_ = true;
  depth_ = 0;
  tagResult_ = PgnResult::UNKNOWN;
  listener_.onGameStart(games_);
}

void clsPGNScanner::closeGame(PgnResult result, bool fromToken) {
  gameOpen_ = false;
  depth_ = 0;
  listener_.onGameEnd(fromToken ? result : tagResult_);
}

void clsPGNScanner::problem(const std::string& what) {
  listener_.onProblem("# game " + std::to_string(gameOpen_ ? games_ : games_ + 1) + ": " + what);
}

void clsPGNScanner::finish() {
  if (state_ == State::TOKEN) {
    endToken();
  } else if (state_ == State::COMMENT) {
    problem("unterminated comment");
  } else if (state_ != State::BETWEEN && state_ != State::LINE_SKIP && state_ != State::TAG_END) {
    problem("malformed tag pair");
  }
  if (depth_ > 0) problem("unterminated variation");
  if (gameOpen_) closeGame(PgnResult::UNKNOWN, false);
  state_ = State::BETWEEN;
  depth_ = 0;
  lineStart_ = true;
}

bool clsPGNScanner::scanFile(const std::string& path, std::string& error) {
  std::FILE* file = kobubase::openForReading(path, error);
  if (file == nullptr) return false;
  fileSize_ = 0;
  if (std::fseek(file, 0, SEEK_END) == 0) {
    const long size = std::ftell(file);
    if (size > 0) fileSize_ = static_cast<std::uint64_t>(size);
    std::fseek(file, 0, SEEK_SET);
  }
  games_ = 0;
  position_ = 0;
  std::vector<char> buffer(READ_BUFFER_BYTES);
  std::size_t got;
  while ((got = std::fread(buffer.data(), 1, buffer.size(), file)) > 0) feed(buffer.data(), got);
  const int readError = std::ferror(file) ? errno : 0;
  std::fclose(file);
  finish();
  if (readError != 0) {
    listener_.onProblem(kobubase::errorLine(readError));
  }
  return true;
}

}  // namespace kbuChess
