#pragma once
// clsTourneyGame plays one game of a tournament on a thread of its own: it
// makes an engine adapter for each player, prepares both, relays the moves
// from one to the other, keeps both clocks, judges every move on its own
// board and ends the game with a result code and a reason. Then it logs both
// players' points and totals (the host keeps the results), ends the
// adapters, writes its PGN and log files and tells its host. The same game
// object plays again in every round; its record is reset at the start of
// each game, keeping the round's tags.
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/thread.h"
#include "chess/board/board.h"
#include "chess/tourney/engine_interface.h"
#include "chess/tourney/game_record.h"
#include "chess/tourney/game_scheduler.h"
#include "chess/tourney/openings.h"
#include "chess/tourney/player.h"
#include "chess/tourney/score_adjudication.h"

namespace kbuChess {

class clsTourneyGame;

// The clock of a game. With movetimeMs set, embedded players think that long
// per move (the \play and learning games); the clocks still run.
struct GameClock {
  std::int32_t gameMs = 60000;
  std::int32_t incrementMs = 0;
  std::int32_t movetimeMs = 0;
  // Plies after which the game is adjudicated a draw; 0: no limit.
  int maxPlies = 0;
  // The pause after every command to an external engine.
  int commandPauseMs = 100;
  AdjudicationRules adjudication;
};

// What a game reports to the run that owns it.
class clsTourneyHost {
 public:
  virtual ~clsTourneyHost() = default;
  // A line from a game's source ("game 3") to the console and the run's log.
  virtual void hostLog(const std::string& source, const std::string& text) = 0;
  // Called on the game's thread when the game has a decided result, before
  // it is written: the totals of White and Black in half-points, this game
  // included. A host that keeps no results answers the game's own points.
  virtual std::pair<int, int> gameScored(clsTourneyGame& game);
  // Called on the game's thread once the game has ended and was written.
  virtual void gameFinished(clsTourneyGame& game) = 0;
};

class clsTourneyGame : public kobubase::clsThread, public clsGameLog, public clsScheduledGame {
 public:
  static constexpr std::size_t MAX_LOG_LINES = 200000;

  clsTourneyGame(clsTourneyHost& host, int number, clsPlayer* white, clsPlayer* black, const GameClock& clock);
  ~clsTourneyGame() override;

  int number() const { return number_; }
  clsPlayer* white() const { return players_[0]; }
  clsPlayer* black() const { return players_[1]; }
  clsGame& record() { return game_; }
  // File name without extension for the PGN and the log; empty: no files.
  void setFileBase(const std::string& base) { fileBase_ = base; }
  // The start position and the moves played before the players take over.
  void setOpening(Opening opening) { opening_ = std::move(opening); }
  // Started in this round and not finished yet.
  bool playing() const { return isRunning() || (started_ && !finished_.load()); }
  bool started() const { return started_; }
  bool finished() const override { return finished_.load(); }
  // Makes the game ready to be played again (next round).
  void rearm();
  // Ends the game at its next pass; its result stays as it is.
  void stopGame() override { cancelled_.store(true); }
  bool wait() override { return kobubase::clsThread::wait(); }
  std::int64_t durationMs() const { return durationMs_; }
  // The game's log lines so far (copy, under the lock).
  std::vector<std::string> logLines();

  bool start() override;
  void logPlayer(int colour, const std::string& text) override;

 protected:
  void run() override;

 private:
  void play();
  bool createAdapters();
  // A player whose program is missing or that never finished its handshake
  // loses at once; false then.
  bool prepareAdapter(int colour);
  std::unique_ptr<clsEngineInterface> makeAdapter(int colour);
  void playOpening();
  void loop();
  // One reply of the side to move; false when the game has ended.
  bool takeReply(const std::string& reply, std::int64_t elapsed);
  const Move* legalMove(const std::string& text);
  bool takeMove(const std::string& reply, std::int64_t elapsed);
  bool playLegal(const Move* legal, std::int64_t elapsed);
  bool judgePosition(int mover);
  void setResult(std::uint32_t code);
  void score();
  void endAdapters();
  void writeFiles();
  void log(const std::string& text);

  clsTourneyHost& host_;
  const int number_;
  clsPlayer* players_[2];
  GameClock clock_;
  std::string fileBase_;
  Opening opening_;
  clsGame game_;
  clsBoard board_;
  std::unique_ptr<clsEngineInterface> adapters_[2];
  clsScoreAdjudicator adjudicator_{clock_.adjudication};
  std::int32_t clocks_[2] = {0, 0};
  int side_ = 0;
  std::int64_t moveStartMs_ = 0;
  std::int64_t durationMs_ = 0;
  std::atomic<std::int64_t> gameStartMs_{0};  // log lines count from here
  bool started_ = false;
  std::atomic<bool> finished_{false};
  std::atomic<bool> cancelled_{false};
  kobubase::clsMutex logLock_;
  std::vector<std::string> log_;
};

}  // namespace kbuChess
