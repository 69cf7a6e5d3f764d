#include "chess/tourney/tourney.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <sstream>
#include <thread>

#include "base/command_result.h"
#include "base/file_io.h"
#include "base/interrupt.h"
#include "base/text.h"
#include "chess/book/book_file.h"
#include "chess/tourney/epd_suite.h"
#include "chess/tourney/pgn_output.h"
#include "chess/tourney/results_file.h"
#include "chess/tourney/standings.h"
#include "chess/tourney/tourney_learning_games.h"
#include "chess/tourney/tourney_resume.h"
#include "chess/tourney/tourney_text.h"

namespace kbuChess {

using enum kobubase::CommandResult;

namespace {

// The fixed pauses of a cancelled run: engines get time to read "quit" and leave.
constexpr int CANCEL_FIRST_PAUSE_MS = 3000;
constexpr int CANCEL_SECOND_PAUSE_MS = 4000;
// How long a slice waits for the event file of the latest run: 3 s.
constexpr int EVENT_FILE_WAITS = 150;
constexpr int EVENT_FILE_WAIT_MS = 20;
// A game file of a long run holds that game of every round.
constexpr std::uint64_t MAX_GAME_FILE_BYTES = std::uint64_t{1} << 30;

}  // namespace

bool soulOfPlayer(const PlayerConfig& player, Soul& soul) {
  const std::string& text = player.soulText();
  if (text.find('=') != std::string::npos) {
    soul = parseSoul(text);
    return true;
  }
  for (const char* preset : SOUL_PRESETS) {
    const Soul candidate = parseSoul(preset);
    if (candidate.name != text) continue;
    soul = candidate;
    return true;
  }
  return false;
}

int nextRunCounter(const std::string& folder, const std::string& eventName) {
  const std::string prefix = fileNamePart(eventName) + "-";
  int highest = 0;
  std::error_code error;
  const std::filesystem::path where = folder.empty() ? std::filesystem::path(".") : std::filesystem::path(folder);
  for (const auto& entry : std::filesystem::directory_iterator(where, error)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind(prefix, 0) != 0) continue;
    const std::int64_t run = kobubase::readInteger(std::string_view(name).substr(prefix.size()));
    if (run > highest && run < 1000000) highest = static_cast<int>(run);
  }
  return highest + 1;
}

clsTourney::clsTourney(TourneyConfig config, kobubase::clsOutBuffer& out, bool resume)
    : config_(std::move(config)), out_(out), scheduler_(config_.gamesAtOnce()), resume_(resume) {
  startMs_ = kobubase::nowMs();
  for (const PlayerConfig& player : config_.players) players_.push_back(std::make_unique<clsPlayer>(player));
  if (!config_.logFolder.empty()) {
    std::error_code error;
    std::filesystem::create_directories(config_.logFolder, error);
  }
  seed_ = config_.seed;
  if (!config_.shardProblem.empty()) {
    out_.print("# " + config_.shardProblem + "; the event does not start");
    ready_ = false;
    return;
  }
  chooseRun();
  ready_ = makeOpenings() && (resume_ ? resumeRun() : freshSlice());
  if (!ready_) return;
  if (seed_ == 0) seed_ = kobubase::clockSeed();
  if (!config_.logPath.empty()) {
    std::string error;
    logFile_ = kobubase::openForAppending(config_.logPath, error);
    if (logFile_ == nullptr) out_.print(error + " (" + config_.logPath + ")");
  }
}

std::string clsTourney::runFile(const std::string& tail) const {
  return joinPath(config_.logFolder, fileNamePart(config_.name) + "-" + std::to_string(runCounter_) + "-" + tail);
}

