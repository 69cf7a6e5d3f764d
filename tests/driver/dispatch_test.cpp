// The dispatcher's computations and state, without the program's loop. Replies
// of the protocol itself are checked through the real program in tests/e2e.
#include "driver_test_util.h"

namespace {

using namespace kbuChess;
using DispatchTest = DriverTest;

TEST_F(DispatchTest, FixedRepliesAndReturnCodes) {
  EXPECT_EQ(reply("name someone", CMD_PRINTED), Lines{"Talvena 3.0.23"});
  EXPECT_EQ(reply("rating 2100 1900", CMD_PRINTED), Lines{"1350 1350"});
  EXPECT_EQ(reply("computer", CMD_PRINTED), Lines{"# hello my peer!"});
  EXPECT_EQ(reply("result 1-0 {White mates}", CMD_PRINTED), Lines{"# result 1-0 {White mates}"});
  EXPECT_EQ(reply("New", CMD_IGNORED), Lines{"Error (unknown command): New"});
  for (const char* ignored : {"draw", "edit", "hint", "remove", "analyze", "variant normal", "   "}) {
    EXPECT_EQ(reply(ignored, CMD_IGNORED), Lines{}) << ignored;
  }
  EXPECT_EQ(reply("\\testsouls", CMD_HANDLED), Lines{});
  EXPECT_EQ(reply("usermove e2e5", CMD_ILLEGAL_MOVE), Lines{"Illegal move: usermove"});
  EXPECT_EQ(reply("quit", CMD_QUIT), Lines{});
}

TEST_F(DispatchTest, ClocksLevelsDepthAndOptions) {
  reply("level 0 0:30 2");
  EXPECT_EQ(state().level.incrementMs, 2000);
  EXPECT_EQ(state().engineTimeMs, 30000);
  EXPECT_EQ(state().opponentTimeMs, 30000);
  reply("time 150");
  reply("otim abc");
  EXPECT_EQ(state().engineTimeMs, 1500);
  EXPECT_EQ(state().opponentTimeMs, 0);
  for (auto [command, depth] : {std::pair{"sd 500", 128}, {"sd deep", 2}, {"sd 6", 6}, {"new", 128}}) {
    reply(command);
    EXPECT_EQ(state().depthLimit, depth) << command;
  }
  EXPECT_EQ(state().engineTimeMs, 300000);  // the fixed initial time, not the level's
  EXPECT_EQ(state().playMode, MODE_ENGINE_BLACK);
  reply("black");
  EXPECT_EQ(state().playMode, MODE_ENGINE_WHITE);
  reply("white");
  EXPECT_EQ(state().playMode, MODE_ENGINE_BLACK);
  reply("option book=x=y.sbk");
  EXPECT_EQ(driver_->engine().runtimeOptions().get("book"), "x=y.sbk");
}

TEST_F(DispatchTest, PeriodEndAddsTheBaseTime) {
  reply("level 2 1 0");
  reply("force");
  for (const char* budget : {"# moves 0/2 - time 25/100 ms", "# moves 1/2 - time 33/100 ms"}) {
    reply("time 10");
    EXPECT_EQ(reply("go"), Lines{budget});
    untilMove();
    reply("force");
  }
  reply("time 1000");
  EXPECT_EQ(reply("go"), Lines{"# moves 0/2 - time 17487/70000 ms"});
  reply("?");
  untilMove();
}

// Positions no game reaches are taken as they stand: shown, counted, searched.
TEST_F(DispatchTest, SetboardTakesAnyPosition) {
  EXPECT_EQ(reply("setboard 8/8/8/8/8/8/8/8 w - - 0 1", CMD_HANDLED), Lines{});
  EXPECT_EQ(driver_->currentFen(), "8/8/8/8/8/8/8/8 w - -");
  reply("go");
  EXPECT_EQ(serviceWhile([this](const Lines&) { return driver_->thinking(); }).back(), "# no legal move");
  reply("force");
  EXPECT_EQ(reply("setboard 1k6/7R/1K6/8/8/8/8/8 b - - 0 1", CMD_HANDLED), Lines{});
  EXPECT_EQ(driver_->currentFen(), "1k6/7R/1K6/8/8/8/8/8 b - -");
  const Lines shown = reply("\\ m", CMD_PRINTED);
  EXPECT_TRUE(state().debugDisplay);
  ASSERT_EQ(shown.size(), 5u);
  EXPECT_EQ(shown[0], "#");
  const std::string summary = "\n# black value: -4.76 FEN: 1k6/7R/1K6/8/8/8/8/8 b - -";
  EXPECT_EQ(shown[1].substr(shown[1].size() - summary.size()), summary);
  EXPECT_EQ(shown[2], "# __moves__ 2");
}

// "go" prints the budget; commands that only look answer during the search
// and the engine's move still comes, off its own clock; an illegal move
// changes nothing.
TEST_F(DispatchTest, LookingCommandsNeverLoseTheEnginesMove) {
  reply("new");
  reply("level 0 0:01 0");
  EXPECT_EQ(reply("go"), Lines{"# moves 0/0 - time 23/1000 ms"});
  EXPECT_EQ(state().playMode, MODE_ENGINE_WHITE);
  for (const char* command : {"bk", "\\", "\\", "\\moves", "\\listbook", "\\soul", "usermove e2e5", "e7e5"}) {
    EXPECT_FALSE(reply(command).empty()) << command;
    EXPECT_TRUE(driver_->thinking()) << command;
  }
  EXPECT_EQ(driver_->undoDepth(), 0u);
  const Lines seen = untilMove();
  EXPECT_EQ(driver_->undoDepth(), 1u);
  EXPECT_EQ(seen.back().rfind("move ", 0), 0u);
  EXPECT_LT(state().engineTimeMs, 1000);
  EXPECT_EQ(state().periodMoves, 1);
}

// The mobility weight multiplies the moves of the current generation stage:
// at depth one every reply of Black is scored from its stage's move count.
TEST_F(DispatchTest, MobilityCountsTheMovesOfTheStage) {
  reply("\\soul Mobile=0 0 100 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0");
  reply("setboard k7/p7/8/8/8/8/P7/K7 w - - 0 1");
  reply("sd 1");
  reply("post");
  reply("go");
  const Lines seen = untilMove();
  // After any White move Black's quiet stage holds Kb8, Kb7, a6 and a5, and
  // the root generates no stages: each leaf is 100 x (4 - 0) for Black.
  EXPECT_TRUE(std::any_of(seen.begin(), seen.end(), [](const std::string& l) { return l.rfind("1 -400 ", 0) == 0; }))
      << seen.front();
}

TEST_F(DispatchTest, SoulsAndUsageLines) {
  const std::string path = temp_.file("filed.soul");
  testFiles::writeText(path, "Filed=9 8 7\r\nsecond line\n");
  EXPECT_EQ(reply("\\loadsoul " + path, CMD_PRINTED), Lines{"# new soul: " + path});
  EXPECT_EQ(driver_->engine().soulName(), "Filed");
  EXPECT_EQ(driver_->engine().soulValues()[0], 9);
  EXPECT_EQ(reply("\\loadsoul"), Lines{"# loadsoul soul_text_or_file"});
  EXPECT_EQ(reply("\\learn f 0 4 10 20"), Lines{"# learn file generations engines_count ms_per_move max_moves"});
  EXPECT_EQ(reply("\\loadsoul /nonexistent/x.soul"),
            (Lines{"# no preset or file named /nonexistent/x.soul; the soul in use is Filed",
                   "# new soul: /nonexistent/x.soul"}));
}

TEST_F(DispatchTest, EpdTestScoresTheBestMoves) {
  const std::string path = temp_.file("test.epd");
  testFiles::writeText(path,
                       "1k6/7R/1K6/8/8/8/8/8 w - - bm Rh8#; id \"mate\";\r\nno position\n"
                       "1k6/7R/1K6/8/8/8/8/8 w - - bm Rh1; id \"wrong\";\n");
  // The search ends as soon as it has proved the mate; the long budget only
  // keeps a loaded machine from cutting the first iteration short.
  EXPECT_EQ(reply("\\epd 5000 " + path).front(), "# time 5000 ms - file " + path);
  EXPECT_EQ(state().playMode, MODE_EPD_TEST);
  const Lines seen = serviceWhile([this](const Lines&) { return state().playMode == MODE_EPD_TEST; });
  EXPECT_EQ(seen, (Lines{"# move h7h8 ok ---> score : 100000", "# testing: no position", "# move ------ bad!",
                         "# testing: 1k6/7R/1K6/8/8/8/8/8 w - - bm Rh1; id \"wrong\";", "# move h7h8 bad!",
                         "# test results: 1/3 33%"}));
  EXPECT_EQ(reply("\\epd 100 /nonexistent/file.epd"),
            (Lines{"# time 100 ms - file /nonexistent/file.epd", "# error 2: No such file or directory"}));
}

}  // namespace
