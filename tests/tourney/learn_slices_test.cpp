// A learning generation played in slices: one slice or three give the same
// games and, bred from the merged rows, the same next generation as "\learn";
// the breed step refuses what it cannot count and leaves the file alone.
#include "chess/tourney/learn_slices.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>

#include "chess/board/tables.h"
#include "tests/tourney/tourney_test_util.h"

namespace kbuChess {
namespace {

using tourney_test::Lines;
using tourney_test::readText;

using clsDeterministicGames = tourney_test::clsFakeLearningGames;

std::set<std::string> gameTexts(const std::vector<GameResultRow>& rows) {
  std::set<std::string> texts;
  for (const GameResultRow& row : rows)
    texts.insert(std::to_string(row.round) + " " + std::to_string(row.game) + " " + row.white + " " + row.black + " " +
                 row.result + " " + row.opening);
  return texts;
}

class LearnSlicesTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }
  Lines breed(const PlaySettings& play = {4, 7, 9, 4}) {
    breedLearnSlices(file, play, 42, out);
    return out.takeAll();
  }
  Lines playSlice(const std::string& generation, const std::string& shard) {
    const clsBook noBook;
    const std::atomic<bool> stop{false};
    playLearnSlice({file, generation, shard, 1}, runner, noBook, stop, out);
    return out.takeAll();
  }
  std::string slicePath(int index, int count) { return sliceResultsPath(file, 1, index, count); }

  tourney_test::KeptOutput out;
  clsDeterministicGames runner;
  tourney_test::TempFolder folder;
  std::string file = folder.file("s.souls");
};

// The soul file after ranking the rows and breeding: the played generation, then the next to play.
std::string bredText(const SoulGeneration& generation, const std::vector<GameResultRow>& rows, bool withNext) {
  SoulFile file;
  std::string problem;
  file.generations.resize(1);
  EXPECT_TRUE(rankGeneration(generation, rows, file.generations[0], problem)) << problem;
  if (withNext) file.generations.push_back(nextGeneration(file, {8, 7, 9, 4}, followingSeed(42)));
  return soulFileText(file);
}

TEST_F(LearnSlicesTest, OneSliceOrThreeGiveTheSameGamesAndTheSameNextGenerationAsLearn) {
  const SoulGeneration generation = nextGeneration(SoulFile{}, {8, 7, 9, 4}, 42);
  ASSERT_EQ(generation.souls.size(), 8u);  // the six presets and two breeds
  clsRandomOpenings openings(4);
  const std::atomic<bool> stop{false};
  std::string failure;
  LearnSlice whole;
  whole.threads = 2;
  clsDeterministicGames wholeGames, sliceGames;
  ASSERT_TRUE(playGenerationSlice(generation, whole, wholeGames, openings, stop, failure));
  std::vector<GameResultRow> sliced;
  for (int index = 0; index < 3; ++index) {
    LearnSlice slice{index, 3, 1, "", {}};
    ASSERT_TRUE(playGenerationSlice(generation, slice, sliceGames, openings, stop, failure));
    EXPECT_EQ(slice.rows.size(), index == 0 ? 20u : 18u);  // pairs 0, 3, ... 27 of 28
    sliced.insert(sliced.end(), slice.rows.begin(), slice.rows.end());
  }
  EXPECT_EQ(wholeGames.games.size(), 56u);
  EXPECT_EQ(sliceGames.texts(), wholeGames.texts());
  EXPECT_EQ(gameTexts(sliced), gameTexts(whole.rows));
  EXPECT_EQ(bredText(generation, sliced, true), bredText(generation, whole.rows, true));

  // "\learn" with the same seed plays and ranks the generation alike.
  LearningSettings settings;
  settings.file = file;
  settings.seed = 42;
  settings.msPerMove = 7;
  settings.maxMoves = 9;
  settings.openingPlies = 4;
  clsDeterministicGames learnGames;
  ASSERT_EQ(clsLearning(settings, learnGames, openings, out).run(), 1);
  EXPECT_EQ(readText(file), bredText(generation, whole.rows, false));
}

