// The generic functions with exact values: bits, mask geometry (h1 = bit 0,
// a1 = bit 7, a8 = bit 63), the diagram, and strings.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/expr/interpreter.h"

namespace {

using Lines = std::vector<std::string>;

class FunctionsTest : public testing::Test {
 protected:
  FunctionsTest() { kobubase::addGenericFunctions(in_); }
  void expectAll(const std::vector<std::pair<const char*, const char*>>& cases) {
    for (const auto& [line, shown] : cases) EXPECT_EQ(in_.execute(line), Lines{shown}) << line;
  }
  kobubase::clsInterpreter in_;
};

TEST_F(FunctionsTest, BitsFilesRanksAndShiftsThatNeverWrap) {
  expectAll({
      {"popcount(-1)", "64 (0x40)"},
      {"lsb(0x80) + msb(a8 | h1)", "70 (0x46)"},
      {"bit(27) == e4", "true"},
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

TEST_F(FunctionsTest, SquareNamesAndTheDiagram) {
  EXPECT_EQ(in_.execute("squares(h1 | e4 | a8)"), Lines{"a8 e4 h1"});
  EXPECT_EQ(
      in_.execute("board(a8 | e4 | h1 | b7)"),
      (Lines{"8 x . . . . . . .", "7 . x . . . . . .", "6 . . . . . . . .", "5 . . . . . . . .", "4 . . . . x . . .",
             "3 . . . . . . . .", "2 . . . . . . . .", "1 . . . . . . . x", "  a b c d e f g h"}));
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
