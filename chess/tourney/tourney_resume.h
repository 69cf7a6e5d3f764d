#pragma once
// What a run leaves behind so that it can be continued: the event's settings
// as a few "key<TAB>value" lines (NAME-RUN-event.txt beside the results
// file), and the rule for what of an interrupted run's results is kept.
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "chess/tourney/results_file.h"
#include "chess/tourney/tourney_config.h"

namespace kbuChess {

// The settings a continued run must share with the run it continues: name,
// players, clock, openings and seed, one "key<TAB>value" line each.
std::vector<std::string> eventSettingsLines(const TourneyConfig& config, std::uint64_t seed);
// The lines of a run's event file; false (no lines) when it cannot be read.
bool readSettingsFile(const std::string& path, std::vector<std::string>& lines);
// The first setting that differs, as "players differs (run: A, B; file: A, C)"; empty when none does.
std::string settingsDifference(const std::vector<std::string>& run, const std::vector<std::string>& file);
// The seed written in settings lines; 0 when there is none.
std::uint64_t seedOfSettings(const std::vector<std::string>& lines);

// The rows of whole game pairs: both games of a pairing in a round. A game
// whose partner is missing is dropped (its pair is played again), and so is
// a second row of the same round and game. `dropped` counts what was left out.
std::vector<GameResultRow> rowsOfWholePairs(const std::vector<GameResultRow>& rows, int& dropped);

// The rows a continued run keeps of its results file at `path` (none when
// there is no file yet): its whole pairs, of round `round` only when that is
// not 0. A line cut short is the one being written when the run died and is
// played again; any other problem refuses the file. The file is rewritten
// when anything was left out.
enum class ContinuedRows {
  KEPT,
  REFUSED,      // `problem`: "line 3: ..." or why the file cannot be read
  NOT_WRITTEN,  // `problem`: "# error N: text (PATH)"
};
ContinuedRows continuedRows(const std::string& path, int round, std::vector<GameResultRow>& kept, int& dropped,
                            std::string& problem);

// The PGN text of a game file (as the run writes it: tags, a blank line, the
// move text, a blank line) without the games whose (round, game), read from
// their "KobuRound" tag, is not in `kept`, and without a game cut short.
// `dropped` counts the games left out. A resumed run plays those again.
std::string pgnOfKeptGames(const std::string& text, const std::set<std::pair<int, int>>& kept, int& dropped);

}  // namespace kbuChess
