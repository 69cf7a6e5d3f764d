// Whole tournaments through the real program: `talvena -use=tourney -ini=F`
// with the scripted fake engine for every fault a real engine will not
// commit, and Debian's fairymax and stockfish for real opponents. The results file, the
// PGN (read by pgn-extract), Ctrl-C and kill -9 are checked on what the
// program leaves behind.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/common/pgn_extract.h"
#include "tests/e2e/engine_process.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

namespace fs = std::filesystem;
using tourney_test::anyHolds;
using tourney_test::Lines;
using tourney_test::TempFolder;

const std::string FAIRYMAX = "/usr/games/fairymax";
const std::string STOCKFISH = "/usr/games/stockfish";

// A gauntlet of one round: the first engine plays each other one twice.
std::string writeTourney(const TempFolder& folder, const std::string& name, const std::string& clock, int threads,
                         const std::vector<tourney_test::Engine>& engines, const std::string& moreOptions = "") {
  const std::string options = "<threads>" + std::to_string(threads) + "</threads>" + moreOptions;
  return tourney_test::writeGauntlet(folder, name, options, clock, engines);
}

// "white-black" to "result reason" for every game of the results file.
std::map<std::string, std::string> readResults(const std::string& path) {
  std::map<std::string, std::string> results;
  for (const Lines& row : tourney_test::resultRows(path)) results[row[2] + "-" + row[3]] = row[4] + " " + row[5];
  return results;
}

// Runs the tournament to its end and answers what it printed.
Lines runTourney(const std::string& ini, int timeoutMs) {
  return EngineProcess::run({"-use=tourney", "-ini=" + ini}, timeoutMs);
}

// pgn-extract reads the game file without a word.
void expectCleanPgn(const std::string& pgn) {
  const testFiles::PgnExtractRun run = testFiles::pgnExtract("-s -r " + pgn);
  EXPECT_EQ(run.status, 0) << pgn;
  EXPECT_EQ(run.said, "") << pgn;
}

// Fake engines whose command line holds the marker (they get it as a log file name).
int processesWith(const std::string& marker) {
  int count = 0;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::string text = tourney_test::readText(entry.path() / "cmdline");
    std::replace(text.begin(), text.end(), '\0', ' ');
    if (text.find(marker) != std::string::npos && text.find("fake_engine") != std::string::npos) ++count;
  }
  return count;
}

// Waits up to 30 s until `count` of those engines run; how many run.
int awaitEngines(const std::string& marker, int count) {
  int running = processesWith(marker);
  for (const std::int64_t until = kobubase::nowMs() + 30000; running != count && kobubase::nowMs() < until;) {
    kobubase::sleepMs(20);
    running = processesWith(marker);
  }
  return running;
}

TEST(TourneyRun, EveryFaultOfAnEngineEndsItsGameWithTheRightVerdict) {
  const TempFolder folder;
  const std::string fake = FAKE_ENGINE;
  const std::string ini = writeTourney(folder, "faults", "<clock game_ms=\"3000\" increment_ms=\"0\"/>", 14,
                                       {{"Self", "embedded", "", "Simple5"},
                                        {"Illegal", "xboard", fake, "xboard illegal"},
                                        {"Crash", "uci", fake, "uci crash=1"},
                                        {"Silent", "xboard", fake, "xboard silent"},
                                        {"Resign", "xboard", fake, "xboard claim=resign"},
                                        {"Draw", "xboard", fake, "xboard claim=1/2-1/2"},
                                        {"San", "xboard", fake, "xboard &quot;claim=move Nf3&quot;"},
                                        {"Mute", "uci", fake, "uci noready silent"}});
  const Lines lines = runTourney(ini, 180000);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "# starting tourney..."), lines.end());
  const std::map<std::string, std::string> expected = {
      {"Self-Illegal", "1-0 illegal move"},
      {"Illegal-Self", "0-1 illegal move"},
      {"Self-Crash", "1-0 engine crashed"},
      {"Crash-Self", "0-1 engine crashed"},
      {"Self-Silent", "1-0 forfeit"},
      {"Silent-Self", "0-1 forfeit"},
      // An xboard "resign" line is no reply: the resigner just loses on time.
      {"Self-Resign", "1-0 forfeit"},
      {"Resign-Self", "0-1 forfeit"},
      {"Self-Draw", "1/2-1/2 "},
      {"Draw-Self", "1/2-1/2 "},
      // A move in SAN is taken as the move it names: as Black, Nf3 is illegal;
      // as White it is played (the fake, which does not play it on its own
      // board, then rejects Black's reply and falls silent).
      {"Self-San", "1-0 illegal move"},
      {"San-Self", "0-1 forfeit"},
      // Never "uciok" nor a move: its preparation fails after the whole wait, and its clock runs out.
      {"Self-Mute", "1-0 forfeit"},
      {"Mute-Self", "0-1 forfeit"}};
  EXPECT_EQ(readResults(folder.file("faults-1-results.tsv")), expected);
  // Self wins both games against each fault but Draw's, which are drawn: 6 * 4 + 2 = 26 of 28 half-points.
  EXPECT_TRUE(anyHolds(lines, "'Self' result 1 score 26") || anyHolds(lines, "'Self' result 2 score 26"));
  const std::string sanGame = tourney_test::readText(folder.file("faults-1-13.pgn"));
  EXPECT_NE(sanGame.find("\r\n1. Nf3 "), std::string::npos) << sanGame;
  EXPECT_TRUE(fs::exists(folder.file("faults-1-3.log")));
}

