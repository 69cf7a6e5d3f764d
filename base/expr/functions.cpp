// The generic functions of the console: bit counts and scans, the geometry of
// an 8x8 mask (bit = rank * 8 + 7 - file, so h1 = 0, a1 = 7, h8 = 56, a8 = 63)
// and strings.
#include <algorithm>
#include <bit>
#include <cctype>

#include "base/expr/interpreter.h"
#include "base/expr/lexer.h"

namespace kobubase {

namespace {

using U = std::uint64_t;

constexpr U FILE_A = 0x8080808080808080ull;
constexpr U FILE_H = 0x0101010101010101ull;

// The eight one-step shifts; a step off the board drops the square.
struct Shift {
  const char* name;
  U (*step)(U);
};
const Shift SHIFTS[] = {
    {"north", [](U m) { return m << 8; }},
    {"south", [](U m) { return m >> 8; }},
    {"east", [](U m) { return (m & ~FILE_H) >> 1; }},
    {"west", [](U m) { return (m & ~FILE_A) << 1; }},
    {"northeast", [](U m) { return (m & ~FILE_H) << 7; }},
    {"northwest", [](U m) { return (m & ~FILE_A) << 9; }},
    {"southeast", [](U m) { return (m & ~FILE_H) >> 9; }},
    {"southwest", [](U m) { return (m & ~FILE_A) >> 7; }},
};

U mirrorMask(U m) {  // file a <-> file h: reverse the bits of every byte
  m = ((m >> 1) & 0x5555555555555555ull) | ((m & 0x5555555555555555ull) << 1);
  m = ((m >> 2) & 0x3333333333333333ull) | ((m & 0x3333333333333333ull) << 2);
  return ((m >> 4) & 0x0F0F0F0F0F0F0F0Full) | ((m & 0x0F0F0F0F0F0F0F0Full) << 4);
}

// File by number 0..7 (0 = a) or letter; rank by number 0..7 (0 = rank 1) or digit.
int fileIndex(const clsArgs& args) {
  if (args[0].kind != Value::STRING) return static_cast<int>(args.below(0, 8));
  const std::string& s = args.string(0);
  if (s.size() != 1 || s[0] < 'a' || s[0] > 'h') args.fail(0, "expected a file letter a..h");
  return s[0] - 'a';
}

int rankIndex(const clsArgs& args) {
  if (args[0].kind != Value::STRING) return static_cast<int>(args.below(0, 8));
  const std::string& s = args.string(0);
  if (s.size() != 1 || s[0] < '1' || s[0] > '8') args.fail(0, "expected a rank digit 1..8");
  return s[0] - '1';
}

std::string squareNames(U mask) {
  std::string text;
  for (int bit = 63; bit >= 0; --bit) {  // a8 first, in reading order
    if (!(mask >> bit & 1)) continue;
    if (!text.empty()) text += ' ';
    text += static_cast<char>('a' + 7 - bit % 8);
    text += static_cast<char>('1' + bit / 8);
  }
  return text;
}

std::string mapCase(std::string s, int (*convert)(int)) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [convert](char c) { return static_cast<char>(convert(static_cast<unsigned char>(c))); });
  return s;
}

