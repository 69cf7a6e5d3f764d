#include "chess/tourney/standings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "chess/tourney/tourney_config.h"

namespace kbuChess {
std::string formatFigure(const char* pattern, double value) {
  char text[40];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::string eloText(double elo) {
  if (std::isnan(elo)) return "-";
  if (std::isinf(elo)) return elo > 0 ? "+inf" : "-inf";
  const double rounded = std::round(elo);
  return rounded == 0 ? "0" : formatFigure("%+.0f", rounded);
}

std::string percentText(double ratio) {
  return std::isnan(ratio) ? "-" : formatFigure("%.1f%%", ratio * 100);
}

std::string padLeft(const std::string& text, std::size_t width) {
  return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

std::string padRight(const std::string& text, std::size_t width) {
  return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

}  // namespace

double eloFromScore(double score) {
  if (std::isnan(score)) return NOT_A_NUMBER;
  if (score <= 0) return -std::numeric_limits<double>::infinity();
  if (score >= 1) return std::numeric_limits<double>::infinity();
  return -400.0 * std::log10(1.0 / score - 1.0);
}

StandingRow standingOf(std::string name, const GameCounts& counts) {
  StandingRow row;
  row.name = std::move(name);
  row.counts = counts;
  const double w = counts.wins, d = counts.draws, l = counts.losses, n = counts.games();
  row.points = w + d / 2;
  if (counts.wins + counts.losses > 0) row.los = 0.5 * (1 + std::erf((w - l) / std::sqrt(2 * (w + l))));
  if (counts.games() == 0) {
    row.score = row.drawRatio = row.elo = row.eloError = NOT_A_NUMBER;
    return row;
  }
  const double s = row.points / n;
  row.score = s;
  row.drawRatio = d / n;
  row.elo = eloFromScore(s);
  const double variance = (w * (1 - s) * (1 - s) + d * (0.5 - s) * (0.5 - s) + l * s * s) / n;
  const double margin = 1.96 * std::sqrt(variance) / std::sqrt(n);
  row.eloError =
      s - margin > 0 && s + margin < 1 ? (eloFromScore(s + margin) - eloFromScore(s - margin)) / 2 : NOT_A_NUMBER;
  return row;
}

std::vector<StandingRow> standings(const std::vector<std::pair<std::string, GameCounts>>& players, int type) {
  std::vector<StandingRow> rows;
  for (const auto& [name, counts] : players) rows.push_back(standingOf(name, counts));
  const auto first = rows.begin() + (type == ALL_PLAY_ALL || rows.empty() ? 0 : 1);
  std::stable_sort(first, rows.end(), [](const StandingRow& a, const StandingRow& b) { return a.points > b.points; });
  return rows;
}

std::vector<std::string> standingsTable(const std::vector<StandingRow>& rows, int type) {
  std::size_t nameWidth = 4;
  for (const StandingRow& row : rows) nameWidth = std::max(nameWidth, row.name.size());
  auto line = [nameWidth](const std::string& rank, const std::string& name, const std::vector<std::string>& cells) {
    std::string text = "# ";
    text += padLeft(rank, 4) + " " + padRight(name, nameWidth);
    constexpr std::size_t widths[] = {6, 7, 7, 7, 6, 5, 7};
    for (std::size_t i = 0; i < cells.size(); ++i) {
      text += ' ';
      text += padLeft(cells[i], widths[i]);
    }
    return text;
  };
  std::vector<std::string> lines;
  lines.push_back(type == ALL_PLAY_ALL ? "# standings" : "# standings of the gauntlet");
  lines.push_back(line("rank", "name", {"games", "points", "score", "draws", "elo", "+/-", "los"}));
  const std::size_t firstRanked = type == ALL_PLAY_ALL ? 0 : 1;
  std::size_t rank = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const StandingRow& row = rows[i];
    if (i >= firstRanked && (i == firstRanked || rows[i - 1].points != row.points)) rank = i - firstRanked + 1;
    const std::string error = std::isnan(row.eloError) ? "-" : formatFigure("%.0f", row.eloError);
    lines.push_back(line(i < firstRanked ? "-" : std::to_string(rank), row.name,
                         {std::to_string(row.counts.games()), formatFigure("%.1f", row.points), percentText(row.score),
                          percentText(row.drawRatio), eloText(row.elo), error, percentText(row.los)}));
  }
  return lines;
}

}  // namespace kbuChess
