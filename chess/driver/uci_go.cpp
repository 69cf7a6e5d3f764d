#include "chess/driver/uci_go.h"

#include "base/text.h"
#include "chess/engine/engine.h"
#include "chess/engine/time_control.h"

namespace kbuChess {

using kobubase::readClamped;
using kobubase::wordAt;

namespace {
// More nodes than a search reaches in a year.
constexpr std::int64_t MAX_NODES = 1000000000000000LL;

std::int64_t clockFigure(std::string_view word) {
  return readClamped(word, 0, MAX_CLOCK_MS);
}
}  // namespace

UciGo parseGo(std::string_view args) {
  UciGo go;
  for (int i = 0; !wordAt(args, i).empty(); ++i) {
    const std::string_view word = wordAt(args, i), value = wordAt(args, i + 1);
    if (word == "infinite") {
      go.infinite = true;
    } else if (word == "ponder") {
      go.ponder = true;
    } else if (word == "wtime" || word == "btime") {
      go.clockMs[word[0] == 'b'] = clockFigure(value);
      go.hasClock = true;
    } else if (word == "winc" || word == "binc") {
      go.incrementMs[word[0] == 'b'] = clockFigure(value);
    } else if (word == "movestogo") {
      go.movesToGo = readClamped(value, 0, MAX_MOVES_PER_PERIOD);
    } else if (word == "movetime") {
      go.moveTimeMs = clockFigure(value);
    } else if (word == "depth") {
      go.depth = static_cast<int>(readClamped(value, 1, clsEngine::MAX_DEPTH));
    } else if (word == "nodes") {
      go.nodes = readClamped(value, 1, MAX_NODES);
    }
  }
  return go;
}

std::int64_t goBudgetMs(const UciGo& go, int side) {
  if (go.moveTimeMs >= 0) return go.moveTimeMs;
  if (go.infinite || go.ponder || !go.hasClock) return MAX_CLOCK_MS;
  return thinkBudget(go.clockMs[side != 0], go.movesToGo, 0);
}

}  // namespace kbuChess
