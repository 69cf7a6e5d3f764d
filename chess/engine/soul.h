#pragma once
// Souls: a name and 21 integer weights that weigh the evaluation terms and the
// castling bonus. Text form: NAME=v1 v2 ... v21.
#include <array>
#include <string>

#include "base/random.h"
#include "chess/board/types.h"

namespace kbuChess {

inline constexpr int SOUL_SIZE = 21;
using SoulValues = std::array<i32, SOUL_SIZE>;

struct Soul {
  std::string name;
  SoulValues values{};
};

// Weights read from a soul text are held within +-SOUL_WEIGHT_LIMIT: a thousand
// times the largest preset weight, and small enough that no evaluation sum
// can leave the score range.
inline constexpr i32 SOUL_WEIGHT_LIMIT = 100000;

// The six presets in table order; the default soul is "Simple5".
extern const char* const SOUL_PRESETS[6];
inline constexpr const char* DEFAULT_SOUL = "Simple5";

// Parses "NAME=v1 v2 ..." : fields split at single spaces, missing ones 0,
// each held within +-SOUL_WEIGHT_LIMIT.
Soul parseSoul(const std::string& text);
// The 21 values, each followed by a tab.
std::string soulValuesText(const SoulValues& values);
// Crossover with mutation from `other` into `values`, drawing from the shared random source.
void breedSoul(SoulValues& values, const SoulValues& other);
// The same operator drawing from a generator of the caller's, for repeatable runs.
void breedSoul(SoulValues& values, const SoulValues& other, kobubase::clsRandom& random);

}  // namespace kbuChess
