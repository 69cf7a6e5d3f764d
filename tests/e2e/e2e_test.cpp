#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <regex>
#include <string>
#include <vector>

#include "chess/board/board.h"
#include "chess/board/tables.h"
#include "engine_process.h"

namespace {

using Lines = std::vector<std::string>;

const char* const FeatureLine =
    "feature ping=1 setboard=1 done=1 san=0 usermove=1 time=1 draw=1 sigint=0 sigterm=0 reuse=1 analyze=0 "
    "myname=\"Talvena 3.0.23\" colors=0 ics=1 name=1 nps=0 debug=1 memory=1 smp=1";

class E2eTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { kbuChess::initTables(); }
  void SetUp() override {
    ASSERT_TRUE(engine_.started());
    const Lines banner = engine_.readUntil("# Talvena 3.0.23", 5000);
    ASSERT_TRUE(engine_.found()) << "no banner";
  }
  // The next line that is not a comment.
  std::string nextReply(int timeoutMs = 3000) {
    for (;;) {
      const std::optional<std::string> line = engine_.readLine(timeoutMs);
      if (!line) return "<nothing>";
      if (line->rfind("#", 0) != 0) return *line;
    }
  }
  std::string expectMove(int timeoutMs) {
    const Lines lines = engine_.readUntil("move ", timeoutMs);
    EXPECT_TRUE(engine_.found()) << "no move line";
    return engine_.found() ? lines.back().substr(5) : "";
  }
  // Quits (or closes the input) and checks the farewell and the exit status.
  void expectCleanEnd(bool closeInput) {
    if (closeInput) {
      engine_.closeInput();
    } else {
      engine_.send("quit");
    }
    Lines lines = engine_.readUntil("# bye bye", 3000);
    ASSERT_TRUE(engine_.found());
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(Lines(lines.end() - 3, lines.end()), (Lines{"# end", "# stop", "# bye bye"}));
    EXPECT_FALSE(engine_.readLine(200).has_value());
    EXPECT_EQ(engine_.waitExit(3000), 0);
  }

  EngineProcess engine_{TALVENA_BIN};
};

TEST_F(E2eTest, HandshakeAndIdlePing) {
  engine_.send("xboard");
  EXPECT_EQ(nextReply(), "");
  engine_.send("protover 2");
  EXPECT_EQ(nextReply(), FeatureLine);
  engine_.send("ping 1");
  EXPECT_EQ(nextReply(), "pong 1");
  engine_.send("usermove e2e5");
  EXPECT_EQ(nextReply(), "Illegal move: usermove");
  expectCleanEnd(false);
}

TEST_F(E2eTest, PingDuringSearchIsAnsweredAfterTheMove) {
  engine_.send("new");
  engine_.send("level 0 0:20 0");
  engine_.send("go");
  engine_.readUntil("# moves 0/0 - time 498/20000 ms", 3000);
  ASSERT_TRUE(engine_.found());
  engine_.send("ping 5");
  const Lines lines = engine_.readUntil("pong 5", 5000);
  ASSERT_TRUE(engine_.found());
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2].rfind("move ", 0), 0u) << lines[lines.size() - 2];
  expectCleanEnd(false);
}

// A short game: the test plays White's first legal move each turn, checks
// every reply of the engine on a board of its own, and answers the clocks.
TEST_F(E2eTest, ShortGameWithClocksAndThinkingOutput) {
  kbuChess::clsBoard board;
  board.readFEN(kbuChess::clsBoard::START_FEN);
  engine_.send("new");
  engine_.send("level 0 0:10 0");
  engine_.send("post");
  const std::regex thinking(R"(^\d+ -?\d+ \d+ \d+ \S.*$)");
  int thinkingLines = 0;
  int played = 0;
  for (; played < 8; ++played) {
    board.resetFrames();
    if (board.generateLegal() == 0) break;  // the engine has mated our aimless play
    const std::string ours = kbuChess::clsBoard::moveText(board.frame().first, false);
    ASSERT_TRUE(board.readCoordinateMove(ours));
    engine_.send("time " + std::to_string(1000 - played * 20));
    engine_.send("otim 1000");
    engine_.send("usermove " + ours);
    const Lines lines = engine_.readUntil("move ", 5000);
    ASSERT_TRUE(engine_.found()) << "no reply to " << ours;
    for (const std::string& line : lines) {
      EXPECT_EQ(line.rfind("Illegal", 0), std::string::npos) << line;
      if (std::regex_match(line, thinking)) ++thinkingLines;
    }
    const std::string reply = lines.back().substr(5);
    ASSERT_TRUE(board.readCoordinateMove(reply)) << "illegal engine move " << reply;
  }
  ASSERT_GE(played, 3) << board.fen();
  EXPECT_GE(thinkingLines, played);
  engine_.send("result 1/2-1/2 {test over}");
  EXPECT_EQ(nextReply(), "<nothing>") << "result gets only a comment";
  expectCleanEnd(false);
}

