// The console's language: literals, operators and their precedence, values,
// variables, statements and the error line of every kind of fault.
#include "base/expr/interpreter.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using kobubase::clsArgs;
using kobubase::clsInterpreter;
using kobubase::Value;
using Lines = std::vector<std::string>;

class InterpreterTest : public testing::Test {
 protected:
  InterpreterTest() { kobubase::addGenericFunctions(in_); }
  std::string one(const std::string& line) {
    const Lines lines = in_.execute(line);
    EXPECT_EQ(lines.size(), 1u) << line;
    return lines.empty() ? "<none>" : lines[0];
  }
  clsInterpreter in_;
};

TEST_F(InterpreterTest, LiteralsInEveryBaseAndSquareNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"255", "255 (0xff)"},
      {"0xFF", "255 (0xff)"},
      {"0b1010", "10 (0xa)"},
      {"18446744073709551615", "18446744073709551615 (0xffffffffffffffff)"},
      {"h1", "1 (0x1)"},
      {"a1", "128 (0x80)"},
      {"a8", "9223372036854775808 (0x8000000000000000)"},
      {"true", "true"},
      {"'it\\'s'", "it's"},
      {"\"tab\\there\"", "tab\there"},
  };
  for (const auto& [line, shown] : cases) EXPECT_EQ(one(line), shown) << line;
  EXPECT_EQ(in_.execute("\"two\\nlines\""), (Lines{"two", "lines"}));
  EXPECT_EQ(in_.execute("   "), Lines{});
}

// Unsigned 64-bit arithmetic with C's precedence; shifts of 64 or more give
// zero; && and || never evaluate the side that cannot matter.
TEST_F(InterpreterTest, OperatorsFollowThePrecedenceOfC) {
  const std::pair<const char*, const char*> cases[] = {
      {"1 + 2 * 3", "7 (0x7)"},
      {"(1 + 2) * 3", "9 (0x9)"},
      {"10 - 2 - 3", "5 (0x5)"},
      {"100 / 7 % 4", "2 (0x2)"},
      {"1 << 2 + 1", "8 (0x8)"},
      {"1 | 2 ^ 3 & 4", "3 (0x3)"},
      {"6 & 3 == 3", "0 (0x0)"},  // == binds tighter than &, as in C: 6 & true
      {"1 < 2 == true", "true"},
      {"1 || 0 && 0", "true"},
      {"!0 && !!5", "true"},
      {"-1", "18446744073709551615 (0xffffffffffffffff)"},
      {"- -5 + +1", "6 (0x6)"},
      {"~0 >> 60", "15 (0xf)"},
      {"0xffffffffffffffff + 2", "1 (0x1)"},
      {"3 - 5 > 1", "true"},  // unsigned: 3 - 5 wraps
      {"'ab' + \"cd\"", "abcd"},
      {"'abc' < 'abd'", "true"},
      {"true + true", "2 (0x2)"},
      {"1 << 64 | 1 << -1 | 5 >> 64", "0 (0x0)"},
      {"0 && 1 / 0", "false"},
      {"1 || 1 / 0", "true"},
      {"1 && 1 / 0", "error at column 8: division by zero"},
  };
  for (const auto& [line, shown] : cases) EXPECT_EQ(one(line), shown) << line;
}

TEST_F(InterpreterTest, EveryFaultIsOneLineWithItsColumn) {
  const std::pair<const char*, const char*> cases[] = {
      {"5 / 0", "error at column 3: division by zero"},
      {"1 +", "error at column 4: expected a value, found end of line"},
      {"(1 + 2", "error at column 7: expected ')', found end of line"},
      {"1 2", "error at column 3: unexpected value"},
      {"1 )", "error at column 3: unexpected ')'"},
      {"* 2", "error at column 1: expected a value, found '*'"},
      {"99999999999999999999", "error at column 1: number does not fit in 64 bits"},
      {"0x", "error at column 1: number without digits"},
      {"12a", "error at column 3: bad digit 'a' in a number"},
      {"1 + 'abc", "error at column 5: string without its closing quote"},
      {"1 $ 2", "error at column 3: unexpected character '$'"},
      {"1 + \x01", "error at column 5: unexpected character code 1"},
      {"nosuch + 1", "error at column 1: unknown name 'nosuch'"},
      {"2 * nosuch(1)", "error at column 5: unknown function 'nosuch'"},
      {"popcount", "error at column 1: 'popcount' is a function: write popcount(...)"},
      {"popcount(1, 2)", "error at column 1: wrong number of arguments, usage: popcount(mask)"},
      {"'a' + 1", "error at column 5: '+' needs a number, not a string"},
      {"'a' < 1", "error at column 5: '<' cannot compare a string with an integer"},
      {"!'a'", "error at column 1: '!' needs a number or a boolean, not a string"},
      {"-'a'", "error at column 1: a sign needs a number, not a string"},
      {"1 && 'a'", "error at column 3: '&&' needs a number or a boolean, not a string"},
      {"popcount = 3", "error at column 1: 'popcount' is a built-in name"},
      {"vars = 3", "error at column 1: 'vars' is a command word"},
      {"e4 = 3", "error at column 4: unexpected '='"},
  };
  for (const auto& [line, error] : cases) EXPECT_EQ(in_.execute(line), Lines{error}) << line;
}

