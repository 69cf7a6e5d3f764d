#pragma once
// A soul of our own engine as a tournament player.
//
// clsEmbeddedEngine owns a complete engine (position, transposition table,
// soul) and plays inside this process; it speaks no protocol, so Send and
// ReadReply do nothing. Its moves reach the game through its own output
// as move records instead:
//   - Go() starts a search on the engine's position with a budget from its
//     own clock (the xboard loop's share of the remaining time, one period);
//   - Service(), which the game loop calls on every pass, polls the search:
//     past the deadline it stops it, and once the search has ended it keeps
//     the move found;
//   - the game takes it with takeMove(), checks it on its own board and
//     hands the legal record back with PlayMove.
// PlayMove plays every move of the game on the engine's board (the game's
// record as it is, else the coordinate text) and, after the opponent's
// move, starts the search. Preparing needs no start pause:
// there is no program to wait for.
#include <optional>
#include <string>
#include <utility>

#include "chess/engine/engine.h"
#include "chess/engine/engine_share.h"
#include "chess/engine/search_control.h"
#include "chess/tourney/engine_interface.h"

namespace kbuChess {

class clsEmbeddedEngine : public clsEngineInterface, private clsEngine {
 public:
  static constexpr int TABLE_MIB = 16;

  // soul: a preset's name or a soul in text form ("name=v1 v2 ...").
  clsEmbeddedEngine(const std::string& name, const std::string& soul, clsGameLog* owner, int tableMiB = TABLE_MIB);
  // Stops the search and releases the engine.
  ~clsEmbeddedEngine() override;

  using clsEngineInterface::name;
  using clsEngineInterface::stopped;
  bool Start() override;
  // Abandons a running search.
  void Stop() override;
  std::string ReadReply() override { return {}; }
  void Send(const std::string&) override {}
  // Always able to play once prepared.
  bool IsAlive() override { return ready_; }
  void Service() override;
  void NewGame() override;
  void Go() override;
  std::optional<Move> takeMove() override { return std::exchange(move_, std::nullopt); }
  void PlayMove(const std::string& move, int side, const std::string& san = {}, const Move* record = nullptr) override;
  void PlayOpeningMove(const std::string& move, const std::string& san = {}) override;
  // A fixed time per move instead of a share of the clock; 0: from the clock.
  void setMoveTime(int ms) { moveTimeMs_ = ms < 0 ? 0 : ms; }

  const std::string& soul() const { return soulName(); }
  // The game's position (the board itself belongs to a running search).
  const std::string& fen() const { return gameFen_; }
  bool thinking() const { return searching(); }

 protected:
  int startPauseMs() const override { return 0; }
  // In the same process: nothing to announce, nothing to wait for.
  bool declaresFeatures() const override { return false; }

 private:
  clsEngineShare table_;
  std::string gameFen_;
  clsSearchControl control_{*this};
  int moveTimeMs_ = 0;
  std::optional<Move> move_;  // found by the last search, not taken yet
};

}  // namespace kbuChess
