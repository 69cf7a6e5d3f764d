#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "chess/tourney/engine_interface.h"

namespace {

using kbuChess::clsEngineInterface;
using kbuChess::clsGameLog;
using Lines = std::vector<std::string>;

// An adapter without a process: commands are recorded, replies come from a
// list, so the protocol logic is checked line by line.
class clsScripted : public clsEngineInterface {
 public:
  explicit clsScripted(int protocol, clsGameLog* owner = nullptr) : clsEngineInterface("scripted", protocol, owner) {}
  bool Start() override {
    stopped_ = false;
    return true;
  }
  void Stop() override { stopped_ = true; }
  std::string ReadReply() override {
    if (incoming.empty()) return {};
    const std::string line = incoming.front();
    incoming.pop_front();
    return translate(line);
  }
  void Send(const std::string& text) override { sent.push_back(text); }
  bool IsAlive() override { return ready_; }
  // Translates one line; the commands it caused are in sent.
  std::string reply(const std::string& line) {
    incoming.push_back(line);
    return ReadReply();
  }
  Lines takeSent() { return std::exchange(sent, {}); }

  Lines sent;
  std::deque<std::string> incoming;
};

class clsRecordingLog : public clsGameLog {
 public:
  void logPlayer(int colour, const std::string& text) override { lines.emplace_back(colour, text); }
  std::vector<std::pair<int, std::string>> lines;
};

TEST(AdapterTest, XboardRepliesAreTranslated) {
  clsScripted engine(clsEngineInterface::PROTOCOL_XBOARD);
  EXPECT_EQ(engine.reply("move e2e4"), "move e2e4");
  EXPECT_EQ(engine.reply("move e7e8q {promotes}"), "move e7e8q");
  EXPECT_EQ(engine.reply("move"), "move ");
  EXPECT_EQ(engine.reply("1/2-1/2 {Draw by repetition}"), "result 1/2-1/2");
  EXPECT_EQ(engine.reply("1-0 {White mates}"), "result 1-0");
  EXPECT_EQ(engine.reply("0-1"), "result 0-1");
  EXPECT_EQ(engine.reply("resign"), "");
  EXPECT_EQ(engine.reply("12 35 104 20311 e2e4 e7e5"), "");  // a thinking line
  EXPECT_EQ(engine.reply("1 -3 0 12 e2e4"), "");             // "1" alone is no result
  EXPECT_EQ(engine.reply("Error (unknown command): post"), "");
  EXPECT_EQ(engine.reply("bestmove e2e4"), "");
  EXPECT_EQ(engine.reply(""), "");
  EXPECT_EQ(engine.takeSent(), Lines{});
}

TEST(AdapterTest, UciRepliesAreTranslated) {
  clsScripted engine(clsEngineInterface::PROTOCOL_UCI);
  EXPECT_EQ(engine.reply("id name Some Engine"), "");
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.reply("uciok"), "");
  EXPECT_TRUE(engine.ready());
  EXPECT_EQ(engine.reply("info depth 12 score cp 31 pv e2e4 e7e5"), "");
  EXPECT_EQ(engine.reply("bestmove g1f3 ponder d7d5"), "move g1f3");
  EXPECT_EQ(engine.reply("bestmove a7a8q"), "move a7a8q");
  EXPECT_EQ(engine.reply("move e2e4"), "");
  EXPECT_EQ(engine.reply("1-0"), "");
}