TEST_F(LearnSlicesTest, BreedingRefusesMissingAndCutSlicesAndCountsAGameOnce) {
  EXPECT_EQ(breed(), (Lines{"# soul file " + file + " not found, starting from the presets",
                            "# learn: " + file + " holds generation 1 to play, 4 souls, 12 games"}));
  EXPECT_EQ(breed(),
            (Lines{"# learn: no slice of generation 1 was played (" + slicePath(0, 1) + " or its K-of-N files)"}));
  const std::string ready = readText(file);
  EXPECT_EQ(playSlice("1", "0/3"),
            (Lines{"# learn: slice 0/3 of generation 1 done, 4 games played, 0 kept, in " + slicePath(0, 3)}));
  playSlice("1", "2/3");
  EXPECT_EQ(breed(), (Lines{"# learn: slice 1/3 of generation 1 is missing: " + slicePath(1, 3)}));

  // A slice cut in its last line is refused, then resumed: its whole pairs kept.
  playSlice("1", "1/3");
  std::string cut = readText(slicePath(1, 3));
  cut.pop_back();
  std::ofstream(slicePath(1, 3), std::ios::binary) << cut;
  EXPECT_EQ(breed(), (Lines{"# learn: " + slicePath(1, 3) +
                            " line 5: cut short (the line has no end); run slice 1/3 again to finish it"}));
  EXPECT_EQ(readText(file), ready);
  EXPECT_EQ(playSlice("1", "1/3"),
            (Lines{"# learn: slice 1/3 of generation 1 done, 2 games played, 2 kept, in " + slicePath(1, 3)}));

  const std::string first = readText(slicePath(0, 3)).substr(std::string(RESULTS_HEADER).size() + 1);
  std::ofstream(slicePath(2, 3), std::ios::app) << first.substr(0, first.find('\n') + 1);
  const Lines bred = breed();
  ASSERT_EQ(bred.size(), 3u);
  EXPECT_EQ(bred[0], "# learn: game 1 of generation 1 is in " + slicePath(0, 3) + " and in " + slicePath(2, 3) +
                         "; counted once");
  EXPECT_TRUE(std::regex_match(
      bred[1], std::regex(R"(# generation 1: best TalvenaOld 6/6, spread 1\.\.6, 12 games in \d+\.\d{3} s)")))
      << bred[1];
  EXPECT_EQ(bred[2], "# learn: " + file + " holds generation 2 to play, 4 souls, 12 games");
  const SoulFile soulFile = parseSoulFile(readText(file), file);
  EXPECT_TRUE(soulFile.problems.empty());
  ASSERT_NE(soulFile.toPlay(), nullptr);
  EXPECT_EQ(std::make_pair(soulFile.lastNumber(), soulFile.toPlay()->number), std::make_pair(1, 2));

  const std::string twice = readText(file);
  EXPECT_EQ(breed(), (Lines{"# learn: generation 1 was already bred; " + file + " holds generation 2 to play"}));
  EXPECT_EQ(readText(file), twice);
}

TEST_F(LearnSlicesTest, ASliceOfAGenerationNotToPlayIsRefused) {
  EXPECT_EQ(playSlice("1", ""), (Lines{"# learn: soul file " + file + " not found"}));
  breed();
  const struct {
    const char* generation;
    const char* shard;
    std::string line;
  } cases[] = {
      {"0", "", "# learn: -generation=0 is not a generation number; it holds generation 1 to play"},
      {"2", "", "# learn: " + file + " holds no generation 2 to play; it holds generation 1 to play"},
      {"1", "3/3", "# learn: shard 3/3 needs N from 1 to 1000000 and K from 0 to N-1"},
  };
  for (const auto& c : cases) EXPECT_EQ(playSlice(c.generation, c.shard), Lines{c.line}) << c.generation;
  playSlice("1", "");
  breed();
  EXPECT_EQ(playSlice("1", ""),
            (Lines{"# learn: generation 1 of " + file + " was already bred; it holds generation 2 to play"}));
  EXPECT_FALSE(std::filesystem::exists(slicePath(0, 3)));
}

}  // namespace
}  // namespace kbuChess
