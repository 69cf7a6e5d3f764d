#include "chess/tourney/learning.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <numeric>
#include <regex>
#include <set>
#include <string>
#include <tuple>

#include "chess/board/tables.h"
#include "chess/book/book_key.h"
#include "tests/tourney/tourney_test_util.h"

namespace kbuChess {
namespace {

using clsFakeGames = tourney_test::clsFakeLearningGames;

// Every opening is the same short line, so the fake needs no board.
class clsCountingOpenings : public clsOpenings {
 public:
  Opening line(kobubase::clsRandom& random) override { return {{}, {std::to_string(random.abs32() % 1000)}}; }
};

using tourney_test::readText;

class LearningTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }
  void SetUp() override {
    settings.file = path("a");
    settings.seed = 42;
    settings.enginesCount = 4;
    settings.msPerMove = 7;
    settings.maxMoves = 9;
  }
  std::string path(const std::string& name) { return folder.file(name + ".souls"); }
  int learn(clsFakeGames& games, const LearningSettings& s) {
    clsLearning learning(s, games, openings, out);
    games.learning = &learning;
    return learning.run();
  }

  tourney_test::KeptOutput out;
  clsCountingOpenings openings;
  LearningSettings settings;
  tourney_test::TempFolder folder;
};

TEST_F(LearningTest, FirstGenerationFromPresetsRanksByScore) {
  clsFakeGames games;
  EXPECT_EQ(learn(games, settings), 1);
  // 70 beats all, 8 beats the two 7s, the two 7s draw; ties keep preset order.
  EXPECT_EQ(readText(settings.file), "# generation 1 games 12 scores 12 8 2 2\n" + std::string(SOUL_PRESETS[0]) + "\n" +
                                         SOUL_PRESETS[3] + "\n" + SOUL_PRESETS[1] + "\n" + SOUL_PRESETS[2] + "\n");
  const std::vector<std::string> lines = out.takeAll();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "# soul file " + settings.file + " not found, starting from the presets");
  EXPECT_TRUE(std::regex_match(
      lines[1], std::regex(R"(# generation 1: best TalvenaOld 6/6, spread 1\.\.6, 12 games in \d+\.\d\d\d s)")))
      << lines[1];
  EXPECT_EQ(lines[2], "# learning done, best soul " + std::string(SOUL_PRESETS[0]));
  EXPECT_EQ(std::make_pair(games.lastMs, games.lastMaxMoves), std::make_pair(7, 9));
  // Each pair meets twice with the colours swapped, from one opening per pair.
  std::map<std::pair<std::string, std::string>, std::vector<std::string>> met;
  for (const auto& g : games.games) met[{g.white, g.black}] = g.opening;
  EXPECT_EQ(met.size(), 12u);
  std::set<std::vector<std::string>> distinct;
  for (const auto& [pair, opening] : met) {
    EXPECT_EQ(opening, met.at({pair.second, pair.first}));
    distinct.insert(opening);
  }
  EXPECT_EQ(distinct.size(), 6u);
}

TEST_F(LearningTest, TheBetterHalfSurvivesAndBreedsFillTheRest) {
  clsFakeGames games;
  settings.generations = 2;
  settings.enginesCount = 6;
  EXPECT_EQ(learn(games, settings), 2);
  const SoulFile file = parseSoulFile(readText(settings.file), "f");
  ASSERT_EQ(file.generations.size(), 2u);
  const SoulGeneration &first = file.generations[0], &second = file.generations[1];
  // Presets first values 70 7 7 8 38 33: the top three are TalvenaOld, Mass161, Manticore617.
  EXPECT_EQ(first.scores, (std::vector<int>{20, 16, 12, 8, 2, 2}));
  EXPECT_EQ(second.games, 30);
  EXPECT_EQ(std::accumulate(second.scores.begin(), second.scores.end(), 0), 60);
  std::set<std::string> names;
  std::set<SoulValues> distinct;
  for (const Soul& soul : second.souls) {
    names.insert(soul.name);
    distinct.insert(soul.values);
    // A breed takes every value from one of the survivors, or a fresh one below 105.
    for (int i = 0; i < SOUL_SIZE && soul.name[0] == 'G'; ++i) {
      bool inherited = soul.values[i] < 105;
      for (int s = 0; s < 3; ++s) inherited |= soul.values[i] == first.souls[s].values[i];
      EXPECT_TRUE(inherited) << soul.name << " position " << i + 1;
    }
  }
  EXPECT_EQ(names, (std::set<std::string>{"TalvenaOld", "Mass161", "Manticore617", "G2-1", "G2-2", "G2-3"}));
  EXPECT_EQ(distinct.size(), 6u);
}

