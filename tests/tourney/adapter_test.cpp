#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <utility>

#include "chess/tourney/engine_interface.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using kbuChess::clsEngineInterface;
using tourney_test::Lines;

constexpr int XBOARD = clsEngineInterface::PROTOCOL_XBOARD;
constexpr int UCI = clsEngineInterface::PROTOCOL_UCI;

// An adapter without a process: commands are recorded, replies come from a
// list, so the protocol logic is checked line by line.
class clsScripted : public clsEngineInterface {
 public:
  explicit clsScripted(int protocol) : clsEngineInterface("scripted", protocol, nullptr) {}
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

TEST(AdapterTest, RepliesAreTranslatedPerProtocol) {
  const struct {
    int protocol;
    const char *line, *translated;
  } cases[] = {
      {XBOARD, "move e2e4", "move e2e4"},
      {XBOARD, "move e7e8q {promotes}", "move e7e8q"},
      {XBOARD, "move", "move "},
      {XBOARD, "My move is : e7e5", "move e7e5"},  // GNU Chess
      {XBOARD, "My move is: O-O", "move O-O"},
      {XBOARD, "1/2-1/2 {Draw by repetition}", "result 1/2-1/2"},
      {XBOARD, "1-0 {White mates}", "result 1-0"},
      {XBOARD, "resign", ""},
      {XBOARD, "12 35 104 20311 e2e4 e7e5", ""},  // a thinking line
      {XBOARD, "1 -3 0 12 e2e4", ""},             // "1" alone is no result
      {XBOARD, "bestmove e2e4", ""},
      {XBOARD, "", ""},
      {UCI, "info depth 12 score cp 31 pv e2e4 e7e5", ""},
      {UCI, "bestmove g1f3 ponder d7d5", "move g1f3"},
      {UCI, "move e2e4", ""},
      {UCI, "1-0", ""},
  };
  for (const auto& c : cases) {
    clsScripted engine(c.protocol);
    EXPECT_EQ(engine.reply(c.line), c.translated) << c.line;
    EXPECT_EQ(engine.takeSent(), Lines{}) << c.line;
  }
}

// Declaring ping=1 (even with done=1) sends a ping at once; only the
// matching pong makes the engine ready, a stale one does not.
TEST(AdapterTest, XboardFeaturesPingAndPong) {
  clsScripted engine(XBOARD);
  EXPECT_EQ(engine.reply("pong"), "");  // no ping sent yet: counter 0 matches
  EXPECT_TRUE(engine.ready());
  EXPECT_EQ(engine.reply("feature myname=\"Some Engine 2.1\" ping=1 done=1"), "");
  EXPECT_TRUE(engine.pingSupported());
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.takeSent(), Lines{"ping 1"});
  EXPECT_EQ(engine.feature("myname"), "Some Engine 2.1");
  engine.reply("pong 0");
  engine.reply("pong");
  EXPECT_FALSE(engine.ready());
  engine.reply("pong 1");
  EXPECT_TRUE(engine.ready());
  engine.Sync();
  EXPECT_FALSE(engine.ready());
  EXPECT_EQ(engine.takeSent(), Lines{"ping 2"});
  engine.reply("pong 2 extra");
  EXPECT_TRUE(engine.ready());

  // done=0 holds readiness back until done=1, whatever comes between; each
  // key changes only what it names, so a ping declared on a line of its own
  // (answered before done=1 comes) still counts.
  clsScripted slow(XBOARD);
  for (const char* line : {"feature done=0", "feature san=0 time=1", "feature ping=1", "pong 1", "feature usermove=1"})
    slow.reply(line);
  EXPECT_FALSE(slow.ready());
  EXPECT_EQ(slow.takeSent(), Lines{"ping 1"});
  EXPECT_TRUE(slow.pingSupported());
  slow.reply("feature done=1");
  EXPECT_TRUE(slow.ready());
  EXPECT_EQ(slow.feature("done") + slow.feature("time") + slow.feature("sigint"), "11");
  EXPECT_EQ(slow.takeSent(), Lines{});
}

// An engine that finished its features with done=1 gets "level" as the
// protocol reads it, and its moves as it asked for them (usermove, san).
TEST(AdapterTest, XboardFeaturesShapeTheCommands) {
  const struct {
    const char* features;
    const char* level;
    const char* move;
  } cases[] = {
      {"feature usermove=1 done=1", "level 0 1:05 2.999", "usermove g1f3"},
      {"feature san=1 usermove=1 done=1", "level 0 1:05 2.999", "usermove Nf3"},
      {"feature san=1 done=1", "level 0 1:05 2.999", "Nf3"},
      {"feature usermove=0 myname=old", "level 0 65 2", "g1f3"},  // no done=1: as engines always were
  };
  for (const auto& c : cases) {
    clsScripted engine(XBOARD);
    engine.Init();
    engine.reply(c.features);
    engine.setClocks(65432, 65432);
    engine.Prepare(1, 65432, 2999);
    engine.PlayMove("g1f3", 0, "Nf3");
    const Lines sent = engine.takeSent();
    ASSERT_GE(sent.size(), 3u) << c.features;
    EXPECT_EQ(sent[sent.size() - 4], c.level) << c.features;
    EXPECT_EQ(sent.back(), c.move) << c.features;
  }
}

