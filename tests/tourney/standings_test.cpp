// Standings figures against hand calculations, and the table's layout.
#include "chess/tourney/standings.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kbuChess {
namespace {

using Lines = std::vector<std::string>;

// +6 =8 -2 in 16 games:
//   points 6 + 8/2 = 10, score s = 10/16 = 0.625, draws 8/16 = 50%
//   elo = -400 log10(1/0.625 - 1) = -400 log10(0.6) = 88.7395
//   variance = (6 (1 - 0.625)^2 + 8 (0.5 - 0.625)^2 + 2 (0.625)^2) / 16
//            = (0.84375 + 0.125 + 0.78125) / 16 = 0.109375, sigma = 0.330719
//   margin = 1.96 * 0.330719 / 4 = 0.162052
//   elo(0.787052) = 227.0922, elo(0.462948) = -25.7938, error = 252.8861 / 2 = 126.4430
//   LOS = (1 + erf(4 / sqrt(16))) / 2 = (1 + erf(1)) / 2 = (1 + 0.842701) / 2 = 0.921350
TEST(StandingsTest, FiguresMatchTheHandCalculation) {
  const StandingRow row = standingOf("A", GameCounts{6, 8, 2});
  EXPECT_EQ(row.counts.games(), 16);
  EXPECT_DOUBLE_EQ(row.points, 10.0);
  EXPECT_DOUBLE_EQ(row.score, 0.625);
  EXPECT_DOUBLE_EQ(row.drawRatio, 0.5);
  EXPECT_NEAR(row.elo, 88.7395, 1e-4);
  EXPECT_NEAR(row.eloError, 126.4430, 1e-4);
  EXPECT_NEAR(row.los, 0.921350, 1e-6);
  // Mirror images and even scores are rows of the tables below.
}

TEST(StandingsTest, EdgesHaveNoFiniteFigures) {
  const StandingRow none = standingOf("N", GameCounts{});
  EXPECT_TRUE(std::isnan(none.score) && std::isnan(none.elo) && std::isnan(none.eloError));
  EXPECT_DOUBLE_EQ(none.los, 0.5);
  const StandingRow all = standingOf("W", GameCounts{4, 0, 0});
  EXPECT_TRUE(std::isinf(all.elo) && all.elo > 0);
  EXPECT_TRUE(std::isnan(all.eloError));  // sigma is 0 but the score sits on the edge
  EXPECT_NEAR(all.los, 0.977250, 1e-6);   // (1 + erf(4 / sqrt(8))) / 2 = (1 + 0.954500) / 2
  EXPECT_TRUE(std::isinf(standingOf("L", GameCounts{0, 0, 3}).elo));
  // +1 =1: s = 0.75, sigma = 0.25, margin = 1.96 * 0.25 / sqrt(2) = 0.3465 > 0.25: no error bar.
  EXPECT_TRUE(std::isnan(standingOf("E", GameCounts{1, 1, 0}).eloError));
  // Draws only: sigma 0, error 0.
  EXPECT_DOUBLE_EQ(standingOf("D", GameCounts{0, 2, 0}).eloError, 0.0);
}

// Gamma +2 =2 -2: s = 0.5, elo 0; variance = (2 * 0.25 + 2 * 0.25) / 6 = 1/6,
//   margin = 1.96 * 0.408248 / sqrt(6) = 0.326667, elo(0.826667) = 271.4 -> "271"; LOS 50%.
// Alpha +1 =2 -3: s = 1/3, elo = -400 log10(2) = -120.4 -> "-120";
//   variance = ((2/3)^2 + 2 (1/6)^2 + 3 (1/3)^2) / 6 = 0.138889, margin = 1.96 * 0.372678 / sqrt(6) = 0.298216,
//   elo(0.631549) = 93.6, elo(0.035117) = -575.6, error (93.6 + 575.6) / 2 = 334.6 -> "335";
//   LOS = (1 + erf(-2 / sqrt(8))) / 2 = (1 - 0.682689) / 2 = 15.9%.
TEST(StandingsTest, AllPlayAllRanksByPointsWithTiesInFileOrder) {
  const auto rows =
      standings({{"Alpha", {1, 2, 3}}, {"Beta", {6, 8, 2}}, {"Gamma", {2, 2, 2}}, {"D", {0, 0, 0}}}, ALL_PLAY_ALL);
  EXPECT_EQ(standingsTable(rows, ALL_PLAY_ALL),
            (Lines{"# standings", "# rank name   games  points   score   draws    elo   +/-     los",
                   "#    1 Beta      16    10.0   62.5%   50.0%    +89   126   92.1%",
                   "#    2 Gamma      6     3.0   50.0%   33.3%      0   271   50.0%",
                   "#    3 Alpha      6     2.0   33.3%   33.3%   -120   335   15.9%",
                   "#    4 D          0     0.0       -       -      -     -   50.0%"}));
  // Equal points share a rank.
  Lines tied =
      standingsTable(standings({{"A", {1, 0, 1}}, {"B", {0, 2, 0}}, {"C", {0, 0, 2}}}, ALL_PLAY_ALL), ALL_PLAY_ALL);
  for (std::string& line : tied) line = line.substr(0, 9);
  EXPECT_EQ(Lines(tied.begin() + 2, tied.end()), (Lines{"#    1 A ", "#    1 B ", "#    3 C "}));
}

// The opponents of a gauntlet only meet the first player: their rows are
// their scores against it, ranked below it.
// Hero +3 =2 -3: s = 0.5, variance = 6 * 0.25 / 8 = 0.1875, margin = 1.96 * 0.433013 / sqrt(8)
//   = 0.300059, elo(0.800059) = 240.9 -> "241".
// Strong +2 =1 -1: s = 0.625, elo 88.7; variance = (2 * 0.140625 + 0.015625 + 0.390625) / 4
//   = 0.171875, margin = 1.96 * 0.414578 / 2 = 0.406287, s + margin > 1: no error bar;
//   LOS = (1 + erf(1 / sqrt(6))) / 2 = (1 + 0.436184) / 2 = 71.8%.
TEST(StandingsTest, GauntletKeepsTheFirstPlayerOnTop) {
  const auto rows = standings({{"Hero", {3, 2, 3}}, {"Weak", {1, 1, 2}}, {"Strong", {2, 1, 1}}}, GAUNTLET);
  EXPECT_EQ(standingsTable(rows, GAUNTLET),
            (Lines{"# standings of the gauntlet", "# rank name    games  points   score   draws    elo   +/-     los",
                   "#    - Hero        8     4.0   50.0%   25.0%      0   241   50.0%",
                   "#    1 Strong      4     2.5   62.5%   25.0%    +89     -   71.8%",
                   "#    2 Weak        4     1.5   37.5%   25.0%    -89     -   28.2%"}));
}

}  // namespace
}  // namespace kbuChess
