#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>

#include "base/random.h"
#include "chess/engine/engine.h"

namespace kbuChess {
namespace {

SoulValues values(std::initializer_list<i32> list) {
  SoulValues v{};
  std::copy(list.begin(), list.end(), v.begin());
  return v;
}

TEST(Soul, ParsesFieldsAtSingleSpaces) {
  Soul soul = parseSoul("X=1 2 3");
  EXPECT_EQ(soul.name, "X");
  EXPECT_EQ(soul.values, values({1, 2, 3}));
  // An empty field between two spaces counts as 0 and shifts the rest.
  EXPECT_EQ(parseSoul("X=1  2").values, values({1, 0, 2}));
  // No "=": the whole text is the name and every value is 0.
  soul = parseSoul("no equals 5");
  EXPECT_EQ(soul.name, "no equals 5");
  EXPECT_EQ(soul.values, SoulValues{});
  // Signs, junk after digits, weights held within +-100000, extra fields ignored.
  EXPECT_EQ(parseSoul("Y=-5 +7 12abc x 99999999 -2000000000 99999999999999999999 100000").values,
            values({-5, 7, 12, 0, 100000, -100000, 100000, 100000}));
  EXPECT_EQ(parseSoul("Z=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22").values[20], 21);
}

// The castling bonus is the fourth weight: it tells which soul is in use.
TEST(Soul, SelectsPresetsByExactNameAnEmptyNameFromTheOptions) {
  kobubase::clsOptions options;
  options.set("-soul", "BattleField");
  auto engine = std::make_unique<clsEngine>(options);
  EXPECT_EQ(engine->soulName(), "Simple5");
  EXPECT_EQ(engine->soulValuesText(), "7\t20\t2\t20\t4\t1\t5\t2\t5\t8\t1\t8\t10\t10\t20\t5\t1\t5\t10\t5\t10\t");
  engine->selectSoul("Mass161");
  engine->selectSoul("simple5");  // case matters: no match, nothing changes
  engine->selectSoul("Nobody");
  EXPECT_EQ(engine->soulName(), "Mass161");
  EXPECT_EQ(engine->castlingBonus(), 18);
  // An empty name takes the runtime option, else the command line's.
  engine->selectSoul("");
  EXPECT_EQ(engine->soulName(), "BattleField");
  EXPECT_EQ(engine->castlingBonus(), 103);
  engine->runtimeOptions().set("soul", "Manticore617");
  engine->selectSoul("");
  EXPECT_EQ(engine->soulName(), "Manticore617");
  // Without either option the fallback matches no preset: nothing changes.
  auto plain = std::make_unique<clsEngine>();
  plain->selectSoul("Mass161");
  plain->selectSoul("");
  EXPECT_EQ(plain->soulName(), "Mass161");
}

// Breeding replaces one end of the soul, at least one position and never all,
// by the other soul's values, a few of them mutated to a fresh 0..104; the name
// stays. Own values below 0 and the other's above 104 tell the three apart.
TEST(Soul, BreedingCopiesOneEndOfTheOtherSoulWithRareMutations) {
  auto engine = std::make_unique<clsEngine>(), other = std::make_unique<clsEngine>();
  std::string own = "Own=", others = "Other=";
  for (int i = 0; i < SOUL_SIZE; ++i) own += std::to_string(-1 - i) + " ", others += std::to_string(200 + i) + " ";
  other->applySoulText(others);
  kobubase::seedRandom(1, 8);
  int copied = 0, mutated = 0;
  for (int run = 0; run < 200; ++run) {
    engine->applySoulText(own);
    engine->breedSoul(*other);
    EXPECT_EQ(engine->soulName(), "Own");
    std::string kinds;  // 'o' own value, 'r' from the bred range
    for (int i = 0; i < SOUL_SIZE; ++i) {
      const i32 value = engine->soulValues()[static_cast<std::size_t>(i)];
      copied += value == 200 + i;
      mutated += value >= 0 && value <= 104;
      ASSERT_TRUE(value == -1 - i || value == 200 + i || (value >= 0 && value <= 104)) << i << ": " << value;
      kinds += value < 0 ? 'o' : 'r';
    }
    EXPECT_TRUE(std::regex_match(kinds, std::regex("o+r+|r+o+"))) << kinds;
  }
  EXPECT_GT(mutated, 0);
  EXPECT_LT(mutated * 10, copied);  // about 3 in 100
}

}  // namespace
}  // namespace kbuChess
