#include "chess/tourney/learning.h"

#include <sys/stat.h>

#include <cerrno>

#include "base/text.h"
#include "base/thread.h"
#include "chess/tourney/learn_generation.h"

namespace kbuChess {

using kobubase::readClamped;
using kobubase::readInteger;
using kobubase::wordAt;

bool readLearnArguments(const std::string& args, LearningSettings& settings) {
  const std::string file(wordAt(args, 0));
  if (file.empty()) return false;
  for (int i = 1; i <= 4; ++i) {
    if (readInteger(wordAt(args, i)) <= 0) return false;
  }
  settings.file = file;
  settings.generations = static_cast<int>(readClamped(wordAt(args, 1), 1, LearningSettings::MAX_GENERATIONS));
  settings.enginesCount =
      static_cast<int>(readClamped(wordAt(args, 2), LearningSettings::MIN_ENGINES, LearningSettings::MAX_ENGINES));
  settings.msPerMove = static_cast<int>(readClamped(wordAt(args, 3), 1, LearningSettings::MAX_MS_PER_MOVE));
  settings.maxMoves = static_cast<int>(readClamped(wordAt(args, 4), 1, LearningSettings::MAX_MOVES));
  return true;
}

// --- the run

clsLearning::clsLearning(const LearningSettings& settings, clsLearningGames& games, clsOpenings& openings,
                         kobubase::clsOutBuffer& out)
    : settings_(settings), games_(games), openings_(openings), out_(out) {
  seed_ = settings.seed == 0 ? kobubase::clockSeed() : settings.seed;
}

void clsLearning::requestStop() {
  stop_.store(true);
  games_.stop();
}

int clsLearning::run() {
  if (!loadFile()) return 0;
  return runGenerations({});
}

int clsLearning::run(const std::vector<Soul>& firstGeneration) {
  if (!loadFile()) return 0;
  return runGenerations(firstGeneration);
}

// Reads the soul file; a missing one is an empty start, an unreadable one ends the run.
bool clsLearning::loadFile() {
  struct stat status {};
  if (::stat(settings_.file.c_str(), &status) != 0 && errno == ENOENT) {
    file_ = SoulFile{};
    out_.print("# soul file " + settings_.file + " not found, starting from the presets");
    return true;
  }
  const bool read = readSoulFile(settings_.file, file_);
  for (const std::string& problem : file_.problems) out_.print(problem);
  if (!read) return false;
  if (file_.lastNumber() > 0) {
    out_.print("# soul file " + settings_.file + " holds generation " + std::to_string(file_.lastNumber()) +
               ", continuing");
  }
  return true;
}

int clsLearning::runGenerations(std::vector<Soul> population) {
  const PlaySettings play{settings_.enginesCount, settings_.msPerMove, settings_.maxMoves, settings_.openingPlies};
  int completed = 0;
  for (int g = 0; g < settings_.generations && !stop_.load(); ++g) {
    if (file_.lastNumber() == MAX_GENERATION_NUMBER) {
      out_.print("# soul file " + settings_.file + " holds generation " + std::to_string(MAX_GENERATION_NUMBER) +
                 ", the last number a soul file can hold: learn into a new file");
      return completed;
    }
    SoulGeneration generation = nextGeneration(file_, play, seed_);
    if (!population.empty()) generation.souls = std::move(population);
    population.clear();
    if (generation.souls.size() < 2) {
      out_.print("# learning needs at least 2 souls");
      return completed;
    }
    const std::int64_t started = kobubase::nowMs();
    LearnSlice slice;
    slice.threads = settings_.threads;
    failure_.clear();
    SoulGeneration ranked;
    std::string problem;
    if (!playGenerationSlice(generation, slice, games_, openings_, stop_, failure_) ||
        !rankGeneration(generation, slice.rows, ranked, problem)) {
      out_.print("# learning stopped in generation " + std::to_string(generation.number) +
                 (failure_.empty() ? std::string() : ": " + failure_) + "; the soul file keeps generation " +
                 std::to_string(generation.number - 1));
      return completed;
    }
    file_.generations.push_back(ranked);
    std::string error;
    if (!writeSoulFile(settings_.file, file_, error)) {
      out_.print(error);
      return completed;
    }
    out_.print(generationLine(ranked, kobubase::nowMs() - started));
    seed_ = followingSeed(seed_);
    ++completed;
  }
  if (!file_.empty()) out_.print("# learning done, best soul " + soulText(file_.last().souls.front()));
  return completed;
}

}  // namespace kbuChess
