#pragma once
// The record of one tournament game: result code, PGN tags, move text, start
// position and the keys of the positions reached. The game loop owns one per
// game and fills it while playing; the PGN writer reads it. The helpers
// around it turn engine answers and board states into result codes and a
// code into points.
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "chess/board/game_state.h"

namespace kbuChess {

// Bits of a game's result code: one outcome and one reason, set once a game.
namespace rc {
inline constexpr std::uint32_t UNDECIDED = 0x0001;
inline constexpr std::uint32_t DECISIVE = 0x0002;
inline constexpr std::uint32_t WHITE_WINS = 0x0004;
inline constexpr std::uint32_t BLACK_WINS = 0x0008;
inline constexpr std::uint32_t MATE = 0x0010;
inline constexpr std::uint32_t FORFEIT = 0x0020;
inline constexpr std::uint32_t RESIGN = 0x0040;
inline constexpr std::uint32_t ADJUDICATION = 0x0080;
inline constexpr std::uint32_t ILLEGAL_MOVE = 0x0100;
inline constexpr std::uint32_t DRAW = 0x0200;
inline constexpr std::uint32_t FIFTY_MOVES = 0x0400;
inline constexpr std::uint32_t REPETITION = 0x0800;
inline constexpr std::uint32_t STALEMATE = 0x1000;
inline constexpr std::uint32_t INSUFFICIENT_MATERIAL = 0x2000;
inline constexpr std::uint32_t ENGINE_CRASHED = 0x4000;
inline constexpr std::uint32_t ABORTED = 0x8000;
// Finer reasons, always set together with one of the bits above.
inline constexpr std::uint32_t SCORE_DRAW = 0x10000;    // with DRAW | ADJUDICATION
inline constexpr std::uint32_t SCORE_RESIGN = 0x20000;  // with DECISIVE | ADJUDICATION
inline constexpr std::uint32_t NOT_READY = 0x40000;     // a loss: the engine never finished its handshake
// The bits that decide the points.
inline constexpr std::uint32_t SCORING_MASK = 0x820B;
}  // namespace rc

// "?", "1/2-1/2", "1-0", "0-1", "*" or "", in that order of precedence.
std::string resultText(std::uint32_t code);
// The first reason set, in the order undecided, mate, forfeit, resign,
// adjudication by score (draw, resign), adjudication, engine not ready, illegal move, 50 moves, triple repetition,
// stalemate, insufficient material, engine crashed, game aborted; else "".
std::string reasonText(std::uint32_t code);
// The code of a result text ("1-0" -> 0x0006); 0 for any other text.
std::uint32_t claimCode(std::string_view text);
// `loser` (WHITE or BLACK) loses for `reason`: 0x002A is White forfeiting.
std::uint32_t lossCode(int loser, std::uint32_t reason);
// An illegal move by `mover`: 0x010A for White; 0x0102 for Black, which
// carries no winner bit beside the decision, as such games were always coded.
std::uint32_t illegalMoveCode(int mover);
// "resign" from the side to move. Kept as engines of this tournament have
// always been scored: a resignation by White counts "1-0" (0x0046) and one by
// Black "0-1" (0x004A).
std::uint32_t resignCode(int sideToMove);
// The answer to "result ..." from the side to move: a draw ends the game,
// a claim is honoured only when it is the claimant's own loss; 0 = ignored.
std::uint32_t claimedResultCode(std::string_view rest, int sideToMove);
// The code for a finished board after `mover` moved; 0 for GameEnd::None.
std::uint32_t gameEndCode(GameEnd end, int mover);

// Half-points of both sides for a code: 2/0, 0/2, 1/1 or, for a game that
// did not end in one of these, nothing (`decided` false).
struct GamePoints {
  int white = 0;
  int black = 0;
  bool decided = false;
};
GamePoints gamePoints(std::uint32_t code);

class clsGame {
 public:
  using Tag = std::pair<std::string, std::string>;
  static constexpr const char* START_FEN = clsBoard::START_FEN;

  // Empties the moves and position keys, makes the game undecided again and
  // starts it from the standard position. The tags stay: the round's tags
  // are set before the game starts.
  void reset();
  // The position the game starts from, in FEN with both move clocks; the
  // move text then counts from its side to move and move number.
  void setStartFen(std::string_view fen);
  bool standardStart() const { return startFen_ == START_FEN; }

  std::uint32_t result() const { return result_; }
  bool undecided() const { return (result_ & rc::UNDECIDED) != 0; }
  // Stores the code and sets the "Result" and "Reason" tags from it.
  void setResult(std::uint32_t code);

  // Replaces the value of an existing key in place, else appends the tag.
  void setTag(std::string_view key, std::string_view value);
  // The value of a tag, "" when absent.
  std::string tag(std::string_view key) const;
  bool hasTag(std::string_view key) const;
  const std::vector<Tag>& tags() const { return tags_; }
  void clearTags() { tags_.clear(); }

  // Appends a move to the move text: "N. " before each White move ("N... "
  // before a first move by Black), a blank after every move.
  void addMove(std::string_view move);
  const std::string& moveText() const { return moveText_; }
  int plies() const { return plies_; }
  const std::string& startFen() const { return startFen_; }

  // Appends the key of a position reached (the start position first) and
  // answers whether it now stands for the fourth time. Earlier entries are
  // compared from the newest down to index 1: the first entry is never
  // counted, so the start position ends a game only on its fifth occurrence.
  bool addPosition(std::uint64_t key);
  const std::vector<std::uint64_t>& positions() const { return positions_; }

 private:
  std::uint32_t result_ = rc::UNDECIDED;
  std::vector<Tag> tags_;
  std::string moveText_;
  int plies_ = 0;
  std::string startFen_ = START_FEN;
  int startSide_ = WHITE;
  int startMoveNumber_ = 1;
  std::vector<std::uint64_t> positions_;
};

}  // namespace kbuChess