TEST_F(InterpreterTest, NestingIsBoundedInsteadOfExhaustingTheStack) {
  const std::string deep = std::string(100, '(') + "1" + std::string(100, ')');
  EXPECT_EQ(one(deep), "1 (0x1)");
  EXPECT_EQ(one(std::string(100000, '(') + "1"), "error at column 201: formula nested too deeply");
  EXPECT_EQ(one(std::string(100000, '-') + "1"), "error at column 201: formula nested too deeply");
}

TEST_F(InterpreterTest, VariablesAreAssignedListedAndKeptOnError) {
  EXPECT_EQ(in_.execute("vars"), Lines{"no variables"});
  EXPECT_EQ(one("x = 5"), "x = 5 (0x5)");
  EXPECT_EQ(one("y_2 = x * 2 + 1"), "y_2 = 11 (0xb)");
  EXPECT_EQ(one("s = 'a\"b'"), "s = \"a\\\"b\"");
  EXPECT_EQ(one("flag = x > 3"), "flag = true");
  EXPECT_EQ(one("x = x / 0"), "error at column 7: division by zero");
  EXPECT_EQ(in_.execute("vars"), (Lines{"flag = true", "s = \"a\\\"b\"", "x = 5 (0x5)", "y_2 = 11 (0xb)"}));
  EXPECT_EQ(one("x = x + 1"), "x = 6 (0x6)");
  EXPECT_EQ(one("x = "), "error at column 5: empty formula");
}

TEST_F(InterpreterTest, StringsStopAtTheirSizeLimit) {
  EXPECT_EQ(one("s = 'a'"), "s = \"a\"");
  for (int i = 0; i < 20; ++i) in_.execute("s = s + s");
  EXPECT_EQ(one("len(s)"), "1048576 (0x100000)");
  EXPECT_EQ(one("s = s + 'b'"), "error at column 7: string too long");
  EXPECT_EQ(one("concat(s, 'b')"), "error at column 11: string too long");
  EXPECT_EQ(one("len(s)"), "1048576 (0x100000)");
}

TEST_F(InterpreterTest, OwnersAddFunctionsAndReadOnlyNamedValues) {
  std::uint64_t board = 0xF0;
  in_.addNamedValue("occ", "occ", [&board] { return Value::integer(board); });
  in_.addFunction("twice", 1, 1, "twice(n)", [](const clsArgs& a) { return Value::integer(2 * a.integer(0)); });
  in_.addFunction("sq", 1, 1, "sq(square)", [](const clsArgs& a) { return Value::integer(a.square(0)); });
  EXPECT_EQ(one("twice(occ)"), "480 (0x1e0)");
  board = 1;
  EXPECT_EQ(one("twice(occ)"), "2 (0x2)");
  EXPECT_EQ(one("occ = 3"), "error at column 1: 'occ' is a built-in name");
  EXPECT_EQ(one("sq(e4)"), "27 (0x1b)");
  EXPECT_EQ(one("1 + sq(e4 | d4)"), "error at column 8: expected one square (a mask with one bit set)");
  EXPECT_EQ(one("sq(0)"), "error at column 4: expected one square (a mask with one bit set)");
  kobubase::ExprError error;
  Value value;
  EXPECT_TRUE(in_.evaluate("twice(21)", value, error));
  EXPECT_EQ(value, Value::integer(42));
  EXPECT_FALSE(in_.evaluate("twice('a')", value, error));
  EXPECT_EQ(error.column, 7u);
  EXPECT_EQ(error.message, "expected a number, not a string");
  const Lines help = in_.execute("help");
  ASSERT_GE(help.size(), 3u);
  EXPECT_EQ(help.back(), "named values: occ");
}

// Random lines built from the language's own pieces and from raw bytes: each
// must give some lines back, and a fault must be one well-formed error line.
TEST_F(InterpreterTest, RandomInputNeverCrashes) {
  std::vector<std::string> pieces = {" ", "\t", "\"", "'", "\\"};
  std::istringstream words(
      "( ) + - * / % << >> & | ^ ~ ! == < >= && || , = 0 1 0x 0b 64 e4 h8 x y 's' popcount( board( substr( concat( "
      "lsb( bit( hex( len( vars $ 99999999999999999999");
  for (std::string word; words >> word;) pieces.push_back(word);
  std::mt19937 random(12345);
  in_.execute("x = 7");
  for (int i = 0; i < 20000; ++i) {
    std::string line;
    const int count = static_cast<int>(random() % 12);
    for (int k = 0; k < count; ++k) {
      if (random() % 10 == 0) {
        line += static_cast<char>(random() % 256);
      } else {
        line += pieces[random() % pieces.size()];
      }
    }
    const Lines lines = in_.execute(line);
    if (lines.size() == 1 && lines[0].rfind("error", 0) == 0) {
      const std::size_t column = std::stoul(lines[0].substr(16));
      EXPECT_EQ(lines[0].rfind("error at column ", 0), 0u) << line;
      EXPECT_GE(column, 1u) << line;
      EXPECT_LE(column, line.size() + 1) << line;
    }
  }
}

}  // namespace