TEST_F(E2eTest, QuestionMarkStopsAndUndoTakesBack) {
  engine_.send("new");
  engine_.send("level 0 60 0");
  engine_.send("go");
  engine_.readUntil("# moves", 3000);
  ASSERT_TRUE(engine_.found());
  const auto asked = std::chrono::steady_clock::now();
  engine_.send("?");
  const std::string move = expectMove(2000);
  EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(1000));
  EXPECT_FALSE(move.empty());
  // Back to the start: e2e4 must be legal again and the engine must stay quiet.
  engine_.send("undo");
  engine_.send("force");
  engine_.send("e2e4");
  engine_.send("undo");
  engine_.send("usermove e2e4");
  engine_.send("ping 3");
  const Lines lines = engine_.readUntil("pong 3", 3000);
  ASSERT_TRUE(engine_.found());
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "# I'm not thinking"), 2);
  for (const std::string& line : lines) EXPECT_EQ(line.find("Illegal"), std::string::npos) << line;
  expectCleanEnd(false);
}

TEST_F(E2eTest, QuitDuringSearchEndsCleanly) {
  engine_.send("new");
  engine_.send("level 0 60 0");
  engine_.send("go");
  engine_.readUntil("# moves", 3000);
  ASSERT_TRUE(engine_.found());
  expectCleanEnd(false);
}

TEST_F(E2eTest, EndOfInputActsAsQuit) {
  engine_.send("new");
  engine_.send("ping 4");
  EXPECT_EQ(nextReply(), "pong 4");
  expectCleanEnd(true);
}

TEST_F(E2eTest, BadInputGetsRepliesAndTheEngineKeepsWorking) {
  engine_.send("");
  engine_.send("\r");
  const std::string longWord(100 * 1024, 'x');
  engine_.send(longWord);
  EXPECT_EQ(nextReply(), "Error (unknown command): " + longWord);
  engine_.send(std::string("\x01\x02\xff\xfe rest\x7f", 10));
  EXPECT_EQ(nextReply(), std::string("Error (unknown command): \x01\x02\xff\xfe", 29));
  engine_.send("frobnicate 1 2");
  EXPECT_EQ(nextReply(), "Error (unknown command): frobnicate");
  for (const char* line : {"level a b c", "time abc", "otim -", "sd deep", "memory lots", "setboard"}) {
    engine_.send(line);
  }
  engine_.send("perft x");
  EXPECT_EQ(nextReply().rfind("Nodes: 0, Time: ", 0), 0u);
  engine_.send("setboard not a position at all");
  engine_.send("usermove zz");
  EXPECT_EQ(nextReply(), "Illegal move: usermove");
  engine_.send("ping 77");
  EXPECT_EQ(nextReply(), "pong 77");
  expectCleanEnd(false);
}

// Command-line options: the table size, a soul loaded before the loop, the
// log of received commands; and the tournament mode, which never reads input.
TEST(E2eStartTest, OptionsFromTheCommandLine) {
  const std::string log = testing::TempDir() + "e2e_commands.log";
  std::remove(log.c_str());
  EngineProcess engine(TALVENA_BIN, {"memory=1", "-memory=64", "-load=Quick=1 2 3", "-log=" + log});
  ASSERT_TRUE(engine.started());
  EXPECT_EQ(engine.readLine(5000).value_or(""), "# TT 32768 entries - 1 MiB");
  const Lines start = engine.readUntil("# new soul: ", 3000);
  ASSERT_TRUE(engine.found());
  EXPECT_EQ(start.back(), "# new soul: Quick=1 2 3");
  EXPECT_EQ(start.front().rfind("# Talvena 3.0.23", 0), 0u);
  engine.send("ping  8 ");
  EXPECT_EQ(engine.readLine(3000).value_or(""), "pong 8");
  engine.send("quit");
  engine.readUntil("# bye bye", 3000);
  EXPECT_TRUE(engine.found());
  EXPECT_EQ(engine.waitExit(3000), 0);
  std::ifstream in(log);
  std::stringstream text;
  text << in.rdbuf();
  // Commands the program runs itself go through the same dispatcher and log.
  EXPECT_EQ(text.str(), "\\loadsoul\tQuick=1 2 3\nping\t8\nquit\t\n");
  std::remove(log.c_str());
}

TEST(E2eStartTest, TourneyModeRunsWithoutTheLoop) {
  EngineProcess engine(TALVENA_BIN, {"-use=tourney"});
  ASSERT_TRUE(engine.started());
  const Lines lines = engine.readUntil("# bye bye", 10000);
  ASSERT_TRUE(engine.found());
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(Lines(lines.end() - 3, lines.end()), (Lines{"# end", "# stop", "# bye bye"}));
  EXPECT_EQ(engine.waitExit(3000), 0);  // its input is still open: no line was needed
}

}  // namespace