// A whole run starts a new RUN (or continues the latest one). The slices of
// one event join the latest run whose settings are theirs, so that slices
// started one after the other on several machines share one RUN.
void clsTourney::chooseRun() {
  const int latest = nextRunCounter(config_.logFolder, config_.name) - 1;
  runCounter_ = resume_ ? latest : latest + 1;
  if (config_.shardCount > 1 && latest > 0) {
    runCounter_ = latest;
    // A slice started at the same moment may still be writing the run's
    // event file (its temporary copy already names the run): give it time.
    std::vector<std::string> stored;
    bool read = readSettingsFile(runFile("event.txt"), stored);
    for (int wait = 0; !read && wait < EVENT_FILE_WAITS; ++wait) {
      kobubase::sleepMs(EVENT_FILE_WAIT_MS);
      read = readSettingsFile(runFile("event.txt"), stored);
    }
    const bool same = read && settingsDifference(stored, eventSettingsLines(config_, seed_)).empty();
    if (!same && !resume_) runCounter_ = latest + 1;
  }
  const std::string slice = config_.shardCount > 1
                                ? std::to_string(config_.shardIndex) + "-of-" + std::to_string(config_.shardCount) + "-"
                                : std::string();
  resultsPath_ = runFile(slice + "results.tsv");
  settingsPath_ = runFile("event.txt");
  gameFilePrefix_ = fileNamePart(config_.name) + "-" + std::to_string(runCounter_) + "-" + slice;
}

// A slice that has played before is continued with resume only.
bool clsTourney::freshSlice() {
  if (config_.shardCount <= 1 || !std::filesystem::exists(resultsPath_)) return true;
  out_.print("# " + resultsPath_ + " exists: this slice was played before; continue it with -resume");
  return false;
}

// The opening source the file names, told by its extension: ".epd" an EPD
// suite, ".pgn" a PGN suite, any other a book; false when a named file gives
// no opening.
bool clsTourney::makeOpenings() {
  const std::string& file = config_.openingBook;
  const auto endsWith = [&file](const char* tail) {
    const std::string_view t(tail);
    if (file.size() < t.size()) return false;
    for (std::size_t i = 0; i < t.size(); ++i)
      if (std::tolower(static_cast<unsigned char>(file[file.size() - t.size() + i])) != t[i]) return false;
    return true;
  };
  if (file.empty()) {
    openings_ = std::make_unique<clsRandomOpenings>(config_.openingPlies);
    return true;
  }
  const bool epd = endsWith(".epd");
  if (epd || endsWith(".pgn")) {
    std::string text, error;
    if (!kobubase::readWholeFile(file, text, error)) {
      out_.print(error + " (" + file + ")");
      return false;
    }
    const int plies = config_.openingPliesGiven ? config_.openingPlies : TourneyConfig::MAX_SUITE_PLIES;
    auto suite = std::make_unique<clsSuiteOpenings>(
        epd ? readEpdPositions(text, out_) : readPgnLines(text, plies, out_),
        config_.openingOrder == 1 ? OpeningOrder::RANDOM : OpeningOrder::SEQUENTIAL, config_.openingStart);
    if (suite->size() == 0) {
      out_.print("# openings: " + file + " holds no usable opening; the event does not start");
      return false;
    }
    out_.print("# openings: " + std::to_string(suite->size()) + (epd ? " positions from " : " lines from ") + file);
    openings_ = std::move(suite);
    return true;
  }
  if (!loadBook(openingBook_, file, 0, out_) || openingBook_.empty()) {
    out_.print("# openings: " + file + " is not a readable book; the event does not start");
    return false;
  }
  openings_ = std::make_unique<clsBookOpenings>(openingBook_, config_.openingPlies);
  return true;
}

// Takes over the latest run: its settings must match the file's, and every
// whole pair of its results is kept.
bool clsTourney::resumeRun() {
  std::vector<std::string> stored;
  if (runCounter_ < 1 || !readSettingsFile(settingsPath_, stored)) {
    out_.print("# resume: no earlier run of " + fileNamePart(config_.name) + " in " +
               (config_.logFolder.empty() ? std::string(".") : config_.logFolder));
    return false;
  }
  if (seed_ == 0) seed_ = seedOfSettings(stored);
  const std::string difference = settingsDifference(stored, eventSettingsLines(config_, seed_));
  if (!difference.empty()) {
    out_.print("# resume refused: " + difference);
    return false;
  }
  int dropped = 0;
  std::string problem;
  const ContinuedRows continued = continuedRows(resultsPath_, 0, rows_, dropped, problem);
  if (continued != ContinuedRows::KEPT) {
    out_.print(continued == ContinuedRows::REFUSED ? "# resume refused: " + resultsPath_ + " " + problem : problem);
    return false;
  }
  for (const GameResultRow& row : rows_) done_.insert({row.round, row.game});
  if (!dropReplayedGames()) return false;
  reportedRows_ = rows_.size();
  out_.print("# resume: run " + std::to_string(runCounter_) + " keeps " + std::to_string(rows_.size()) +
             " games, plays again " + std::to_string(dropped) + " of a half-finished pair");
  return true;
}

