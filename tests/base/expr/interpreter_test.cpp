// The console's language: literals, operators and their precedence, values,
// variables, statements and the error line of every kind of fault; then the
// generic functions with exact values: bits, mask geometry (h1 = bit 0, a1 =
// bit 7, a8 = bit 63) and strings. The diagram is checked through the real
// program in tests/e2e.
#include "base/expr/interpreter.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using kobubase::clsArgs;
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
  void expectAll(const std::vector<std::pair<const char*, const char*>>& cases) {
    for (const auto& [line, shown] : cases) EXPECT_EQ(one(line), shown) << line;
  }
  kobubase::clsInterpreter in_;
};

// Literals in every base, square names and escapes; unsigned 64-bit arithmetic
// with C's precedence; shifts of 64 or more give zero; && and || never
// evaluate the side that cannot matter.
TEST_F(InterpreterTest, LiteralsAndOperatorsFollowThePrecedenceOfC) {
  expectAll({
      {"0xFF + 0b1010", "265 (0x109)"},
      {"18446744073709551615", "18446744073709551615 (0xffffffffffffffff)"},
      {"a1", "128 (0x80)"},
      {"'it\\'s'", "it's"},
      {"1 + 2 * 3", "7 (0x7)"},
      {"10 - 2 - 3", "5 (0x5)"},
      {"100 / 7 % 4", "2 (0x2)"},
      {"1 << 2 + 1", "8 (0x8)"},
      {"1 | 2 ^ 3 & 4", "3 (0x3)"},
      {"6 & 3 == 3", "0 (0x0)"},  // == binds tighter than &, as in C: 6 & true
      {"1 || 0 && 0", "true"},
      {"!0 && !!5", "true"},
      {"- -5 + +1", "6 (0x6)"},
      {"~0 >> 60", "15 (0xf)"},
      {"3 - 5 > 1", "true"},  // unsigned: 3 - 5 wraps
      {"'ab' + \"cd\"", "abcd"},
      {"'abc' < 'abd'", "true"},
      {"true + true", "2 (0x2)"},
      {"1 << 64 | 1 << -1 | 5 >> 64", "0 (0x0)"},
      {"0 && 1 / 0", "false"},
      {"1 || 1 / 0", "true"},
      {"1 && 1 / 0", "error at column 8: division by zero"},
  });
  EXPECT_EQ(in_.execute("\"a\\tb\\nc\""), (Lines{"a\tb", "c"}));
  EXPECT_EQ(in_.execute("   "), Lines{});
}

TEST_F(InterpreterTest, EveryFaultIsOneLineWithItsColumn) {
  expectAll({
      {"1 +", "error at column 4: expected a value, found end of line"},
      {"(1 + 2", "error at column 7: expected ')', found end of line"},
      {"1 2", "error at column 3: unexpected value"},
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
      {"popcount = 3", "error at column 1: 'popcount' is a built-in name"},
      {"vars = 3", "error at column 1: 'vars' is a command word"},
      {"e4 = 3", "error at column 4: unexpected '='"},
  });
  EXPECT_EQ(one(std::string(100, '(') + "1" + std::string(100, ')')), "1 (0x1)");
  EXPECT_EQ(one(std::string(100000, '(') + "1"), "error at column 201: formula nested too deeply");
  EXPECT_EQ(one(std::string(100000, '-') + "1"), "error at column 201: formula nested too deeply");
}

TEST_F(InterpreterTest, VariablesAreAssignedListedAndKeptOnError) {
  EXPECT_EQ(in_.execute("vars"), Lines{"no variables"});
  expectAll({
      {"x = 5", "x = 5 (0x5)"},
      {"s = 'a\"b'", "s = \"a\\\"b\""},
      {"flag = x > 3", "flag = true"},
      {"x = x / 0", "error at column 7: division by zero"},
      {"x = ", "error at column 5: empty formula"},
  });
  EXPECT_EQ(in_.execute("vars"), (Lines{"flag = true", "s = \"a\\\"b\"", "x = 5 (0x5)"}));
}

TEST_F(InterpreterTest, StringsStopAtTheirSizeLimit) {
  in_.execute("s = 'a'");
  for (int i = 0; i < 20; ++i) in_.execute("s = s + s");
  expectAll({
      {"s = s + 'b'", "error at column 7: string too long"},
      {"concat(s, 'b')", "error at column 11: string too long"},
      {"len(s)", "1048576 (0x100000)"},
  });
}

