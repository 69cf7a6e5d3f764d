#pragma once
// clsTourney runs a tournament read from its XML file: it makes the players,
// pairs them by the event's type (every ordered pair in an all-play-all
// event, only the pairs with the first player in a gauntlet), and plays the
// games round after round, at most `threads` at a time, each on its own
// thread. It reports progress, the standings after every round and at the
// end, writes one results line per finished game as soon as it ends, and
// winds down cleanly on Ctrl-C: running games are stopped, their engines
// ended, and the standings so far are printed.
//
// Files, in the log folder (the working folder when none is set), with RUN
// one more than the highest run of the same event found there:
//   NAME.log                    the run's own log
//   NAME-RUN-GAME.pgn / .log    each game's PGN and its engine dialogue
//   NAME-RUN-results.tsv        one line per finished game
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/thread.h"
#include "base/random.h"
#include "chess/book/book.h"
#include "chess/engine/soul.h"
#include "chess/tourney/learning.h"
#include "chess/tourney/player.h"
#include "chess/tourney/tourney_config.h"
#include "chess/tourney/tourney_game.h"

namespace kbuChess {

class clsTourney : public clsTourneyHost {
 public:
  clsTourney(TourneyConfig config, kobubase::clsOutBuffer& out);
  ~clsTourney() override;

  // Plays every round; false when the run was cancelled.
  bool run();
  const std::vector<std::unique_ptr<clsPlayer>>& players() const { return players_; }
  const std::string& resultsPath() const { return resultsPath_; }
  int runCounter() const { return runCounter_; }

  void hostLog(const std::string& source, const std::string& text) override;
  void gameFinished(clsTourneyGame& game) override;

 private:
  void createGames();
  bool runLearning();
  void drawOpenings();
  bool playRound(int round);
  void startGames(int& running);
  void cancelGames();
  void printStandings();
  void log(const std::string& text) { hostLog("tourney", text); }

  TourneyConfig config_;
  kobubase::clsOutBuffer& out_;
  std::vector<std::unique_ptr<clsPlayer>> players_;
  std::vector<std::unique_ptr<clsTourneyGame>> games_;
  int runCounter_ = 1;
  int round_ = 0;
  std::int64_t startMs_ = 0;
  std::string resultsPath_;
  clsBook openingBook_;
  std::unique_ptr<clsOpenings> openings_;
  kobubase::clsRandom random_;
  kobubase::clsMutex logLock_;
  std::FILE* logFile_ = nullptr;
};

// The Soul an embedded player's soul text names; false when it names none.
bool soulOfPlayer(const PlayerConfig& player, Soul& soul);

// The highest RUN of files NAME-RUN-*.pgn in the folder, plus one.
int nextRunCounter(const std::string& folder, const std::string& eventName);

// "\tourney FILE": reads the file and runs it. Returns CMD_QUIT when the run
// was interrupted with Ctrl-C (the program then ends), else CMD_PRINTED.
int commandTourney(const std::string& args, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
