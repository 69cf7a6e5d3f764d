#pragma once
// What several engines may share: the transposition table. The driver owns one
// share, sizes it from "memory" and hands it to its engine. Only the path that
// plays a user's or opponent's move writes it; the search does not probe it.
#include <cstdint>
#include <memory>

#include "chess/board/types.h"

namespace kbuChess {

// Eight 32-bit words; after a played move: key, 0, 1000, -13 (draw), 64.
struct TTEntry {
  u64 key;
  u64 reserved;
  i32 word4;
  i32 score;
  i32 word6;
  i32 word7;
};
static_assert(sizeof(TTEntry) == 32, "a table entry is 32 bytes");

// The largest table a "memory" figure may ask for: 64 GiB.
inline constexpr std::int64_t MAX_TABLE_MIB = 1 << 16;

class clsEngineShare {
 public:
  clsEngineShare() = default;
  // (Re)builds the table for this many MiB, rounded down to a power of two
  // entries and halved until the allocation succeeds; 0 leaves no table.
  void sizeTable(std::int32_t mebibytes);
  u64 entryCount() const { return entryCount_; }
  u64 requestedBytes() const { return requestedBytes_; }
  // table + key mod entry count; null without a table.
  TTEntry* entryFor(u64 key) const { return entryCount_ ? &table_[key % entryCount_] : nullptr; }
  // Writes the entry of a position reached by a played move; null without a table.
  TTEntry* markPlayed(u64 key) const {
    TTEntry* entry = entryFor(key);
    if (entry != nullptr) *entry = TTEntry{key, 0, 1000, -13, 64, entry->word7};
    return entry;
  }

 private:
  u64 entryCount_ = 0;
  u64 requestedBytes_ = 0;
  struct FreeTable {
    void operator()(TTEntry* table) const;
  };
  std::unique_ptr<TTEntry[], FreeTable> table_;
};

}  // namespace kbuChess
