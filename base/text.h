#pragma once
// Reading numbers and words from text typed by a person or sent by another
// program, and the "# error N: text" line for a failed system call. Numbers
// from outside are read without overflow and clamped by the caller's bounds.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kobubase {

// Leading blanks, an optional sign, then decimal digits up to the first
// non-digit; no digits read as 0, like the C library's conversion. A number
// too large for 64 bits reads as the largest (or, negative, the smallest but
// one) 64-bit value instead of wrapping.
std::int64_t readInteger(std::string_view text);
// readInteger, then held within [low, high].
std::int64_t readClamped(std::string_view text, std::int64_t low, std::int64_t high);
// The value held within [low, high].
constexpr std::int64_t clampTo(std::int64_t value, std::int64_t low, std::int64_t high) {
  return value < low ? low : value > high ? high : value;
}
// The blank-separated word number `index` (from 0), or "" when there is none.
std::string_view wordAt(std::string_view text, int index);
// Splits a parameter text into words the way a shell would for plain words:
// blanks and tabs separate words; double quotes group a part holding blanks
// and may sit inside a word (a"b c"d is one word, ab cd); inside quotes a
// doubled quote stands for one quote; "" alone is an empty word. Backslashes
// are ordinary characters, so folder names keep theirs.
std::vector<std::string> splitArguments(std::string_view text);
// Whether the text is one or more decimal digits and nothing else.
bool allDigits(std::string_view text);
// The text without blanks, tabs and carriage returns at either end.
std::string trimmed(std::string_view text);
// "# error N: text" for a system error number.
std::string errorLine(int errorNumber);

}  // namespace kobubase
