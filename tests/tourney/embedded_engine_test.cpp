#include "chess/tourney/embedded_engine.h"

#include <gtest/gtest.h>

#include <string>

#include "chess/board/board.h"
#include "chess/board/tables.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using kbuChess::clsBoard;
using kbuChess::clsEmbeddedEngine;
using tourney_test::awaitReply;

class EmbeddedEngineTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { kbuChess::initTables(); }
};

// Two souls, one a preset and one given as text, play six plies, relayed as
// a game relays them and judged on a board of the test's own: each move
// arrives through the output buffer, is legal, and both engines' boards
// follow the game. An empty clock still yields a move at once (the first
// legal one when the search had no time); a new game resets the board.
TEST_F(EmbeddedEngineTest, TwoSoulsPlayLegalMovesAndANewGameResets) {
  clsEmbeddedEngine white("white", "Simple5", nullptr, 1);
  clsEmbeddedEngine black("black", "Mine=7 20 2 20 4 1 5 2 5 8 1 8 10 10 20 5 1 5 10 5 10", nullptr, 1);
  EXPECT_EQ(white.soul() + " " + black.soul() + " " + white.name(), "Simple5 Mine white");
  ASSERT_TRUE(white.Prepare(0, 2000, 0));
  ASSERT_TRUE(black.Prepare(1, 0, 0));
  EXPECT_TRUE(white.IsAlive());
  EXPECT_FALSE(white.HasEnded());
  clsBoard referee;
  referee.readFEN(clsBoard::START_FEN);
  const std::string start = referee.fen();
  clsEmbeddedEngine* players[2] = {&white, &black};
  std::string history;
  white.Go();
  for (int ply = 0; ply < 6; ++ply) {
    const std::string reply = awaitReply(*players[ply % 2], 10000);
    ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
    const std::string move = reply.substr(5);
    ASSERT_TRUE(referee.readCoordinateMove(move)) << "ply " << ply << ": " << move;
    history += move + " ";
    white.PlayMove(move, ply % 2);
    black.PlayMove(move, ply % 2);
  }
  EXPECT_EQ(white.moveHistory(), history);
  EXPECT_EQ(black.moveHistory(), history);
  EXPECT_EQ(white.fen(), referee.fen());
  EXPECT_EQ(black.fen(), referee.fen());
  // Black's last move set White thinking; Black waits for its turn.
  EXPECT_EQ(awaitReply(black, 200), "<nothing>");
  EXPECT_EQ(awaitReply(white, 5000).rfind("move ", 0), 0u);
  ASSERT_TRUE(black.Prepare(1, 0, 0));  // kept from the last game: a new game only
  EXPECT_EQ(black.moveHistory() + black.fen(), start);
}

// Stopping abandons a long search: no move comes afterwards.
TEST_F(EmbeddedEngineTest, StopAbandonsTheSearch) {
  clsEmbeddedEngine engine("long", "Simple5", nullptr, 1);
  ASSERT_TRUE(engine.Prepare(0, 3600000, 0));
  engine.Go();
  EXPECT_TRUE(engine.thinking());
  engine.Stop();
  EXPECT_TRUE(engine.stopped());
  EXPECT_FALSE(engine.thinking());
  EXPECT_EQ(awaitReply(engine, 200), "<nothing>");
}

}  // namespace