// The game files of the run hold only the kept games: those of a
// half-finished pair (or written just before the run died) are played again
// and would stand twice. Each file is replaced whole, or left as it was.
bool clsTourney::dropReplayedGames() {
  std::error_code error;
  const std::filesystem::path where = config_.logFolder.empty() ? "." : config_.logFolder;
  for (const auto& entry : std::filesystem::directory_iterator(where, error)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind(gameFilePrefix_, 0) != 0 || name.size() <= gameFilePrefix_.size() + 4 ||
        name.substr(name.size() - 4) != ".pgn")
      continue;
    const std::string number = name.substr(gameFilePrefix_.size(), name.size() - gameFilePrefix_.size() - 4);
    if (!kobubase::allDigits(number)) continue;  // another slice's file
    std::string text, problem;
    if (!kobubase::readWholeFile(entry.path().string(), text, problem, MAX_GAME_FILE_BYTES)) {
      out_.print(problem + " (" + entry.path().string() + ")");
      return false;
    }
    int dropped = 0;
    const std::string kept = pgnOfKeptGames(text, done_, dropped);
    if (dropped > 0 && !kobubase::writeFileAtomically(entry.path().string(), kept, problem)) {
      out_.print(problem + " (" + entry.path().string() + ")");
      return false;
    }
  }
  return true;
}

// Written under a temporary name and renamed, so a slice starting at the same
// moment never reads it half written and takes it for another event's.
void clsTourney::writeSettings() {
  if (std::filesystem::exists(settingsPath_)) return;  // another slice of the run wrote it
  std::string text;
  for (const std::string& line : eventSettingsLines(config_, seed_)) text += line + "\n";
  std::string error;
  if (!kobubase::writeFileAtomically(settingsPath_, text, error)) out_.print(error + " (" + settingsPath_ + ")");
}

clsTourney::~clsTourney() {
  scheduler_.clear();  // joins every game thread before the players go
  if (logFile_ != nullptr) std::fclose(logFile_);
}

void clsTourney::hostLog(const std::string& source, const std::string& text) {
  const std::string line = logLine(kobubase::nowMs() - startMs_, source, text);
  kobubase::clsLock lock(logLock_);
  out_.print(line);
  if (logFile_ != nullptr) {
    std::fputs((line + "\r\n").c_str(), logFile_);
    std::fflush(logFile_);
  }
}

// The results row of a game of this round.
GameResultRow clsTourney::rowOf(clsTourneyGame& game) const {
  clsGame& record = game.record();
  GameResultRow row;
  row.round = round_;
  row.game = game.number();
  row.white = game.white()->name();
  row.black = game.black()->name();
  row.result = resultText(record.result());
  row.reason = reasonText(record.result());
  row.plies = record.plies();
  row.ms = game.durationMs();
  row.opening = roundOpenings_[static_cast<std::size_t>(pairOfGame_[row.game - 1])].text();
  return row;
}

// The game's row joins the run's rows at once, so that the players' totals,
// counted over the rows, hold every game scored before it.
std::pair<int, int> clsTourney::gameScored(clsTourneyGame& game) {
  GameResultRow row = rowOf(game);
  kobubase::clsLock lock(logLock_);
  rows_.push_back(row);
  const auto counts = countsOfRows(rows_, {row.white, row.black});
  const auto points = [](const GameCounts& c) { return 2 * c.wins + c.draws; };
  return {points(counts[0].second), points(counts[1].second)};
}

