#include "chess/engine/time_control.h"

#include <gtest/gtest.h>

#include <string>

#include "base/text.h"

namespace {

using namespace kbuChess;
using kobubase::readInteger;

TEST(TimeControlTest, LevelReadsMinutesSecondsAndIncrement) {
  auto fields = [](const char* text) {
    const TimeControl level = parseLevel(text);
    return std::to_string(level.movesPerPeriod) + " " + std::to_string(level.baseMs) + " " +
           std::to_string(level.incrementMs);
  };
  EXPECT_EQ(fields("40 5 0"), "40 300000 0");
  EXPECT_EQ(fields("0 2:05 0.5"), "0 125000 500");
  EXPECT_EQ(fields("x y z"), "0 0 0");
  EXPECT_EQ(fields("-40 99999999999999999999:5 -3"), "0 " + std::to_string(MAX_CLOCK_MS) + " 0");
}

TEST(TimeControlTest, BudgetKeepsMarginAndSharesTheRest) {
  EXPECT_EQ(thinkBudget(150, 0, 0), 2);           // (150 - 50) / 40
  EXPECT_EQ(thinkBudget(90, 0, 0), 2);            // 90 / 40, no margin at 100 ms or less
  EXPECT_EQ(thinkBudget(300000, 40, 0), 7141);    // 299950 / 42
  EXPECT_EQ(thinkBudget(300000, 40, 39), 99983);  // 299950 / 3
  EXPECT_EQ(thinkBudget(10000, 2, 7), 9950);      // shrunken period: never divides by 0 or less
  EXPECT_EQ(thinkBudget(-400, 0, 0), -10);
}

TEST(TimeControlTest, NumbersReadLikeTheCLibrary) {
  for (auto [text, n] : {std::pair{"  42abc", 42}, {"-17", -17}, {"+5", 5}, {"abc", 0}})
    EXPECT_EQ(readInteger(text), n);
  EXPECT_EQ(readInteger("99999999999999999999999"), 9223372036854775807);  // saturates, never wraps
  EXPECT_EQ(readInteger("-9223372036854775808"), -9223372036854775807);
  EXPECT_EQ(kobubase::wordAt("  level  40 5", 1), "40");
  EXPECT_EQ(kobubase::wordAt("a b", 2), "");
}

}  // namespace
