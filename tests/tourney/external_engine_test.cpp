#include "chess/tourney/external_engine.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "chess/board/board.h"
#include "tests/tourney/tourney_test_util.h"

// Faults that end a game (crashes, silence, illegal moves, claims) are judged
// by the whole runs in tourney_run_test; these tests look at the process itself.
namespace {

using kbuChess::clsEngineInterface;
using kbuChess::clsExternalEngine;
using namespace tourney_test;

constexpr int XBOARD = clsEngineInterface::PROTOCOL_XBOARD;
constexpr int UCI = clsEngineInterface::PROTOCOL_UCI;

// One move for White and the exact dialogue in the game's log, then a stop
// that ends the program. The features are read before the game starts:
// ping=1 costs a ping, answered before "new"; done=1 makes "level" read as
// the protocol defines it (minutes).
TEST(ExternalEngineTest, XboardGameWithPing) {
  clsRecordingLog log;
  clsExternalEngine engine("fake", FAKE_ENGINE, "xboard ping", XBOARD, &log);
  EXPECT_TRUE(engine.stopped());
  ASSERT_TRUE(engine.Prepare(0, 60000, 0));
  EXPECT_TRUE(engine.ready() && engine.IsAlive());
  engine.Go();
  const std::string reply = awaitReply(engine, 5000);
  ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
  EXPECT_TRUE(kbuChess::clsBoard().readCoordinateMove(reply.substr(5))) << reply;
  EXPECT_EQ(log.lines(), (Lines{"0 waiting for 'fake' initialization...", "0 --->\txboard", "0 --->\tprotover 2",
                                "0 <---\tfeature myname=\"fake\" ping=1 done=1", "0 --->\tping 1", "0 <---\tpong 1",
                                "0 --->\tnew", "0 --->\tpost", "0 --->\tlevel 0 1 0", "0 --->\ttime 6000",
                                "0 --->\totim 6000", "0 --->\tgo", "0 <---\t" + reply}));
  const pid_t pid = engine.pid();
  engine.Stop();
  EXPECT_TRUE(engine.stopped());
  EXPECT_FALSE(engine.IsAlive());
  EXPECT_FALSE(engine.HasEnded());    // stopped on purpose
  EXPECT_EQ(engine.exitStatus(), 0);  // it obeyed "quit"
  EXPECT_EQ(kill(pid, 0), -1);
}

// A garbage line is logged as it came and skipped; a 100 KB line is cut at 64 KB.
TEST(ExternalEngineTest, GarbageAndLongLinesAreLoggedAndSkipped) {
  clsRecordingLog log;
  clsExternalEngine noisy("noisy", FAKE_ENGINE, "xboard garbage", XBOARD, &log);
  ASSERT_TRUE(noisy.Prepare(0, 60000, 0));
  noisy.Go();
  const std::string reply = awaitReply(noisy, 5000);
  EXPECT_EQ(reply.rfind("move ", 0), 0u) << reply;
  const Lines lines = log.lines();
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(lines[lines.size() - 3], "0 <---\t\x01\x7f garbage \xff\xfe line");
  EXPECT_EQ(lines[lines.size() - 2], "0 <---\t" + std::string(64 * 1024, 'g'));
}

// A program that ignores "quit" is killed. (A missing one loses its games in
// the whole-run tests, which print its start problem.)
TEST(ExternalEngineTest, StubbornProgramIsKilled) {
  clsExternalEngine stubborn("stubborn", FAKE_ENGINE, "uci ignorequit", UCI, nullptr);
  ASSERT_TRUE(stubborn.Prepare(0, 60000, 0));
  const pid_t pid = stubborn.pid();
  stubborn.Kill();
  EXPECT_FALSE(stubborn.alive());
  EXPECT_EQ(stubborn.exitStatus(), 128 + SIGKILL);
  EXPECT_EQ(kill(pid, 0), -1);
}

}  // namespace
