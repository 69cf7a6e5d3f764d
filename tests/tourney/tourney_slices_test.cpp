// An event played whole and as four slices: the same games (round, game,
// players, opening), and the merge of the four slice files gives the figures
// of one file holding all their lines. Bad slices and bad merges are named.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "tests/e2e/engine_process.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using tourney_test::anyHolds;
using tourney_test::Lines;
using tourney_test::TempFolder;

std::string writeEvent(const TempFolder& folder) {
  return tourney_test::writeGauntlet(
      folder, "sl",
      "<rounds>2</rounds><threads>2</threads><opening_plies>4</opening_plies><seed>5</seed>"
      "<sprt elo0=\"0\" elo1=\"5\" alpha=\"0.05\" beta=\"0.05\"/>",
      "<clock moves_per_second=\"0\" game_ms=\"1000\" increment_ms=\"10\"/>",
      {{"A", "embedded", "", "Simple5"}, {"B", "embedded", "", "Mass161"}, {"C", "embedded", "", "Simple2"}});
}

Lines runTalvena(const Lines& args, int status = 0) {
  return EngineProcess::run(args, 120000, status);
}

// "round game white black opening" of each game in the results file.
std::set<std::string> gamesOf(const std::string& path) {
  std::set<std::string> games;
  for (const Lines& row : tourney_test::resultRows(path))
    games.insert(row[0] + " " + row[1] + " " + row[2] + " " + row[3] + " " + row[8]);
  return games;
}

// The merge's figures: every line after its count of games.
Lines figures(const Lines& output) {
  const auto from = std::find_if(output.begin(), output.end(),
                                 [](const std::string& l) { return l.rfind("# merge: 8 games from", 0) == 0; });
  EXPECT_NE(from, output.end());
  return Lines(from == output.end() ? from : from + 1, std::find(output.begin(), output.end(), "# end"));
}

TEST(TourneySlices, FourSlicesPlayTheGamesOfOneRunAndMergeExactly) {
  const TempFolder whole, sliced;
  runTalvena({"-use=tourney", "-ini=" + writeEvent(whole)});
  const std::set<std::string> wholeGames = gamesOf(whole.file("sl-1-results.tsv"));
  ASSERT_EQ(wholeGames.size(), 8u);

  const std::string ini = writeEvent(sliced);
  Lines merge{"-use=merge"};
  std::set<std::string> slicedGames;
  std::string all = "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening\n";
  for (int k = 0; k < 4; ++k) {
    runTalvena({"-use=tourney", "-ini=" + ini, "-shard=" + std::to_string(k) + "/4"});
    const std::string file = sliced.file("sl-1-" + std::to_string(k) + "-of-4-results.tsv");
    merge.push_back(file);
    slicedGames.merge(gamesOf(file));
    const std::string text = tourney_test::readText(file);
    all += text.substr(text.find('\n') + 1);
  }
  EXPECT_EQ(slicedGames, wholeGames);
  testFiles::writeText(sliced.file("sl-1-results.tsv"), all);
  const Lines merged = figures(runTalvena(merge));
  EXPECT_EQ(merged, figures(runTalvena({"-use=merge", sliced.file("sl-1-results.tsv")})));
  EXPECT_TRUE(anyHolds(merged, "# A vs B: games 4 W-L-D ")) << (merged.empty() ? "" : merged.front());
  EXPECT_TRUE(anyHolds(merged, "# sprt A vs B (elo0 0, elo1 5, alpha 0.05, beta 0.05): LLR "));

  // A pair in two files counts once; a slice played before is continued with -resume only.
  EXPECT_TRUE(anyHolds(runTalvena({"-use=merge", merge[1], merge[1]}),
                       "# merge: round 1 game 1 of " + merge[1] + " is also in " + merge[1] + "; counted once"));
  EXPECT_TRUE(anyHolds(runTalvena({"-use=tourney", "-ini=" + ini, "-shard=0/4"}, 1),
                       "# " + merge[1] + " exists: this slice was played before; continue it with -resume"));
}

TEST(TourneySlices, BadSlicesAndMergesAreRefused) {
  const TempFolder folder, other;
  EXPECT_TRUE(anyHolds(runTalvena({"-use=tourney", "-ini=" + writeEvent(folder), "-shard=4/4"}, 1),
                       "# shard 4/4 needs N from 1 to 1000000 and K from 0 to N-1; the event does not start"));
  EXPECT_TRUE(anyHolds(runTalvena({"-use=tourney", "-ini=" + writeEvent(folder), "-shard=x/0"}, 1),
                       "# shard x/0 is not K/N with whole numbers; the event does not start"));
  const std::string header = "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening\n";
  std::ofstream(folder.file("sl-1-results.tsv")) << header << "1\t1\tA\tB\t1-0\tmate\t40\t900\te2e4\n1\t2\tA";
  std::ofstream(folder.file("sl-1-event.txt")) << "name\tsl\nseed\t5\n";
  std::ofstream(other.file("sl-1-results.tsv")) << header;
  std::ofstream(other.file("sl-1-event.txt")) << "name\tsl\nseed\t6\n";
  EXPECT_TRUE(anyHolds(
      runTalvena({"-use=merge", folder.file("sl-1-results.tsv")}, 1),
      "# merge: " + folder.file("sl-1-results.tsv") + ": line 3: cut short (the line has no end); nothing merged"));
  std::ofstream(folder.file("sl-1-results.tsv")) << header;
  EXPECT_TRUE(anyHolds(runTalvena({"-use=merge", folder.file("sl-1-results.tsv"), other.file("sl-1-results.tsv")}, 1),
                       "# merge: " + other.file("sl-1-results.tsv") + " is of another event than " +
                           folder.file("sl-1-results.tsv") + ": seed differs (run: 5; file: 6); nothing merged"));
}

}  // namespace
