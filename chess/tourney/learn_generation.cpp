#include "chess/tourney/learn_generation.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <set>
#include <thread>

#include "base/random.h"
#include "base/text.h"
#include "base/thread.h"
#include "chess/tourney/game_scheduler.h"
#include "chess/tourney/match_stats.h"

namespace kbuChess {

std::vector<LearnGame> generationGames(std::size_t souls) {
  std::vector<LearnGame> games;
  std::int64_t pair = 0;
  for (int i = 0; i < static_cast<int>(souls); ++i) {
    for (int j = i + 1; j < static_cast<int>(souls); ++j, ++pair) {
      games.push_back({static_cast<int>(games.size()) + 1, i, j, pair});
      games.push_back({static_cast<int>(games.size()) + 1, j, i, pair});
    }
  }
  return games;
}

namespace {

// A game of the learning runner, whose play() returns when its game has
// ended, run on a thread of its own. It is stopped with the runner as a whole.
class clsRunnerGame : public clsScheduledGame {
 public:
  explicit clsRunnerGame(std::function<void()> play)
      : thread_([this, play = std::move(play)] {
          play();
          done_.store(true);
        }) {}
  ~clsRunnerGame() override { wait(); }
  bool finished() const override { return done_.load(); }
  void stopGame() override {}
  bool wait() override {
    if (!thread_.joinable()) return false;
    thread_.join();
    return true;
  }

