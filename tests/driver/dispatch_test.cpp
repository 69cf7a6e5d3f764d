#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/options.h"
#include "chess/board/tables.h"
#include "chess/driver/talvena.h"

namespace {

using namespace kbuChess;

const char* const FeatureLine =
    "feature ping=1 setboard=1 done=1 san=0 usermove=1 time=1 draw=1 sigint=0 sigterm=0 reuse=1 analyze=0 "
    "myname=\"Talvena 3.0.23\" colors=0 ics=1 name=1 nps=0 debug=1 memory=1 smp=1";

// A driver whose replies are kept instead of written, run without its thread.
class DispatchTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }

  explicit DispatchTest(std::vector<const char*> args = {}) {
    args.insert(args.begin(), "talvena");
    driver_ = std::make_unique<clsTalvena>(kobubase::clsOptions(static_cast<int>(args.size()), args.data()));
    driver_->setEcho(false);
    driver_->setKeep(true);
    driver_->engine().output().setEcho(false);
  }

  // The lines the command printed.
  std::vector<std::string> reply(const std::string& line, int expectedCode = -1) {
    const int code = driver_->execute(line);
    if (expectedCode >= 0) {
      EXPECT_EQ(code, expectedCode) << line;
    }
    return driver_->takeAll();
  }
  // Runs the loop's engine step until a "move" line came; all lines seen.
  std::vector<std::string> untilMove() {
    std::vector<std::string> seen;
    for (int pass = 0; pass < 20000; ++pass) {
      driver_->serviceEngine();
      for (std::string& line : driver_->takeAll()) seen.push_back(line);
      if (!seen.empty() && seen.back().rfind("move ", 0) == 0) return seen;
      if (seen.size() > 1 && seen[seen.size() - 2].rfind("move ", 0) == 0) return seen;
      kobubase::sleepMs(1);
    }
    ADD_FAILURE() << "no move within 20 s";
    return seen;
  }
  using Lines = std::vector<std::string>;
  std::unique_ptr<clsTalvena> driver_;
};

TEST_F(DispatchTest, FixedRepliesAndReturnCodes) {
  EXPECT_EQ(reply("xboard", CMD_PRINTED), Lines{""});
  EXPECT_EQ(reply("protover 2", CMD_PRINTED), Lines{FeatureLine});
  EXPECT_EQ(reply("name someone", CMD_PRINTED), Lines{"Talvena 3.0.23"});
  EXPECT_EQ(reply("rating 2100 1900", CMD_PRINTED), Lines{"1350 1350"});
  EXPECT_EQ(reply("computer", CMD_PRINTED), Lines{"# hello my peer!"});
  EXPECT_EQ(reply("result 1-0 {White mates}", CMD_PRINTED), Lines{"# result 1-0 {White mates}"});
  EXPECT_EQ(reply("foo bar", CMD_IGNORED), Lines{"Error (unknown command): foo"});
  EXPECT_EQ(reply("New", CMD_IGNORED), Lines{"Error (unknown command): New"});
  for (const char* ignored : {"draw", "edit", "hint", "remove", "analyze", "variant normal"}) {
    EXPECT_EQ(reply(ignored, CMD_IGNORED), Lines{}) << ignored;
  }
  EXPECT_EQ(reply("\\testsouls", CMD_HANDLED), Lines{});
  EXPECT_EQ(reply("   ", CMD_IGNORED), Lines{});
  EXPECT_EQ(reply("ping 7", CMD_HANDLED), Lines{"pong 7"});
  EXPECT_EQ(reply("quit", CMD_QUIT), Lines{});
}

