#pragma once
// clsBook: the opening book in memory. A sorted array of positions (book key
// and game counts), without moves: the moves of a position are found by
// playing each legal move and looking the resulting position up. The driver
// owns one book and hands it to its engine as the engine's book probe.
//
// Entries are held by value in one array in ascending key order with no two
// entries of the same key. The array grows by the rule capacity * 5 / 4 + 1,
// and capacity() reports that figure.
#include <cstddef>
#include <string>
#include <vector>

#include "chess/board/board.h"
#include "chess/book/book_entry.h"
#include "chess/board/book_probe.h"

namespace kbuChess {

class clsBook : public clsBookProbe {
 public:
  // Below this share of the summed weights a candidate is never played.
  static constexpr double MIN_WEIGHT_SHARE = 0.02;

  clsBook() = default;

  // --- contents
  std::size_t count() const { return records_.size(); }
  std::size_t capacity() const { return capacity_; }
  bool empty() const { return records_.empty(); }
  const BookRecord& at(std::size_t index) const { return records_[index]; }
  const std::vector<BookRecord>& records() const { return records_; }
  // Drops every entry and gives the memory back.
  void clear();

  // Puts the record at the end, whatever its key.
  void append(const BookRecord& record);
  // Puts the record at index, moving the later ones up.
  void insertAt(std::size_t index, const BookRecord& record);
  // Adds the counts to the entry of the same key, or inserts a new entry at its place.
  void add(const BookRecord& record);
  // The entry of this key, or null.
  const BookRecord* lookup(u64 key) const;
  // Brings the array into key order and sums the counts of equal keys.
  void sortByKey();
  bool isSorted() const;
  // Adds every record of the list (which it sorts) into the book in one pass.
  void addMany(std::vector<BookRecord>& list);
  void merge(const clsBook& other);

  // --- probing (book_probe.cpp)
  // Candidates of the board's position, sorted by ascending score. The board is
  // left as found: same position, same frame.
  int listCandidates(clsBoard& board, std::vector<clsBookEntryExt>& list) const;
  // Drops the candidates whose weight share is too small; returns how many stay.
  static std::size_t cutRareCandidates(std::vector<clsBookEntryExt>& list);
  // Chooses among the candidates that are not too rare, uniformly.
  bool bookMove(clsBoard& board, Move& chosen) override;

 private:
  void reserveFor(std::size_t needed);
  void mergeSortedUnique(const std::vector<BookRecord>& list);

  std::vector<BookRecord> records_;
  std::size_t capacity_ = 0;
};

}  // namespace kbuChess