 private:
  std::atomic<bool> done_{false};
  std::thread thread_;
};

std::string joined(const std::vector<std::string>& moves) {
  std::string text;
  for (const std::string& move : moves) text += (text.empty() ? "" : " ") + move;
  return text;
}

// The games of the slice without a row, in number order.
std::vector<LearnGame> gamesToPlay(const SoulGeneration& generation, const LearnSlice& slice) {
  std::set<int> done;
  for (const GameResultRow& row : slice.rows) done.insert(row.game);
  std::vector<LearnGame> games;
  for (const LearnGame& game : generationGames(generation.souls.size())) {
    if (game.pair % slice.count == slice.index && done.count(game.number) == 0) games.push_back(game);
  }
  return games;
}

}  // namespace

bool playGenerationSlice(const SoulGeneration& generation, LearnSlice& slice, clsLearningGames& games,
                         clsOpenings& openings, const std::atomic<bool>& stop, std::string& failure) {
  const std::vector<LearnGame> todo = gamesToPlay(generation, slice);
  // Drawn here, before the games start: an opening source is not shared between threads.
  std::map<std::int64_t, std::vector<std::string>> openingOfPair;
  for (const LearnGame& game : todo) {
    if (openingOfPair.count(game.pair) == 0)
      openingOfPair[game.pair] = openings.lineOfPair(generation.seed, game.pair).moves;
  }
  std::atomic<bool> failed{false};
  std::atomic<int> unfinished{0};
  std::mutex lock;
  const auto fail = [&](const std::string& why) {
    std::lock_guard<std::mutex> guard(lock);
    if (!failed.exchange(true)) failure = why;
  };
  const auto play = [&](const LearnGame& game) {
    const Soul& white = generation.souls[static_cast<std::size_t>(game.white)];
    const Soul& black = generation.souls[static_cast<std::size_t>(game.black)];
    const std::vector<std::string>& opening = openingOfPair.at(game.pair);
    const std::int64_t started = kobubase::nowMs();
    GameOutcome outcome;
    try {
      outcome = games.play(white, black, opening, generation.msPerMove, generation.maxMoves);
    } catch (const std::exception& e) {
      fail(e.what());
      return;
    }
    if (!outcome.finished) {
      ++unfinished;
      return;
    }
    const GameResultRow row{generation.number,
                            game.number,
                            white.name,
                            black.name,
                            resultOfWhiteHalfPoints(outcome.whitePoints),
                            "",
                            0,
                            kobubase::nowMs() - started,
                            joined(opening)};
    std::lock_guard<std::mutex> guard(lock);
    if (!slice.resultsPath.empty() && !appendResultsLine(slice.resultsPath, row) && !failed.exchange(true))
      failure = kobubase::errorLine(errno) + " writing " + slice.resultsPath;
    slice.rows.push_back(row);
  };
  clsGameScheduler scheduler(slice.threads);
  std::vector<bool> started(todo.size(), false);
  ScheduleHooks hooks;
  hooks.start = [&](std::size_t i) { return std::make_unique<clsRunnerGame>([&play, &todo, i] { play(todo[i]); }); };
  hooks.stopped = [&] { return stop.load() || failed.load(); };
  const bool played = scheduler.play(started, hooks);
  scheduler.clear();  // a stopped runner ends its games soon; a failed one lets them finish
  return played && !failed.load() && !stop.load() && unfinished.load() == 0;
}

bool rankGeneration(const SoulGeneration& generation, const std::vector<GameResultRow>& rows, SoulGeneration& ranked,
                    std::string& problem) {
  const std::vector<LearnGame> games = generationGames(generation.souls.size());
  // Souls are counted by their place, since two souls of a population may share a name.
  std::vector<GameResultRow> placeRows;
  std::set<int> seen;
  for (const GameResultRow& row : rows) {
    const std::size_t index = static_cast<std::size_t>(row.game) - 1;
    if (row.round != generation.number || row.game < 1 || index >= games.size() ||
        row.white != generation.souls[static_cast<std::size_t>(games[index].white)].name ||
        row.black != generation.souls[static_cast<std::size_t>(games[index].black)].name) {
      problem = "# learn: round " + std::to_string(row.round) + " game " + std::to_string(row.game) + " " + row.white +
                " - " + row.black + " is not a game of generation " + std::to_string(generation.number);
      return false;
    }
    if (!seen.insert(row.game).second) continue;
    placeRows.push_back(row);
    placeRows.back().white = std::to_string(games[index].white);
    placeRows.back().black = std::to_string(games[index].black);
  }
  if (seen.size() != games.size()) {
    problem = "# learn: generation " + std::to_string(generation.number) + " has " + std::to_string(seen.size()) +
              " of its " + std::to_string(games.size()) + " games";
    return false;
  }
  std::vector<std::string> places;
  for (std::size_t i = 0; i < generation.souls.size(); ++i) places.push_back(std::to_string(i));
  std::vector<int> scores;
  for (const auto& [place, counts] : countsOfRows(placeRows, places)) scores.push_back(2 * counts.wins + counts.draws);
  std::vector<std::size_t> order(scores.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&scores](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
  ranked = SoulGeneration{};
  ranked.number = generation.number;
  ranked.games = static_cast<int>(games.size());
  for (const std::size_t i : order) {
    ranked.souls.push_back(generation.souls[i]);
    ranked.scores.push_back(scores[i]);
  }
  return true;
}

namespace {

// A child of two parents drawn from `parents`; drawn again (and at last given a
// fresh value somewhere) when it would copy a soul of the population.
Soul breed(const std::vector<Soul>& parents, const std::vector<Soul>& population, int number, int index,
           kobubase::clsRandom& random) {
  const auto draw = [&random](std::size_t size) { return random.abs32() % static_cast<std::uint32_t>(size); };
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
    breedSoul(child.values, parents[b].values, random);
    if (!copies(child)) break;
  }
  while (copies(child)) child.values[draw(SOUL_SIZE)] = static_cast<i32>(random.abs32() % 105);
  child.name = std::string("G").append(std::to_string(number)).append("-").append(std::to_string(index));
  return child;
}

}  // namespace

SoulGeneration nextGeneration(const SoulFile& file, const PlaySettings& settings, std::uint64_t seed) {
  SoulGeneration next;
  next.number = file.lastNumber() + 1;
  next.toPlay = true;
  next.seed = seed;
  next.msPerMove = settings.msPerMove;
  next.maxMoves = settings.maxMoves;
  next.openingPlies = settings.openingPlies;
  std::size_t count = static_cast<std::size_t>(settings.enginesCount);
  if (count == 0) {
    count = file.empty() ? std::size(SOUL_PRESETS)
                         : std::clamp<std::size_t>(file.last().souls.size(), LearningSettings::MIN_ENGINES,
                                                   LearningSettings::MAX_ENGINES);
  }
  std::vector<Soul> parents;
  if (file.empty()) {
    for (const char* preset : SOUL_PRESETS) parents.push_back(parseSoul(preset));
  } else {
    parents = file.last().souls;
    if (file.last().played()) parents.resize(std::min(parents.size(), (count + 1) / 2));
  }
  if (parents.size() > count) parents.resize(count);
  next.souls = parents;
  kobubase::clsRandom random(seed, seed * 0x9E3779B97F4A7C15ull + 1);
  for (int index = 1; next.souls.size() < count; ++index) {
    next.souls.push_back(breed(parents, next.souls, next.number, index, random));
  }
  return next;
}

std::uint64_t followingSeed(std::uint64_t seed) {
  kobubase::clsRandom random(seed ^ 0xD1B54A32D192ED03ull, seed + 1);
  const std::uint64_t next = random.next64() % 1000000000000000000ull;
  return next == 0 ? 1 : next;
}

namespace {
// Half-points as points: 15 -> "7.5".
std::string points(int halfPoints) {
  return std::to_string(halfPoints / 2) + (halfPoints % 2 != 0 ? ".5" : "");
}
}  // namespace

std::string generationLine(const SoulGeneration& ranked, std::int64_t elapsedMs) {
  const int perSoul = 2 * (static_cast<int>(ranked.souls.size()) - 1);
  const std::string seconds =
      std::to_string(elapsedMs / 1000) + "." + std::to_string(1000 + elapsedMs % 1000).substr(1);
  return "# generation " + std::to_string(ranked.number) + ": best " + ranked.souls.front().name + " " +
         points(ranked.scores.front()) + "/" + std::to_string(perSoul) + ", spread " + points(ranked.scores.back()) +
         ".." + points(ranked.scores.front()) + ", " + std::to_string(ranked.games) + " games in " + seconds + " s";
}

}  // namespace kbuChess
