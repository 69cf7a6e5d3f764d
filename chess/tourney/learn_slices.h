#pragma once
// A learning run spread over many machines, one generation at a time:
//
//   talvena -use=learn FILE -breed            makes generation G ready to play
//   talvena -use=learn FILE -generation=G -shard=K/N   on each machine
//   talvena -use=learn FILE -breed            ranks G, makes G+1 ready
//
// The soul file holds the generation to play with its seed and settings, so
// every slice derives the same games. Slice K writes
// FILE-G<G>-K-of-N-results.tsv beside FILE, one line per finished game; run
// again, it keeps the whole pairs already there and plays the rest. The
// breed step reads every slice of the generation, refuses while one is
// missing or incomplete, counts a game found twice once, ranks and breeds as
// "\learn" does, and rewrites FILE atomically. Refusals are "# learn: ..."
// lines, and the file is then left as it was.
#include <atomic>
#include <cstdint>
#include <string>

#include "base/output.h"
#include "chess/tourney/learn_generation.h"

namespace kbuChess {

struct LearnSliceRequest {
  std::string file;
  std::string generation;  // as given
  std::string shard;       // "K/N", empty for the whole generation
  int threads = 1;
};

// "FILE-G3-1-of-4-results.tsv"
std::string sliceResultsPath(const std::string& file, int generation, int index, int count);

// Plays slice K of N of generation G, its openings from `book` when it is
// not empty (every machine needs the same book then), else random moves.
// False when refused, stopped or broken.
bool playLearnSlice(const LearnSliceRequest& request, clsLearningGames& games, const clsBook& book,
                    const std::atomic<bool>& stop, kobubase::clsOutBuffer& out);

// Breeds the generation played in slices, or, when FILE holds none to play,
// makes the next one ready: from the last played generation, the file's
// souls, or the presets when FILE does not exist (then with `play` and `seed`,
// a zero seed taken from the clock). False when refused.
bool breedLearnSlices(const std::string& file, const PlaySettings& play, std::uint64_t seed,
                      kobubase::clsOutBuffer& out);

}  // namespace kbuChess
