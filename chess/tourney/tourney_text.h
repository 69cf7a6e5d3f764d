#pragma once
// The pairings of a tournament and the texts its run and games write to the
// console and the logs, as pure functions of their figures.
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kbuChess {

// Every ordered pair (white, black) of distinct players, white in the outer
// loop: n * (n - 1) games in an all-play-all event; in a gauntlet or a
// learning event only the pairs with player 0, 2 * (n - 1) games.
std::vector<std::pair<int, int>> pairings(int playerCount, int type);

std::string gamesCreatedLine(int count);  // "6 games created"
// Four lines: a frame of underscores and dashes around the chess clock that
// starts White's time.
std::vector<std::string> bannerLines();
// "# ROUND 1/2 - GAMES PLAYING 2/6": running games / games of the round not yet finished.
std::string progressLine(int round, int rounds, int running, int unfinished);
// "----------------- learning has finished" or "... tournament has finished".
std::string finishLine(int type);

// Lines a game logs under its own source.
std::string matchLine(std::string_view white, std::string_view black);  // new match: 'A' vs 'B'
std::string forfeitLine(std::string_view name, std::int64_t elapsedMs, std::int64_t clockMs);
std::string crashLine(std::string_view name);
std::string resultLine(std::uint32_t code);  // reason, blank, result: "mate 1-0"
std::string scoreLine(std::string_view name, int halfPoints, int total);

// "H:MM:SS.mmm" of a duration.
std::string elapsedText(std::int64_t ms);
// A tournament log line: "# ", the time since the run began, a tab, the
// source (the tournament, a game "game 3", or a player's name), a tab and the
// text. A text's own leading "# " is not repeated:
//   # 0:01:02.345<TAB>tourney<TAB>ROUND 1/2 - GAMES PLAYING 2/6
std::string logLine(std::int64_t elapsedMs, std::string_view source, std::string_view text);

}  // namespace kbuChess
