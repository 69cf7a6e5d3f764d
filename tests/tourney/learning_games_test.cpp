#include <gtest/gtest.h>

#include "chess/board/tables.h"
#include "chess/tourney/tourney_learning_games.h"

namespace kbuChess {
namespace {

class LearningGamesTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }
  const Soul white = parseSoul(SOUL_PRESETS[2]);
  const Soul black = parseSoul(SOUL_PRESETS[4]);
  clsTourneyLearningGames games;
};

TEST_F(LearningGamesTest, MatesEndTheGameAndTheCapMakesADraw) {
  const std::vector<std::string> fools = {"f2f3", "e7e5", "g2g4", "d8h4"};
  GameOutcome outcome = games.play(white, black, fools, 5, 3);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.whitePoints, 0);
  // The mate on the ply that reaches the cap of two moves a side counts; four
  // quiet plies reach it as a draw.
  outcome = games.play(white, black, fools, 5, 2);
  EXPECT_EQ(outcome.whitePoints, 0);
  outcome = games.play(white, black, {"e2e4", "e7e5", "g1f3", "b8c6"}, 5, 2);
  EXPECT_EQ(outcome.whitePoints, 1);
  outcome = games.play(white, black, {"e2e4", "f7f6", "d2d4", "g7g5", "d1h5"}, 5, 10);
  EXPECT_EQ(outcome.whitePoints, 2);
}

TEST_F(LearningGamesTest, EnginesFinishAMateInOneAndAnIllegalOpeningEndsTheOpening) {
  // After 1.e4 e5 2.Bc4 Nc6 3.Qh5 Nf6 White mates with Qxf7.
  GameOutcome outcome = games.play(white, black, {"e2e4", "e7e5", "f1c4", "b8c6", "d1h5", "g8f6"}, 200, 20);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.whitePoints, 2);
  // The opening stops at its first illegal move, and Black, to move after three
  // plies, finds the mate. Had a7a6 been played, the cap would have drawn it.
  outcome = games.play(white, black, {"f2f3", "e7e5", "g2g4", "e2e2", "a7a6"}, 200, 2);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.whitePoints, 0);
}

TEST_F(LearningGamesTest, AStoppedRunnerReturnsUnfinishedGames) {
  games.stop();
  const GameOutcome outcome = games.play(white, black, {}, 5, 10);
  EXPECT_FALSE(outcome.finished);
}

}  // namespace
}  // namespace kbuChess
