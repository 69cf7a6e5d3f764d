#include "chess/tourney/tourney_learning_games.h"

#include "chess/tourney/soul_file.h"

namespace kbuChess {

GameClock moveTimeClock(int msPerMove, int maxMoves) {
  GameClock clock;
  clock.gameMs = TourneyConfig::MAX_GAME_MS;
  clock.incrementMs = 0;
  clock.movetimeMs = msPerMove;
  clock.maxPlies = 2 * maxMoves;
  return clock;
}

GameOutcome clsTourneyLearningGames::play(const Soul& white, const Soul& black,
                                          const std::vector<std::string>& openingMoves, int msPerMove, int maxMoves) {
  clsPlayer whitePlayer(PlayerConfig{white.name, "", soulText(white), "embedded"});
  clsPlayer blackPlayer(PlayerConfig{black.name, "", soulText(black), "embedded"});
  clsQuietHost host;
  clsTourneyGame game(host, 1, &whitePlayer, &blackPlayer, moveTimeClock(msPerMove, maxMoves));
  game.setOpening(Opening{{}, openingMoves});
  GameOutcome outcome;
  outcome.finished = false;
  if (stopped_.load() || !game.start()) return outcome;
  while (game.playing()) {
    if (stopped_.load()) game.stopGame();
    kobubase::sleepMs(5);
  }
  game.wait();
  const GamePoints points = gamePoints(game.record().result());
  outcome.whitePoints = points.white;
  outcome.finished = points.decided;
  return outcome;
}

}  // namespace kbuChess