// A program that does not exist loses at once, naming the path; one that
// floods its output (yes) loses on time without the flood's cost; one that
// asks for time to start (done=0, then done=1 2.5 s later) gets it and plays.
// The missing one's name ends in a backslash: its PGN still reads cleanly.
TEST(TourneyRun, MissingFloodingAndSlowStartingEngines) {
  const TempFolder folder;
  const std::string ini = writeTourney(folder, "hostile", "<clock game_ms=\"3000\" increment_ms=\"100\"/>", 3,
                                       {{"Self", "embedded", "", "Simple5"},
                                        {"Missing\\", "xboard", "/nonexistent/engine", ""},
                                        {"Flood", "xboard", "/usr/bin/yes", ""},
                                        {"Slow", "xboard", FAKE_ENGINE, "xboard slowstart=2500"}},
                                       "<command_pause_ms>0</command_pause_ms>");
  const Lines lines = runTourney(ini, 180000);
  EXPECT_TRUE(anyHolds(lines, "Missing\\: program not found: /nonexistent/engine (No such file or directory)"));
  EXPECT_TRUE(anyHolds(lines, "# output comes faster than it is read: lines dropped"));
  std::map<std::string, std::string> results = readResults(folder.file("hostile-1-results.tsv"));
  for (const char* pair : {"Self-Slow", "Slow-Self"}) {
    EXPECT_EQ(results[pair].find("forfeit"), std::string::npos) << pair << ": " << results[pair];
    EXPECT_EQ(results[pair].find("not ready"), std::string::npos) << pair << ": " << results[pair];
    results.erase(pair);
  }
  const std::map<std::string, std::string> expected = {{"Self-Missing\\", "1-0 engine crashed"},
                                                       {"Missing\\-Self", "0-1 engine crashed"},
                                                       {"Self-Flood", "1-0 forfeit"},
                                                       {"Flood-Self", "0-1 forfeit"}};
  EXPECT_EQ(results, expected);
  for (int game : {1, 2}) expectCleanPgn(folder.file("hostile-1-" + std::to_string(game) + ".pgn"));
}

// Scores reach the adjudication from UCI info lines and the embedded search:
// a game between them is drawn on its fourth ply; the xboard fake prints no
// scores and is never adjudicated (its games end otherwise, at the latest on
// the length cap).
TEST(TourneyRun, ScoresAdjudicateOnlyEnginesThatPrintThem) {
  const TempFolder folder;
  const std::string ini = writeTourney(folder, "adjudicate", "<clock game_ms=\"5000\" increment_ms=\"100\"/>", 2,
                                       {{"Self", "embedded", "", "Simple5"},
                                        {"Uci", "uci", FAKE_ENGINE, "uci"},
                                        {"Mute", "xboard", FAKE_ENGINE, "xboard"}},
                                       "<command_pause_ms>0</command_pause_ms><max_plies>30</max_plies>"
                                       "<adjudicate draw_moves=\"2\" draw_score=\"100000\" draw_after=\"2\"/>");
  runTourney(ini, 180000);
  const std::map<std::string, std::string> results = readResults(folder.file("adjudicate-1-results.tsv"));
  ASSERT_EQ(results.size(), 4u);
  EXPECT_EQ(results.at("Self-Uci"), "1/2-1/2 adjudication: draw");
  EXPECT_EQ(results.at("Uci-Self"), "1/2-1/2 adjudication: draw");
  for (const char* pair : {"Self-Mute", "Mute-Self"})
    EXPECT_EQ(results.at(pair).find("adjudication: "), std::string::npos) << results.at(pair);
  EXPECT_NE(tourney_test::readText(folder.file("adjudicate-1-1.pgn")).find("[Reason \"adjudication: draw\"]"),
            std::string::npos);
}

