#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "chess/engine/engine.h"

namespace kbuChess {
namespace {

TEST(EngineThread, StopEndsADeepSearchWithALegalMove) {
  auto engine = std::make_unique<clsEngine>();
  engine->output().setEcho(false);
  engine->output().setKeep(true);
  ASSERT_TRUE(engine->start());
  // Wait until the first iteration has produced a move, reading only what the driver may read.
  while (!engine->bestMove().isMove()) kobubase::sleepMs(1);
  (void)engine->thinkingLine(10);
  EXPECT_TRUE(engine->stop());
  EXPECT_FALSE(engine->searching());
  const Move best = engine->bestMove();
  ASSERT_TRUE(best.isMove());
  EXPECT_TRUE(engine->playMove(best.from, best.to, best.isPromotion() ? 'q' : ' '));
  std::string line;
  ASSERT_TRUE(engine->output().takeLine(line));
  EXPECT_EQ(line, "# engine's running");
  std::string last;
  while (engine->output().takeLine(line)) last = line;
  EXPECT_EQ(last, "# engine stopped");

  // A stop right after the start is not lost.
  ASSERT_TRUE(engine->start());
  EXPECT_TRUE(engine->stop());
  EXPECT_FALSE(engine->stop());  // nothing left to join
}

}  // namespace
}  // namespace kbuChess
