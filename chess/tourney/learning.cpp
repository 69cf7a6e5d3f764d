#include "chess/tourney/learning.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <mutex>
#include <numeric>
#include <thread>

#include "base/text.h"
#include "base/thread.h"
#include "chess/tourney/match_stats.h"

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
  std::uint64_t seed = settings.seed;
  if (seed == 0) seed = static_cast<std::uint64_t>(std::time(nullptr)) ^ static_cast<std::uint64_t>(kobubase::nowMs());
  random_.seed(seed, seed * 0x9E3779B97F4A7C15ull + 1);
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
  int completed = 0;
  for (int g = 0; g < settings_.generations && !stop_.load(); ++g) {
    if (file_.lastNumber() == MAX_GENERATION_NUMBER) {
      out_.print("# soul file " + settings_.file + " holds generation " + std::to_string(MAX_GENERATION_NUMBER) +
                 ", the last number a soul file can hold: learn into a new file");
      return completed;
    }
    const int number = file_.lastNumber() + 1;
    if (population.empty()) population = nextPopulation(number);
    if (population.size() < 2) {
      out_.print("# learning needs at least 2 souls");
      return completed;
    }
    const std::int64_t started = kobubase::nowMs();
    std::vector<int> scores;
    int games = 0;
    if (!playGeneration(population, scores, games)) {
      out_.print("# learning stopped in generation " + std::to_string(number) +
                 (failure_.empty() ? std::string() : ": " + failure_) + "; the soul file keeps generation " +
                 std::to_string(number - 1));
      return completed;
    }
    file_.generations.push_back(rank(population, scores, number, games));
    std::string error;
    if (!writeSoulFile(settings_.file, file_, error)) {
      out_.print(error);
      return completed;
    }
    report(file_.last(), kobubase::nowMs() - started);
    population.clear();
    ++completed;
  }
  if (!file_.empty()) out_.print("# learning done, best soul " + soulLine(file_.last().souls.front()));
  return completed;
}

// The population of generation `number`: the survivors of the last played
// generation, or an unplayed list from the file, or the presets; then breeds
// of those up to the engines count.
std::vector<Soul> clsLearning::nextPopulation(int number) {
  std::size_t count = static_cast<std::size_t>(settings_.enginesCount);
  if (count == 0) {
    count = file_.empty() ? std::size(SOUL_PRESETS)
                          : std::clamp<std::size_t>(file_.last().souls.size(), LearningSettings::MIN_ENGINES,
                                                    LearningSettings::MAX_ENGINES);
  }
  std::vector<Soul> parents;
  if (file_.empty()) {
    for (const char* preset : SOUL_PRESETS) parents.push_back(parseSoul(preset));
  } else {
    parents = file_.last().souls;
    if (file_.last().number > 0) parents.resize(std::min(parents.size(), (count + 1) / 2));
  }
  if (parents.size() > count) parents.resize(count);
  std::vector<Soul> population = parents;
  for (int index = 1; population.size() < count; ++index) {
    population.push_back(breed(parents, population, number, index));
  }
  return population;
}

// A child of two parents drawn from `parents`; drawn again (and at last given a
// fresh value somewhere) when it would copy a soul of the population.
Soul clsLearning::breed(const std::vector<Soul>& parents, const std::vector<Soul>& population, int number, int index) {
  const auto draw = [this](std::size_t size) { return random_.abs32() % static_cast<std::uint32_t>(size); };
  const auto copies = [&population](const Soul& soul) {
    return std::any_of(population.begin(), population.end(),
                       [&soul](const Soul& other) { return other.values == soul.values; });
  };
  Soul child;
  for (int attempt = 0; attempt < 8; ++attempt) {
    const std::size_t a = draw(parents.size());
    std::size_t b = draw(parents.size());
    if (parents.size() > 1 && b == a) b = (a + 1 + draw(parents.size() - 1)) % parents.size();
    child = parents[a];
    breedSoul(child.values, parents[b].values, random_);
    if (!copies(child)) break;
  }
  while (copies(child)) child.values[draw(SOUL_SIZE)] = static_cast<i32>(random_.abs32() % 105);
  child.name = std::string("G").append(std::to_string(number)).append("-").append(std::to_string(index));
  return child;
}

