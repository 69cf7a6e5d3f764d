#include "chess/tourney/tourney.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <map>
#include <thread>

#include "base/interrupt.h"
#include "base/text.h"
#include "chess/driver/command_result.h"
#include "chess/book/book_file.h"
#include "chess/tourney/pgn_output.h"
#include "chess/tourney/results_file.h"
#include "chess/tourney/standings.h"
#include "chess/tourney/tourney_learning_games.h"
#include "chess/tourney/tourney_text.h"

namespace kbuChess {

namespace {

// How often the scheduler looks at its games; progress is logged once a second.
constexpr int SCHEDULE_STEP_MS = 10;
constexpr int PROGRESS_EVERY_MS = 1000;
// The fixed pauses of a cancelled run: engines get time to read "quit" and leave.
constexpr int CANCEL_FIRST_PAUSE_MS = 3000;
constexpr int CANCEL_SECOND_PAUSE_MS = 4000;

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

clsTourney::clsTourney(TourneyConfig config, kobubase::clsOutBuffer& out) : config_(std::move(config)), out_(out) {
  startMs_ = kobubase::nowMs();
  for (const PlayerConfig& player : config_.players) players_.push_back(std::make_unique<clsPlayer>(player));
  if (!config_.logFolder.empty()) {
    std::error_code error;
    std::filesystem::create_directories(config_.logFolder, error);
  }
  runCounter_ = nextRunCounter(config_.logFolder, config_.name);
  random_.seed(static_cast<std::uint64_t>(kobubase::nowMs()), static_cast<std::uint64_t>(std::time(nullptr)));
  if (!config_.openingBook.empty() && !loadBook(openingBook_, config_.openingBook, 0, out_)) {
    out_.print("# no openings from " + config_.openingBook + ": the games use random lines");
  }
  if (openingBook_.empty()) {
    openings_ = std::make_unique<clsRandomOpenings>(config_.openingPlies);
  } else {
    openings_ = std::make_unique<clsBookOpenings>(openingBook_, config_.openingPlies);
  }
  resultsPath_ = joinPath(config_.logFolder,
                          fileNamePart(config_.name) + "-" + std::to_string(runCounter_) + "-results.tsv");
  if (!config_.logPath.empty()) {
    logFile_ = std::fopen(config_.logPath.c_str(), "ab");
    if (logFile_ == nullptr) out_.print(kobubase::errorLine(errno) + " (" + config_.logPath + ")");
  }
}

clsTourney::~clsTourney() {
  games_.clear();  // joins every game thread before the players go
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

void clsTourney::gameFinished(clsTourneyGame& game) {
  clsGame& record = game.record();
  if (record.undecided()) return;  // cancelled: not a finished game
  GameResultRow row;
  row.round = round_;
  row.game = game.number();
  row.white = game.white()->name();
  row.black = game.black()->name();
  row.result = resultText(record.result());
  row.reason = reasonText(record.result());
  row.plies = record.plies();
  row.ms = game.durationMs();
  kobubase::clsLock lock(logLock_);
  if (!appendResultsLine(resultsPath_, row)) out_.print(kobubase::errorLine(errno) + " (" + resultsPath_ + ")");
}

void clsTourney::createGames() {
  log("creating games");
  GameClock clock;
  clock.gameMs = config_.gameMs;
  clock.incrementMs = config_.incrementMs;
  clock.maxPlies = config_.maxPlies;
  clock.commandPauseMs = config_.commandPauseMs;
  clock.adjudication = config_.adjudication;
  for (const auto& [white, black] : pairings(static_cast<int>(players_.size()), config_.type)) {
    const int number = static_cast<int>(games_.size()) + 1;
    auto game = std::make_unique<clsTourneyGame>(*this, number, players_[white].get(), players_[black].get(), clock);
    game->setFileBase(gameFileBase(config_, runCounter_, number));
    games_.push_back(std::move(game));
  }
  log(gamesCreatedLine(static_cast<int>(games_.size())));
}

bool clsTourney::run() {
  kobubase::clsInterruptGuard interrupts;
  registerResultsFile(resultsPath_);
  createGames();
  for (const std::string& line : bannerLines()) log(line);
  if (config_.type == LEARNING) {
    const bool completed = runLearning();
    log(finishLine(config_.type));
    return completed;
  }
  for (round_ = 1; round_ <= config_.rounds; ++round_) {
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
  settings.msPerMove = config_.incrementMs > 0 ? config_.incrementMs : (config_.gameMs / 40 > 0 ? config_.gameMs / 40 : 1);
  settings.threads = config_.gamesAtOnce();
  clsTourneyLearningGames games;
  clsRandomOpenings openings(settings.openingPlies);
  clsLearning learning(settings, games, openings, out_);
  // Ctrl-C ends the generation being played; the soul file keeps the last one.
  std::atomic<bool> done{false};
  std::thread watcher([&] {
    while (!done.load() && !kobubase::clsInterruptGuard::requested()) kobubase::sleepMs(20);
    if (done.load()) return;
    learning.requestStop();
    games.stop();
  });
  const int completed = learning.run(souls);
  done.store(true);
  watcher.join();
  return completed >= settings.generations;
}

// One opening line per pairing, the same for both colours.
void clsTourney::drawOpenings() {
  if (config_.openingPlies <= 0) return;
  std::map<std::pair<const clsPlayer*, const clsPlayer*>, std::vector<std::string>> lines;
  for (auto& game : games_) {
    const clsPlayer* a = game->white();
    const clsPlayer* b = game->black();
    const auto key = a < b ? std::make_pair(a, b) : std::make_pair(b, a);
    auto found = lines.find(key);
    if (found == lines.end()) found = lines.emplace(key, openings_->line(random_)).first;
    game->setOpening(found->second);
  }
}

bool clsTourney::playRound(int round) {
  const std::time_t now = std::time(nullptr);
  drawOpenings();
  for (auto& game : games_) {
    game->rearm();
    setRoundTags(game->record(), config_, runCounter_, round, game->number(), game->white()->name(),
                 game->black()->name());
    setPlayDate(game->record(), config_, now);
  }
  std::int64_t lastProgress = 0;
  for (;;) {
    if (kobubase::clsInterruptGuard::requested()) {
      cancelGames();
      return false;
    }
    int running = 0;
    startGames(running);
    int unfinished = 0;
    for (const auto& game : games_) unfinished += game->finished() ? 0 : 1;
    if (unfinished == 0) return true;
    if (kobubase::nowMs() - lastProgress >= PROGRESS_EVERY_MS) {
      lastProgress = kobubase::nowMs();
      log(progressLine(round, config_.rounds, running, unfinished));
    }
    kobubase::sleepMs(SCHEDULE_STEP_MS);
  }
}

// Starts games in number order while fewer than `threads` are playing.
void clsTourney::startGames(int& running) {
  running = 0;
  for (const auto& game : games_) running += game->started() && !game->finished() ? 1 : 0;
  for (const auto& game : games_) {
    if (running >= config_.gamesAtOnce()) break;
    if (game->started()) continue;
    game->start();
    ++running;
  }
}

void clsTourney::cancelGames() {
  // A game that has already ended ignores the stop; its record belongs to its
  // own thread until then, so it is not read here.
  for (const auto& game : games_) game->stopGame();
  log("cancel");
  kobubase::sleepMs(CANCEL_FIRST_PAUSE_MS);
  kobubase::sleepMs(CANCEL_SECOND_PAUSE_MS);
  for (const auto& game : games_) game->wait();
}

void clsTourney::printStandings() {
  std::vector<std::pair<std::string, GameCounts>> counts;
  for (const auto& player : players_) counts.emplace_back(player->name(), player->counts());
  for (const std::string& line : standingsTable(standings(counts, config_.type), config_.type)) out_.print(line);
}

int commandTourney(const std::string& args, kobubase::clsOutBuffer& out) {
  const std::string file = args.size() >= 2 && args.front() == '"' && args.back() == '"' ? args.substr(1, args.size() - 2)
                                                                                           : args;
  if (file.empty()) {
    out.print("# talvena -use=tourney -ini=tourney_file.xml");
    return CMD_PRINTED;
  }
  out.print("# starting tourney...");
  out.print("# wait please...");
  std::vector<std::string> messages;
  TourneyConfig config = readTourneyFile(file, messages);
  for (const std::string& message : messages) out.print(message);
  if (!config.loaded) return CMD_PRINTED;
  clsTourney tourney(std::move(config), out);
  return tourney.run() ? CMD_PRINTED : CMD_QUIT;
}

}  // namespace kbuChess
