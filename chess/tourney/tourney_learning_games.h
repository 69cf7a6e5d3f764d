#pragma once
// Learning games played by the tournament's game loop: each game is a
// clsTourneyGame between two embedded players with the souls to compare, a
// fixed time per move, the opening played first and a cap on its length
// (a capped game is a draw by adjudication). Games may run on several
// threads at once; each has its own players and engines.
#include <atomic>
#include <string>
#include <vector>

#include "chess/tourney/learning.h"
#include "chess/tourney/tourney_game.h"

namespace kbuChess {

// A host that keeps a game's messages to itself: learning prints one line
// per generation, not the moves of every game.
class clsQuietHost : public clsTourneyHost {
 public:
  void hostLog(const std::string&, const std::string&) override {}
  void gameFinished(clsTourneyGame&) override {}
};

class clsTourneyLearningGames : public clsLearningGames {
 public:
  GameOutcome play(const Soul& white, const Soul& black, const std::vector<std::string>& openingMoves, int msPerMove,
                   int maxMoves) override;
  void stop() override { stopped_.store(true); }

 private:
  std::atomic<bool> stopped_{false};
};

// The clock of a game played at a fixed time per move: the clocks are there
// only to catch a player that hangs.
GameClock moveTimeClock(int msPerMove, int maxMoves);

}  // namespace kbuChess