// Scores come from xboard thinking lines and UCI info lines, from the
// engine's side, once each.
TEST(AdapterTest, ScoresFromThinkingLines) {
  const struct {
    int protocol;
    const char* line;
    int score;  // -1: none
  } cases[] = {
      {XBOARD, "12 35 104 20311 e2e4 e7e5", 35},
      {XBOARD, "7 -240 10 20922 Nc6", -240},
      {XBOARD, "1-0 {mate}", -1},
      {XBOARD, "-3 56 10 20922 Nc6", -1},
      {UCI, "info depth 12 score cp -31 pv e2e4", -31},
      {UCI, "info depth 3 score mate 2 pv a1a8", 99998},
      {UCI, "info depth 3 score mate -1", -99999},
      {UCI, "info string score cp 5", -1},
  };
  for (const auto& c : cases) {
    clsScripted engine(c.protocol);
    engine.reply(c.line);
    EXPECT_EQ(engine.takeScore().value_or(-1), c.score) << c.line;
    EXPECT_FALSE(engine.takeScore().has_value()) << c.line;
  }
}

// The commands of a game for White, clocks in centiseconds, integer
// division toward zero, the base time in whole seconds.
TEST(AdapterTest, XboardCommandSequence) {
  clsScripted engine(XBOARD);
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
  clsScripted engine(UCI);
  engine.Init();
  EXPECT_EQ(engine.takeSent(), Lines{"uci"});
  EXPECT_FALSE(engine.ready());
  engine.reply("uciok");
  EXPECT_TRUE(engine.ready());
  ASSERT_TRUE(engine.Prepare(1, 60000, 1500));
  EXPECT_EQ(engine.takeSent(), (Lines{"ucinewgame", "position startpos", "isready"}));
  EXPECT_FALSE(engine.ready());
  engine.reply("readyok");
  EXPECT_TRUE(engine.ready());
  engine.setClocks(59000, 41234);
  engine.PlayMove("e2e4", 0);
  EXPECT_EQ(engine.takeSent(),
            (Lines{"position startpos moves e2e4 ", "go wtime 41234 btime 59000 winc 1500 binc 1500"}));
  for (const char* move : {"c7c5", "g1f3", "b7b8=n", "a2a1q"}) engine.PlayMove(move, move[1] == '7');
  const Lines sent = engine.takeSent();
  ASSERT_EQ(sent.size(), 4u);
  EXPECT_EQ(sent[0], "position startpos moves e2e4 c7c5 g1f3 ");
  EXPECT_EQ(sent[2], "position startpos moves e2e4 c7c5 g1f3 b7b8n a2a1q ");
}

// An opening: xboard engines take it in force mode and are set going by their
// own first move ("go") or after the opponent's first move; UCI engines get
// it with their first position.
TEST(AdapterTest, OpeningsBeforeTheFirstMove) {
  clsScripted xboardWhite(XBOARD), xboardBlack(XBOARD), uciWhite(UCI);
  xboardWhite.Prepare(0, 1000, 0);
  xboardBlack.Prepare(1, 1000, 0);
  uciWhite.reply("uciok");
  uciWhite.Prepare(0, 1000, 0);
  uciWhite.reply("readyok");
  for (clsScripted* engine : {&xboardWhite, &xboardBlack, &uciWhite}) {
    engine->takeSent();
    engine->setClocks(1000, 2000);
    engine->PlayOpeningMove("e2e4");
    engine->PlayOpeningMove("e7e5");
  }
  EXPECT_EQ(xboardWhite.takeSent(), (Lines{"force", "e2e4", "e7e5"}));
  xboardWhite.Go();
  EXPECT_EQ(xboardWhite.takeSent(), (Lines{"time 100", "otim 200", "go"}));
  xboardWhite.PlayMove("g1f3", 0);
  xboardWhite.PlayMove("b8c6", 1);
  EXPECT_EQ(xboardWhite.takeSent(), (Lines{"time 100", "otim 200", "b8c6"}));  // no second "go"
  xboardBlack.takeSent();
  xboardBlack.PlayMove("g1f3", 0);
  EXPECT_EQ(xboardBlack.takeSent(), (Lines{"time 100", "otim 200", "g1f3", "go"}));
  EXPECT_EQ(uciWhite.takeSent(), Lines{});
  uciWhite.Go();
  EXPECT_EQ(uciWhite.takeSent(),
            (Lines{"position startpos moves e2e4 e7e5 ", "go wtime 1000 btime 2000 winc 0 binc 0"}));
}

// Without an owner the log goes to the console (a fresh adapter's start and
// its log in a game are the external engine's tests); the embedded engine's
// replies come after the process's, out of its own output buffer.
TEST(AdapterTest, ConsoleLogAndOutputBuffer) {
  auto& console = kobubase::clsTSafeOutput::instance();
  console.flush();
  console.setCapture(true);
  clsScripted engine(XBOARD);
  engine.Log("--->\tnew");
  const Lines captured = console.captured();
  console.setCapture(false);
  console.flush();
  ASSERT_GE(captured.size(), 1u);
  EXPECT_EQ(captured[0], "# =====>\tscripted:\t--->\tnew");

  engine.setEcho(false);
  engine.setKeep(true);
  engine.print("move e2e4");
  engine.incoming = {"move d2d4"};
  Lines replies;
  for (int i = 0; i < 3; ++i) replies.push_back(engine.nextReply());
  EXPECT_EQ(replies, (Lines{"move d2d4", "move e2e4", ""}));
}

}  // namespace
