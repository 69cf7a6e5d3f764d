#include <gtest/gtest.h>

#include "chess/board/tables.h"
#include "chess/tourney/engine_learning_games.h"

namespace kbuChess {
namespace {

class EngineLearningGamesTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }
  const Soul white = parseSoul(SOUL_PRESETS[2]);
  const Soul black = parseSoul(SOUL_PRESETS[4]);
  clsEngineLearningGames games;
};

TEST_F(EngineLearningGamesTest, MatesEndTheGameAndTheCapComesFirst) {
  const std::vector<std::string> fools = {"f2f3", "e7e5", "g2g4", "d8h4"};
  GameOutcome outcome = games.play(white, black, fools, 5, 3);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.whitePoints, 0);
  // Four plies played reach a cap of two moves each: a draw, mate or not.
  outcome = games.play(white, black, fools, 5, 2);
  EXPECT_EQ(outcome.whitePoints, 1);
  outcome = games.play(white, black, {"e2e4", "f7f6", "d2d4", "g7g5", "d1h5"}, 5, 10);
  EXPECT_EQ(outcome.whitePoints, 2);
}

TEST_F(EngineLearningGamesTest, EnginesFinishAMateInOneAndAnIllegalOpeningEndsTheOpening) {
  // After 1.e4 e5 2.Bc4 Nc6 3.Qh5 Nf6 White mates with Qxf7.
  GameOutcome outcome = games.play(white, black, {"e2e4", "e7e5", "f1c4", "b8c6", "d1h5", "g8f6"}, 200, 20);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.whitePoints, 2);
  // The opening stops at its first illegal move; the game is played from there.
  outcome = games.play(white, black, {"e2e4", "e2e4"}, 2, 3);
  EXPECT_TRUE(outcome.finished);
  EXPECT_GE(outcome.whitePoints, 0);
  EXPECT_LE(outcome.whitePoints, 2);
}

TEST_F(EngineLearningGamesTest, AStoppedRunnerReturnsUnfinishedGames) {
  games.stop();
  const GameOutcome outcome = games.play(white, black, {}, 5, 10);
  EXPECT_FALSE(outcome.finished);
}

}  // namespace
}  // namespace kbuChess