// Every pair twice, colours swapped, from one opening per pair; scores in half-points.
bool clsLearning::playGeneration(const std::vector<Soul>& population, std::vector<int>& scores, int& games) {
  std::vector<Pairing> pairings;
  std::vector<std::vector<std::string>> openings;
  for (int i = 0; i < static_cast<int>(population.size()); ++i) {
    for (int j = i + 1; j < static_cast<int>(population.size()); ++j) {
      openings.push_back(openings_.line(random_).moves);
      pairings.push_back({i, j, openings.size() - 1});
      pairings.push_back({j, i, openings.size() - 1});
    }
  }
  std::vector<GameOutcome> outcomes(pairings.size());
  failure_.clear();
  playGames(population, pairings, openings, outcomes);
  if (stop_.load() || !failure_.empty()) return false;
  // Points as a tournament counts them, over result rows; souls are named by
  // their place, since two souls of a population may share a name.
  std::vector<GameResultRow> rows;
  for (std::size_t k = 0; k < pairings.size(); ++k) {
    if (!outcomes[k].finished) return false;
    rows.push_back({1, static_cast<int>(k) + 1, std::to_string(pairings[k].white), std::to_string(pairings[k].black),
                    resultOfWhiteHalfPoints(outcomes[k].whitePoints), "", 0, 0, ""});
  }
  std::vector<std::string> places;
  for (std::size_t i = 0; i < population.size(); ++i) places.push_back(std::to_string(i));
  scores.clear();
  for (const auto& [place, counts] : countsOfRows(rows, places)) scores.push_back(2 * counts.wins + counts.draws);
  games = static_cast<int>(pairings.size());
  return true;
}

// Runs the games on up to `threads` threads, each taking the next game in
// pairing order; a runner that throws ends the generation.
void clsLearning::playGames(const std::vector<Soul>& population, const std::vector<Pairing>& pairings,
                            const std::vector<std::vector<std::string>>& openings, std::vector<GameOutcome>& outcomes) {
  std::atomic<std::size_t> next{0};
  std::mutex failureLock;
  const auto worker = [&] {
    for (std::size_t k = next++; k < pairings.size() && !stop_.load(); k = next++) {
      const Pairing& p = pairings[k];
      try {
        outcomes[k] =
            games_.play(population[static_cast<std::size_t>(p.white)], population[static_cast<std::size_t>(p.black)],
                        openings[p.opening], settings_.msPerMove, settings_.maxMoves);
      } catch (const std::exception& e) {
        std::lock_guard<std::mutex> guard(failureLock);
        if (failure_.empty()) failure_ = e.what();
        stop_.store(true);
      }
    }
  };
  const std::size_t threads =
      std::clamp<std::size_t>(static_cast<std::size_t>(std::max(settings_.threads, 1)), 1, pairings.size());
  std::vector<std::thread> pool;
  for (std::size_t t = 1; t < threads; ++t) pool.emplace_back(worker);
  worker();
  for (std::thread& thread : pool) thread.join();
  // A runner failure ends this generation, not the caller's ability to start another run.
  if (!failure_.empty()) stop_.store(false);
}

SoulGeneration clsLearning::rank(const std::vector<Soul>& population, const std::vector<int>& scores, int number,
                                 int games) {
  std::vector<std::size_t> order(population.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&scores](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
  SoulGeneration generation;
  generation.number = number;
  generation.games = games;
  for (const std::size_t i : order) {
    generation.souls.push_back(population[i]);
    generation.scores.push_back(scores[i]);
  }
  return generation;
}

namespace {
// Half-points as points: 15 -> "7.5".
std::string points(int halfPoints) {
  return std::to_string(halfPoints / 2) + (halfPoints % 2 != 0 ? ".5" : "");
}
}  // namespace

// "# generation 3: best G2-4 9.5/14, spread 2..9.5, 56 games in 12.345 s"
void clsLearning::report(const SoulGeneration& generation, std::int64_t elapsedMs) {
  const int perSoul = 2 * (static_cast<int>(generation.souls.size()) - 1);
  const std::string seconds =
      std::to_string(elapsedMs / 1000) + "." + std::to_string(1000 + elapsedMs % 1000).substr(1);
  out_.print("# generation " + std::to_string(generation.number) + ": best " + generation.souls.front().name + " " +
             points(generation.scores.front()) + "/" + std::to_string(perSoul) + ", spread " +
             points(generation.scores.back()) + ".." + points(generation.scores.front()) + ", " +
             std::to_string(generation.games) + " games in " + seconds + " s");
}

}  // namespace kbuChess
