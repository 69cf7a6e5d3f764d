#pragma once
// The values of the expression console: unsigned 64-bit integers (board
// masks, counts, square numbers), strings and booleans. Integers wrap modulo
// 2^64 like the C unsigned type; strings are capped at MAX_STRING bytes so a
// formula cannot eat the memory.
#include <cstddef>
#include <cstdint>
#include <string>

namespace kobubase {

struct Value {
  enum Kind : int { INTEGER, STRING, BOOLEAN };
  static constexpr std::size_t MAX_STRING = 1 << 20;

  Kind kind = INTEGER;
  std::uint64_t number = 0;
  std::string text;
  bool truth = false;

  static Value integer(std::uint64_t n) { return Value{INTEGER, n, {}, false}; }
  static Value string(std::string s) { return Value{STRING, 0, std::move(s), false}; }
  static Value boolean(bool b) { return Value{BOOLEAN, 0, {}, b}; }
  bool operator==(const Value& other) const = default;
};

// "an integer", "a string" or "a boolean", for messages.
const char* kindName(Value::Kind kind);
// How the console shows a value: "255 (0xff)", the string itself, "true".
std::string displayText(const Value& value);
// How "vars" shows a value: like displayText, strings in double quotes.
std::string literalText(const Value& value);
// Lower-case hexadecimal and binary digits without a prefix.
std::string hexDigits(std::uint64_t n);
std::string binaryDigits(std::uint64_t n);

}  // namespace kobubase
