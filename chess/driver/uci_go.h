#pragma once
// The limits of a UCI "go" and the time one search may take from them. The
// budget comes from the same clock arithmetic as the xboard side: the own
// clock shared among the moves left in the period ("movestogo") plus two, or
// among 40 moves; "movetime" is a fixed time. Pure functions, no engine.
#include <cstdint>
#include <string_view>

namespace kbuChess {

struct UciGo {
  std::int64_t clockMs[2] = {0, 0};  // wtime, btime
  // winc, binc: held for the record only. As on the xboard side the budget
  // does not add them: the clock a GUI sends already holds every increment
  // received, and the next one comes only after the move.
  std::int64_t incrementMs[2] = {0, 0};
  bool hasClock = false;
  std::int64_t movesToGo = 0;
  std::int64_t moveTimeMs = -1;  // -1: not given
  int depth = 0;                 // 0: deepen until stopped
  std::int64_t nodes = 0;        // 0: no limit
  bool infinite = false;
  bool ponder = false;
};

// Every number is held within the bounds of the xboard side; unknown words
// ("searchmoves" and its moves) are passed over.
UciGo parseGo(std::string_view args);

// The search's budget in ms for the side to move (0 White, 1 Black).
// Without a clock or a move time the search runs until "stop" or its depth.
std::int64_t goBudgetMs(const UciGo& go, int side);

}  // namespace kbuChess
