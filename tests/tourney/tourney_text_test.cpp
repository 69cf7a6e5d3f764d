// Pairings, the run's texts, log lines, and players' scores from many games at once.
#include "chess/tourney/tourney_text.h"

#include <gtest/gtest.h>

#include <thread>

#include "chess/tourney/player.h"
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

// Games on several threads add to the same players; every point arrives.
TEST(TourneyTextTest, PlayersCountGamesUnderTheirLock) {
  clsPlayer a(PlayerConfig{"A", "", "", "embedded"});
  clsPlayer b(PlayerConfig{"B", "/usr/games/fairymax", "-x", "xboard"});
  std::vector<std::thread> games;
  for (int t = 0; t < 4; ++t) {
    games.emplace_back([&a, &b, t] {
      for (int i = 0; i < 250; ++i) {
        const int white = (i + t) % 3;  // 0 loss, 1 draw, 2 win for A
        a.addGame(white);
        b.addGame(2 - white);
      }
    });
  }
  for (std::thread& game : games) game.join();
  const GameCounts countsA = a.counts(), countsB = b.counts();
  // Thread t plays the cycle loss, draw, win from step t: 84 of the first
  // result and 83 of the two others. Losses for A: 84 + 83 + 83 + 84 = 334,
  // draws 83 + 84 + 83 + 83 = 333, wins 83 + 83 + 84 + 83 = 333.
  EXPECT_EQ(countsA.wins, 333);
  EXPECT_EQ(countsA.draws, 333);
  EXPECT_EQ(countsA.losses, 334);
  EXPECT_EQ(a.score(), 999);
  EXPECT_EQ(countsB.wins, 334);
  EXPECT_EQ(countsB.losses, 333);
  EXPECT_EQ(b.score(), 1001);
  EXPECT_EQ(a.addGame(2), 1001);
}

}  // namespace
}  // namespace kbuChess
