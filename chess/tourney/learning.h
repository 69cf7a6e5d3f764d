#pragma once
// Soul learning by generations.
//
// A generation: every soul plays every other twice, once with each colour,
// from the same opening line (one line per pair, drawn from the opening
// source), at a fixed time per move, a game that reaches the move cap being
// a draw. Souls are ranked by their score in half-points (stable: ties keep
// the population order, so survivors stay ahead of newcomers); the better half
// survives into the next generation and the rest is replaced by breeds of two
// survivors (crossover and mutation of the breed-soul operator). New souls are
// named "G<generation>-<k>", the k-th newcomer of that generation.
//
// The soul file (soul_file.h) is rewritten after every generation, so a run
// that is interrupted loses at most the generation being played and the next
// run continues after the last one written. A missing file starts from the six
// presets, and from breeds of them when more souls are asked for.
//
// Each generation is played and bred by the steps of learn_generation.h, as
// one slice of one machine. Games are played through clsLearningGames, which
// the caller provides (the tournament's game loop, or an engine-against-engine
// runner); they run on up to `threads` threads. All random draws (openings,
// parents, breeding) come from the generation's seed, which follows from the
// settings' seed, so a run with a fixed seed and a deterministic game runner
// repeats byte for byte.
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/random.h"
#include "chess/engine/soul.h"
#include "chess/tourney/openings.h"
#include "chess/tourney/soul_file.h"

namespace kbuChess {

inline constexpr const char* LEARN_USAGE = "# learn file generations engines_count ms_per_move max_moves";
inline constexpr const char* LEARN_SLICES_USAGE =
    "# talvena -use=learn FILE -generation=G [-shard=K/N] [-threads=T], or -use=learn FILE -breed";
inline constexpr const char* DEFAULT_SOUL_FILE = "talvena.souls";

struct LearningSettings {
  static constexpr int MAX_GENERATIONS = 100000;
  static constexpr int MIN_ENGINES = 2;
  static constexpr int MAX_ENGINES = 64;
  static constexpr int MAX_MS_PER_MOVE = 600000;
  static constexpr int MAX_MOVES = 1000;
  static constexpr int MAX_THREADS = 64;

  std::string file = DEFAULT_SOUL_FILE;
  int generations = 1;
  int enginesCount = 8;  // 0: as many as the file's last generation (2 to 64; the presets for a new file)
  int msPerMove = 100;
  int maxMoves = 100;  // moves of each side, opening included; then the game is a draw
  int threads = 1;
  int openingPlies = 8;
  std::uint64_t seed = 0;  // 0: drawn from the clock
};

// Reads "file generations engines_count ms_per_move max_moves" into settings,
// each number clamped to its range; false (settings untouched) when the file
// is missing or a number is not above 0.
bool readLearnArguments(const std::string& args, LearningSettings& settings);

// What one game gave: White's score in half-points (2 win, 1 draw, 0 loss).
// A game that was stopped before its end is not finished and voids its generation.
struct GameOutcome {
  int whitePoints = 1;
  bool finished = true;
};

// Plays one game between two souls; called from several threads at once.
class clsLearningGames {
 public:
  virtual ~clsLearningGames() = default;
  // openingMoves: coordinate moves from the start position, played before the
  // souls take over. maxMoves: moves of each side, opening included.
  virtual GameOutcome play(const Soul& white, const Soul& black, const std::vector<std::string>& openingMoves,
                           int msPerMove, int maxMoves) = 0;
  // Asks games in progress to end soon (they return unfinished).
  virtual void stop() {}
};

class clsLearning {
 public:
  clsLearning(const LearningSettings& settings, clsLearningGames& games, clsOpenings& openings,
              kobubase::clsOutBuffer& out);

  // Plays the settings' generations, continuing the soul file; returns how many were completed.
  int run();
  // As run(), with these souls as the population of the first generation
  // played (a learning tournament's players); the file's history is kept.
  int run(const std::vector<Soul>& firstGeneration);
  // Ends the run: the generation being played is dropped. Any thread may call it.
  void requestStop();
  // The file as last read or written.
  const SoulFile& soulFile() const { return file_; }

 private:
  bool loadFile();
  int runGenerations(std::vector<Soul> population);

  LearningSettings settings_;
  clsLearningGames& games_;
  clsOpenings& openings_;
  kobubase::clsOutBuffer& out_;
  std::uint64_t seed_ = 0;  // of the next generation
  SoulFile file_;
  std::atomic<bool> stop_{false};
  std::string failure_;
};

}  // namespace kbuChess
