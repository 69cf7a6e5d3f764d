#pragma once
// clsPGNScanner cuts PGN text into games: it reads tag pairs, skips comments
// ("{...}" and ";" to the end of the line), escape lines (a "%" at the start
// of a line), variations "( ... )" at any depth, numeric annotation glyphs
// "$n", move numbers and the "!" / "?" marks glued to moves, and hands the
// main-line moves (SAN text) and the game's result to a listener. Text is fed
// in pieces of any size, so a file of any length is read through one fixed
// buffer; tokens and tag values are kept in small fixed arrays.
//
// A game ends at its result token ("1-0", "0-1", "1/2-1/2", "*"), at the
// next tag pair once moves have been seen, or at the end of the input.
#include <cstdint>
#include <string>
#include <string_view>

namespace kbuChess {

enum class PgnResult { WHITE_WIN, BLACK_WIN, DRAW, UNKNOWN };

PgnResult pgnResultFromText(std::string_view text);

class clsPGNListener {
 public:
  virtual ~clsPGNListener() = default;
  virtual void onGameStart(std::uint64_t gameNumber) = 0;
  virtual void onTag(std::string_view name, std::string_view value) = 0;
  // A move of the main line; returning false asks for no more moves of this game.
  virtual bool onMove(std::string_view san) = 0;
  // result: the result token, else the "Result" tag, else UNKNOWN.
  virtual void onGameEnd(PgnResult result) = 0;
  // A "# ..." line about malformed text.
  virtual void onProblem(const std::string& line) = 0;
};

class clsPGNScanner {
 public:
  static constexpr std::size_t TOKEN_CHARS = 64;
  static constexpr std::size_t TAG_NAME_CHARS = 32;
  static constexpr std::size_t TAG_VALUE_CHARS = 256;
  static constexpr std::size_t READ_BUFFER_BYTES = 1 << 16;

  explicit clsPGNScanner(clsPGNListener& listener) : listener_(listener) {}

  void feed(const char* data, std::size_t size);
  // Ends the input: closes an open game and reports unterminated parts.
  void finish();
  // Feeds a whole regular file through a fixed buffer; false (with the error line) when it cannot be opened.
  bool scanFile(const std::string& path, std::string& error);

  std::uint64_t games() const { return games_; }
  // Bytes consumed so far; during a listener call, up to the current character.
  std::uint64_t position() const { return position_; }
  // Size of the file being scanned by scanFile, 0 otherwise.
  std::uint64_t fileSize() const { return fileSize_; }

 private:
  enum class State { BETWEEN, TOKEN, COMMENT, LINE_SKIP, TAG_NAME, TAG_GAP, TAG_VALUE, TAG_ESCAPE, TAG_END };

  void betweenTokens(char c);
  void startTag();
  void tagChar(char c);
  void endTag();
  void endToken();
  void moveToken(std::string_view text);
  void openGame();
  void closeGame(PgnResult result, bool fromToken);
  void problem(const std::string& what);

  clsPGNListener& listener_;
  State state_ = State::BETWEEN;
  bool lineStart_ = true;
  bool gameOpen_ = false;
  bool movesSeen_ = false;  // move text has begun: a tag now starts the next game
  bool wantMoves_ = true;
  int depth_ = 0;           // variation nesting
  PgnResult tagResult_ = PgnResult::UNKNOWN;
  std::uint64_t games_ = 0;
  std::uint64_t position_ = 0;
  std::uint64_t fileSize_ = 0;
  char token_[TOKEN_CHARS];
  std::size_t tokenLength_ = 0;
  char tagName_[TAG_NAME_CHARS];
  std::size_t tagNameLength_ = 0;
  char tagValue_[TAG_VALUE_CHARS];
  std::size_t tagValueLength_ = 0;
};

}  // namespace kbuChess