// Declaring ping=1 (even with done=1) sends a ping at once; only the
// matching pong makes the engine ready, a stale one does not.
TEST(AdapterTest, XboardFeaturesPingAndPong) {
  clsScripted engine(clsEngineInterface::PROTOCOL_XBOARD);
  EXPECT_EQ(engine.reply("pong"), "");  // no ping sent yet: counter 0 matches
  EXPECT_TRUE(engine.ready());
  EXPECT_EQ(engine.reply("feature myname=\"Some Engine 2.1\" ping=1 done=1"), "");
  EXPECT_TRUE(engine.pingSupported());
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.takeSent(), Lines{"ping 1"});
  EXPECT_EQ(engine.feature("myname"), "Some Engine 2.1");
  EXPECT_EQ(engine.feature("done"), "1");
  EXPECT_EQ(engine.reply("pong 0"), "");
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.reply("pong"), "");
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.reply("pong 1"), "");
  EXPECT_TRUE(engine.ready());
  engine.Sync();
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.takeSent(), Lines{"ping 2"});
  EXPECT_EQ(engine.reply("pong 2 extra"), "");
  EXPECT_TRUE(engine.ready());

  // done=0 holds readiness back until done=1; ping=0 needs no ping.
  clsScripted slow(clsEngineInterface::PROTOCOL_XBOARD);
  slow.reply("feature done=0");
  EXPECT_FALSE(slow.ready());
  slow.reply("feature san=0 ping=0 time=1");
  EXPECT_TRUE(slow.ready());
  EXPECT_FALSE(slow.pingSupported());
  slow.reply("feature done=0");
  slow.reply("feature done=1");
  EXPECT_TRUE(slow.ready());
  EXPECT_EQ(slow.feature("done"), "1");
  EXPECT_EQ(slow.feature("time"), "1");
  EXPECT_EQ(slow.feature("sigint"), "");
  EXPECT_EQ(slow.takeSent(), Lines{});
}

// The commands of a game for White, clocks in centiseconds, integer
// division toward zero, the base time in whole seconds.
TEST(AdapterTest, XboardCommandSequence) {
  clsScripted engine(clsEngineInterface::PROTOCOL_XBOARD);
  engine.Init();
  EXPECT_TRUE(engine.ready());
  EXPECT_EQ(engine.takeSent(), (Lines{"xboard", "protover 2"}));
  ASSERT_TRUE(engine.Prepare(0, 65432, 2999));  // ready already: only a new game
  EXPECT_EQ(engine.takeSent(), (Lines{"new", "post", "level 0 65 2"}));
  engine.Go();
  EXPECT_EQ(engine.takeSent(), (Lines{"time 6543", "otim 6543", "go"}));
  engine.PlayMove("e2e4", 0);  // our own move: nothing to send
  EXPECT_EQ(engine.takeSent(), Lines{});
  engine.setClocks(-15, 1009);
  engine.PlayMove("e7e5", 1);
  EXPECT_EQ(engine.takeSent(), (Lines{"time -1", "otim 100", "e7e5"}));
  EXPECT_EQ(engine.moveHistory(), "e2e4 e7e5 ");
  engine.PlayMove("d7d8=q", 1);
  EXPECT_EQ(engine.takeSent(), (Lines{"time -1", "otim 100", "d7d8q"}));
  engine.Quit();
  EXPECT_EQ(engine.takeSent(), Lines{"quit"});
  engine.NewGame();
  EXPECT_EQ(engine.moveHistory(), "");
}

// UCI as Black: the handshake, the position rebuilt from the history, and
// "go" with White's (the opponent's) clock first.
TEST(AdapterTest, UciCommandSequenceAsBlack) {
  clsScripted engine(clsEngineInterface::PROTOCOL_UCI);
  engine.Init();
  EXPECT_EQ(engine.takeSent(), Lines{"uci"});
  EXPECT_FALSE(engine.ready());
  engine.reply("uciok");
  ASSERT_TRUE(engine.Prepare(1, 60000, 1500));
  EXPECT_EQ(engine.takeSent(), (Lines{"ucinewgame", "position startpos", "isready"}));
  EXPECT_FALSE(engine.ready());
  engine.reply("readyok");
  EXPECT_TRUE(engine.ready());
  engine.setClocks(59000, 41234);
  engine.PlayMove("e2e4", 0);
  EXPECT_EQ(engine.takeSent(),
            (Lines{"position startpos moves e2e4 ", "go wtime 41234 btime 59000 winc 1500 binc 1500"}));
  engine.PlayMove("c7c5", 1);
  engine.PlayMove("g1f3", 0);
  EXPECT_EQ(engine.takeSent()[0], "position startpos moves e2e4 c7c5 g1f3 ");
  engine.PlayMove("b7b8=n", 1);
  engine.PlayMove("a2a1q", 0);
  EXPECT_EQ(engine.takeSent()[0], "position startpos moves e2e4 c7c5 g1f3 b7b8n a2a1q ");

  clsScripted white(clsEngineInterface::PROTOCOL_UCI);
  white.reply("uciok");
  white.Prepare(0, 1000, 0);
  white.setClocks(999, 1001);
  white.takeSent();
  white.Go();
  EXPECT_EQ(white.takeSent(), Lines{"go wtime 999 btime 1001 winc 0 binc 0"});
}

