#pragma once
// clsTourney runs a tournament read from its XML file: it makes the players,
// pairs them by the event's type (every ordered pair in an all-play-all
// event, only the pairs with the first player in a gauntlet), and plays the
// games round after round, at most `threads` at a time, each on its own
// thread. A game object exists only while its game is played, so memory
// grows with the games running at once, not with the pairings. The two games
// of a pairing in a round are a pair and play the same opening, the line of
// the pair's number over the whole run (openings.h). The run reports
// progress, the pair figures after every finished pair (and the sequential
// test's state when the file asks for one, stopping new pairs once it is
// decided), the standings after every round and at the end, writes one
// results line per finished game as soon as it ends, and winds down cleanly
// on Ctrl-C: running games are stopped, their engines ended, and the
// standings so far are printed.
//
// A resumed run continues the latest run of the event: it keeps the whole
// pairs of its results file, plays the rest with the same openings, and
// appends to the same files.
//
// Files, in the log folder (the working folder when none is set), with RUN
// one more than the highest run of the same event found there:
//   NAME.log                    the run's own log
//   NAME-RUN-GAME.pgn / .log    each game's PGN and its engine dialogue
//   NAME-RUN-results.tsv        one line per finished game
//   NAME-RUN-event.txt          the settings a resumed run must share
// A slice K of N writes NAME-RUN-K-of-N-results.tsv and NAME-RUN-K-of-N-GAME
// files instead, so that slices can share a folder.
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/random.h"
#include "base/thread.h"
#include "chess/book/book.h"
#include "chess/engine/soul.h"
#include "chess/tourney/game_scheduler.h"
#include "chess/tourney/learning.h"
#include "chess/tourney/match_stats.h"
#include "chess/tourney/openings.h"
#include "chess/tourney/player.h"
#include "chess/tourney/results_file.h"
#include "chess/tourney/tourney_config.h"
#include "chess/tourney/tourney_game.h"

namespace kbuChess {

class clsTourney : public clsTourneyHost {
 public:
  // resume: continue the latest run of the event instead of starting one.
  clsTourney(TourneyConfig config, kobubase::clsOutBuffer& out, bool resume = false);
  ~clsTourney() override;

  // False when the run cannot start (no usable opening, nothing to resume,
  // settings that differ from the resumed run's); the reason was printed.
  bool ready() const { return ready_; }
  // Plays every round; false when the run was cancelled.
  bool run();
  const std::vector<std::unique_ptr<clsPlayer>>& players() const { return players_; }
  const std::string& resultsPath() const { return resultsPath_; }
  int runCounter() const { return runCounter_; }

  void hostLog(const std::string& source, const std::string& text) override;
  std::pair<int, int> gameScored(clsTourneyGame& game) override;
  void gameFinished(clsTourneyGame& game) override;

 private:
  std::string runFile(const std::string& tail) const;
  void chooseRun();
  bool freshSlice();
  bool makeOpenings();
  bool resumeRun();
  bool dropReplayedGames();
  void writeSettings();
  void createPairings();
  bool runLearning();
  void drawOpenings(int round);
  bool playRound(int round);
  bool mayStart(int round, std::size_t index) const;
  std::unique_ptr<clsScheduledGame> startGame(int round, std::size_t index);
  void reportPairs();
  void cancelGames();
  void printStandings();
  std::vector<GameResultRow> rows();
  GameResultRow rowOf(clsTourneyGame& game) const;
  void log(const std::string& text) { hostLog("tourney", text); }

  TourneyConfig config_;
  kobubase::clsOutBuffer& out_;
  std::vector<std::unique_ptr<clsPlayer>> players_;
  std::vector<std::pair<int, int>> pairings_;  // (white, black) of game number index + 1
  std::vector<int> pairOfGame_;                // the pair, within a round, of each game
  int pairsPerRound_ = 0;
  std::vector<Opening> roundOpenings_;  // of each pair this round
  std::vector<bool> started_;           // of each game this round
  clsGameScheduler scheduler_;
  std::set<std::pair<int, int>> done_;  // (round, game) of a resumed run's kept games
  std::vector<GameResultRow> rows_;     // every scored or finished game of the run, under logLock_
  std::size_t reportedRows_ = 0;
  bool ready_ = true;
  bool resume_ = false;
  bool decided_ = false;  // the sequential test is decided: no new pair starts
  std::uint64_t seed_ = 0;
  std::string settingsPath_;
  std::string gameFilePrefix_;  // NAME-RUN- (NAME-RUN-K-of-N- in a slice), then the game's number
  int runCounter_ = 1;
  int round_ = 0;
  std::int64_t startMs_ = 0;
  std::string resultsPath_;
  clsBook openingBook_;
  std::unique_ptr<clsOpenings> openings_;
  kobubase::clsMutex logLock_;
  std::FILE* logFile_ = nullptr;
};

// The Soul an embedded player's soul text names; false when it names none.
bool soulOfPlayer(const PlayerConfig& player, Soul& soul);

// The highest RUN of files NAME-RUN-*.pgn in the folder, plus one.
int nextRunCounter(const std::string& folder, const std::string& eventName);

// A slice named by a scheduler's environment: SLURM_ARRAY_TASK_ID with
// SLURM_ARRAY_TASK_COUNT, or JOB_COMPLETION_INDEX with TALVENA_SHARD_COUNT;
// "K/N", or empty when none is set.
std::string shardFromEnvironment();

// "\tourney FILE [resume] [shard=K/N]": reads the file and runs it (or
// continues its latest run), the slice K of N only when one is given. Returns CMD_QUIT when the run
// was interrupted with Ctrl-C (the program then ends), else CMD_PRINTED.
// `refused` (when given) is set when the event could not start.
int commandTourney(const std::string& args, kobubase::clsOutBuffer& out, bool* refused = nullptr);

}  // namespace kbuChess
