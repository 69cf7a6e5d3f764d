#include <gtest/gtest.h>

#include "chess/driver/time_control.h"

namespace {

using namespace kbuChess;

TEST(TimeControlTest, LevelReadsMinutesSecondsAndIncrement) {
  TimeControl level = parseLevel("40 5 0");
  EXPECT_EQ(level.movesPerPeriod, 40);
  EXPECT_EQ(level.baseMs, 300000);
  EXPECT_EQ(level.incrementMs, 0);
  level = parseLevel("0 0:30 2");
  EXPECT_EQ(level.movesPerPeriod, 0);
  EXPECT_EQ(level.baseMs, 30000);
  EXPECT_EQ(level.incrementMs, 2000);
  level = parseLevel("0 2:05 0.5");
  EXPECT_EQ(level.baseMs, 125000);
  EXPECT_EQ(level.incrementMs, 500);
  level = parseLevel("x y z");
  EXPECT_EQ(level.movesPerPeriod, 0);
  EXPECT_EQ(level.baseMs, 0);
  EXPECT_EQ(level.incrementMs, 0);
  level = parseLevel("");
  EXPECT_EQ(level.baseMs, 0);
}

TEST(TimeControlTest, BudgetKeepsMarginAndSharesTheRest) {
  EXPECT_EQ(thinkBudget(150, 0, 0), 2);  // (150 - 50) / 40
  EXPECT_EQ(thinkBudget(90, 0, 0), 2);   // 90 / 40, no margin at 100 ms or less
  EXPECT_EQ(thinkBudget(100, 0, 0), 2);
  EXPECT_EQ(thinkBudget(300000, 0, 0), 7498);
  EXPECT_EQ(thinkBudget(300000, 40, 0), 7141);   // 299950 / 42
  EXPECT_EQ(thinkBudget(300000, 40, 39), 99983);  // 299950 / 3
  EXPECT_EQ(thinkBudget(10000, 2, 7), 9950);      // shrunken period: never divides by 0 or less
  EXPECT_EQ(thinkBudget(-400, 0, 0), -10);
}

TEST(TimeControlTest, NumbersReadLikeTheCLibrary) {
  EXPECT_EQ(readInteger("  42abc"), 42);
  EXPECT_EQ(readInteger("-17"), -17);
  EXPECT_EQ(readInteger("+5"), 5);
  EXPECT_EQ(readInteger("abc"), 0);
  EXPECT_EQ(readInteger(""), 0);
  EXPECT_GT(readInteger("99999999999999999999999"), 0);  // saturates, never wraps
  EXPECT_EQ(wordAt("  level  40 5", 1), "40");
  EXPECT_EQ(wordAt("a b", 2), "");
}

}  // namespace