// The results file gets the game's line only now, after its PGN: a run
// that dies between the two plays the game again on resume.
void clsTourney::gameFinished(clsTourneyGame& game) {
  if (game.record().undecided()) return;  // cancelled: not a finished game
  GameResultRow row = rowOf(game);
  kobubase::clsLock lock(logLock_);
  const auto scored = std::find_if(rows_.rbegin(), rows_.rend(), [&row](const GameResultRow& r) {
    return r.round == row.round && r.game == row.game;
  });
  if (scored == rows_.rend()) {
    rows_.push_back(row);  // a game without points (aborted)
  } else {
    row = *scored;
  }
  if (!appendResultsLine(resultsPath_, row)) out_.print(kobubase::errorLine(errno) + " (" + resultsPath_ + ")");
}

std::vector<GameResultRow> clsTourney::rows() {
  kobubase::clsLock lock(logLock_);
  return rows_;
}

// The games of one round, numbered from 1, and the pair each belongs to: the
// pairings of the same two players share a pair, numbered in order of first
// appearance.
void clsTourney::createPairings() {
  log("creating games");
  pairings_ = pairings(static_cast<int>(players_.size()), config_.type);
  std::map<std::pair<int, int>, int> pairOf;
  for (const auto& [white, black] : pairings_) {
    const auto key = std::minmax(white, black);
    const auto found = pairOf.emplace(key, static_cast<int>(pairOf.size())).first;
    pairOfGame_.push_back(found->second);
  }
  pairsPerRound_ = static_cast<int>(pairOf.size());
  log(gamesCreatedLine(static_cast<int>(pairings_.size())));
}

bool clsTourney::run() {
  if (!ready_) return true;
  kobubase::clsInterruptGuard interrupts;
  registerResultsFile(resultsPath_);
  if (!resume_) writeSettings();
  log("seed " + std::to_string(seed_));
  createPairings();
  for (const std::string& line : bannerLines()) log(line);
  if (config_.type == LEARNING) {
    const bool completed = runLearning();
    log(finishLine(config_.type));
    return completed;
  }
  for (round_ = 1; round_ <= config_.rounds && !decided_; ++round_) {
    if (!playRound(round_)) {
      printStandings();
      return false;
    }
    printStandings();
  }
  log(finishLine(config_.type));
  round_ = config_.rounds;
  return true;
}

// A learning event breeds the file's embedded players by generations, one
// generation per round, in NAME.souls of the log folder (continued when it
// exists), at the increment (or a fortieth of the game time) per move.
bool clsTourney::runLearning() {
  std::vector<Soul> souls;
  for (const auto& player : players_) {
    Soul soul;
    if (!player->config().embedded() || !soulOfPlayer(player->config(), soul)) {
      log("# learning takes embedded players with a known soul; skipped " + player->name());
      continue;
    }
    souls.push_back(soul);
  }
  LearningSettings settings;
  settings.file = joinPath(config_.logFolder, fileNamePart(config_.name) + ".souls");
  settings.generations = config_.rounds < 1 ? 1 : config_.rounds;
  settings.enginesCount = static_cast<int>(souls.size());
  settings.msPerMove =
      config_.incrementMs > 0 ? config_.incrementMs : (config_.gameMs / 40 > 0 ? config_.gameMs / 40 : 1);
  settings.threads = config_.gamesAtOnce();
  clsTourneyLearningGames games;
  clsRandomOpenings openings(settings.openingPlies);
  clsLearning learning(settings, games, openings, out_);
  // Ctrl-C ends the generation being played; the soul file keeps the last one.
  int completed = 0;
  kobubase::runStoppable([&] { completed = learning.run(souls); },
                         [] { return kobubase::clsInterruptGuard::requested(); }, [&] { learning.requestStop(); });
  return completed >= settings.generations;
}

// The line of every pair of the round: pair numbers count over the whole run.
void clsTourney::drawOpenings(int round) {
  roundOpenings_.assign(static_cast<std::size_t>(pairsPerRound_), {});
  if (config_.openingPlies <= 0 && config_.openingBook.empty()) return;
  for (int pair = 0; pair < pairsPerRound_; ++pair) {
    const std::int64_t number = static_cast<std::int64_t>(round - 1) * pairsPerRound_ + pair;
    roundOpenings_[static_cast<std::size_t>(pair)] = openings_->lineOfPair(seed_, number);
  }
}