TEST_F(LearningTest, SameSeedSameFileWhateverTheThreads) {
  settings.generations = 4;
  settings.enginesCount = 8;
  LearningSettings other = settings, reseeded = settings;
  other.file = path("b");
  other.threads = 4;
  reseeded.file = path("c");
  reseeded.seed = 43;
  clsFakeGames g1, g2, g3;
  EXPECT_EQ(learn(g1, settings) + learn(g2, other) + learn(g3, reseeded), 12);
  const std::string bytes = readText(settings.file);
  EXPECT_EQ(parseSoulFile(bytes, "f").lastNumber(), 4);
  EXPECT_EQ(bytes, readText(other.file));
  EXPECT_NE(bytes, readText(reseeded.file));
}

TEST_F(LearningTest, InterruptedRunKeepsTheLastGenerationAndResumes) {
  settings.generations = 1;
  LearningSettings reference = settings;
  reference.file = path("reference");
  clsFakeGames clean;
  ASSERT_EQ(learn(clean, reference), 1);
  out.takeAll();

  settings.generations = 3;
  clsFakeGames broken;
  broken.throwAt = 15;  // the third game of generation 2
  EXPECT_EQ(learn(broken, settings), 1);
  EXPECT_EQ(readText(settings.file), readText(reference.file));
  EXPECT_EQ(out.takeAll().back(), "# learning stopped in generation 2: runner broke; the soul file keeps generation 1");

  clsFakeGames stopping;
  stopping.stopAt = 3;
  EXPECT_EQ(learn(stopping, settings), 0);
  EXPECT_EQ(readText(settings.file), readText(reference.file));
  EXPECT_EQ(out.takeAll(),
            (std::vector<std::string>{"# soul file " + settings.file + " holds generation 1, continuing",
                                      "# learning stopped in generation 2; the soul file keeps generation 1"}));

  clsFakeGames good;
  settings.generations = 1;
  EXPECT_EQ(learn(good, settings), 1);
  SoulFile file = parseSoulFile(readText(settings.file), "f");
  EXPECT_EQ(file.lastNumber(), 2);
  file.generations.resize(1);
  EXPECT_EQ(soulFileText(file), readText(reference.file));
}

// A hand-written list longer than the souls asked for: the souls it did not
// use, its comment and its unreadable line all stay in the file.
TEST_F(LearningTest, HandWrittenListKeepsEveryLineItDidNotUse) {
  const std::string hand =
      "# my souls\n"
      "Z=90 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n"
      "Y=5 1 1\n"
      "X=50 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2\n"
      "W=40 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2\n"
      "V=30 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2\n";
  std::ofstream(settings.file) << hand;
  settings.enginesCount = 2;
  clsFakeGames games;
  EXPECT_EQ(learn(games, settings), 1);
  EXPECT_EQ(out.takeAll().front(), "# soul file " + settings.file + " line 3: a soul needs 21 values, found 3");
  const std::string text = readText(settings.file);
  EXPECT_EQ(text.substr(0, hand.size()), hand);
  const SoulFile file = parseSoulFile(text, "f");
  ASSERT_EQ(file.generations.size(), 2u);
  ASSERT_EQ(file.last().souls.size(), 2u);
  EXPECT_EQ(std::to_string(file.last().number) + file.last().souls[0].name + file.last().souls[1].name, "1ZX");
}