// An opening: xboard engines take it in force mode and are set going by their
// own first move ("go") or after the opponent's first move; UCI engines get
// it with their first position.
TEST(AdapterTest, OpeningsBeforeTheFirstMove) {
  clsScripted xboardWhite(clsEngineInterface::PROTOCOL_XBOARD);
  clsScripted xboardBlack(clsEngineInterface::PROTOCOL_XBOARD);
  clsScripted uciWhite(clsEngineInterface::PROTOCOL_UCI);
  xboardWhite.Prepare(0, 1000, 0);
  xboardBlack.Prepare(1, 1000, 0);
  uciWhite.reply("uciok");
  uciWhite.Prepare(0, 1000, 0);
  uciWhite.reply("readyok");
  for (clsScripted* engine : {&xboardWhite, &xboardBlack, &uciWhite}) {
    engine->takeSent();
    engine->setClocks(1000, 1000);
    engine->PlayOpeningMove("e2e4");
    engine->PlayOpeningMove("e7e5");
  }
  EXPECT_EQ(xboardWhite.takeSent(), (Lines{"force", "e2e4", "e7e5"}));
  xboardWhite.Go();
  EXPECT_EQ(xboardWhite.takeSent(), (Lines{"time 100", "otim 100", "go"}));
  xboardWhite.PlayMove("g1f3", 0);
  xboardWhite.PlayMove("b8c6", 1);
  EXPECT_EQ(xboardWhite.takeSent(), (Lines{"time 100", "otim 100", "b8c6"}));  // no second "go"
  xboardBlack.takeSent();
  xboardBlack.PlayMove("g1f3", 0);
  EXPECT_EQ(xboardBlack.takeSent(), (Lines{"time 100", "otim 100", "g1f3", "go"}));
  EXPECT_EQ(uciWhite.takeSent(), Lines{});
  uciWhite.Go();
  EXPECT_EQ(uciWhite.takeSent(),
            (Lines{"position startpos moves e2e4 e7e5 ", "go wtime 1000 btime 1000 winc 0 binc 0"}));
}

// Preparing a fresh adapter: start, the waiting line, the handshake, then
// the new game once the engine is ready.
TEST(AdapterTest, PrepareWaitsForTheHandshake) {
  clsRecordingLog log;
  clsScripted engine(clsEngineInterface::PROTOCOL_UCI, &log);
  engine.incoming = {"id name Some Engine", "uciok"};
  ASSERT_TRUE(engine.Prepare(1, 5000, 0));
  EXPECT_FALSE(engine.stopped());
  EXPECT_EQ(engine.takeSent(), (Lines{"uci", "ucinewgame", "position startpos", "isready"}));
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0], std::make_pair(1, std::string("waiting for 'scripted' initialization...")));
}

// Without an owner the log goes to the console; the embedded engine's
// replies come out of its own output buffer.
TEST(AdapterTest, ConsoleLogAndRepliesFromTheOutputBuffer) {
  auto& console = kobubase::clsTSafeOutput::instance();
  console.flush();
  console.setCapture(true);
  clsScripted engine(clsEngineInterface::PROTOCOL_XBOARD);
  engine.Log("--->\tnew");
  const std::vector<std::string> captured = console.captured();
  console.setCapture(false);
  console.flush();
  ASSERT_GE(captured.size(), 1u);
  EXPECT_EQ(captured[0], "# =====>\tscripted:\t--->\tnew");

  engine.setEcho(false);
  engine.setKeep(true);
  EXPECT_EQ(engine.nextReply(), "");
  engine.print("move e2e4");
  engine.incoming = {"move d2d4"};
  EXPECT_EQ(engine.nextReply(), "move d2d4");  // the process's replies first
  EXPECT_EQ(engine.nextReply(), "move e2e4");
  EXPECT_EQ(engine.nextReply(), "");
}

}  // namespace
