#include "chess/tourney/external_engine.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "chess/board/board.h"
#include "chess/board/tables.h"

namespace {

using kbuChess::clsEngineInterface;
using kbuChess::clsExternalEngine;
using kobubase::nowMs;
using Lines = std::vector<std::string>;

constexpr int XBOARD = clsEngineInterface::PROTOCOL_XBOARD;
constexpr int UCI = clsEngineInterface::PROTOCOL_UCI;

class clsRecordingLog : public kbuChess::clsGameLog {
 public:
  void logPlayer(int colour, const std::string& text) override {
    std::lock_guard<std::mutex> guard(lock_);
    lines_.push_back(std::to_string(colour) + " " + text);
  }
  Lines lines() {
    std::lock_guard<std::mutex> guard(lock_);
    return lines_;
  }

 private:
  std::mutex lock_;
  Lines lines_;
};

// A fresh file for the fake engine to log what it receives.
std::string receivedLog(const std::string& name) {
  const std::string path = testing::TempDir() + "fake_" + name + "_" + std::to_string(getpid()) + ".log";
  std::remove(path.c_str());
  return path;
}

std::string readFile(const std::string& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// The next non-empty reply within timeoutMs, or "<nothing>".
std::string awaitReply(clsEngineInterface& engine, int timeoutMs) {
  for (const std::int64_t until = nowMs() + timeoutMs; nowMs() < until; kobubase::sleepMs(1)) {
    engine.Service();
    const std::string reply = engine.nextReply();
    if (!reply.empty()) return reply;
  }
  return "<nothing>";
}

// Whether the move is legal after the given moves from the start position.
bool legalAfter(const Lines& before, const std::string& move) {
  kbuChess::initTables();
  kbuChess::clsBoard board;
  board.readFEN(kbuChess::clsBoard::START_FEN);
  for (const std::string& earlier : before) {
    if (!board.readCoordinateMove(earlier)) return false;
  }
  return board.readCoordinateMove(move);
}

// One move for White, the exact commands the engine received and the
// dialogue in the game's log, then a stop that ends the program. An xboard
// engine counts as ready right after "protover 2", so its features are read
// during the game: declaring ping=1 then costs a ping, answered after the move.
TEST(ExternalEngineTest, XboardGameWithPing) {
  const std::string received = receivedLog("xboard");
  clsRecordingLog log;
  clsExternalEngine engine("fake", FAKE_ENGINE, "xboard ping log=" + received, XBOARD, &log);
  EXPECT_TRUE(engine.stopped());
  ASSERT_TRUE(engine.Prepare(0, 60000, 0));
  EXPECT_TRUE(engine.ready());
  EXPECT_TRUE(engine.IsAlive());
  EXPECT_FALSE(engine.pingSupported());
  engine.Go();
  const std::string reply = awaitReply(engine, 5000);
  ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
  EXPECT_TRUE(legalAfter({}, reply.substr(5)));
  EXPECT_TRUE(engine.pingSupported());
  EXPECT_EQ(engine.feature("myname"), "fake");
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(awaitReply(engine, 1000), "<nothing>");  // reads the pong
  EXPECT_TRUE(engine.ready());
  EXPECT_EQ(readFile(received), "xboard\nprotover 2\nnew\npost\nlevel 0 60 0\ntime 6000\notim 6000\ngo\nping 1\n");
  EXPECT_EQ(log.lines(), (Lines{"0 waiting for 'fake' initialization...", "0 --->\txboard", "0 --->\tprotover 2",
                                "0 --->\tnew", "0 --->\tpost", "0 --->\tlevel 0 60 0", "0 --->\ttime 6000",
                                "0 --->\totim 6000", "0 --->\tgo", "0 <---\tfeature myname=\"fake\" ping=1 done=1",
                                "0 --->\tping 1", "0 <---\t" + reply, "0 <---\tpong 1"}));
  const pid_t pid = engine.pid();
  engine.Stop();
  EXPECT_TRUE(engine.stopped());
  EXPECT_FALSE(engine.IsAlive());
  EXPECT_FALSE(engine.HasEnded());    // stopped on purpose
  EXPECT_EQ(engine.exitStatus(), 0);  // it obeyed "quit"
  EXPECT_EQ(kill(pid, 0), -1);
  std::remove(received.c_str());
}

// UCI as Black: the opponent's move goes out as a position, the ponder move
// after the best move is dropped.
TEST(ExternalEngineTest, UciAsBlackWithPonder) {
  const std::string received = receivedLog("uci");
  clsExternalEngine engine("fake uci", FAKE_ENGINE, "uci ponder log=" + received, UCI, nullptr);
  ASSERT_TRUE(engine.Prepare(1, 30000, 500));
  engine.PlayMove("e2e4", 0);
  const std::string reply = awaitReply(engine, 5000);
  ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
  EXPECT_TRUE(legalAfter({"e2e4"}, reply.substr(5)));
  EXPECT_EQ(readFile(received),
            "uci\nucinewgame\nposition startpos\nisready\nposition startpos moves e2e4 \n"
            "go wtime 30000 btime 30000 winc 500 binc 500\n");
  std::remove(received.c_str());
}

// A program that dies mid-game has ended; one that never moves has not.
TEST(ExternalEngineTest, CrashAndSilence) {
  clsExternalEngine crasher("crasher", FAKE_ENGINE, "xboard crash=1", XBOARD, nullptr);
  ASSERT_TRUE(crasher.Prepare(0, 60000, 0));
  crasher.Go();
  const std::string first = awaitReply(crasher, 5000);
  ASSERT_EQ(first.rfind("move ", 0), 0u);
  crasher.PlayMove(first.substr(5), 0);
  EXPECT_FALSE(crasher.HasEnded());
  crasher.PlayMove("e7e5", 1);  // asked for its second move, it ends
  EXPECT_EQ(awaitReply(crasher, 3000), "<nothing>");
  EXPECT_TRUE(crasher.HasEnded());
  EXPECT_FALSE(crasher.IsAlive());
  EXPECT_EQ(crasher.exitStatus(), 3);

  clsExternalEngine silent("silent", FAKE_ENGINE, "xboard silent", XBOARD, nullptr);
  ASSERT_TRUE(silent.Prepare(0, 60000, 0));
  silent.Go();
  EXPECT_EQ(awaitReply(silent, 1000), "<nothing>");
  EXPECT_FALSE(silent.HasEnded());
  EXPECT_TRUE(silent.IsAlive());
}

// Garbage and a 100 KB line are logged and skipped; illegal moves, result
// claims and resignations come through as the game must judge them.
TEST(ExternalEngineTest, OddRepliesReachTheGameAsTranslated) {
  clsRecordingLog log;
  clsExternalEngine noisy("noisy", FAKE_ENGINE, "xboard garbage", XBOARD, &log);
  ASSERT_TRUE(noisy.Prepare(0, 60000, 0));
  noisy.Go();
  const std::string reply = awaitReply(noisy, 5000);
  EXPECT_EQ(reply.rfind("move ", 0), 0u) << reply;
  const Lines lines = log.lines();
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(lines[lines.size() - 3], "0 <---\t\x01\x7f garbage \xff\xfe line");
  EXPECT_EQ(lines[lines.size() - 2], "0 <---\t" + std::string(100 * 1024, 'g'));

  clsExternalEngine illegal("illegal", FAKE_ENGINE, "xboard illegal", XBOARD, nullptr);
  ASSERT_TRUE(illegal.Prepare(0, 60000, 0));
  illegal.Go();
  EXPECT_EQ(awaitReply(illegal, 5000), "move a2a5");

  clsExternalEngine claimer("claimer", FAKE_ENGINE, "xboard \"claim=1/2-1/2 {draw claimed}\"", XBOARD, nullptr);
  ASSERT_TRUE(claimer.Prepare(0, 60000, 0));
  claimer.Go();
  EXPECT_EQ(awaitReply(claimer, 5000), "result 1/2-1/2");

  clsRecordingLog resignLog;
  clsExternalEngine resigner("resigner", FAKE_ENGINE, "xboard claim=resign", XBOARD, &resignLog);
  ASSERT_TRUE(resigner.Prepare(1, 60000, 0));
  resigner.PlayMove("e2e4", 0);
  EXPECT_EQ(awaitReply(resigner, 1000), "<nothing>");
  EXPECT_EQ(resignLog.lines().back(), "1 <---\tresign");
}

// A program that ignores "quit" is terminated all the same.
TEST(ExternalEngineTest, StopEndsAProgramThatIgnoresQuit) {
  clsExternalEngine stubborn("stubborn", FAKE_ENGINE, "uci ignorequit", UCI, nullptr);
  ASSERT_TRUE(stubborn.Prepare(0, 60000, 0));
  const pid_t pid = stubborn.pid();
  stubborn.Kill();
  EXPECT_FALSE(stubborn.alive());
  EXPECT_EQ(stubborn.exitStatus(), 128 + SIGKILL);
  EXPECT_EQ(kill(pid, 0), -1);
}

// Never ready: a UCI engine that never says "uciok" fails preparation after
// the whole wait (about 20 s of real time).
TEST(ExternalEngineTest, NeverReadyFailsPreparation) {
  clsExternalEngine mute("mute", FAKE_ENGINE, "uci noready", UCI, nullptr);
  const std::int64_t started = nowMs();
  EXPECT_FALSE(mute.Prepare(0, 60000, 0));
  EXPECT_GE(nowMs() - started, clsEngineInterface::START_PAUSE_MS + clsEngineInterface::READY_ROUNDS);
  EXPECT_FALSE(mute.ready());
  EXPECT_FALSE(mute.IsAlive());
  EXPECT_FALSE(mute.HasEnded());
}

// A program that is not there: an xboard adapter counts as ready at once and
// shows as ended; a UCI one fails preparation without the long wait.
TEST(ExternalEngineTest, MissingProgram) {
  clsExternalEngine missing("missing", "/nonexistent/engine", "", UCI, nullptr);
  EXPECT_FALSE(missing.Prepare(0, 60000, 0));
  EXPECT_TRUE(missing.HasEnded());
  EXPECT_EQ(missing.startError(), "# error 2: No such file or directory");
}

// The real engines from the distribution, one move each from the start.
TEST(ExternalEngineTest, RealEnginesPlayAMove) {
  for (const auto& [name, program, protocol] :
       {std::tuple{"fairymax", "/usr/games/fairymax", XBOARD}, std::tuple{"stockfish", "/usr/games/stockfish", UCI}}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(std::filesystem::exists(program)) << program << " is missing: install the package " << name;
    clsExternalEngine engine(name, program, "", protocol, nullptr);
    ASSERT_TRUE(engine.Prepare(0, 10000, 0));
    engine.Go();
    const std::string reply = awaitReply(engine, 20000);
    ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
    EXPECT_TRUE(legalAfter({}, reply.substr(5))) << reply;
    engine.Stop();
    EXPECT_FALSE(engine.alive());
  }
}

}  // namespace
