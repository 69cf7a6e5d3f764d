#include <gtest/gtest.h>

#include <memory>

#include "chess/engine/engine.h"

namespace kbuChess {
namespace {

TEST(EngineShare, SizesToAPowerOfTwo) {
  clsEngineShare share;
  EXPECT_EQ(share.entryFor(1), nullptr);
  share.sizeTable(1);
  EXPECT_EQ(share.entryCount(), 32768u);
  EXPECT_EQ(share.requestedBytes(), 1u << 20);
  share.sizeTable(3);  // 98304 entries round down
  EXPECT_EQ(share.entryCount(), 65536u);
  EXPECT_EQ(share.entryFor(65536 + 5), share.entryFor(5));
  EXPECT_EQ(share.entryFor(7)->key, 0u);
  share.sizeTable(0);
  EXPECT_EQ(share.entryCount(), 0u);
  EXPECT_EQ(share.entryFor(5), nullptr);
}

TEST(EngineShare, PlayedMoveRecordsTheNewPosition) {
  clsEngineShare share;
  share.sizeTable(1);
  auto engine = std::make_unique<clsEngine>(kobubase::clsOptions{}, &share);
  ASSERT_TRUE(engine->readCoordinateMove("e2e4"));
  const TTEntry* entry = share.entryFor(engine->positionKey());
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(engine->rootFrame()->ttEntry, entry);
  EXPECT_EQ(entry->key, engine->positionKey());
  EXPECT_EQ(entry->reserved, 0u);
  EXPECT_EQ(entry->word4, 1000);
  EXPECT_EQ(entry->score, -13);
  EXPECT_EQ(entry->word6, 64);

  auto without = std::make_unique<clsEngine>();
  ASSERT_TRUE(without->readCoordinateMove("e2e4"));
  EXPECT_EQ(without->rootFrame()->ttEntry, nullptr);
}

}  // namespace
}  // namespace kbuChess
