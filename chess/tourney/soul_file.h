#pragma once
// The soul file: the record of a learning run, plain text, one soul per line
// in the soul text form. Each played generation is a block: a comment line
//   # generation N games G scores S1 S2 ... Sn
// followed by its n souls ranked best first; Si is the score of the i-th soul
// in half-points (2 a win, 1 a draw). Soul lines before any generation line
// are a population that has not played yet (generation 0), so a hand-written
// list of souls is a valid start. A generation made ready for several
// machines to play is a block
//   # generation N to play seed S ms_per_move M max_moves X opening_plies P
// followed by its souls in the order that numbers its games; every machine
// derives the same pairings and openings from it. Other comment lines and blank lines are
// skipped. A file only ever gains generations: what was read (unplayed souls,
// comments, even lines that were refused) is written back as it was, followed
// by the generations played since. The file is rewritten whole after every
// generation through a temporary file in the same folder, synced and renamed,
// so an interrupted run leaves either the old or the new file, never half.
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "chess/engine/soul.h"

namespace kbuChess {

// One generation's souls, ranked when played.
struct SoulGeneration {
  int number = 0;  // 0: a list that has not played (a hand-written start)
  int games = 0;
  std::vector<Soul> souls;
  std::vector<int> scores;  // one per soul when played, empty otherwise
  // A generation to play: its souls in play order, and what fixes its games.
  bool toPlay = false;
  std::uint64_t seed = 0;
  int msPerMove = 0;
  int maxMoves = 0;
  int openingPlies = 0;

  bool played() const { return number > 0 && !toPlay; }
};

// The highest generation number; a file that holds it takes no more.
inline constexpr int MAX_GENERATION_NUMBER = INT_MAX;

struct SoulFile {
  std::vector<SoulGeneration> generations;
  // The text the file held when read, and how many of the generations came from it.
  std::string readText;
  std::size_t readGenerations = 0;
  // "# ..." lines for whatever was refused while reading.
  std::vector<std::string> problems;

  bool empty() const { return generations.empty(); }
  const SoulGeneration& last() const { return generations.back(); }
  // The number of the last played generation, 0 when none was played.
  int lastNumber() const {
    int number = 0;
    for (const SoulGeneration& generation : generations)
      number = generation.played() && generation.number > number ? generation.number : number;
    return number;
  }
  // The generation to play, when the file ends with one.
  const SoulGeneration* toPlay() const { return empty() || !last().toPlay ? nullptr : &last(); }
};

// The whole file as text: the text read, then the generations added since.
std::string soulFileText(const SoulFile& file);
// Parses text; refused lines are reported in file.problems with `source` and
// their line number, and the good souls are kept.
SoulFile parseSoulFile(const std::string& text, const std::string& source);

// Reads the file; false (with a "# error N: ..." problem) when it cannot be read.
bool readSoulFile(const std::string& path, SoulFile& file);
// Writes the file atomically; false with an error line in `error` on failure.
bool writeSoulFile(const std::string& path, const SoulFile& file, std::string& error);

}  // namespace kbuChess