bool clsTourney::playRound(int round) {
  drawOpenings(round);
  started_.assign(pairings_.size(), false);
  // Games already played, and in a slice the pairs of other slices, are not started.
  for (std::size_t i = 0; i < pairings_.size(); ++i) {
    const std::int64_t pair = static_cast<std::int64_t>(round - 1) * pairsPerRound_ + pairOfGame_[i];
    started_[i] = done_.count({round, static_cast<int>(i) + 1}) > 0 || pair % config_.shardCount != config_.shardIndex;
  }
  ScheduleHooks hooks;
  hooks.start = [this, round](std::size_t i) { return startGame(round, i); };
  hooks.mayStart = [this, round](std::size_t i) { return mayStart(round, i); };
  hooks.stopped = [] { return kobubase::clsInterruptGuard::requested(); };
  hooks.gamesEnded = [this] { reportPairs(); };
  hooks.progress = [this, round](int running, int unfinished) {
    log(progressLine(round, config_.rounds, running, unfinished));
  };
  if (scheduler_.play(started_, hooks)) return true;
  cancelGames();
  return false;
}

// Once the sequential test is decided only the partners of started games start.
bool clsTourney::mayStart(int round, std::size_t index) const {
  if (!decided_) return true;
  for (std::size_t i = 0; i < pairings_.size(); ++i) {
    if (i != index && pairOfGame_[i] == pairOfGame_[index] && started_[i] && !done_.count({round, int(i) + 1}))
      return true;
  }
  return false;
}

// The game object lives until its game has ended.
std::unique_ptr<clsScheduledGame> clsTourney::startGame(int round, std::size_t i) {
  GameClock clock;
  clock.gameMs = config_.gameMs;
  clock.incrementMs = config_.incrementMs;
  clock.maxPlies = config_.maxPlies;
  clock.commandPauseMs = config_.commandPauseMs;
  clock.adjudication = config_.adjudication;
  const int number = static_cast<int>(i) + 1;
  clsPlayer* white = players_[static_cast<std::size_t>(pairings_[i].first)].get();
  clsPlayer* black = players_[static_cast<std::size_t>(pairings_[i].second)].get();
  auto game = std::make_unique<clsTourneyGame>(*this, number, white, black, clock);
  game->setFileBase(joinPath(config_.logFolder, gameFilePrefix_ + std::to_string(number)));
  game->setOpening(roundOpenings_[static_cast<std::size_t>(pairOfGame_[i])]);
  setRoundTags(game->record(), config_, runCounter_, round, number, white->name(), black->name());
  setPlayDate(game->record(), config_, std::time(nullptr));
  game->start();
  return game;
}

// After every finished pair: its figures, and the sequential test's state.
void clsTourney::reportPairs() {
  const std::vector<GameResultRow> all = rows();
  for (std::size_t i = reportedRows_; i < all.size(); ++i) {
    const GameResultRow& row = all[i];
    int partners = 0;  // the pair is finished by the later of its two games
    for (std::size_t j = 0; j < i; ++j)
      partners += all[j].round == row.round && all[j].white == row.black && all[j].black == row.white ? 1 : 0;
    if (partners == 0 || players_.size() < 2) continue;
    const std::string& first = players_[0]->name();
    if (config_.type == ALL_PLAY_ALL && players_.size() > 2) continue;
    const std::string& opponent = row.white == first ? row.black : row.white;
    out_.print(matchFiguresLine(first, opponent, matchFigures(all, first, opponent)));
    if (config_.sprt.enabled && !decided_ && opponent == players_[1]->name()) {
      const SprtSettings sprt{config_.sprt.elo0, config_.sprt.elo1, config_.sprt.alpha, config_.sprt.beta};
      const double llr = sprtLlr(matchFigures(all, first, opponent).pairs, sprt.elo0, sprt.elo1);
      out_.print(sprtLine(first, opponent, sprt, llr));
      const int decision = sprtDecision(llr, sprt);
      // A slice sees part of the games: it reports the test and leaves the decision to the merge.
      if (decision != 0 && config_.shardCount == 1) {
        decided_ = true;
        log(std::string("sprt: ") + (decision > 0 ? "H1" : "H0") + " accepted, no new pair starts");
      }
    }
  }
  reportedRows_ = all.size();
}

