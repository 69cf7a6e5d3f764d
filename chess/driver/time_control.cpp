#include "chess/driver/time_control.h"

#include <limits>

namespace kbuChess {

std::int64_t readInteger(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
  bool negative = false;
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) negative = text[at++] == '-';
  std::int64_t value = 0;
  constexpr std::int64_t Cap = std::numeric_limits<std::int64_t>::max() / 10 - 10;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    if (value < Cap) value = value * 10 + (text[at] - '0');  // saturate instead of overflowing
  }
  return negative ? -value : value;
}

std::string_view wordAt(std::string_view text, int index) {
  std::size_t at = 0;
  for (int word = 0;; ++word) {
    while (at < text.size() && text[at] == ' ') ++at;
    if (at >= text.size()) return {};
    std::size_t end = text.find(' ', at);
    if (end == std::string_view::npos) end = text.size();
    if (word == index) return text.substr(at, end - at);
    at = end;
  }
}

namespace {

// Seconds with an optional fraction ("2", "0.5") in milliseconds.
std::int64_t secondsToMs(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  const std::int64_t whole = readInteger(text) * 1000;
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

TimeControl parseLevel(std::string_view args) {
  TimeControl level;
  level.movesPerPeriod = readInteger(wordAt(args, 0));
  const std::string_view base = wordAt(args, 1);
  level.baseMs = readInteger(base) * 60000;
  if (const std::size_t colon = base.find(':'); colon != std::string_view::npos) {
    level.baseMs += readInteger(base.substr(colon + 1)) * 1000;
  }
  level.incrementMs = secondsToMs(wordAt(args, 2));
  return level;
}

std::int64_t thinkBudget(std::int64_t remainingMs, std::int64_t movesPerPeriod, std::int64_t periodMoves) {
  const std::int64_t usable = remainingMs > 100 ? remainingMs - 50 : remainingMs;
  std::int64_t share = movesPerPeriod != 0 ? movesPerPeriod - periodMoves + 2 : 40;
  if (share < 1) share = 1;  // a level changed in mid-period cannot divide by zero
  return usable / share;
}

}  // namespace kbuChess
