#pragma once
// Standings of a tournament: per player its games, points, score, draws and
// the Elo difference its score stands for, with a 95% error bar and the
// likelihood of superiority. In an all-play-all event a player's figures are
// against the whole field; in a gauntlet the opponents only meet the first
// player, so their figures are against the first player and the first
// player's against all of them.
//
// Elo from the logistic model: elo(s) = -400 * log10(1/s - 1) for the score
// s = (wins + draws / 2) / games. The error bar: the standard deviation of
// the per-game score (1, 1/2, 0 around s) gives the score's 95% margin
// m = 1.96 * sigma / sqrt(games), and the half-width of
// [elo(s - m), elo(s + m)] is the Elo error. LOS = (1 + erf((W - L) /
// sqrt(2 (W + L)))) / 2, the chance that the player is the stronger one.
#include <string>
#include <utility>
#include <vector>

#include "chess/tourney/player.h"

namespace kbuChess {

// One number through a printf pattern ("%+.1f"): the figures of the standings
// and of the pair statistics are written with it.
std::string formatFigure(const char* pattern, double value);

struct StandingRow {
  std::string name;
  GameCounts counts;
  double points = 0;     // wins + draws / 2
  double score = 0;      // points / games; NaN without games
  double drawRatio = 0;  // draws / games; NaN without games
  double elo = 0;        // -inf at 0%, +inf at 100%, NaN without games
  double eloError = 0;   // 95% half-width; NaN where it is not defined
  double los = 0.5;      // 0.5 without decisive games
};

double eloFromScore(double score);
StandingRow standingOf(std::string name, const GameCounts& counts);

// Rows in table order: by points, ties in file order; in a gauntlet the
// first player first, then its opponents by points.
std::vector<StandingRow> standings(const std::vector<std::pair<std::string, GameCounts>>& players, int type);

// "# " lines: a heading, then one aligned row per player with its rank
// ("-" for the first player of a gauntlet; tied points share a rank).
std::vector<std::string> standingsTable(const std::vector<StandingRow>& rows, int type);

}  // namespace kbuChess