// Talvena speaking UCI (chosen by the "uci" it gets first) meets itself
// speaking xboard, Debian's stockfish and fairymax, each pair of games from one
// random opening of three plies (fairymax takes it in force mode). The
// increment is more than the runner's pauses after its commands cost a side
// (up to 300 ms a move), so Talvena-as-UCI must never forfeit; no side may
// play an illegal move, and pgn-extract reads every game without a word.
TEST(TourneyRun, TalvenaAsUciPlaysItselfStockfishAndFairymaxByTheRules) {
  const TempFolder folder;
  ASSERT_TRUE(fs::exists(STOCKFISH) && fs::exists(FAIRYMAX)) << "tests/run.sh installs stockfish and fairymax";
  const std::string ini = writeTourney(folder, "uci", "<clock game_ms=\"6000\" increment_ms=\"400\"/>", 2,
                                       {{"TalvenaUci", "uci", TALVENA_BIN, ""},
                                        {"TalvenaXboard", "xboard", TALVENA_BIN, ""},
                                        {"Stockfish", "uci", STOCKFISH, ""},
                                        {"Fairy-Max", "xboard", FAIRYMAX, ""}},
                                       "<opening_plies>3</opening_plies>");
  runTourney(ini, 400000);
  const std::map<std::string, std::string> results = readResults(folder.file("uci-1-results.tsv"));
  ASSERT_EQ(results.size(), 6u);
  for (const auto& [pair, verdict] : results) {
    for (const char* bad : {"illegal move", "engine crashed", "game aborted", "?"})
      EXPECT_EQ(verdict.find(bad), std::string::npos) << pair << ": " << verdict;
    const std::string ucisWin = pair.rfind("TalvenaUci-", 0) == 0 ? "1-0 forfeit" : "0-1 forfeit";
    EXPECT_TRUE(verdict.find("forfeit") == std::string::npos || verdict == ucisWin) << pair << ": " << verdict;
  }
  for (int game = 1; game <= 6; ++game) expectCleanPgn(folder.file("uci-1-" + std::to_string(game) + ".pgn"));
}

// Ctrl-C during two endless games against a silent fake: the running games
// are stopped, the standings so far printed, every engine ended, and the
// program ends with status 0. kill -9 instead: its engines die with it.
TEST(TourneyRun, CtrlCAndKillLeaveNoEngineBehind) {
  for (const int signal : {SIGINT, SIGKILL}) {
    const TempFolder folder;
    const std::string marker = folder.file("marker");
    const std::string ini = writeTourney(
        folder, "endless", "<clock game_ms=\"600000\"/>", 2,
        {{"Self", "embedded", "", "Simple5"}, {"Slow", "xboard", FAKE_ENGINE, "xboard silent log=" + marker}});
    EngineProcess talvena(TALVENA_BIN, Lines{"-use=tourney", "-ini=" + ini});
    ASSERT_EQ(awaitEngines(marker, 2), 2);
    ::kill(talvena.pid(), signal);
    if (signal == SIGINT) {
      EXPECT_TRUE(anyHolds(talvena.expectFarewell(30000), "cancel"));
    } else {
      talvena.waitExit(5000);
    }
    // Ctrl-C ends the engines before the program ends; after kill -9 they notice on their own.
    EXPECT_EQ(signal == SIGINT ? processesWith(marker) : awaitEngines(marker, 0), 0) << signal;
  }
}

}  // namespace