TEST_F(InterpreterTest, OwnersAddFunctionsAndReadOnlyNamedValues) {
  std::uint64_t board = 0xF0;
  in_.addNamedValue("occ", "occ", [&board] { return Value::integer(board); });
  in_.addFunction("twice", 1, 1, "twice(n)", [](const clsArgs& a) { return Value::integer(2 * a.integer(0)); });
  in_.addFunction("sq", 1, 1, "sq(square)", [](const clsArgs& a) { return Value::integer(a.square(0)); });
  EXPECT_EQ(one("twice(occ)"), "480 (0x1e0)");
  board = 1;
  expectAll({
      {"twice(occ)", "2 (0x2)"},
      {"occ = 3", "error at column 1: 'occ' is a built-in name"},
      {"sq(e4)", "27 (0x1b)"},
  });
  kobubase::ExprError error;
  Value value;
  EXPECT_TRUE(in_.evaluate("twice(21)", value, error));
  EXPECT_EQ(value, Value::integer(42));
  EXPECT_FALSE(in_.evaluate("twice('a')", value, error));
  EXPECT_EQ(error.column, 7u);
  EXPECT_EQ(error.message, "expected a number, not a string");
  EXPECT_EQ(in_.execute("help").back(), "named values: occ");
}

// Random lines built from the language's own pieces and from raw bytes: a
// fault must be one well-formed error line with a column inside the line.
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
    for (int k = static_cast<int>(random() % 12); k > 0; --k)
      line += random() % 10 == 0 ? std::string(1, static_cast<char>(random() % 256)) : pieces[random() % pieces.size()];
    const Lines lines = in_.execute(line);
    if (lines.size() == 1 && lines[0].rfind("error", 0) == 0) {
      ASSERT_EQ(lines[0].rfind("error at column ", 0), 0u) << line;
      const std::size_t column = std::stoul(lines[0].substr(16));
      EXPECT_TRUE(column >= 1 && column <= line.size() + 1) << line;
    }
  }
}

using FunctionsTest = InterpreterTest;

TEST_F(FunctionsTest, BitsFilesRanksAndShiftsThatNeverWrap) {
  expectAll({
      {"popcount(-1)", "64 (0x40)"},
      {"lsb(0x80) + msb(a8 | h1)", "70 (0x46)"},
      {"bit(27) == e4", "true"},
      {"squares(h1 | e4 | a8)", "a8 e4 h1"},
      {"lsb(0)", "error at column 5: an empty mask has no lowest bit"},
      {"msb(0)", "error at column 5: an empty mask has no highest bit"},
      {"file(0) == file('a')", "true"},
      {"file('h')", "72340172838076673 (0x101010101010101)"},
      {"rank('1') == rank(0)", "true"},
      {"rank('8')", "18374686479671623680 (0xff00000000000000)"},
      {"flip(0x0102)", "144396663052566528 (0x201000000000000)"},
      {"mirror(0x0102)", "32832 (0x8040)"},
      {"file(8)", "error at column 6: 8 is out of range 0..7"},
      {"file('i')", "error at column 6: expected a file letter a..h"},
      {"rank('9')", "error at column 6: expected a rank digit 1..8"},
      {"squares(north(e4) | east(e4) | northeast(e4) | northwest(e4))", "d5 e5 f5 f4"},
      {"squares(south(e4) | west(e4) | southeast(e4) | southwest(e4))", "d4 d3 e3 f3"},
      {"east(file(7)) | west(file(0)) | north(rank(7)) | south(rank(0))", "0 (0x0)"},
      {"northeast(h4 | e8) | northwest(a4 | e8) | southeast(h4 | e1) | southwest(a4 | e1)", "0 (0x0)"},
  });
}

TEST_F(FunctionsTest, StringFunctions) {
  expectAll({
      {"len('hello')", "5 (0x5)"},
      {"concat('a', 1, true, 'z')", "a1truez"},
      {"upper('aBc1') + lower('AbC1')", "ABC1abc1"},
      {"substr('hello', 1, 3)", "ell"},
      {"substr('hello', 2) + substr('hello', 10) + substr('hello', 1, -1)", "lloello"},
      {"hex(255) + bin(5) + str(42)", "0xff0b10142"},
      {"len(5)", "error at column 5: expected a string, not an integer"},
      {"hex('a')", "error at column 5: expected a number, not a string"},
      {"substr('a')", "error at column 1: wrong number of arguments, usage: substr(s, start[, count])"},
  });
}

}  // namespace
