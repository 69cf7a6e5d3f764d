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
  EXPECT_EQ(pairings(1, ALL_PLAY_ALL), Pairs{});
}

TEST(TourneyTextTest, RunGameAndLogLines) {
  EXPECT_EQ(bannerLines()[2], "        [(|) (|)]       \"IN MOTO L'OROLOGIO DEL BIANCO!\"");
  EXPECT_EQ(
      (Lines{progressLine(12, 100, 0, 1), finishLine(GAUNTLET), finishLine(LEARNING), gamesCreatedLine(0),
             forfeitLine("fairymax", 10001, 10000), matchLine("S", "f"), crashLine("f"), resultLine(0x0A00),
             scoreLine("Simple5", 2, 7)}),
      (Lines{"# ROUND 12/100 - GAMES PLAYING 0/1", "----------------- tournament has finished",
             "----------------- learning has finished", "0 games created", "fairymax forfeits on time (10001>10000)",
             "new match: 'S' vs 'f'", "f has crashed!", "triple repetition 1/2-1/2", "'Simple5' result 2 score 7"}));
  EXPECT_EQ((Lines{elapsedText(-5), elapsedText(3600000 * 27 + 59999)}), (Lines{"0:00:00.000", "27:00:59.999"}));
  EXPECT_EQ(logLine(62345, "tourney", "# ROUND 1/2 - GAMES PLAYING 2/6"),
            "# 0:01:02.345\ttourney\tROUND 1/2 - GAMES PLAYING 2/6");
  EXPECT_EQ(logLine(5, "fairymax", "--->\tusermove e2e4"), "# 0:00:00.005\tfairymax\t--->\tusermove e2e4");
}

}  // namespace
}  // namespace kbuChess
