#include "chess/engine/time_control.h"

#include "base/text.h"

namespace kbuChess {

using kobubase::clampTo;
using kobubase::readClamped;
using kobubase::wordAt;

namespace {

constexpr std::int64_t MAX_CLOCK_SECONDS = MAX_CLOCK_MS / 1000;

// Seconds with an optional fraction ("2", "0.5") in milliseconds.
std::int64_t secondsToMs(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  const std::int64_t whole = readClamped(text, -MAX_CLOCK_SECONDS, MAX_CLOCK_SECONDS) * 1000;
  const std::size_t dot = text.find('.');
  if (dot == std::string_view::npos) return whole;
  std::int64_t fraction = 0;
  std::int64_t scale = 100;
  for (std::size_t i = dot + 1; i < text.size() && scale > 0 && text[i] >= '0' && text[i] <= '9'; ++i) {
    fraction += (text[i] - '0') * scale;
    scale /= 10;
  }
  return negative ? whole - fraction : whole + fraction;
}

}  // namespace

std::int64_t centisecondsToMs(std::string_view text) {
  return readClamped(text, -MAX_CLOCK_MS / 10, MAX_CLOCK_MS / 10) * 10;
}

TimeControl parseLevel(std::string_view args) {
  TimeControl level;
  level.movesPerPeriod = readClamped(wordAt(args, 0), 0, MAX_MOVES_PER_PERIOD);
  const std::string_view base = wordAt(args, 1);
  level.baseMs = readClamped(base, 0, MAX_CLOCK_MS / 60000) * 60000;
  if (const std::size_t colon = base.find(':'); colon != std::string_view::npos) {
    level.baseMs += readClamped(base.substr(colon + 1), 0, MAX_CLOCK_SECONDS) * 1000;
  }
  level.baseMs = clampTo(level.baseMs, 0, MAX_CLOCK_MS);
  level.incrementMs = clampTo(secondsToMs(wordAt(args, 2)), 0, MAX_CLOCK_MS);
  return level;
}

std::int64_t thinkBudget(std::int64_t remainingMs, std::int64_t movesPerPeriod, std::int64_t periodMoves) {
  const std::int64_t usable = remainingMs > 100 ? remainingMs - 50 : remainingMs;
  std::int64_t share = movesPerPeriod != 0 ? movesPerPeriod - periodMoves + 2 : 40;
  if (share < 1) share = 1;  // a level changed in mid-period cannot divide by zero
  return usable / share;
}

}  // namespace kbuChess
