#pragma once
// Splits one console line into tokens. Numbers are decimal, hexadecimal
// (0x...) or binary (0b...) and must fit in 64 bits; a two-character word
// a1..h8 is the mask of that square; strings are in double or single quotes
// with backslash escapes (\n, \t, \\, \", \'); true and false are booleans.
#include <cstddef>
#include <string>
#include <vector>

#include "base/expr/value.h"

namespace kobubase {

struct Token {
  enum Kind : int { NUMBER, STRING, BOOLEAN, NAME, OPERATOR, END };
  Kind kind = END;
  std::string text;        // the name, the operator or the string's contents
  Value value;             // literals
  std::size_t column = 0;  // 1-based
};

// The tokens of the line, ending with an END token; throws ExprError.
std::vector<Token> tokenize(const std::string& line);
// The mask of a square name a1..h8 (bit rank * 8 + 7 - file), or 0.
std::uint64_t squareNameMask(const std::string& name);

}  // namespace kobubase
