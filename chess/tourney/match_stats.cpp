#include "chess/tourney/match_stats.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <tuple>

#include "chess/tourney/standings.h"

namespace kbuChess {
namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double NELO_PER_T = 800.0 / 2.302585092994046;  // 800 / ln 10
constexpr double EMPTY_CELL = 1e-3;
constexpr double Z95 = 1.959963984540054;

std::string eloText(double elo) {
  if (std::isnan(elo)) return "-";
  if (std::isinf(elo)) return elo > 0 ? "+inf" : "-inf";
  return formatFigure("%+.1f", elo);
}

// Mean and variance of the pair score (0, 1/4, ... 1) over the cells,
// `floor` standing in for an empty cell.
void pairMoments(const Pentanomial& cells, double floor, double& pairs, double& mean, double& variance) {
  pairs = mean = variance = 0;
  for (const int count : cells) pairs += count > 0 ? count : floor;
  for (std::size_t i = 0; i < cells.size(); ++i) mean += (cells[i] > 0 ? cells[i] : floor) * (i / 4.0) / pairs;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const double deviation = i / 4.0 - mean;
    variance += (cells[i] > 0 ? cells[i] : floor) * deviation * deviation / pairs;
  }
}

}  // namespace

int whiteHalfPoints(const std::string& result) {
  if (result == "1-0") return 2;
  if (result == "1/2-1/2") return 1;
  if (result == "0-1") return 0;
  return -1;
}

std::string resultOfWhiteHalfPoints(int halfPoints) {
  return halfPoints >= 2 ? "1-0" : halfPoints == 1 ? "1/2-1/2" : "0-1";
}

std::vector<std::pair<std::string, GameCounts>> countsOfRows(const std::vector<GameResultRow>& rows,
                                                             const std::vector<std::string>& names) {
  std::map<std::string, GameCounts> counts;
  const auto add = [&](const std::string& name, int halfPoints) {
    GameCounts& c = counts[name];
    (halfPoints == 2 ? c.wins : halfPoints == 1 ? c.draws : c.losses) += 1;
  };
  for (const GameResultRow& row : rows) {
    const int white = whiteHalfPoints(row.result);
    if (white < 0) continue;
    add(row.white, white);
    add(row.black, 2 - white);
  }
  std::vector<std::pair<std::string, GameCounts>> table;
  for (const std::string& name : names) table.emplace_back(name, counts[name]);
  return table;
}

MatchFigures matchFigures(const std::vector<GameResultRow>& rows, const std::string& player,
                          const std::string& opponent) {
  MatchFigures figures;
  std::map<int, std::vector<int>> byRound;  // the player's half-points of each round's games
  for (const GameResultRow& row : rows) {
    const int white = whiteHalfPoints(row.result);
    if (white < 0) continue;
    int points;
    if (row.white == player && row.black == opponent) {
      points = white;
    } else if (row.white == opponent && row.black == player) {
      points = 2 - white;
    } else {
      continue;
    }
    (points == 2 ? figures.games.wins : points == 1 ? figures.games.draws : figures.games.losses) += 1;
    byRound[row.round].push_back(points);
  }
  for (const auto& [round, games] : byRound) {
    std::size_t i = 0;
    for (; i + 1 < games.size(); i += 2) figures.pairs[static_cast<std::size_t>(games[i] + games[i + 1])] += 1;
    figures.unpaired += static_cast<int>(games.size() - i);
  }
  double pairs, mean, variance;
  pairMoments(figures.pairs, 0, pairs, mean, variance);
  if (pairs == 0) {
    figures.elo = figures.eloError = NOT_A_NUMBER;
    return figures;
  }
  figures.elo = eloFromScore(mean);
  const double error = std::sqrt(variance / pairs);
  if (error > 0) figures.los = 0.5 * (1 + std::erf((mean - 0.5) / (error * std::sqrt(2.0))));
  const double low = mean - Z95 * error, high = mean + Z95 * error;
  figures.eloError = low > 0 && high < 1 ? (eloFromScore(high) - eloFromScore(low)) / 2 : NOT_A_NUMBER;
  return figures;
}

double SprtSettings::lowerBound() const {
  return std::log(beta / (1 - alpha));
}
double SprtSettings::upperBound() const {
  return std::log((1 - beta) / alpha);
}

double sprtLlr(const Pentanomial& cells, double elo0, double elo1) {
  double pairs, mean, variance;
  pairMoments(cells, EMPTY_CELL, pairs, mean, variance);
  if (variance <= 0) return 0;
  const double sigma = std::sqrt(2 * variance);
  const double mean0 = 0.5 + sigma * elo0 / NELO_PER_T, mean1 = 0.5 + sigma * elo1 / NELO_PER_T;
  return pairs * (mean1 - mean0) * (2 * mean - mean0 - mean1) / (2 * variance);
}

int sprtDecision(double llr, const SprtSettings& sprt) {
  if (llr >= sprt.upperBound()) return 1;
  if (llr <= sprt.lowerBound()) return -1;
  return 0;
}

std::string matchFiguresLine(const std::string& player, const std::string& opponent, const MatchFigures& f) {
  const Pentanomial& p = f.pairs;
  std::string line = "# " + player + " vs " + opponent + ": games " + std::to_string(f.games.games()) + " W-L-D " +
                     std::to_string(f.games.wins) + "-" + std::to_string(f.games.losses) + "-" +
                     std::to_string(f.games.draws) + ", pairs LL " + std::to_string(p[0]) + " LD " +
                     std::to_string(p[1]) + " DD+WL " + std::to_string(p[2]) + " WD " + std::to_string(p[3]) + " WW " +
                     std::to_string(p[4]);
  if (f.unpaired > 0) line += " (" + std::to_string(f.unpaired) + " unpaired)";
  line += ", elo " + eloText(f.elo) + " +/- " + (std::isnan(f.eloError) ? "-" : formatFigure("%.1f", f.eloError));
  return line + ", LOS " + formatFigure("%.1f%%", f.los * 100);
}

std::string sprtLine(const std::string& player, const std::string& opponent, const SprtSettings& sprt, double llr) {
  return "# sprt " + player + " vs " + opponent + " (elo0 " + formatFigure("%g", sprt.elo0) + ", elo1 " +
         formatFigure("%g", sprt.elo1) + ", alpha " + formatFigure("%g", sprt.alpha) + ", beta " + formatFigure("%g", sprt.beta) +
         "): LLR " + formatFigure("%.2f", std::abs(llr) < 0.005 ? 0.0 : llr) + " in (" + formatFigure("%.2f", sprt.lowerBound()) +
         ", " + formatFigure("%.2f", sprt.upperBound()) + ")";
}

}  // namespace kbuChess
