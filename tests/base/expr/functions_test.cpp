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

TEST_F(FunctionsTest, BitCountsAndScans) {
  expectAll({
      {"popcount(0xff00)", "8 (0x8)"},
      {"popcount(-1)", "64 (0x40)"},
      {"popcount(0)", "0 (0x0)"},
      {"lsb(0x80)", "7 (0x7)"},
      {"lsb(a8 | h8)", "56 (0x38)"},
      {"msb(0x81)", "7 (0x7)"},
      {"msb(a8 | h1)", "63 (0x3f)"},
      {"bit(0)", "1 (0x1)"},
      {"bit(27) == e4", "true"},
      {"bit(63)", "9223372036854775808 (0x8000000000000000)"},
      {"lsb(0)", "error at column 5: an empty mask has no lowest bit"},
      {"msb(0)", "error at column 5: an empty mask has no highest bit"},
      {"bit(64)", "error at column 5: 64 is out of range 0..63"},
      {"bit(-1)", "error at column 5: 18446744073709551615 is out of range 0..63"},
  });
}

TEST_F(FunctionsTest, FilesRanksFlipAndMirror) {
  expectAll({
      {"file(0)", "9259542123273814144 (0x8080808080808080)"},
      {"file('a') == file(0)", "true"},
      {"file('h')", "72340172838076673 (0x101010101010101)"},
      {"file(4)", "578721382704613384 (0x808080808080808)"},
      {"rank(0)", "255 (0xff)"},
      {"rank('1') == rank(0)", "true"},
      {"rank('8')", "18374686479671623680 (0xff00000000000000)"},
      {"rank(3)", "4278190080 (0xff000000)"},
      {"flip(a1)", "9223372036854775808 (0x8000000000000000)"},
      {"flip(0x0102)", "144396663052566528 (0x201000000000000)"},
      {"mirror(a1)", "1 (0x1)"},
      {"mirror(0x0102)", "32832 (0x8040)"},
      {"mirror(mirror(0x123456789abcdef0))", "1311768467463790320 (0x123456789abcdef0)"},
      {"file(8)", "error at column 6: 8 is out of range 0..7"},
      {"file('i')", "error at column 6: expected a file letter a..h"},
      {"rank('9')", "error at column 6: expected a rank digit 1..8"},
  });
}

TEST_F(FunctionsTest, ShiftsStepOneSquareAndNeverWrap) {
  expectAll({
      {"north(e4)", "34359738368 (0x800000000)"},       // e5
      {"south(e4)", "524288 (0x80000)"},                // e3
      {"east(e4)", "67108864 (0x4000000)"},             // f4
      {"west(e4)", "268435456 (0x10000000)"},           // d4
      {"northeast(e4)", "17179869184 (0x400000000)"},   // f5
      {"northwest(e4)", "68719476736 (0x1000000000)"},  // d5
      {"southeast(e4)", "262144 (0x40000)"},            // f3
      {"southwest(e4)", "1048576 (0x100000)"},          // d3
      {"east(file(7)) | west(file(0)) | north(rank(7)) | south(rank(0))", "0 (0x0)"},
      {"northeast(h4 | e8) | northwest(a4 | e8) | southeast(h4 | e1) | southwest(a4 | e1)", "0 (0x0)"},
      {"east(rank(0))", "127 (0x7f)"},
      {"west(rank(0))", "254 (0xfe)"},
  });
}

TEST_F(FunctionsTest, SquareNamesAndTheDiagram) {
  EXPECT_EQ(in_.execute("squares(h1 | e4 | a8)"), Lines{"a8 e4 h1"});
  EXPECT_EQ(in_.execute("squares(0)"), Lines{""});
  EXPECT_EQ(in_.execute("board(a8 | e4 | h1 | b7)"), (Lines{
                                                         "8 x . . . . . . .",
                                                         "7 . x . . . . . .",
                                                         "6 . . . . . . . .",
                                                         "5 . . . . . . . .",
                                                         "4 . . . . x . . .",
                                                         "3 . . . . . . . .",
                                                         "2 . . . . . . . .",
                                                         "1 . . . . . . . x",
                                                         "  a b c d e f g h",
                                                     }));
  EXPECT_EQ(kobubase::maskDiagram(~0ull).substr(0, 18), "8 x x x x x x x x\n");
}

TEST_F(FunctionsTest, StringFunctions) {
  expectAll({
      {"len('hello')", "5 (0x5)"},
      {"len('')", "0 (0x0)"},
      {"concat('a', 1, true, 'z')", "a1truez"},
      {"upper('aBc1')", "ABC1"},
      {"lower('AbC1')", "abc1"},
      {"substr('hello', 1, 3)", "ell"},
      {"substr('hello', 2)", "llo"},
      {"substr('hello', 10)", ""},
      {"substr('hello', 4, 100)", "o"},
      {"substr('hello', 1, -1)", "ello"},
      {"hex(255)", "0xff"},
      {"hex(0)", "0x0"},
      {"hex(-1)", "0xffffffffffffffff"},
      {"bin(5)", "0b101"},
      {"bin(0)", "0b0"},
      {"str(42) + 'x'", "42x"},
      {"len(5)", "error at column 5: expected a string, not an integer"},
      {"upper(true)", "error at column 7: expected a string, not a boolean"},
      {"hex('a')", "error at column 5: expected a number, not a string"},
      {"substr('a')", "error at column 1: wrong number of arguments, usage: substr(s, start[, count])"},
  });
}

}  // namespace
