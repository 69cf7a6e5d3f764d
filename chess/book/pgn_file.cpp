#include "chess/book/pgn_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/text.h"
#include "chess/book/book_key.h"

namespace kbuChess {
namespace {

// Counts for a position where `sideToMove` is to move in a game with this result.
// A game without a known result ("*", or none given) counts as a draw: it
// still shows that the line was played, without favouring either side.
BookRecord countsFor(u64 key, PgnResult result, u32 sideToMove) {
  BookRecord record;
  record.key = key;
  if (result == PgnResult::WHITE_WIN || result == PgnResult::BLACK_WIN) {
    const u32 winner = result == PgnResult::WHITE_WIN ? WHITE : BLACK;
    (winner == sideToMove ? record.wins : record.losses) = 1;
  } else {
    record.draws = 1;
  }
  return record;
}

}  // namespace

clsPGNFile::clsPGNFile(kobubase::clsOutBuffer& out, int movesCount, int type)
    : out_(out), movesCount_(std::max(movesCount, 0)), type_(type), board_(std::make_unique<clsBoard>()), scanner_(*this) {
  board_->readFEN(clsBoard::START_FEN);
  start_ = board_->position();
  const auto plies = static_cast<std::size_t>(std::min(movesCount_, 1024));
  gameKeys_.reserve(plies);
  gameMoves_.reserve(plies);
}

clsPGNFile::~clsPGNFile() = default;

bool clsPGNFile::readFile(const std::string& path) {
  fileName_ = path;
  lastPercent_ = -1;
  std::string error;
  if (!scanner_.scanFile(path, error)) {
    out_.print(error);
    return false;
  }
  flushBatch();
  out_.print("# pgn file loaded");
  return true;
}

void clsPGNFile::readText(std::string_view text) {
  scanner_.feed(text.data(), text.size());
  scanner_.finish();
  flushBatch();
}

void clsPGNFile::onGameStart(std::uint64_t gameNumber) {
  gameNumber_ = gameNumber;
  board_->position() = start_;
  gameKeys_.clear();
  gameFens_.clear();
  gameMoves_.clear();
  setUp_ = false;
}

// Games set up from a FEN position are no opening theory: their moves are skipped.
void clsPGNFile::onTag(std::string_view name, std::string_view value) {
  if (name == "FEN" || (name == "SetUp" && value == "1")) setUp_ = true;
}

// The legal move the SAN text names, or null. The text is first matched
// against the generated moves and only the match is tested for legality;
// the full legal filter runs only when that match leaves the king attacked
// (another piece of the same kind was meant). The result is the first legal
// match either way, found at a fraction of the cost of filtering every move.
const Move* clsPGNFile::findSANMove(std::string_view san) {
  clsBoard& board = *board_;
  board.savePosition();
  board.generate(-1);
  const Move* found = board.readSANMove(san);
  if (found == nullptr) return nullptr;
  board.make(*found);
  const bool illegal = board.ownKingAttacked();
  board.restorePosition();
  if (!illegal) return found;
  board.legalFilter();
  return board.readSANMove(san);
}

// Plays one SAN move on the work board; false once the game needs no more moves.
bool clsPGNFile::onMove(std::string_view san) {
  if (setUp_ || movesCount_ == 0) return false;
  const Move* found = findSANMove(san);
  if (found == nullptr) {
    out_.print("# game " + std::to_string(gameNumber_) + ": illegal move \"" + std::string(san) + "\" at ply " +
               std::to_string(gameKeys_.size() + 1) + ", the " + std::to_string(gameKeys_.size()) +
               " plies before it are kept");
    return false;
  }
  const Move move = *found;
  board_->playRecord(move);
  gameKeys_.push_back(bookKey(board_->position()));
  if (gameObserver) gameMoves_.push_back(move);
  if (type_ == TYPE_FEN) gameFens_.push_back(board_->fen());
  return static_cast<int>(gameKeys_.size()) < movesCount_;
}

void clsPGNFile::onGameEnd(PgnResult result) {
  ++totalGames_;
  if (type_ == TYPE_FEN) {
    addGameToFENs(result);
  } else {
    addGameToBook(result);
  }
  if (gameObserver) gameObserver(gameNumber_, gameMoves_, result);
  showProgress();
}

void clsPGNFile::onProblem(const std::string& line) { out_.print(line); }

// The position after ply i has Black to move when i is even (White began).
void clsPGNFile::addGameToBook(PgnResult result) {
  for (std::size_t ply = 0; ply < gameKeys_.size(); ++ply) {
    batch_.push_back(countsFor(gameKeys_[ply], result, ply % 2 == 0 ? BLACK : WHITE));
  }
  if (batch_.size() >= BATCH_RECORDS) flushBatch();
}

void clsPGNFile::addGameToFENs(PgnResult result) {
  for (std::size_t ply = 0; ply < gameFens_.size(); ++ply) {
    const BookRecord counts = countsFor(0, result, ply % 2 == 0 ? BLACK : WHITE);
    fens_.push_back(clsFENResult{std::move(gameFens_[ply]), counts.wins, counts.losses, counts.draws});
  }
}

void clsPGNFile::flushBatch() {
  book_.addMany(batch_);
  batch_.clear();
}

// "# game N - P% done   " and a carriage return, each time the whole
// percentage of the file read changes: at most about a hundred lines a file.
void clsPGNFile::showProgress() {
  const std::uint64_t size = scanner_.fileSize();
  if (size == 0) return;
  const int percent = static_cast<int>(std::min<std::uint64_t>(scanner_.position() * 100 / size, 100));
  if (percent == lastPercent_) return;
  lastPercent_ = percent;
  out_.print("# game " + std::to_string(gameNumber_) + " - " + std::to_string(percent) + "% done   \r", false);
}

}  // namespace kbuChess
