#pragma once
// clsSearchControl runs one timed search of an engine on behalf of whoever
// plays with it: the xboard loop, the EPD test, tournament games between
// souls. The caller starts a search with a time budget, polls it (the
// control stops the engine once the deadline has passed; the engine itself
// never reads the clock) and collects the move when the search has ended.
// Collecting always yields a move when the position has one: a search
// stopped before any root move finished falls back to the first legal move,
// so nobody sits silent on their clock.
#include <cstdint>

#include "chess/engine/engine.h"

namespace kbuChess {

enum class SearchPoll {
  IDLE,          // no search started, or its move already collected
  RUNNING,       // thinking, deadline not reached
  TIME_EXPIRED,  // the deadline passed: the engine was stopped in this poll
  ENDED,         // the search has ended and its move waits to be collected
};

class clsSearchControl {
 public:
  explicit clsSearchControl(clsEngine& engine) : engine_(engine) {}
  ~clsSearchControl() { abandon(); }
  clsSearchControl(const clsSearchControl&) = delete;
  clsSearchControl& operator=(const clsSearchControl&) = delete;

  // Starts the engine on its current position. fixedDepth 0 deepens until
  // stopped (never past the engine's own limit); otherwise exactly that many
  // plies, still within the budget.
  bool start(std::int64_t budgetMs, int fixedDepth);
  // Applies the deadline; see SearchPoll.
  SearchPoll poll();
  // Stops the engine now; its move stays to be collected.
  void stop();
  // Stops the engine and forgets its move.
  void abandon();
  // The search's move, or the first legal move; a NOT_A_MOVE record when the
  // position has no legal move. Ends the search's turn (poll answers IDLE).
  Move collect();

  bool awaitingCollect() const { return awaiting_; }
  bool searching() const { return engine_.searching(); }
  std::int64_t startMs() const { return startMs_; }
  std::int64_t deadlineMs() const { return deadlineMs_; }
  // Milliseconds since the start, plus one so that a move is never free.
  std::int64_t elapsedMs() const;

 private:
  clsEngine& engine_;
  std::int64_t startMs_ = 0;
  std::int64_t deadlineMs_ = 0;
  bool awaiting_ = false;
};

}  // namespace kbuChess
