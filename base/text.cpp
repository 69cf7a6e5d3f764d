#include "base/text.h"

#include <cstring>
#include <limits>

namespace kobubase {

std::int64_t readInteger(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
  bool negative = false;
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) negative = text[at++] == '-';
  constexpr std::int64_t Largest = std::numeric_limits<std::int64_t>::max();
  std::int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    const int digit = text[at] - '0';
    value = value > (Largest - digit) / 10 ? Largest : value * 10 + digit;  // saturate instead of overflowing
  }
  return negative ? -value : value;
}

std::int64_t readClamped(std::string_view text, std::int64_t low, std::int64_t high) {
  return clampTo(readInteger(text), low, high);
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

std::string errorLine(int errorNumber) {
  return "# error " + std::to_string(errorNumber) + ": " + std::strerror(errorNumber);
}

bool allDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return "";
  return std::string(text.substr(first, text.find_last_not_of(" \t\r") + 1 - first));
}

std::vector<std::string> splitArguments(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  bool inWord = false, quoted = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '"') {
      inWord = true;
      if (quoted && at + 1 < text.size() && text[at + 1] == '"') {
        word += '"';
        ++at;
      } else {
        quoted = !quoted;
      }
    } else if ((c == ' ' || c == '\t') && !quoted) {
      if (inWord) words.push_back(std::move(word));
      word.clear();
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (inWord) words.push_back(std::move(word));
  return words;
}

}  // namespace kobubase
