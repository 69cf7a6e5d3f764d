#include "chess/tourney/tourney_text.h"

#include <cstdio>

#include "chess/tourney/game_record.h"
#include "chess/tourney/tourney_config.h"

namespace kbuChess {

std::vector<std::pair<int, int>> pairings(int playerCount, int type) {
  std::vector<std::pair<int, int>> pairs;
  for (int i = 0; i < playerCount; ++i)
    for (int j = 0; j < playerCount; ++j)
      if (i != j && (type == ALL_PLAY_ALL || i == 0 || j == 0)) pairs.emplace_back(i, j);
  return pairs;
}

std::string gamesCreatedLine(int count) {
  return std::to_string(count) + " games created";
}

std::vector<std::string> bannerLines() {
  const std::string clock =
      std::string(8, ' ') + "[(|) (|)]" + std::string(7, ' ') + "\"IN MOTO L'OROLOGIO DEL BIANCO!\"";
  return {std::string(clock.size(), '_'), std::string(clock.size(), '-'), clock, std::string(clock.size(), '_')};
}

std::string progressLine(int round, int rounds, int running, int unfinished) {
  return "# ROUND " + std::to_string(round) + "/" + std::to_string(rounds) + " - GAMES PLAYING " +
         std::to_string(running) + "/" + std::to_string(unfinished);
}

std::string finishLine(int type) {
  return std::string("----------------- ") + (type == LEARNING ? "learning" : "tournament") + " has finished";
}

std::string matchLine(std::string_view white, std::string_view black) {
  return "new match: '" + std::string(white) + "' vs '" + std::string(black) + "'";
}

std::string forfeitLine(std::string_view name, std::int64_t elapsedMs, std::int64_t clockMs) {
  return std::string(name) + " forfeits on time (" + std::to_string(elapsedMs) + ">" + std::to_string(clockMs) + ")";
}

std::string crashLine(std::string_view name) {
  return std::string(name) + " has crashed!";
}

std::string resultLine(std::uint32_t code) {
  return reasonText(code) + " " + resultText(code);
}

std::string scoreLine(std::string_view name, int halfPoints, int total) {
  std::string line = "'";
  line += name;
  return line + "' result " + std::to_string(halfPoints) + " score " + std::to_string(total);
}

std::string elapsedText(std::int64_t ms) {
  if (ms < 0) ms = 0;
  char text[48];
  std::snprintf(text, sizeof text, "%lld:%02lld:%02lld.%03lld", static_cast<long long>(ms / 3600000),
                static_cast<long long>(ms / 60000 % 60), static_cast<long long>(ms / 1000 % 60),
                static_cast<long long>(ms % 1000));
  return text;
}

std::string logLine(std::int64_t elapsedMs, std::string_view source, std::string_view text) {
  if (text.substr(0, 2) == "# ") text.remove_prefix(2);
  std::string line = "# ";
  line += elapsedText(elapsedMs);
  line += '\t';
  line += source;
  line += '\t';
  line += text;
  return line;
}

}  // namespace kbuChess
