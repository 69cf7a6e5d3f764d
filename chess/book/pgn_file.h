#pragma once
// clsPGNFile reads PGN files game by game and turns the first plies of each
// game into opening knowledge: book positions with game counts (type 0) or a
// list of FEN strings with results (type 1). SAN moves are played on a work
// board; only the plies that are needed are converted, the rest of a game's
// move text is just scanned. One object can read several files in turn and
// collects everything they hold.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/output.h"
#include "chess/board/board.h"
#include "chess/book/book.h"
#include "chess/book/pgn_scanner.h"

namespace kbuChess {

// One position of the FEN list with its games, counted from the point of
// view of the side to move in it.
class clsFENResult {
 public:
  std::string fen;
  std::uint32_t wins = 0;
  std::uint32_t losses = 0;
  std::uint32_t draws = 0;
};

class clsPGNFile : public clsPGNListener {
 public:
  static constexpr int TYPE_BOOK = 0;
  static constexpr int TYPE_FEN = 1;
  // Book records are collected in a batch of this size, then merged into the book.
  static constexpr std::size_t BATCH_RECORDS = 1 << 18;

  clsPGNFile(kobubase::clsOutBuffer& out, int movesCount, int type = TYPE_BOOK);
  virtual ~clsPGNFile();

  // Reads every game of the file; false (with an "# error" line) when it cannot be opened.
  bool readFile(const std::string& path);
  // Reads PGN text held in memory.
  void readText(std::string_view text);

  clsBook& book() { return book_; }
  std::vector<clsFENResult>& fens() { return fens_; }
  std::uint64_t games() const { return totalGames_; }
  const std::string& fileName() const { return fileName_; }
  // Sorts, limits and combines the FEN list, then appends it to a text file.
  bool saveFENs(const std::string& path, std::int32_t limit);

  // Receives every game as read: its number in the file, the moves played
  // (up to movesCount) and the result. For tools and tests.
  std::function<void(std::uint64_t, const std::vector<Move>&, PgnResult)> gameObserver;

 protected:
  void onGameStart(std::uint64_t gameNumber) override;
  void onTag(std::string_view name, std::string_view value) override;
  bool onMove(std::string_view san) override;
  void onGameEnd(PgnResult result) override;
  void onProblem(const std::string& line) override;

 private:
  const Move* findSANMove(std::string_view san);
  void addGameToBook(PgnResult result);
  void addGameToFENs(PgnResult result);
  void flushBatch();
  void showProgress();

  kobubase::clsOutBuffer& out_;
  int movesCount_;
  int type_;
  std::unique_ptr<clsBoard> board_;  // large: kept off the caller's stack
  Position start_;
  clsPGNScanner scanner_;
  clsBook book_;
  std::vector<BookRecord> batch_;
  std::vector<clsFENResult> fens_;
  std::string fileName_;
  // The game being read.
  std::uint64_t gameNumber_ = 0;
  std::vector<u64> gameKeys_;
  std::vector<std::string> gameFens_;
  std::vector<Move> gameMoves_;
  bool setUp_ = false;
  std::uint64_t totalGames_ = 0;
  int lastPercent_ = -1;
};

}  // namespace kbuChess
