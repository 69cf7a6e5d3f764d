#pragma once
// One interface for both players of a tournament game.
//
// clsEngineInterface is what a game talks to, whatever the player is: an
// external program in xboard or UCI (clsExternalEngine) or a soul of our own
// engine (clsEmbeddedEngine). The game calls the protocol operations (Init,
// Sync, NewGame, Go, PlayMove, Quit) and reads normalised replies: "move X"
// when the player has moved, "result R" when it claims a result; every other
// line is only logged.
//
// The game loop, each pass: Service(), then takeMove() (a move made in this
// process, as a record: how the embedded engine answers), then nextReply();
// an empty reply and HasEnded() means the player is gone. nextReply() is
// ReadReply() (the translated line of an external engine) or else the next
// line the adapter printed into its own output buffer.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/output.h"
#include "chess/board/types.h"

namespace kbuChess {

// Where a game wants its players' dialogue: the game implements it.
class clsGameLog {
 public:
  virtual ~clsGameLog() = default;
  // colour: 0 White, 1 Black.
  virtual void logPlayer(int colour, const std::string& text) = 0;
};

class clsEngineInterface : public kobubase::clsOutBuffer {
 public:
  static constexpr int PROTOCOL_XBOARD = 0;
  static constexpr int PROTOCOL_UCI = 1;
  // Pause after starting the program before the first command.
  static constexpr int START_PAUSE_MS = 1500;
  // Passes of about a millisecond spent waiting for the handshake.
  static constexpr int READY_ROUNDS = 20000;
  // xboard: how long after "protover 2" (or after the engine's first line,
  // when that comes later) an engine may take to say "feature done=1"...
  static constexpr int FEATURES_MS = 2000;
  // ... and how long after "feature done=0" it may take.
  static constexpr int FEATURES_DELAYED_MS = 60000;

  clsEngineInterface(std::string name, int protocol, clsGameLog* owner);
  ~clsEngineInterface() override = default;

  virtual bool Start() = 0;
  virtual void Stop() = 0;
  // The next translated reply, or "" when there is none yet.
  virtual std::string ReadReply() = 0;
  virtual void Send(const std::string& text) = 0;
  // To the owner's log, or "# =====>\t" name ":\t" text on the console.
  virtual void Log(const std::string& text);
  virtual bool IsAlive() = 0;
  // Called by the game loop on every pass; lets an adapter without a pipe
  // (the embedded engine) produce its replies.
  virtual void Service() {}
  // Whether the player has gone (its process ended) since Start.
  virtual bool HasEnded() { return false; }
  // Whether more output waits to be read right now.
  virtual bool HasPendingOutput() { return false; }
  // Why the player's program could not be started ("" when it could).
  virtual std::string StartProblem() { return {}; }

  // ReadReply(), else the oldest line kept in this adapter's output buffer.
  std::string nextReply();
  // The move the player made in this process since the last call, if any.
  virtual std::optional<Move> takeMove() { return std::nullopt; }

  void Init();
  void Sync();
  // The position the next game starts from, in FEN with both move clocks;
  // empty: the standard start position.
  void setStartPosition(std::string fen) { startFen_ = std::move(fen); }
  // xboard: "new", then for a game set up from a position "force" and the
  // position ("setboard" when the engine announced setboard=1, else edit
  // mode), then "post" and "level"; UCI: "ucinewgame", the position, "isready".
  virtual void NewGame();
  virtual void Go();
  // A move of the game in coordinate notation (a promotion as e7e8q or
  // e7e8=q; engines are sent e7e8q); side 0 White, 1 Black.
  // san: the same move in SAN, for engines that asked for it; record: the
  // legal move as the game's board made it, for players in this process.
  virtual void PlayMove(const std::string& move, int side, const std::string& san = {}, const Move* record = nullptr);
  // A move of the game's opening, played before the players take over; the
  // side to move then gets Go() (xboard engines are kept in force mode
  // meanwhile and told "go" with their first move).
  virtual void PlayOpeningMove(const std::string& move, const std::string& san = {});
  void Quit();

