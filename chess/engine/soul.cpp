#include "chess/engine/soul.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "base/random.h"
#include "base/text.h"

namespace kbuChess {

const char* const SOUL_PRESETS[6] = {
    "TalvenaOld=70 20 10 60 20 14 50 20 50 40 10 60 0 30 90 30 10 0 10 5 10",
    "Simple2=7 2 1 6 2 1 5 2 5 4 1 6 0 3 9 3 1 0 10 5 10",
    "Simple5=7 20 2 20 4 1 5 2 5 8 1 8 10 10 20 5 1 5 10 5 10",
    "BattleField=8 1 10 103 14 33 58 29 84 53 67 58 13 14 37 6 12 87 59 5 10",
    "Mass161=38 10 1 18 14 1 103 75 84 54 4 97 10 10 60 3 1 12 40 5 10",
    "Manticore617=33 24 2 36 57 33 45 35 56 21 44 42 27 91 34 91 4 59 44 5 10",
};

namespace {

// The fields after "=": every single space ends one, so two spaces in a row
// make an empty field.
std::vector<std::string_view> soulFields(std::string_view values) {
  std::vector<std::string_view> fields;
  for (std::size_t at = 0;;) {
    const std::size_t space = values.find(' ', at);
    fields.push_back(values.substr(at, space == std::string_view::npos ? std::string_view::npos : space - at));
    if (space == std::string_view::npos) return fields;
    at = space + 1;
  }
}

// A whole field holding one integer (an optional sign, then digits only).
bool readStrictValue(std::string_view field, i32& value) {
  if (!field.empty() && field.front() == '+') field.remove_prefix(1);
  std::int64_t read = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), read);
  if (field.empty() || error != std::errc() || end != field.data() + field.size()) return false;
  if (read < std::numeric_limits<i32>::min() || read > std::numeric_limits<i32>::max()) return false;
  value = static_cast<i32>(read);
  return true;
}

bool readStrict(std::string_view text, Soul& soul, std::string& why) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos || equals == 0 || text.find(' ') < equals) {
    why = "not a soul (NAME=v1 ... v21)";
    return false;
  }
  const std::vector<std::string_view> fields = soulFields(text.substr(equals + 1));
  if (fields.size() != SOUL_SIZE) {
    why = "a soul needs 21 values, found " + std::to_string(fields.size());
    return false;
  }
  for (int i = 0; i < SOUL_SIZE; ++i) {
    if (!readStrictValue(fields[i], soul.values[i])) {
      why = "value " + std::to_string(i + 1) + " is not a number: \"" + std::string(fields[i]) + "\"";
      return false;
    }
  }
  soul.name = std::string(text.substr(0, equals));
  return true;
}

}  // namespace

bool readSoul(std::string_view text, SoulReading reading, Soul& soul, std::string& why) {
  if (reading == SoulReading::STRICT) return readStrict(text, soul, why);
  const std::size_t equals = text.find('=');
  soul = Soul{std::string(text.substr(0, equals)), {}};
  if (equals == std::string_view::npos) return true;
  const std::vector<std::string_view> fields = soulFields(text.substr(equals + 1));
  for (std::size_t i = 0; i < SOUL_SIZE && i < fields.size(); ++i)
    soul.values[i] = static_cast<i32>(kobubase::readClamped(fields[i], -SOUL_WEIGHT_LIMIT, SOUL_WEIGHT_LIMIT));
  return true;
}

Soul parseSoul(std::string_view text) {
  Soul soul;
  std::string unused;
  readSoul(text, SoulReading::LENIENT, soul, unused);
  return soul;
}

std::string soulText(const Soul& soul) {
  std::string text = soul.name + "=";
  for (int i = 0; i < SOUL_SIZE; ++i) {
    if (i > 0) text += ' ';
    text += std::to_string(soul.values[i]);
  }
  return text;
}

std::string soulValuesText(const SoulValues& values) {
  std::string text;
  for (const i32 value : values) {
    text += std::to_string(value);
    text += '\t';
  }
  return text;
}

namespace {
// Crossover of one range from `other`, with a rare fresh value (0..104) per position.
template <typename Draw>
void breedWith(SoulValues& values, const SoulValues& other, Draw draw) {
  const int cut = static_cast<int>(draw() % 19) + 1;
  const bool upper = draw() % 100 < 50;
  const int begin = upper ? cut : 0;
  const int end = upper ? SOUL_SIZE : cut;
  for (int i = begin; i < end; ++i) {
    if (draw() % 100 < 97)
      values[i] = other[i];
    else
      values[i] = static_cast<i32>(draw() % 105);
  }
}
}  // namespace

void breedSoul(SoulValues& values, const SoulValues& other) {
  breedWith(values, other, [] { return kobubase::randomAbs32(); });
}

void breedSoul(SoulValues& values, const SoulValues& other, kobubase::clsRandom& random) {
  breedWith(values, other, [&random] { return random.abs32(); });
}

}  // namespace kbuChess