TEST_F(DispatchTest, MovesFromTheInterface) {
  EXPECT_EQ(reply("usermove e2e5", CMD_ILLEGAL_MOVE), Lines{"Illegal move: usermove"});
  EXPECT_EQ(reply("e4", CMD_ILLEGAL_MOVE), Lines{"Illegal move: e4"});
  EXPECT_EQ(reply("usermove", CMD_ILLEGAL_MOVE), Lines{"Illegal move: usermove"});
  EXPECT_EQ(driver_->state().currentFen, "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  reply("force");
  EXPECT_EQ(reply("usermove e2e4", CMD_HANDLED), Lines{"# I'm not thinking"});
  EXPECT_EQ(reply("e7e5", CMD_HANDLED), Lines{"# I'm not thinking"});
  EXPECT_EQ(driver_->state().currentFen, "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6");
  EXPECT_EQ(driver_->state().undoStack.size(), 2u);
  EXPECT_EQ(reply("undo", CMD_HANDLED), Lines{});
  EXPECT_EQ(driver_->state().currentFen, "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3");
  reply("undo");
  EXPECT_EQ(reply("undo", CMD_PRINTED), Lines{"# nothing to undo"});
  EXPECT_EQ(driver_->engine().fen(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
}

TEST_F(DispatchTest, ClocksLevelsAndDepth) {
  const ProtocolState& state = driver_->state();
  reply("level 40 5 0");
  EXPECT_EQ(state.level.movesPerPeriod, 40);
  EXPECT_EQ(state.engineTimeMs, 300000);
  reply("level 0 0:30 2");
  EXPECT_EQ(state.level.baseMs, 30000);
  EXPECT_EQ(state.level.incrementMs, 2000);
  EXPECT_EQ(state.opponentTimeMs, 30000);
  reply("time 150");
  reply("otim abc");
  EXPECT_EQ(state.engineTimeMs, 1500);
  EXPECT_EQ(state.opponentTimeMs, 0);
  reply("sd 500");
  EXPECT_EQ(state.depthLimit, 128);
  reply("sd deep");
  EXPECT_EQ(state.depthLimit, 2);
  reply("sd 6");
  EXPECT_EQ(state.depthLimit, 6);
  reply("new");
  EXPECT_EQ(state.depthLimit, 128);
  EXPECT_EQ(state.engineTimeMs, 300000);  // the fixed initial time, not the level's
  EXPECT_EQ(state.playMode, MODE_ENGINE_BLACK);
  reply("black");
  EXPECT_EQ(state.playMode, MODE_ENGINE_WHITE);
  reply("white");
  EXPECT_EQ(state.playMode, MODE_ENGINE_BLACK);
  reply("memory 32");
  reply("option book=x=y.sbk");
  reply("cores 2");
  EXPECT_EQ(driver_->engine().runtimeOptions().get("memory"), "32");
  EXPECT_EQ(driver_->engine().runtimeOptions().get("book"), "x=y.sbk");
  EXPECT_EQ(driver_->engine().runtimeOptions().get("cores"), "2");
}

TEST_F(DispatchTest, ThinkPrintsBudgetAndPingWaitsForTheMove) {
  reply("new");
  reply("level 0 0:02 0");
  EXPECT_EQ(reply("go"), Lines{"# moves 0/0 - time 48/2000 ms"});
  EXPECT_EQ(driver_->state().playMode, MODE_ENGINE_WHITE);
  EXPECT_EQ(reply("ping 9"), Lines{});
  const Lines seen = untilMove();
  ASSERT_GE(seen.size(), 2u);
  EXPECT_EQ(seen.back(), "pong 9");
  const std::string& move = seen[seen.size() - 2];
  ASSERT_EQ(move.rfind("move ", 0), 0u);
  EXPECT_EQ(seen[seen.size() - 3].rfind("# ", 0), 0u);  // the search summary
  EXPECT_EQ(driver_->state().undoStack.size(), 1u);
  EXPECT_LT(driver_->state().engineTimeMs, 2000);
  EXPECT_EQ(driver_->state().periodMoves, 1);
  // The reply comes from the engine's side: a legal move for Black starts a new search.
  reply("force");
  EXPECT_EQ(reply("usermove e7e5"), Lines{"# I'm not thinking"});
}

TEST_F(DispatchTest, PeriodEndAddsTheBaseTime) {
  reply("new");
  reply("level 2 1 0");
  reply("force");
  for (int move = 0; move < 2; ++move) {
    reply("time 10");
    EXPECT_EQ(reply("go"), Lines{"# moves " + std::to_string(move) + "/2 - time " + std::to_string(100 / (4 - move)) +
                                 "/100 ms"});
    untilMove();
    reply("force");
  }
  reply("time 1000");
  EXPECT_EQ(reply("go"), Lines{"# moves 0/2 - time 17487/70000 ms"});
  reply("?");
  untilMove();
}

TEST_F(DispatchTest, PerftAndDivide) {
  const Lines perft = reply("perft 3", CMD_PRINTED);
  ASSERT_EQ(perft.size(), 1u);
  EXPECT_EQ(perft[0].rfind("Nodes: 8902, Time: ", 0), 0u) << perft[0];
  EXPECT_NE(perft[0].find(" ms, Nodes/s: "), std::string::npos);
  EXPECT_EQ(reply("perft 0")[0].rfind("Nodes: 0, Time: ", 0), 0u);
  EXPECT_EQ(reply("perft 21"), Lines{"# perft depth 21 is too deep, at most 20"});
  driver_->engine().output().setKeep(true);
  EXPECT_EQ(reply("divide 2")[0].rfind("Nodes: 400, ", 0), 0u);
  const std::vector<std::string> lines = driver_->engine().output().takeAll();
  EXPECT_EQ(lines.size(), 20u);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "Nb1-c3 20"), lines.end());
}

TEST_F(DispatchTest, SetboardAcceptsPositionsAndRefusesBrokenOnes) {
  EXPECT_EQ(reply("setboard 8/8/8/8/8/8/8/8 w - - 0 1", CMD_PRINTED), Lines{"# illegal position: 8/8/8/8/8/8/8/8 w - - 0 1"});
  EXPECT_EQ(driver_->state().currentFen, "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  EXPECT_EQ(reply("setboard 1k6/7R/1K6/8/8/8/8/8 b - - 0 1", CMD_HANDLED), Lines{});
  EXPECT_EQ(driver_->state().currentFen, "1k6/7R/1K6/8/8/8/8/8 b - -");
  driver_->engine().output().setKeep(true);
  EXPECT_EQ(reply("\\ m", CMD_PRINTED).front(), "# __moves__ 2");
  EXPECT_TRUE(driver_->state().debugDisplay);
  const Lines board = driver_->engine().output().takeAll();
  ASSERT_FALSE(board.empty());
  const std::string summary = "\n# black value: -4.76 FEN: 1k6/7R/1K6/8/8/8/8/8 b - -";
  const std::string printed = board.back();
  ASSERT_GE(printed.size(), summary.size());
  EXPECT_EQ(printed.substr(printed.size() - summary.size()), summary);
}

TEST_F(DispatchTest, SoulsAndUsageLines) {
  EXPECT_EQ(reply("\\loadsoul X=1 2 3", CMD_PRINTED), Lines{"# new soul: X=1 2 3"});
  EXPECT_EQ(driver_->engine().soulName(), "X");
  EXPECT_EQ(driver_->engine().soulValues()[2], 3);
  const std::string path = testing::TempDir() + "dispatch_soul.txt";
  std::ofstream(path) << "Filed=9 8 7\r\nsecond line\n";
  EXPECT_EQ(reply("\\loadsoul " + path), Lines{"# new soul: " + path});
  EXPECT_EQ(driver_->engine().soulName(), "Filed");
  EXPECT_EQ(driver_->engine().soulValues()[0], 9);
  std::remove(path.c_str());
  reply("\\soul Mass161");
  EXPECT_EQ(driver_->engine().soulName(), "Mass161");
  EXPECT_EQ(reply("\\learn"), Lines{"# learn file generations engines_count ms_per_move max_moves"});
  EXPECT_EQ(reply("\\learn souls.txt 1 2 0 40"), Lines{"# learn file generations engines_count ms_per_move max_moves"});
  EXPECT_EQ(reply("\\play 100"), Lines{"# \\play ms_per_move max_moves file.pgn [soulA soulB]"});
  EXPECT_EQ(reply("\\loadsoul"), Lines{"# loadsoul soul_text_or_file"});
}

TEST_F(DispatchTest, EpdTestScoresTheBestMoves) {
  const std::string path = testing::TempDir() + "dispatch_test.epd";
  std::ofstream(path) << "1k6/7R/1K6/8/8/8/8/8 w - - bm Rh8#; id \"mate\";\r\n"
                      << "no position\n"
                      << "1k6/7R/1K6/8/8/8/8/8 w - - bm Rh1; id \"wrong\";\n";
  EXPECT_EQ(reply("\\epd 100 " + path).front(), "# time 100 ms - file " + path);
  EXPECT_EQ(driver_->state().playMode, MODE_EPD_TEST);
  Lines seen;
  for (int pass = 0; pass < 10000 && driver_->state().playMode == MODE_EPD_TEST; ++pass) {
    driver_->serviceEngine();
    for (std::string& line : driver_->takeAll()) seen.push_back(line);
    kobubase::sleepMs(1);
  }
  std::remove(path.c_str());
  const Lines expected = {"# move h7h8 ok ---> score : 100000", "# skipping a bad position: no position",
                          "# testing: 1k6/7R/1K6/8/8/8/8/8 w - - bm Rh1; id \"wrong\";", "# move h7h8 bad!",
                          "# test results: 1/2 50%"};
  EXPECT_EQ(seen, expected);
  EXPECT_EQ(reply("\\epd 100 /nonexistent/file.epd"),
            (Lines{"# time 100 ms - file /nonexistent/file.epd", "# error 2: No such file or directory"}));
}

class LoggedDispatchTest : public DispatchTest {
 protected:
  LoggedDispatchTest() : DispatchTest({"-log=" LOG_PATH_FOR_TEST}) {}
};

TEST_F(LoggedDispatchTest, EveryReceivedLineIsLoggedAsWordTabRest) {
  std::remove(LOG_PATH_FOR_TEST);
  EXPECT_EQ(driver_->logPath(), LOG_PATH_FOR_TEST);
  reply("usermove e2e4");
  reply("ping  5 ");
  reply("quit");
  driver_.reset();
  std::ifstream in(LOG_PATH_FOR_TEST);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), "usermove\te2e4\nping\t5\nquit\t\n");
  std::remove(LOG_PATH_FOR_TEST);
}

}  // namespace
