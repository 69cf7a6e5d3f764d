#include "chess/tourney/embedded_engine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/thread.h"
#include "chess/board/board.h"
#include "chess/board/tables.h"
#include "chess/tourney/external_engine.h"

namespace {

using kbuChess::clsEmbeddedEngine;
using kbuChess::clsEngineInterface;
using kobubase::nowMs;

class EmbeddedEngineTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { kbuChess::initTables(); }
};

// The next non-empty reply within timeoutMs, or "<nothing>".
std::string awaitReply(clsEngineInterface& engine, int timeoutMs) {
  for (const std::int64_t until = nowMs() + timeoutMs; nowMs() < until; kobubase::sleepMs(1)) {
    engine.Service();
    const std::string reply = engine.nextReply();
    if (!reply.empty()) return reply;
  }
  return "<nothing>";
}

// Relays moves between two players the way a game does, judging each on a
// board of its own; answers the moves played.
std::vector<std::string> relay(clsEngineInterface& white, clsEngineInterface& black, int plies) {
  kbuChess::clsBoard referee;
  referee.readFEN(kbuChess::clsBoard::START_FEN);
  clsEngineInterface* players[2] = {&white, &black};
  std::vector<std::string> moves;
  white.Go();
  for (int ply = 0; ply < plies; ++ply) {
    const int side = ply % 2;
    const std::string reply = awaitReply(*players[side], 10000);
    EXPECT_EQ(reply.rfind("move ", 0), 0u) << reply;
    const std::string move = reply.substr(std::min<std::size_t>(5, reply.size()));
    EXPECT_TRUE(referee.readCoordinateMove(move)) << "ply " << ply << ": " << move;
    moves.push_back(move);
    players[side]->PlayMove(move, side);
    players[1 - side]->PlayMove(move, side);
  }
  return moves;
}

// Two souls play six plies: each move arrives through the output buffer,
// is legal, and both engines' boards follow the game.
TEST_F(EmbeddedEngineTest, TwoSoulsPlayLegalMoves) {
  clsEmbeddedEngine white("white", "Simple5", nullptr, 1);
  clsEmbeddedEngine black("black", "BattleField", nullptr, 1);
  EXPECT_EQ(white.soul(), "Simple5");
  EXPECT_EQ(black.soul(), "BattleField");
  EXPECT_EQ(white.name(), "white");
  ASSERT_TRUE(white.Prepare(0, 2000, 0));
  ASSERT_TRUE(black.Prepare(1, 2000, 0));
  EXPECT_TRUE(white.IsAlive());
  EXPECT_FALSE(white.HasEnded());
  const std::vector<std::string> moves = relay(white, black, 6);
  std::string history;
  for (const std::string& move : moves) history += move + " ";
  EXPECT_EQ(white.moveHistory(), history);
  EXPECT_EQ(black.moveHistory(), history);
  EXPECT_EQ(white.fen(), black.fen());
  // Black's last move set White thinking; Black waits for its turn.
  EXPECT_EQ(awaitReply(black, 200), "<nothing>");
  EXPECT_EQ(awaitReply(white, 5000).rfind("move ", 0), 0u);
}

// A soul given as text; an empty clock still yields a move at once (the
// first legal one when the search had no time); a new game resets the board.
TEST_F(EmbeddedEngineTest, SoulTextEmptyClockAndNewGame) {
  clsEmbeddedEngine engine("texted", "Mine=7 20 2 20 4 1 5 2 5 8 1 8 10 10 20 5 1 5 10 5 10", nullptr, 1);
  EXPECT_EQ(engine.soul(), "Mine");
  ASSERT_TRUE(engine.Prepare(0, 0, 0));
  engine.Go();
  const std::string reply = awaitReply(engine, 5000);
  ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
  engine.PlayMove(reply.substr(5), 0);
  EXPECT_NE(engine.fen(), kbuChess::clsBoard::START_FEN);
  ASSERT_TRUE(engine.Prepare(0, 0, 0));  // kept from the last game: a new game only
  EXPECT_EQ(engine.moveHistory(), "");
  kbuChess::clsBoard start;
  start.readFEN(kbuChess::clsBoard::START_FEN);
  EXPECT_EQ(engine.fen(), start.fen());
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

// An embedded soul against the scripted external engine: the game loop
// treats both alike.
TEST_F(EmbeddedEngineTest, SoulAgainstAnExternalEngine) {
  clsEmbeddedEngine soul("soul", "Simple2", nullptr, 1);
  kbuChess::clsExternalEngine fake("fake", FAKE_ENGINE, "uci", clsEngineInterface::PROTOCOL_UCI, nullptr);
  ASSERT_TRUE(soul.Prepare(0, 2000, 0));
  ASSERT_TRUE(fake.Prepare(1, 2000, 0));
  for (int round = 0; round < 200 && !fake.ready(); ++round) {
    fake.ReadReply();  // the answer to "isready"
    kobubase::sleepMs(5);
  }
  EXPECT_TRUE(fake.IsAlive());
  const std::vector<std::string> moves = relay(soul, fake, 4);
  EXPECT_EQ(moves.size(), 4u);
  EXPECT_EQ(soul.fen(), [&] {
    kbuChess::clsBoard board;
    board.readFEN(kbuChess::clsBoard::START_FEN);
    for (const std::string& move : moves) board.readCoordinateMove(move);
    return board.fen();
  }());
}

}  // namespace
