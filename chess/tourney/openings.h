#pragma once
// Opening lines for games that should not all start from the same position:
// coordinate moves from the start position, played before the players take
// over. A source gives lines either from a random generator (random legal
// moves, or book moves as the engine would choose them) or from a suite file
// of ready lines (the games of a PGN file, each cut at a number of plies).
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

class clsOpenings {
 public:
  virtual ~clsOpenings() = default;
  virtual std::vector<std::string> line(kobubase::clsRandom& random) = 0;
  // The line of pair `pair` of a run seeded with `seed`: by default the line
  // drawn from a generator seeded with both.
  virtual std::vector<std::string> lineOfPair(std::uint64_t seed, std::int64_t pair);
};

// Random legal moves, `plies` of them (fewer when a game ends on the way).
class clsRandomOpenings : public clsOpenings {
 public:
  explicit clsRandomOpenings(int plies) : plies_(plies) {}
  std::vector<std::string> line(kobubase::clsRandom& random) override;

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
  std::vector<std::string> line(kobubase::clsRandom& random) override;

 private:
  const clsBook& book_;
};

enum class OpeningOrder { SEQUENTIAL, RANDOM };

// The lines of a suite file. Sequential order gives pair P the line
// (start + P) modulo the number of lines; random order a line drawn with the
// seed and P.
class clsSuiteOpenings : public clsOpenings {
 public:
  clsSuiteOpenings(std::vector<std::vector<std::string>> lines, OpeningOrder order, std::int64_t start)
      : lines_(std::move(lines)), order_(order), start_(start) {}
  std::vector<std::string> line(kobubase::clsRandom& random) override;
  std::vector<std::string> lineOfPair(std::uint64_t seed, std::int64_t pair) override;
  std::size_t size() const { return lines_.size(); }

 private:
  std::vector<std::vector<std::string>> lines_;
  OpeningOrder order_;
  std::int64_t start_;
};

// The games of PGN text as coordinate lines, each cut at `plies`. Games
// without a move (set up from a position, or with an illegal first move) are
// skipped, each with a "# ..." line naming the game.
std::vector<std::vector<std::string>> readPgnLines(std::string_view text, int plies, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
