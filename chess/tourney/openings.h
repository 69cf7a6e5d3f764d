#pragma once
// Openings for games that should not all start from the same position: a
// start position and coordinate moves from it, played before the players
// take over. A source gives them either from a random generator (random
// legal moves, or book moves as the engine would choose them, from the
// standard start) or from a suite file of ready openings (the games of a PGN
// file, each cut at a number of plies, or the positions of an EPD file).
//
// A tournament asks for the line of game pair P (counted over the whole run)
// with the event's seed: the line depends on the file, the seed, the start
// and P alone, so every run and every machine gives pair P the same line,
// whichever pairs were played before.
#include <cstdint>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/random.h"
#include "chess/board/board.h"
#include "chess/book/book.h"

namespace kbuChess {

// Where a game starts: a position in FEN with both move clocks (empty: the
// standard start position) and the moves played from it.
struct Opening {
  std::string fen;
  std::vector<std::string> moves;

  bool operator==(const Opening&) const = default;
  std::string startFen() const { return fen.empty() ? std::string(clsBoard::START_FEN) : fen; }
  // As the results file keeps it: the moves alone from the standard start,
  // else "fen FEN" followed by " moves ..." when there are moves.
  std::string text() const;
};

class clsOpenings {
 public:
  virtual ~clsOpenings() = default;
  virtual Opening line(kobubase::clsRandom& random) = 0;
  // The opening of pair `pair` of a run seeded with `seed`: by default the
  // one drawn from a generator seeded with both.
  virtual Opening lineOfPair(std::uint64_t seed, std::int64_t pair);
};

// Random legal moves, `plies` of them (fewer when a game ends on the way).
class clsRandomOpenings : public clsOpenings {
 public:
  explicit clsRandomOpenings(int plies) : plies_(plies) {}
  Opening line(kobubase::clsRandom& random) override;

 protected:
  // Appends random legal moves to `moves` on `board` until it holds `plies`.
  void extendRandomly(clsBoard& board, std::vector<std::string>& moves, kobubase::clsRandom& random) const;
  int plies_;
};

// Book moves as the engine would choose them (the rare candidates dropped,
// uniform among the rest) while the book knows the position, random legal
// moves after that.
class clsBookOpenings : public clsRandomOpenings {
 public:
  clsBookOpenings(const clsBook& book, int plies) : clsRandomOpenings(plies), book_(book) {}
  Opening line(kobubase::clsRandom& random) override;

 private:
  const clsBook& book_;
};

enum class OpeningOrder { SEQUENTIAL, RANDOM };

// The openings of a suite file. Sequential order gives pair P the opening
// (start + P) modulo the number of openings; random order one drawn with the
// seed and P.
class clsSuiteOpenings : public clsOpenings {
 public:
  clsSuiteOpenings(std::vector<Opening> lines, OpeningOrder order, std::int64_t start)
      : lines_(std::move(lines)), order_(order), start_(start) {}
  Opening line(kobubase::clsRandom& random) override;
  Opening lineOfPair(std::uint64_t seed, std::int64_t pair) override;
  std::size_t size() const { return lines_.size(); }

 private:
  std::vector<Opening> lines_;
  OpeningOrder order_;
  std::int64_t start_;
};

// The games of PGN text as coordinate lines, each cut at `plies`. Games
// without a move (set up from a position, or with an illegal first move) are
// skipped, each with a "# ..." line naming the game.
std::vector<Opening> readPgnLines(std::string_view text, int plies, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
