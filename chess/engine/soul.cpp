#include "chess/engine/soul.h"

#include <string_view>

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

Soul parseSoul(const std::string& text) {
  Soul soul;
  const std::size_t equals = text.find('=');
  soul.name = text.substr(0, equals);
  const std::string rest = equals == std::string::npos ? std::string() : text.substr(equals + 1);
  // Every single space ends a field, so two spaces in a row make an empty field
  // (0); fields past the end of the text stay 0.
  std::size_t at = 0;
  for (int i = 0; i < SOUL_SIZE && at <= rest.size(); ++i) {
    std::size_t space = rest.find(' ', at);
    if (space == std::string::npos) space = rest.size();
    const std::string_view field = std::string_view(rest).substr(at, space - at);
    soul.values[i] = static_cast<i32>(kobubase::readClamped(field, -SOUL_WEIGHT_LIMIT, SOUL_WEIGHT_LIMIT));
    at = space + 1;
  }
  return soul;
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