  // Readies the player for a game as colour with both clocks at gameMs and
  // both increments at incrementMs; false when the engine never got ready
  // (after READY_ROUNDS passes, or at once when its program has ended).
  // An xboard engine is first given the time its features ask for.
  bool Prepare(int colour, std::int32_t gameMs, std::int32_t incrementMs);
  // The engine said "feature done=0" and not "done=1" within FEATURES_DELAYED_MS.
  bool notReady() const { return notReady_; }
  // The score of the engine's last thinking line in centipawns from its own
  // side (xboard post output, UCI "info score"), if it printed one since
  // the last call.
  std::optional<int> takeScore() { return std::exchange(score_, std::nullopt); }
  // The game's view of the clocks, refreshed after every move.
  void setClocks(std::int32_t ownMs, std::int32_t opponentMs) {
    ownClock_ = ownMs;
    opponentClock_ = opponentMs;
  }

  const std::string& name() const { return name_; }
  int protocol() const { return protocol_; }
  int colour() const { return colour_; }
  bool ready() const { return ready_; }
  bool stopped() const { return stopped_; }
  bool pingSupported() const { return pingSupported_; }
  int pingCounter() const { return pingCounter_; }
  const std::string& moveHistory() const { return moveHistory_; }
  std::int32_t ownClock() const { return ownClock_; }
  std::int32_t opponentClock() const { return opponentClock_; }
  // The value the engine declared for a feature, "" when it did not.
  std::string feature(const std::string& key) const;

 protected:
  // The pause between starting the program and the first command.
  virtual int startPauseMs() const { return START_PAUSE_MS; }
  // Whether the engine declares xboard features that are to be waited for.
  virtual bool declaresFeatures() const { return protocol_ == PROTOCOL_XBOARD; }
  // The reply a line from the engine stands for ("" for none).
  std::string translate(const std::string& line);
  // A move as this engine wants it: SAN when it asked for it, after
  // "usermove " when it asked for that.
  std::string moveCommand(const std::string& move, const std::string& san) const;
  std::string levelCommand() const;
  // Appends a move of the game to the history; the move as engines read it.
  std::string addToHistory(std::string move);
  // UCI: "position startpos" or "position fen FEN", then " moves " and the history when it is not empty.
  std::string positionCommand() const;
  // xboard: the start position through "setboard", or through edit mode.
  void sendStartPosition();

  clsGameLog* owner_;
  std::string moveHistory_;
  std::string startFen_;  // empty: the standard start position
  std::string name_;
  std::int32_t pingCounter_ = 0;
  bool pingSupported_ = false;
  bool ready_ = false;
  bool stopped_ = true;
  int colour_ = 0;
  std::vector<std::pair<std::string, std::string>> features_;
  std::int32_t ownClock_ = 0;
  std::int32_t ownIncrement_ = 0;
  std::int32_t opponentClock_ = 0;
  std::int32_t opponentIncrement_ = 0;
  int protocol_;
  bool forced_ = false;           // xboard in force mode (an opening), UCI without its position
  bool featuresDone_ = false;     // xboard "feature done=1" came
  bool featuresDelayed_ = false;  // xboard "feature done=0" came, "done=1" not yet
  bool notReady_ = false;
  bool awaitingPong_ = false;  // a ping went out, its pong has not come
  std::optional<int> score_;

 private:
  std::string translateXboard(const std::string& word, const std::string& rest);
  std::string translateUci(const std::string& word, const std::string& rest);
  void readFeatures(const std::string& rest);
  // Reads replies until the engine's features are done; false when it took too long.
  bool awaitFeatures();
  bool awaitReady();
  void readScore(const std::string& word, const std::string& rest);
};

}  // namespace kbuChess