// "\learnt" plays as many souls as the file's last generation, but no more than 64.
TEST_F(LearningTest, AsManySoulsAsTheFileHoldsStopsAtTheLimit) {
  {
    std::ofstream hand(settings.file);
    for (int i = 0; i < 70; ++i) hand << "S" << i << "=" << i << " 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n";
  }
  settings.enginesCount = 0;
  clsFakeGames games;
  EXPECT_EQ(learn(games, settings), 1);
  EXPECT_EQ(games.games.size(), 64u * 63u);
}

TEST_F(LearningTest, AnUnreadableFileIsLeftAlone) {
  settings.file = folder.dir();
  clsFakeGames games;
  EXPECT_EQ(learn(games, settings), 0);
  EXPECT_TRUE(games.games.empty());
  EXPECT_EQ(out.takeAll(), (std::vector<std::string>{"# error 21: Is a directory reading " + settings.file}));
}

TEST_F(LearningTest, GivenPlayersAreTheFirstGeneration) {
  clsFakeGames games;
  clsLearning learning(settings, games, openings, out);
  EXPECT_EQ(learning.run({parseSoul("P=3"), parseSoul("Q=4")}), 1);
  EXPECT_EQ(readText(settings.file),
            "# generation 1 games 2 scores 4 0\n"
            "Q=4 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n"
            "P=3 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  EXPECT_EQ(learning.run({parseSoul("P=3")}), 0);
  EXPECT_EQ(out.takeAll().back(), "# learning needs at least 2 souls");
}

TEST(LearnArguments, UsageWhenANumberIsNotAboveZeroAndClampedOtherwise) {
  LearningSettings settings;
  for (const char* bad : {"", "f", "f 1 4 10", "f 0 4 10 20", "f 1 4 -10 20", "f x 4 10 20", "f 1 4 10 0"}) {
    EXPECT_FALSE(readLearnArguments(bad, settings)) << bad;
  }
  EXPECT_EQ(settings.file, DEFAULT_SOUL_FILE);
  const auto read = [&settings](const char* text) {
    EXPECT_TRUE(readLearnArguments(text, settings)) << text;
    return std::make_tuple(settings.file, settings.generations, settings.enginesCount, settings.msPerMove,
                           settings.maxMoves);
  };
  EXPECT_EQ(read("g.souls 999999999 1000 99999999999 5000"), std::make_tuple("g.souls", 100000, 64, 600000, 1000));
  EXPECT_EQ(read("h 3 1 10 20"), std::make_tuple("h", 3, 2, 10, 20));
}

TEST(Openings, RandomLinesAreLegalAndRepeatFromTheSeed) {
  initTables();
  clsRandomOpenings openings(10);
  kobubase::clsRandom r1(5, 6), r2(5, 6);
  const std::vector<std::string> line = openings.line(r1).moves;
  EXPECT_EQ(line, openings.line(r2).moves);
  EXPECT_NE(line, openings.line(r1).moves);
  ASSERT_EQ(line.size(), 10u);
  clsBoard board;
  board.readFEN(clsBoard::START_FEN);
  for (const std::string& move : line) EXPECT_TRUE(board.readCoordinateMove(move)) << move;
}

TEST(Openings, BookMovesWhileTheBookKnowsThePosition) {
  initTables();
  clsBook book;
  clsBoard board;
  board.readFEN(clsBoard::START_FEN);
  for (const char* move : {"d2d4", "g8f6"}) {
    ASSERT_TRUE(board.readCoordinateMove(move));
    book.add(BookRecord{bookKey(board.position()), 10, 10, 10});
  }
  clsBookOpenings openings(book, 5);
  kobubase::clsRandom random(1, 2);
  for (int i = 0; i < 3; ++i) {
    const std::vector<std::string> line = openings.line(random).moves;
    ASSERT_EQ(line.size(), 5u);
    EXPECT_EQ(line[0] + line[1], "d2d4g8f6");
  }
}

// A zero seed would draw only zeros; it takes the fixed start words instead.
TEST(Random, AZeroSeedDrawsFromTheFixedStartWords) {
  const std::uint64_t first = kobubase::clsRandom(0, 0).next64();
  EXPECT_NE(first, 0u);
  EXPECT_EQ(first, kobubase::clsRandom().next64());
}

}  // namespace
}  // namespace kbuChess
