#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "chess/engine/engine_share.h"

namespace kbuChess {
namespace {

// The resident memory of this process in KiB, from /proc.
long residentKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

// A large table must not be written at start-up: a table that nothing has read
// yet costs address space, not memory, so "memory=100000" starts at once.
TEST(EngineShare, LargeTableIsNotTouchedWhenSized) {
  const long before = residentKiB();
  ASSERT_GT(before, 0);
  clsEngineShare share;
  share.sizeTable(512);
  ASSERT_EQ(share.entryCount(), 512u * 32768u);
  EXPECT_LT(residentKiB() - before, 64 * 1024);
  EXPECT_EQ(share.entryFor(12345)->key, 0u);
}

}  // namespace
}  // namespace kbuChess
