#pragma once
// Entries of the opening book. clsBookEntry is one position of the book: its
// game counts and its book key; entries order by key. clsBookEntryExt is a
// candidate move found while probing: the counts of the position the move
// leads to plus the move's coordinate text; candidates order by score.
#include <cstdint>
#include <string>

namespace kbuChess {

// The three game counts and the key of one book position, as held in the
// book's array and written to the book file.
struct BookRecord {
  std::uint64_t key = 0;
  std::uint32_t wins = 0;
  std::uint32_t losses = 0;
  std::uint32_t draws = 0;
};

// Games played from a position, the "played" figure that limits compare with,
// and the score (2w + d) * 500 / games, 0 to 1000. The score is computed in 64
// bits so that huge counts cannot overflow; a position without games scores 0.
inline std::uint64_t bookGames(std::uint32_t w, std::uint32_t l, std::uint32_t d) {
  return std::uint64_t{w} + l + d;
}
// "played" is half the games, kept deliberately: the limits of existing books
// and of the commands that save and load them are counted in it.
inline std::uint64_t bookPlayed(std::uint32_t w, std::uint32_t l, std::uint32_t d) { return bookGames(w, l, d) / 2; }
inline std::int32_t bookScore(std::uint32_t w, std::uint32_t l, std::uint32_t d) {
  const std::uint64_t games = bookGames(w, l, d);
  if (games == 0) return 0;
  return static_cast<std::int32_t>((2 * std::uint64_t{w} + d) * 500 / games);
}

class clsBookEntry {
 public:
  clsBookEntry() = default;
  explicit clsBookEntry(const BookRecord& record)
      : wins(record.wins), losses(record.losses), draws(record.draws), key(record.key) {}
  virtual ~clsBookEntry() = default;

  // Same key.
  virtual bool equal(const clsBookEntry& other) const { return key == other.key; }
  // Greater key: the high 32 bits compared first, unsigned, then the low 32 bits.
  virtual bool greater(const clsBookEntry& other) const { return keyGreater(key, other.key); }

  static bool keyGreater(std::uint64_t a, std::uint64_t b) {
    const auto highA = static_cast<std::uint32_t>(a >> 32), highB = static_cast<std::uint32_t>(b >> 32);
    if (highA != highB) return highA > highB;
    return static_cast<std::uint32_t>(a) > static_cast<std::uint32_t>(b);
  }

  std::uint64_t games() const { return bookGames(wins, losses, draws); }
  std::uint64_t played() const { return bookPlayed(wins, losses, draws); }
  std::int32_t score() const { return bookScore(wins, losses, draws); }
  BookRecord record() const { return BookRecord{key, wins, losses, draws}; }

  std::uint32_t wins = 0;
  std::uint32_t losses = 0;
  std::uint32_t draws = 0;
  std::uint64_t key = 0;
};

class clsBookEntryExt : public clsBookEntry {
 public:
  clsBookEntryExt() = default;
  clsBookEntryExt(const BookRecord& record, std::string moveText)
      : clsBookEntry(record), move(std::move(moveText)) {}

  // Same score.
  bool equal(const clsBookEntry& other) const override { return score() == other.score(); }
  // Higher score.
  bool greater(const clsBookEntry& other) const override { return score() > other.score(); }

  std::string move;
};

}  // namespace kbuChess
