// Pairings, the run's texts and log lines.
#include "chess/tourney/tourney_text.h"

#include <gtest/gtest.h>

#include "chess/tourney/tourney_config.h"

namespace kbuChess {
namespace {

using Pairs = std::vector<std::pair<int, int>>;
using Lines = std::vector<std::string>;

TEST(TourneyTextTest, PairingsPerType) {
  EXPECT_EQ(pairings(3, ALL_PLAY_ALL), (Pairs{{0, 1}, {0, 2}, {1, 0}, {1, 2}, {2, 0}, {2, 1}}));
  EXPECT_EQ(pairings(3, GAUNTLET), (Pairs{{0, 1}, {0, 2}, {1, 0}, {2, 0}}));
  EXPECT_EQ(pairings(3, LEARNING), pairings(3, GAUNTLET));
  EXPECT_EQ(pairings(5, ALL_PLAY_ALL).size(), 20u);
  EXPECT_EQ(pairings(5, GAUNTLET).size(), 8u);
  EXPECT_EQ(pairings(1, ALL_PLAY_ALL), Pairs{});
  EXPECT_EQ(pairings(0, GAUNTLET), Pairs{});
  EXPECT_EQ(gamesCreatedLine(0), "0 games created");
}

TEST(TourneyTextTest, BannerProgressAndFinishingLines) {
  EXPECT_EQ(bannerLines(), (Lines{std::string(56, '_'), std::string(56, '-'),
                                  "        [(|) (|)]       \"IN MOTO L'OROLOGIO DEL BIANCO!\"", std::string(56, '_')}));
  EXPECT_EQ(progressLine(1, 2, 2, 6), "# ROUND 1/2 - GAMES PLAYING 2/6");
  EXPECT_EQ(progressLine(12, 100, 0, 1), "# ROUND 12/100 - GAMES PLAYING 0/1");
  EXPECT_EQ(finishLine(ALL_PLAY_ALL), "----------------- tournament has finished");
  EXPECT_EQ(finishLine(GAUNTLET), "----------------- tournament has finished");
  EXPECT_EQ(finishLine(LEARNING), "----------------- learning has finished");
}

TEST(TourneyTextTest, GameLinesAndLogLines) {
  EXPECT_EQ(matchLine("Simple5", "fairymax"), "new match: 'Simple5' vs 'fairymax'");
  EXPECT_EQ(forfeitLine("fairymax", 10001, 10000), "fairymax forfeits on time (10001>10000)");
  EXPECT_EQ(crashLine("fairymax"), "fairymax has crashed!");
  EXPECT_EQ(resultLine(0x0016), "mate 1-0");
  EXPECT_EQ(resultLine(0x0A00), "triple repetition 1/2-1/2");
  EXPECT_EQ(scoreLine("Simple5", 2, 7), "'Simple5' result 2 score 7");

  EXPECT_EQ(elapsedText(0), "0:00:00.000");
  EXPECT_EQ(elapsedText(62345), "0:01:02.345");
  EXPECT_EQ(elapsedText(3600000 * 27 + 59999), "27:00:59.999");
  EXPECT_EQ(elapsedText(-5), "0:00:00.000");
  EXPECT_EQ(logLine(62345, "tourney", "# ROUND 1/2 - GAMES PLAYING 2/6"),
            "# 0:01:02.345\ttourney\tROUND 1/2 - GAMES PLAYING 2/6");
  EXPECT_EQ(logLine(5, "game 3", "new match: 'A' vs 'B'"), "# 0:00:00.005\tgame 3\tnew match: 'A' vs 'B'");
  EXPECT_EQ(logLine(5, "fairymax", "--->\tusermove e2e4"), "# 0:00:00.005\tfairymax\t--->\tusermove e2e4");
}

}  // namespace
}  // namespace kbuChess
