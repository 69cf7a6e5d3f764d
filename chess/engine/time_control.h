#pragma once
// The clock arithmetic shared by the xboard dialogue and tournament games:
// the "level" command and the share of the remaining time that one search
// may use. Pure functions, so they are tested alone.
#include <cstdint>
#include <string_view>

namespace kbuChess {

// Bounds on clock figures read from outside: a year on a clock, ten thousand
// moves in a period. Anything beyond is a typing error, not a time control.
inline constexpr std::int64_t MAX_CLOCK_MS = 365LL * 24 * 3600 * 1000;
inline constexpr std::int64_t MAX_MOVES_PER_PERIOD = 10000;

// A clock given in centiseconds ("time", "otim"), in ms within +-MAX_CLOCK_MS.
std::int64_t centisecondsToMs(std::string_view text);

// The level of play: moves per period (0: the whole game), base time and
// increment in milliseconds.
struct TimeControl {
  std::int64_t movesPerPeriod = 0;
  std::int64_t baseMs = 0;
  std::int64_t incrementMs = 0;
};

// "MPS BASE INC": BASE in minutes or minutes:seconds, INC in seconds (a
// fraction such as 0.5 is honoured, since some interfaces send one). Each
// figure is held within 0 and its bound above.
TimeControl parseLevel(std::string_view args);

// The time one search may take: the remaining time, less a 50 ms safety
// margin when more than 100 ms are left, shared among the moves still to
// play in the period plus two, or among 40 moves when the game has one period.
std::int64_t thinkBudget(std::int64_t remainingMs, std::int64_t movesPerPeriod, std::int64_t periodMoves);

}  // namespace kbuChess
