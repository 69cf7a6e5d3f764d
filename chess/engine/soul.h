#pragma once
// Souls: a name and 21 integer weights that weigh the evaluation terms and the
// castling bonus. Text form: NAME=v1 v2 ... v21.
#include <array>
#include <string>
#include <string_view>

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

// How a soul text is read. LENIENT takes whatever a person typed (command
// line, console, tournament parameters): the name is what stands before "=",
// every single space ends a field (two in a row make an empty one), a field
// is read by its leading digits, missing fields are 0 and extra ones ignored.
// STRICT is for files: a non-empty name without blanks, "=", then exactly 21
// integers separated by single blanks; anything else is refused with the
// reason in `why`; its values are kept as written, so a file is rewritten
// byte for byte (a soul from a file reaches an engine through its lenient
// text, which holds every weight within +-SOUL_WEIGHT_LIMIT).
enum class SoulReading { LENIENT, STRICT };
bool readSoul(std::string_view text, SoulReading reading, Soul& soul, std::string& why);
// The lenient reading, which never fails.
Soul parseSoul(std::string_view text);
// "NAME=v1 v2 ... v21" with single blanks: the form soul files and the
// commands that hand a soul on use.
std::string soulText(const Soul& soul);
// The 21 values, each followed by a tab: the form the soul command prints.
std::string soulValuesText(const SoulValues& values);
// Crossover with mutation from `other` into `values`, drawing from the shared random source.
void breedSoul(SoulValues& values, const SoulValues& other);
// The same operator drawing from a generator of the caller's, for repeatable runs.
void breedSoul(SoulValues& values, const SoulValues& other, kobubase::clsRandom& random);

}  // namespace kbuChess
