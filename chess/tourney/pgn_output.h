#pragma once
// The PGN text and the files of a tournament game. The tournament sets the
// round's tags on each game before the round; the game adds its result tags
// while playing; when it ends, its PGN is appended to NAME-RUN-GAME.pgn and
// its log written to NAME-RUN-GAME.log in the tournament's log folder.
//
// The move text holds SAN (the game loop converts the engines' coordinate
// moves with playCoordinateMove), so any PGN reader takes the files; the
// coordinate moves stay in the game's log. The termination after the moves
// is the game's result ("1-0", "0-1", "1/2-1/2"), "*" for a game that did not
// end in one.
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "chess/tourney/game_record.h"
#include "chess/tourney/tourney_config.h"

namespace kbuChess {

inline constexpr const char* PROGRAM_ADDRESS = "https://talvena.org";

// "Talvena 3.0.23 - https://talvena.org"
std::string softwareTag();
// moves_per_second "/" seconds, or seconds alone when moves_per_second is 0,
// then "+" increment in milliseconds when there is one: "40/300", "60+500".
std::string timeControlTag(int movesPerSecond, int gameMs, int incrementMs);
// "YYYY.MM.DD" of a time, local date.
std::string pgnDate(std::time_t when);

// Empties the game's tags and sets the round's: Event, Site, Date (empty),
// Round, KobuRound (run:round:game), KobuSoftware, KobuTimeControl
// (moves:game_ms:increment_ms), TimeControl, White, Black, Result "*", then
// the file's pgn header tags, which may replace Event, Site or Date in place.
void setRoundTags(clsGame& game, const TourneyConfig& config, int runCounter, int round, int gameNumber,
                  std::string_view white, std::string_view black);
// Sets "Date" to the date of play, unless a header tag from the file gave one.
void setPlayDate(clsGame& game, const TourneyConfig& config, std::time_t when);

// The game's PGN: its tags in order ("[Key "value"]", a double quote inside
// a value doubled, control characters as blanks), for a game set up from a
// position "SetUp" "1" and "FEN" after the "Result" tag, a blank line, the
// move text and the termination, each line ending in CR LF, a blank line after.
std::string pgnText(const clsGame& game);

// log folder / NAME-RUN-GAME, without an extension.
std::string gameFileBase(const TourneyConfig& config, int runCounter, int gameNumber);
// Appends the PGN to base + ".pgn" and writes the log lines, joined with
// CR LF, to base + ".log", creating the folder when missing. Returns the
// "# error N: text" lines of what failed; empty when both were written.
std::vector<std::string> writeGameFiles(const clsGame& game, const std::vector<std::string>& logLines,
                                        const std::string& base);

}  // namespace kbuChess
