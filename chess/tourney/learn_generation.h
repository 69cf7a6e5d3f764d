#pragma once
// The two steps of a learning generation, shared by "\learn" on one machine
// and by the slices of a generation played on many:
//
// play: a generation to play (a soul file block, soul_file.h) fixes its games.
// Every soul meets every other twice, colours swapped: souls i < j in play
// order are pair p (counted i-major), games 2p+1 (i White) and 2p+2, both
// from the line of pair p drawn with the generation's seed. Slice K of N
// plays the pairs whose number is K modulo N, so a pair is never split; each
// finished game becomes a results row (results_file.h) with the generation
// as its round, appended to the slice's file as soon as it ends.
//
// breed: the rows of every game rank the souls by their half-points (one
// standings computation, match_stats.h; ties keep play order, so survivors
// stay ahead of newcomers), and the next generation to play takes the better
// half and fills the rest with breeds of two survivors, named
// "G<generation>-<k>". Its seed follows from the played one, so breeding
// repeats exactly wherever it runs.
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "chess/tourney/learning.h"
#include "chess/tourney/results_file.h"
#include "chess/tourney/soul_file.h"

namespace kbuChess {

struct LearnGame {
  int number;  // from 1, in pair order
  int white;   // places in the population
  int black;
  std::int64_t pair;
};

// The games of a generation of `souls` souls.
std::vector<LearnGame> generationGames(std::size_t souls);

// The rows of one slice of a generation: kept from an earlier attempt, then
// added game by game. resultsPath, when not empty, gets every new row too.
struct LearnSlice {
  int index = 0;
  int count = 1;
  int threads = 1;
  std::string resultsPath;
  std::vector<GameResultRow> rows;
};

// Plays the games of the slice that have no row yet on up to `threads`
// threads, until done or `stop` is raised. False when a game was left
// unplayed: stopped, or the runner failed (`failure` says how).
bool playGenerationSlice(const SoulGeneration& generation, LearnSlice& slice, clsLearningGames& games,
                         clsOpenings& openings, const std::atomic<bool>& stop, std::string& failure);

// The played generation ranked from the rows of all its games; false with a
// "# ..." line in `problem` when a game is missing or a row is not one of its games.
bool rankGeneration(const SoulGeneration& generation, const std::vector<GameResultRow>& rows, SoulGeneration& ranked,
                    std::string& problem);

// How a generation is played; enginesCount 0 keeps the size of the file's last generation.
struct PlaySettings {
  int enginesCount = 8;
  int msPerMove = 100;
  int maxMoves = 100;
  int openingPlies = 8;
};

// The generation to play after the file's last one, its breeds drawn with
// `seed`: from the survivors of the last played generation, or the souls of
// an unplayed list or generation to play, or the presets.
SoulGeneration nextGeneration(const SoulFile& file, const PlaySettings& settings, std::uint64_t seed);

// The seed of the generation after one played with `seed`; never 0.
std::uint64_t followingSeed(std::uint64_t seed);

// "# generation 3: best G2-4 9.5/14, spread 2..9.5, 56 games in 12.345 s"
std::string generationLine(const SoulGeneration& ranked, std::int64_t elapsedMs);

}  // namespace kbuChess