void clsTourney::cancelGames() {
  log("cancel");
  scheduler_.cancel([] {
    kobubase::sleepMs(CANCEL_FIRST_PAUSE_MS);
    kobubase::sleepMs(CANCEL_SECOND_PAUSE_MS);
  });
}

// Standings and the pair figures over every result row of the run.
void clsTourney::printStandings() {
  std::vector<std::string> names;
  for (const auto& player : players_) names.push_back(player->name());
  const std::vector<GameResultRow> all = rows();
  for (const std::string& line : standingsTable(standings(countsOfRows(all, names), config_.type), config_.type))
    out_.print(line);
  if (names.size() < 2 || (config_.type == ALL_PLAY_ALL && names.size() > 2)) return;
  for (std::size_t i = 1; i < names.size(); ++i)
    out_.print(matchFiguresLine(names[0], names[i], matchFigures(all, names[0], names[i])));
  if (!config_.sprt.enabled) return;
  const SprtSettings sprt{config_.sprt.elo0, config_.sprt.elo1, config_.sprt.alpha, config_.sprt.beta};
  const double llr = sprtLlr(matchFigures(all, names[0], names[1]).pairs, sprt.elo0, sprt.elo1);
  const int decision = sprtDecision(llr, sprt);
  out_.print(sprtLine(names[0], names[1], sprt, llr) + (decision == 0  ? ": undecided"
                                                        : decision > 0 ? ": H1 accepted"
                                                                       : ": H0 accepted"));
}

std::string shardFromEnvironment() {
  const auto variable = [](const char* name) {
    const char* value = std::getenv(name);
    return std::string(value == nullptr ? "" : value);
  };
  if (!variable("SLURM_ARRAY_TASK_ID").empty())
    return variable("SLURM_ARRAY_TASK_ID") + "/" + variable("SLURM_ARRAY_TASK_COUNT");
  if (!variable("JOB_COMPLETION_INDEX").empty())
    return variable("JOB_COMPLETION_INDEX") + "/" + variable("TALVENA_SHARD_COUNT");
  return std::string();
}

int commandTourney(const std::string& words, kobubase::clsOutBuffer& out, bool* refused) {
  // Trailing words "resume" and "shard=K/N" follow the file's name. The name
  // may be quoted; unquoted, its words are taken together as they were before
  // quoting was known, so "\tourney my events/a.xml" still finds its file.
  std::vector<std::string> args = kobubase::splitArguments(words);
  std::string shard;
  bool resume = false;
  for (; args.size() > 1; args.pop_back()) {
    if (args.back() == "resume") {
      resume = true;
    } else if (args.back().rfind("shard=", 0) == 0) {
      shard = args.back().substr(6);
    } else {
      break;
    }
  }
  std::string file;
  for (const std::string& word : args) file += (file.empty() ? "" : " ") + word;
  if (file.empty()) {
    out.print("# talvena -use=tourney -ini=tourney_file.xml");
    return CMD_PRINTED;
  }
  out.print("# starting tourney...");
  out.print("# wait please...");
  std::vector<std::string> messages;
  TourneyConfig config = readTourneyFile(file, messages);
  for (const std::string& message : messages) out.print(message);
  if (refused != nullptr) *refused = !config.loaded;
  if (!config.loaded) return CMD_PRINTED;
  if (!shard.empty()) {
    const std::size_t slash = shard.find('/');
    config.shardProblem.clear();
    readShard(shard.substr(0, slash), slash == std::string::npos ? "" : shard.substr(slash + 1), config.shardIndex,
              config.shardCount, config.shardProblem);
  }
  clsTourney tourney(std::move(config), out, resume);
  if (refused != nullptr) *refused = !tourney.ready();
  return tourney.run() ? CMD_PRINTED : CMD_QUIT;
}

}  // namespace kbuChess
