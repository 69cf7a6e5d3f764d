#include "chess/tourney/tourney_resume.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>

#include "base/file_io.h"
#include "base/text.h"

namespace kbuChess {

bool readSettingsFile(const std::string& path, std::vector<std::string>& lines) {
  lines.clear();
  std::string text, error;
  if (!kobubase::readWholeFile(path, text, error)) return false;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return true;
}

std::vector<std::string> eventSettingsLines(const TourneyConfig& config, std::uint64_t seed) {
  std::string players;
  for (const PlayerConfig& player : config.players) {
    if (!players.empty()) players += ", ";
    players += player.name + " (" + player.protocol + " " + player.filename + " " + player.parameters + ")";
  }
  const std::string clock = std::to_string(config.movesPerSecond) + "/" + std::to_string(config.gameMs) + "+" +
                            std::to_string(config.incrementMs);
  const std::string openings = config.openingBook + " plies " + std::to_string(config.openingPlies) + " order " +
                               (config.openingOrder == 1 ? "random" : "sequential") + " start " +
                               std::to_string(config.openingStart);
  std::vector<std::string> lines{"name\t" + config.name,  "type\t" + std::to_string(config.type),
                                 "players\t" + players,   "clock\t" + clock,
                                 "openings\t" + openings, "seed\t" + std::to_string(seed)};
  if (config.sprt.enabled) {
    std::ostringstream test;
    test << "sprt\t" << config.sprt.elo0 << " " << config.sprt.elo1 << " " << config.sprt.alpha << " "
         << config.sprt.beta;
    lines.push_back(test.str());
  }
  return lines;
}

std::string settingsDifference(const std::vector<std::string>& run, const std::vector<std::string>& file) {
  std::map<std::string, std::string> before;
  for (const std::string& line : run) before[line.substr(0, line.find('\t'))] = line.substr(line.find('\t') + 1);
  for (const std::string& line : file) {
    if (line.rfind("sprt\t", 0) == 0) continue;  // the test may change between the parts of a run
    const std::string key = line.substr(0, line.find('\t')), value = line.substr(line.find('\t') + 1);
    const auto found = before.find(key);
    const std::string old = found == before.end() ? "none" : found->second;
    if (old != value) return key + " differs (run: " + old + "; file: " + value + ")";
  }
  return std::string();
}

std::uint64_t seedOfSettings(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    if (line.rfind("seed\t", 0) == 0) return std::strtoull(line.c_str() + 5, nullptr, 10);
  }
  return 0;
}

std::vector<GameResultRow> rowsOfWholePairs(const std::vector<GameResultRow>& rows, int& dropped) {
  using PairKey = std::tuple<int, std::string, std::string>;
  std::map<PairKey, std::vector<std::size_t>> pairs;
  std::set<std::pair<int, int>> seen;
  dropped = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const GameResultRow& row = rows[i];
    if (!seen.insert({row.round, row.game}).second) {
      ++dropped;
      continue;
    }
    const bool ordered = row.white < row.black;
    pairs[{row.round, ordered ? row.white : row.black, ordered ? row.black : row.white}].push_back(i);
  }
  std::vector<bool> keep(rows.size(), false);
  for (const auto& [key, games] : pairs) {
    for (std::size_t k = 0; k + 1 < games.size(); k += 2) keep[games[k]] = keep[games[k + 1]] = true;
    dropped += static_cast<int>(games.size() % 2);
  }
  std::vector<GameResultRow> kept;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (keep[i]) kept.push_back(rows[i]);
  }
  return kept;
}

ContinuedRows continuedRows(const std::string& path, int round, std::vector<GameResultRow>& kept, int& dropped,
                            std::string& problem) {
  kept.clear();
  dropped = 0;
  if (!std::filesystem::exists(path)) return ContinuedRows::KEPT;
  std::vector<GameResultRow> rows;
  std::vector<std::string> problems;
  const bool read = readResultsFile(path, rows, problems);
  for (const std::string& found : problems) {
    if (read && found.find("cut short") != std::string::npos) continue;
    problem = found;
    return ContinuedRows::REFUSED;
  }
  if (round != 0) std::erase_if(rows, [round](const GameResultRow& row) { return row.round != round; });
  kept = rowsOfWholePairs(rows, dropped);
  if ((dropped > 0 || !problems.empty()) && !rewriteResultsFile(path, kept)) {
    problem = kobubase::errorLine(errno) + " (" + path + ")";
    return ContinuedRows::NOT_WRITTEN;
  }
  return ContinuedRows::KEPT;
}

namespace {

// The (round, game) of a game's tag block from "[KobuRound "RUN:ROUND:GAME"]"; (0, 0) without one.
std::pair<int, int> roundAndGame(const std::string& tags) {
  const std::string key = "[KobuRound \"";
  const std::size_t at = tags.find(key);
  if (at == std::string::npos) return {0, 0};
  std::istringstream value(tags.substr(at + key.size()));
  long run = 0, round = 0, game = 0;
  char colon1 = 0, colon2 = 0;
  value >> run >> colon1 >> round >> colon2 >> game;
  if (!value || colon1 != ':' || colon2 != ':') return {0, 0};
  return {static_cast<int>(round), static_cast<int>(game)};
}

}  // namespace

std::string pgnOfKeptGames(const std::string& text, const std::set<std::pair<int, int>>& kept, int& dropped) {
  static const std::string BLANK_LINE = "\r\n\r\n";
  std::string result;
  dropped = 0;
  for (std::size_t at = 0; at < text.size();) {
    // A whole game is its tag block and its move text, each ended by a blank line.
    const std::size_t tagsEnd = text.find(BLANK_LINE, at);
    const std::size_t movesEnd = tagsEnd == std::string::npos ? tagsEnd : text.find(BLANK_LINE, tagsEnd + 4);
    const std::size_t end = movesEnd == std::string::npos ? text.size() : movesEnd + 4;
    const std::size_t start = std::exchange(at, end);
    if (movesEnd == std::string::npos || text[start] != '[' || text[tagsEnd + 4] == '[' ||
        !kept.count(roundAndGame(text.substr(start, tagsEnd - start))))
      ++dropped;
    else
      result += text.substr(start, end - start);
  }
  return result;
}

}  // namespace kbuChess
