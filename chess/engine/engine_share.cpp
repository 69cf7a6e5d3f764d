#include "chess/engine/engine_share.h"

#include <bit>
#include <cstdlib>

namespace kbuChess {

void clsEngineShare::FreeTable::operator()(TTEntry* table) const { std::free(table); }

void clsEngineShare::sizeTable(std::int32_t mebibytes) {
  table_.reset();
  entryCount_ = 0;
  requestedBytes_ = 0;
  if (mebibytes <= 0) return;
  requestedBytes_ = static_cast<u64>(mebibytes) << 20;
  u64 count = std::bit_floor(requestedBytes_ / sizeof(TTEntry));
  // A size that cannot be met shrinks by halves until the allocation succeeds.
  // calloc hands large blocks over as fresh pages that the system zeroes when
  // first touched, so a big table costs nothing at start-up.
  while (count != 0) {
    table_.reset(static_cast<TTEntry*>(std::calloc(count, sizeof(TTEntry))));
    if (table_) break;
    count /= 2;
  }
  entryCount_ = count;
}

}  // namespace kbuChess
