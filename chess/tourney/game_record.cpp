#include "chess/tourney/game_record.h"

#include "base/text.h"

namespace kbuChess {
namespace {

struct ReasonName {
  std::uint32_t bit;
  const char* text;
};

// Precedence order: the first bit set names the reason.
constexpr ReasonName REASONS[] = {
    {rc::UNDECIDED, "?"},
    {rc::MATE, "mate"},
    {rc::FORFEIT, "forfeit"},
    {rc::RESIGN, "resign"},
    {rc::SCORE_DRAW, "adjudication: draw"},
    {rc::SCORE_RESIGN, "adjudication: resign"},
    {rc::ADJUDICATION, "adjudication"},
    {rc::NOT_READY, "engine not ready"},
    {rc::ILLEGAL_MOVE, "illegal move"},
    {rc::FIFTY_MOVES, "50 moves"},
    {rc::REPETITION, "triple repetition"},
    {rc::STALEMATE, "stalemate"},
    {rc::INSUFFICIENT_MATERIAL, "insufficient material"},
    {rc::ENGINE_CRASHED, "engine crashed"},
    {rc::ABORTED, "game aborted"},
};

bool hasWord(std::string_view text, std::string_view word) {
  for (int i = 0;; ++i) {
    const std::string_view w = kobubase::wordAt(text, i);
    if (w.empty()) return false;
    if (w == word) return true;
  }
}

}  // namespace

std::string resultText(std::uint32_t code) {
  if (code & rc::UNDECIDED) return "?";
  if (code & rc::DRAW) return "1/2-1/2";
  if (code & rc::DECISIVE) return (code & rc::BLACK_WINS) ? "0-1" : "1-0";
  if (code & rc::ABORTED) return "*";
  return "";
}

std::string reasonText(std::uint32_t code) {
  for (const ReasonName& reason : REASONS)
    if (code & reason.bit) return reason.text;
  return "";
}

std::uint32_t claimCode(std::string_view text) {
  if (text == "1/2-1/2") return rc::DRAW;
  if (text == "1-0") return rc::DECISIVE | rc::WHITE_WINS;
  if (text == "0-1") return rc::DECISIVE | rc::BLACK_WINS;
  if (text == "?") return rc::UNDECIDED;
  if (text == "*") return rc::ABORTED;
  return 0;
}

std::uint32_t lossCode(int loser, std::uint32_t reason) {
  return rc::DECISIVE | (loser == WHITE ? rc::BLACK_WINS : rc::WHITE_WINS) | reason;
}

std::uint32_t illegalMoveCode(int mover) {
  return mover == WHITE ? lossCode(WHITE, rc::ILLEGAL_MOVE) : rc::ILLEGAL_MOVE | rc::DECISIVE;
}

std::uint32_t resignCode(int sideToMove) {
  return rc::RESIGN | rc::DECISIVE | (sideToMove == WHITE ? rc::WHITE_WINS : rc::BLACK_WINS);
}

std::uint32_t claimedResultCode(std::string_view rest, int sideToMove) {
  if (hasWord(rest, "1/2-1/2")) return rc::DRAW;
  if (sideToMove == WHITE && hasWord(rest, "0-1")) return rc::RESIGN | rc::DECISIVE | rc::BLACK_WINS;
  if (sideToMove == BLACK && hasWord(rest, "1-0")) return rc::RESIGN | rc::DECISIVE;
  return 0;
}

std::uint32_t gameEndCode(GameEnd end, int mover) {
  switch (end) {
    case GameEnd::Mate: return lossCode(mover ^ 1, rc::MATE);
    case GameEnd::Stalemate: return rc::DRAW | rc::STALEMATE;
    case GameEnd::FiftyMoves: return rc::DRAW | rc::FIFTY_MOVES;
    case GameEnd::InsufficientMaterial: return rc::DRAW | rc::INSUFFICIENT_MATERIAL;
    case GameEnd::None: break;
  }
  return 0;
}

GamePoints gamePoints(std::uint32_t code) {
  switch (code & rc::SCORING_MASK) {
    case rc::DECISIVE: return {2, 0, true};
    case rc::DECISIVE | rc::BLACK_WINS: return {0, 2, true};
    case rc::DRAW: return {1, 1, true};
    default: return {};
  }
}

void clsGame::reset() {
  result_ = rc::UNDECIDED;
  moveText_.clear();
  plies_ = 0;
  positions_.clear();
  setStartFen(START_FEN);
}

void clsGame::setStartFen(std::string_view fen) {
  startFen_ = fen;
  startSide_ = kobubase::wordAt(fen, 1) == "b" ? BLACK : WHITE;
  startMoveNumber_ = static_cast<int>(kobubase::readClamped(kobubase::wordAt(fen, 5), 1, 1000000));
}

void clsGame::setResult(std::uint32_t code) {
  result_ = code;
  setTag("Result", resultText(code));
  setTag("Reason", reasonText(code));
}

void clsGame::setTag(std::string_view key, std::string_view value) {
  for (Tag& tag : tags_) {
    if (tag.first == key) {
      tag.second = value;
      return;
    }
  }
  tags_.emplace_back(std::string(key), std::string(value));
}

std::string clsGame::tag(std::string_view key) const {
  for (const Tag& tag : tags_)
    if (tag.first == key) return tag.second;
  return std::string();
}

bool clsGame::hasTag(std::string_view key) const {
  for (const Tag& tag : tags_)
    if (tag.first == key) return true;
  return false;
}

void clsGame::addMove(std::string_view move) {
  const int ply = plies_ + startSide_;
  const std::string number = std::to_string(startMoveNumber_ + ply / 2);
  if (ply % 2 == 0) moveText_ += number + ". ";
  if (ply % 2 == 1 && plies_ == 0) moveText_ += number + "... ";
  moveText_ += move;
  moveText_ += ' ';
  ++plies_;
}

bool clsGame::addPosition(std::uint64_t key) {
  positions_.push_back(key);
  int count = 0;
  for (std::size_t i = positions_.size() - 1; i-- > 1;)
    if (positions_[i] == key) ++count;
  return count > 2;
}

}  // namespace kbuChess
