// A run killed with kill -9 and resumed: every (round, game) is in the
// results file once, with the openings an uninterrupted run of the same seed
// plays; and the refusals of a resume that cannot be done.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "chess/tourney/tourney.h"
#include "tests/e2e/engine_process.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using tourney_test::anyHolds;
using tourney_test::Lines;
using tourney_test::TempFolder;

std::string writeEvent(const TempFolder& folder, const std::string& clock) {
  return tourney_test::writeGauntlet(
      folder, "pairs", "<rounds>3</rounds><threads>2</threads><opening_plies>4</opening_plies><seed>11</seed>", clock,
      {{"A", "embedded", "", "Simple5"}, {"B", "embedded", "", "Mass161"}});
}

const std::string CLOCK = "<clock moves_per_second=\"0\" game_ms=\"1000\" increment_ms=\"10\"/>";

// "round game" -> opening, and how many lines each (round, game) has.
std::map<std::string, std::string> openingsOf(const std::string& path, std::map<std::string, int>& counts) {
  std::map<std::string, std::string> openings;
  for (const Lines& row : tourney_test::resultRows(path)) {
    openings[row[0] + " " + row[1]] = row[8];
    ++counts[row[0] + " " + row[1]];
  }
  return openings;
}

Lines runTalvena(const Lines& args, int status = 0) {
  return EngineProcess::run(args, 120000, status);
}

TEST(TourneyResume, KilledRunResumedPlaysEachGameOnceWithTheSameOpenings) {
  const TempFolder whole, killed;
  runTalvena({"-use=tourney", "-ini=" + writeEvent(whole, CLOCK)});
  std::map<std::string, int> counts;
  const auto expected = openingsOf(whole.file("pairs-1-results.tsv"), counts);
  ASSERT_EQ(expected.size(), 6u);

  const std::string ini = writeEvent(killed, CLOCK);
  {
    EngineProcess talvena(TALVENA_BIN, {"-use=tourney", "-ini=" + ini});
    const std::string results = killed.file("pairs-1-results.tsv");
    const auto finishedGames = [&] {
      const std::string text = tourney_test::readText(results);
      return std::count(text.begin(), text.end(), '\n') - 1;
    };
    for (int wait = 0; wait < 6000 && finishedGames() < 1; ++wait) kobubase::sleepMs(10);
    ::kill(talvena.pid(), SIGKILL);
    talvena.waitExit(5000);
  }
  const Lines resumed = runTalvena({"-use=tourney", "-ini=" + ini, "-resume"});
  EXPECT_TRUE(anyHolds(resumed, "# resume: run 1 keeps ")) << resumed.front();
  counts.clear();
  EXPECT_EQ(openingsOf(killed.file("pairs-1-results.tsv"), counts), expected);
  for (const auto& [game, count] : counts) EXPECT_EQ(count, 1) << game;
  EXPECT_TRUE(anyHolds(resumed, "# A vs B: games 6 W-L-D "));
  // The game files hold every (round, game) once too: a replayed game's first PGN is gone.
  for (const std::string game : {"1", "2"}) {
    const std::string pgn = tourney_test::readText(killed.file("pairs-1-" + game + ".pgn"));
    for (const std::string round : {"1", "2", "3"}) {
      const std::string tag = "[KobuRound \"1:" + round + ":" + game + "\"]";
      EXPECT_EQ(pgn.find(tag), pgn.rfind(tag)) << tag;
      EXPECT_NE(pgn.find(tag), std::string::npos) << tag;
    }
  }

  // The settings of the run are checked; a folder without a run has nothing to resume.
  const std::string changed = writeEvent(killed, "<clock game_ms=\"2000\"/>");
  EXPECT_TRUE(anyHolds(runTalvena({"-use=tourney", "-ini=" + changed, "-resume"}, 1),
                       "# resume refused: clock differs (run: 0/1000+10; file: 300000/2000+0)"));
  const TempFolder empty;
  EXPECT_TRUE(anyHolds(runTalvena({"-use=tourney", "-ini=" + writeEvent(empty, CLOCK), "-resume"}, 1),
                       "# resume: no earlier run of pairs in " + empty.dir()));
}

}  // namespace

namespace {

// An openings file that gives no opening stops the event before any engine starts.
TEST(TourneyOpenings, FilesWithoutAnOpeningAreRefusedBeforeTheFirstGame) {
  const TempFolder folder;
  std::ofstream(folder.file("binary.pgn"), std::ios::binary) << std::string("\0\1\2\3\xff\xfe", 6);
  std::ofstream(folder.file("bad.epd")) << "8/8/8/8/8/8/8/8 w - -\n";
  const struct {
    std::string file;
    std::string line;
  } cases[] = {
      {folder.file("missing.pgn"), "# error 2: No such file or directory (" + folder.file("missing.pgn") + ")"},
      {folder.file("binary.pgn"), "# openings: " + folder.file("binary.pgn") + " holds no usable opening"},
      {folder.file("missing.sbk"), "# openings: " + folder.file("missing.sbk") + " is not a readable book"},
      {folder.file("bad.epd"),
       "# openings: " + folder.file("bad.epd") + " holds no usable opening; the event does not"},
  };
  for (const auto& c : cases) {
    kbuChess::TourneyConfig config;
    config.openingBook = c.file;
    config.openingPlies = 8;
    config.players = {{"A", "", "Simple5", "embedded"}, {"B", "", "Mass161", "embedded"}};
    config.logFolder = folder.dir();
    tourney_test::KeptOutput out;
    kbuChess::clsTourney tourney(config, out);
    EXPECT_FALSE(tourney.ready());
    EXPECT_TRUE(anyHolds(out.takeAll(), c.line)) << c.file;
  }
}

}  // namespace