void addBitFunctions(clsInterpreter& in) {
  in.addFunction("popcount", 1, 1, "popcount(mask)",
                 [](const clsArgs& a) { return Value::integer(static_cast<U>(std::popcount(a.integer(0)))); });
  in.addFunction("lsb", 1, 1, "lsb(mask)", [](const clsArgs& a) {
    if (a.integer(0) == 0) a.fail(0, "an empty mask has no lowest bit");
    return Value::integer(static_cast<U>(std::countr_zero(a.integer(0))));
  });
  in.addFunction("msb", 1, 1, "msb(mask)", [](const clsArgs& a) {
    if (a.integer(0) == 0) a.fail(0, "an empty mask has no highest bit");
    return Value::integer(static_cast<U>(63 - std::countl_zero(a.integer(0))));
  });
  in.addFunction("bit", 1, 1, "bit(n)", [](const clsArgs& a) { return Value::integer(U{1} << a.below(0, 64)); });
  in.addFunction("file", 1, 1, "file(0..7|'a'..'h')",
                 [](const clsArgs& a) { return Value::integer(FILE_A >> fileIndex(a)); });
  in.addFunction("rank", 1, 1, "rank(0..7|'1'..'8')",
                 [](const clsArgs& a) { return Value::integer(U{0xFF} << (8 * rankIndex(a))); });
  in.addFunction("flip", 1, 1, "flip(mask)",
                 [](const clsArgs& a) { return Value::integer(__builtin_bswap64(a.integer(0))); });
  in.addFunction("mirror", 1, 1, "mirror(mask)",
                 [](const clsArgs& a) { return Value::integer(mirrorMask(a.integer(0))); });
  for (const Shift& shift : SHIFTS) {
    in.addFunction(shift.name, 1, 1, std::string(shift.name) + "(mask)",
                   [step = shift.step](const clsArgs& a) { return Value::integer(step(a.integer(0))); });
  }
  in.addFunction("squares", 1, 1, "squares(mask)",
                 [](const clsArgs& a) { return Value::string(squareNames(a.integer(0))); });
  in.addFunction("board", 1, 1, "board(mask)",
                 [](const clsArgs& a) { return Value::string(maskDiagram(a.integer(0))); });
}

void addStringFunctions(clsInterpreter& in) {
  in.addFunction("len", 1, 1, "len(s)", [](const clsArgs& a) { return Value::integer(a.string(0).size()); });
  in.addFunction("concat", 1, -1, "concat(a, b, ...)", [](const clsArgs& a) {
    std::string text;
    for (std::size_t i = 0; i < a.size(); ++i) {
      const std::string part = a[i].kind == Value::INTEGER ? std::to_string(a[i].number) : displayText(a[i]);
      if (text.size() + part.size() > Value::MAX_STRING) a.fail(i, "string too long");
      text += part;
    }
    return Value::string(text);
  });
  in.addFunction("upper", 1, 1, "upper(s)",
                 [](const clsArgs& a) { return Value::string(mapCase(a.string(0), ::toupper)); });
  in.addFunction("lower", 1, 1, "lower(s)",
                 [](const clsArgs& a) { return Value::string(mapCase(a.string(0), ::tolower)); });
  in.addFunction("substr", 2, 3, "substr(s, start[, count])", [](const clsArgs& a) {
    const std::string& s = a.string(0);
    const U start = std::min<U>(a.integer(1), s.size());
    const U count = a.size() > 2 ? a.integer(2) : s.size();
    return Value::string(s.substr(start, std::min<U>(count, s.size() - start)));
  });
  in.addFunction("hex", 1, 1, "hex(n)", [](const clsArgs& a) { return Value::string("0x" + hexDigits(a.integer(0))); });
  in.addFunction("bin", 1, 1, "bin(n)",
                 [](const clsArgs& a) { return Value::string("0b" + binaryDigits(a.integer(0))); });
  in.addFunction("str", 1, 1, "str(n)", [](const clsArgs& a) { return Value::string(std::to_string(a.integer(0))); });
}

}  // namespace

std::string maskDiagram(std::uint64_t mask) {
  std::string text;
  for (int rank = 7; rank >= 0; --rank) {
    text += static_cast<char>('1' + rank);
    for (int file = 0; file < 8; ++file) {
      text += ' ';
      text += (mask >> (rank * 8 + 7 - file) & 1) ? 'x' : '.';
    }
    text += '\n';
  }
  return text + "  a b c d e f g h";
}

void addGenericFunctions(clsInterpreter& interpreter) {
  addBitFunctions(interpreter);
  addStringFunctions(interpreter);
}

}  // namespace kobubase
