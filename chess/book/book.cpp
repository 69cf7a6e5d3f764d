#include "chess/book/book.h"

#include <algorithm>

namespace kbuChess {
namespace {

constexpr auto keyLess = [](const BookRecord& a, const BookRecord& b) { return a.key < b.key; };

void addCounts(BookRecord& into, const BookRecord& from) {
  into.wins += from.wins;
  into.losses += from.losses;
  into.draws += from.draws;
}

// Sorts a list by key and sums the counts of equal keys in place.
void sortAndCombine(std::vector<BookRecord>& list) {
  std::sort(list.begin(), list.end(), keyLess);
  std::size_t write = 0;
  for (std::size_t read = 0; read < list.size(); ++read) {
    if (write > 0 && list[write - 1].key == list[read].key) {
      addCounts(list[write - 1], list[read]);
    } else {
      list[write++] = list[read];
    }
  }
  list.resize(write);
}

// Number of keys that two key-ordered arrays have in common.
std::size_t commonKeys(const std::vector<BookRecord>& a, const std::vector<BookRecord>& b) {
  std::size_t common = 0;
  auto i = a.begin();
  auto j = b.begin();
  while (i != a.end() && j != b.end()) {
    if (i->key < j->key) {
      ++i;
    } else if (j->key < i->key) {
      ++j;
    } else {
      ++common, ++i, ++j;
    }
  }
  return common;
}

}  // namespace

void clsBook::clear() {
  std::vector<BookRecord>().swap(records_);
  capacity_ = 0;
}

// Grows the capacity figure by the book's rule until it holds `needed`.
void clsBook::reserveFor(std::size_t needed) {
  if (needed <= capacity_) return;
  while (capacity_ < needed) capacity_ = capacity_ * 5 / 4 + 1;
  records_.reserve(capacity_);
}

void clsBook::append(const BookRecord& record) {
  reserveFor(records_.size() + 1);
  records_.push_back(record);
}

void clsBook::insertAt(std::size_t index, const BookRecord& record) {
  reserveFor(records_.size() + 1);
  records_.insert(records_.begin() + static_cast<std::ptrdiff_t>(std::min(index, records_.size())), record);
}

void clsBook::add(const BookRecord& record) {
  const auto found = std::lower_bound(records_.begin(), records_.end(), record, keyLess);
  const auto place = static_cast<std::size_t>(found - records_.begin());
  if (found != records_.end() && found->key == record.key) {
    addCounts(*found, record);
  } else {
    insertAt(place, record);
  }
}

const BookRecord* clsBook::lookup(u64 key) const {
  const BookRecord probe{key, 0, 0, 0};
  auto found = std::lower_bound(records_.begin(), records_.end(), probe, keyLess);
  if (found == records_.end() || found->key != key) return nullptr;
  return &*found;
}

void clsBook::sortByKey() {
  if (isSorted()) return;
  sortAndCombine(records_);
}

bool clsBook::isSorted() const {
  for (std::size_t i = 1; i < records_.size(); ++i) {
    if (records_[i - 1].key >= records_[i].key) return false;
  }
  return true;
}

void clsBook::addMany(std::vector<BookRecord>& list) {
  if (list.empty()) return;
  sortAndCombine(list);
  mergeSortedUnique(list);
}

void clsBook::merge(const clsBook& other) {
  if (other.isSorted()) {
    mergeSortedUnique(other.records_);
    return;
  }
  std::vector<BookRecord> copy = other.records_;
  addMany(copy);
}

// One merge pass of two key-ordered arrays; equal keys sum their counts.
void clsBook::mergeSortedUnique(const std::vector<BookRecord>& list) {
  sortByKey();
  std::size_t newCapacity = capacity_;
  const std::size_t total = records_.size() + list.size() - commonKeys(records_, list);
  while (newCapacity < total) newCapacity = newCapacity * 5 / 4 + 1;
  std::vector<BookRecord> merged;
  merged.reserve(newCapacity);
  auto mine = records_.begin();
  auto theirs = list.begin();
  while (mine != records_.end() || theirs != list.end()) {
    if (theirs == list.end() || (mine != records_.end() && mine->key < theirs->key)) {
      merged.push_back(*mine++);
    } else if (mine == records_.end() || theirs->key < mine->key) {
      merged.push_back(*theirs++);
    } else {
      merged.push_back(*mine++);
      addCounts(merged.back(), *theirs++);
    }
  }
  records_.swap(merged);
  capacity_ = newCapacity;
}

}  // namespace kbuChess
