#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "chess/engine/engine.h"
#include "chess/engine/engine_share.h"
#include "chess/engine/search_control.h"

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
  const std::vector<std::string> lines = engine->output().takeAll();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines.front(), "# engine's running");
  EXPECT_EQ(lines.back(), "# engine stopped");

  // A stop right after the start is not lost.
  ASSERT_TRUE(engine->start());
  EXPECT_TRUE(engine->stop());
  EXPECT_FALSE(engine->stop());  // nothing left to join
}

// Boards built while a search runs (book probing, tournament games) share the
// key tables with it: the keys are drawn once, so a position keeps its key.
TEST(EngineThread, BoardsBuiltDuringASearchKeepTheKeys) {
  clsEngine engine;
  engine.output().setEcho(false);
  const u64 startKey = engine.positionKey();
  ASSERT_TRUE(engine.start());
  for (int i = 0; i < 20; ++i) {
    auto board = std::make_unique<clsBoard>();
    EXPECT_EQ(board->positionKey(), startKey);
    board->readFEN("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    board->perft(2, false);
  }
  engine.stop();
  clsBoard after;
  EXPECT_EQ(after.positionKey(), startKey);
}

// The resident memory of this process in KiB, from /proc.
long residentKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

// The table the search threads share must not be written when it is sized: a
// table nothing has read yet costs address space, not memory.
TEST(EngineShare, LargeTableIsNotTouchedWhenSized) {
  const long before = residentKiB();
  ASSERT_GT(before, 0);
  clsEngineShare share;
  share.sizeTable(512);
  ASSERT_EQ(share.entryCount(), 512u * 32768u);
  EXPECT_LT(residentKiB() - before, 64 * 1024);
  EXPECT_EQ(share.entryFor(12345)->key, 0u);
}

// The control of a timed search: the deadline stops the engine, and the move
// collected is the search's or, when it had none, the first legal one.
TEST(SearchControl, DeadlineStopsTheSearchAndAMoveIsCollected) {
  clsEngine engine;
  engine.output().setEcho(false);
  clsSearchControl control(engine);
  const auto run = [&control](std::int64_t ms) {
    EXPECT_TRUE(control.start(ms, 0));
    SearchPoll state = control.poll();
    for (; state == SearchPoll::RUNNING; state = control.poll()) kobubase::sleepMs(1);
    return state;
  };
  EXPECT_EQ(control.poll(), SearchPoll::IDLE);
  EXPECT_EQ(run(30), SearchPoll::TIME_EXPIRED);
  EXPECT_EQ(control.poll(), SearchPoll::ENDED);
  EXPECT_TRUE(control.collect().isMove());
  EXPECT_EQ(control.poll(), SearchPoll::IDLE);

  engine.readFEN("7k/5QQ1/8/8/8/8/8/K7 b - - 0 1");  // mated: nothing to play
  run(1000);
  EXPECT_FALSE(control.collect().isMove());

  engine.readFEN(clsBoard::START_FEN);
  engine.setNodeLimit(1);  // stopped before any root move finished
  run(1000);
  const Move first = control.collect();
  ASSERT_TRUE(first.isMove());
  EXPECT_TRUE(engine.readCoordinateMove(clsBoard::moveText(&first, false)));
}

}  // namespace
}  // namespace kbuChess
