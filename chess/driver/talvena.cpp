#include "chess/driver/talvena.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/file_io.h"
#include "chess/board/tables.h"
#include "chess/book/book_commands.h"
#include "chess/driver/console.h"
#include "chess/driver/uci.h"
#include "chess/tourney/merge.h"
#include "chess/tourney/tourney.h"

namespace kbuChess {

using kobubase::readInteger;
using kobubase::wordAt;

namespace {

// The folder of the running program, where a book may lie beside it.
std::string programDirectory() {
  char path[4096];
  const ssize_t size = ::readlink("/proc/self/exe", path, sizeof path - 1);
  if (size <= 0) return ".";
  const std::string exe(path, static_cast<std::size_t>(size));
  const std::size_t slash = exe.rfind('/');
  return slash == std::string::npos ? "." : exe.substr(0, slash);
}

// "memory" in MiB: not a number or negative reads as 0 (no table); sizes
// beyond MAX_TABLE_MIB are taken as typing errors and capped.
std::int32_t tableMebibytes(const std::string& text) {
  return static_cast<std::int32_t>(kobubase::readClamped(text, 0, MAX_TABLE_MIB));
}

}  // namespace

clsTalvena::clsTalvena(const kobubase::clsOptions& options)
    : clsThread(NAME), options_(options), logPath_(options.get("-log")), engine_(options_, &share_) {
  share_.sizeTable(tableMebibytes(options_.get("memory")));
  const std::uint64_t bytes = share_.entryCount() * sizeof(TTEntry);
  print("# TT " + std::to_string(share_.entryCount()) + " entries - " + std::to_string(bytes >> 20) + " MiB");
  setPosition(clsBoard::START_FEN);
  if (!options_.get("-soul").empty()) loadSoul(options_.get("-soul"));
  engine_.setBookProbe(&book_);
  loadStartupBook(book_, options_, programDirectory(), *this);
}

clsTalvena::~clsTalvena() {
  cancel();
  reader_.reset();
  engine_.stop();
  if (logFile_) std::fclose(logFile_);
  print("# bye bye");
}

void clsTalvena::run() {
  printBanner();
  if (options_.get("-use") == "tourney") {
    const std::string shard = options_.has("-shard") ? options_.get("-shard") : shardFromEnvironment();
    execute("\\tourney " + options_.get("-ini") + (options_.has("-resume") ? " resume" : "") +
            (shard.empty() ? "" : " shard=" + shard));
  } else if (options_.get("-use") == "merge") {
    std::string files;  // each file quoted, its own quotes doubled
    for (const std::string& file : options_.bareNames()) {
      if (file.rfind('-', 0) == 0) continue;
      std::string quoted;
      for (const char c : file) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
      files += " \"" + quoted + "\"";
    }
    execute("\\merge" + files);
  } else if (options_.get("-use") == "learn") {
    if (!runLearnSlices()) exitStatus_ = 1;
  } else {
    if (!options_.get("-load").empty()) execute("\\loadsoul " + options_.get("-load"));
    runLoop();
  }
  print("# end");
}

void clsTalvena::printBanner() {
  print(std::string("# ") + NAME + " " + VERSION + " (2009-2026) - a chess engine by its author, free to use and study");
  print("# zlib compression library by Jean-loup Gailly and Mark Adler");
  print("# crypt routine after the public-domain DES code of the BSD C library");
  print("# xorshift random generator after George Marsaglia, in the xorshift128+ form of Sebastiano Vigna");
}

void clsTalvena::runLoop() {
  reader_ = std::make_unique<kobubase::clsStdInThread>(0);
  if (!reader_->start()) {
    print("# error: the input reader did not start");
    return;
  }
  // "uci" as the first command, or -use=uci, chooses UCI for the whole run.
  const bool uciForced = options_.get("-use") == "uci";
  if (uciForced) runUci("");
  bool firstCommand = true;
  while (!uciForced && !stopRequested()) {
    serviceEngine();
    kobubase::sleepMs(1);
    const std::string line = reader_->getLine(false);
    if (line.empty()) continue;
    if (firstCommand && wordAt(line, 0) == "uci") {
      runUci(line);
      break;
    }
    firstCommand = false;
    if (execute(line) == CMD_QUIT) break;
  }
  reader_->cancel();
}

void clsTalvena::runUci(const std::string& firstLine) {
  UciHooks hooks{[this](const std::string& word, const std::string& rest) { logCommand(word, rest); },
                 [this](const std::string& soul) { loadSoul(soul); }, [this] { return stopRequested(); }};
  clsUciSession(engine_, search_, book_, *this, std::move(hooks)).run(*reader_, firstLine);
}

void clsTalvena::serviceEngine() {
  const std::int64_t now = kobubase::nowMs();
  switch (search_.poll()) {
    case SearchPoll::RUNNING:
      if (now - state_.lastThinkingMs >= 1000) {
        state_.lastThinkingMs = now;
        printThinking(now);
      }
      return;
    case SearchPoll::TIME_EXPIRED:
      print("# time has expired");
      return;  // the move is collected on the next pass
    case SearchPoll::ENDED:
      if (state_.playMode >= MODE_ENGINE_WHITE) collectMove(now);
      return;
    case SearchPoll::IDLE:
      return;
  }
}

int clsTalvena::execute(const std::string& line) {
  const int result = consoleMode_ ? consoleLine(line) : executeCommand(line);
  if (!thinking()) pong();
  return result;
}

int clsTalvena::executeCommand(const std::string& line) {
  std::size_t start = line.find_first_not_of(' ');
  if (start == std::string::npos) return CMD_IGNORED;
  const std::size_t blank = line.find(' ', start);
  const std::string word = line.substr(start, blank == std::string::npos ? std::string::npos : blank - start);
  std::string rest;
  if (blank != std::string::npos) {
    const std::size_t first = line.find_first_not_of(' ', blank);
    const std::size_t last = line.find_last_not_of(' ');
    if (first != std::string::npos) rest = line.substr(first, last - first + 1);
  }
  logCommand(word, rest);
  return dispatch(word, rest);
}

void clsTalvena::logCommand(const std::string& word, const std::string& rest) {
  if (logPath_.empty()) return;
  std::string error;
  if (!logFile_) logFile_ = kobubase::openForAppending(logPath_, error);
  if (logFile_) {
    errno = 0;
    if (std::fprintf(logFile_, "%s\t%s\n", word.c_str(), rest.c_str()) >= 0 && std::fflush(logFile_) == 0) return;
    error = kobubase::errorLine(errno ? errno : EIO);
    std::fclose(logFile_);
    logFile_ = nullptr;
  }
  print(error + " (log " + logPath_ + ")");
  logPath_.clear();  // say it once, then go on without a log
}

// --- think and play

void clsTalvena::think() {
  abandonSearch();
  if (state_.level.movesPerPeriod > 0 && state_.periodMoves >= state_.level.movesPerPeriod) {
    state_.engineTimeMs += state_.level.baseMs;
    state_.periodMoves = 0;
  }
  state_.lastThinkingMs = kobubase::nowMs();
  std::int64_t budget;
  if (state_.playMode == MODE_EPD_TEST) {
    budget = state_.level.baseMs;
    state_.engineTimeMs = 100 * state_.level.baseMs;
  } else {
    budget = thinkBudget(state_.engineTimeMs, state_.level.movesPerPeriod, state_.periodMoves);
  }
  if (state_.playMode != MODE_EPD_TEST) {
    print("# moves " + std::to_string(state_.periodMoves) + "/" + std::to_string(state_.level.movesPerPeriod) +
          " - time " + std::to_string(budget) + "/" + std::to_string(state_.engineTimeMs) + " ms");
  }
  // "sd N" makes the engine search exactly N plies (its fixed depth) within
  // the same time budget; without "sd" it deepens by two plies at a time
  // until stopped, never beyond its own 127-ply limit.
  const int limit = state_.depthLimit;
  engine_.setGamePosition(game_);
  search_.start(budget, limit >= 128 ? 0 : limit);
}

void clsTalvena::collectMove(std::int64_t now) {
  printThinking(now);
  const Move move = search_.collect();
  if (state_.playMode == MODE_EPD_TEST) {
    scoreEpdMove(move);
  } else if (move.isMove()) {
    playEngineMove(move);
  } else {
    print("# no legal move");
  }
  pong();
}

// The search's move is one of the legal root moves of a copy of the game's
// position, so it is played on the game as it stands.
void clsTalvena::playEngineMove(const Move& move) {
  const std::int64_t elapsed = search_.elapsedMs();
  playOnGame(move);
  state_.engineTimeMs += state_.level.incrementMs - elapsed;
  ++state_.periodMoves;
  print(engine_.statisticsText(static_cast<std::uint64_t>(elapsed)));
  print("move " + clsBoard::moveText(&move, false));
  if (state_.debugDisplay) positionView().printBoard(engine_.output());
}

void clsTalvena::printThinking(std::int64_t now) {
  if (!state_.post) return;
  const std::string line = engine_.thinkingLine(static_cast<std::uint64_t>(now - search_.startMs()));
  if (!line.empty()) print(line);
}

void clsTalvena::pong() {
  while (!state_.pendingPings.empty()) {
    print("pong " + state_.pendingPings.front());
    state_.pendingPings.pop_front();
  }
}

void clsTalvena::abandonSearch() { search_.abandon(); }

void clsTalvena::finishSearch() {
  if (!thinking()) return;
  search_.stop();
  // An EPD run ends here: its last position is scored, the rest is left.
  if (state_.playMode == MODE_EPD_TEST) epd_.next = epd_.lines.size();
  collectMove(kobubase::nowMs());
}

void clsTalvena::setPosition(const std::string& fen) {
  view_.readFEN(fen);
  game_ = view_.gamePosition();
}

void clsTalvena::playOnGame(const Move& move) {
  clsBoard& board = positionView();
  board.playRecord(move);
  undo_.push_back(game_);
  game_ = board.gamePosition();
  share_.markPlayed(board.positionKey());
}

clsBoard& clsTalvena::positionView() {
  view_.setCastlingBonus(engine_.castlingBonus());
  view_.setGamePosition(game_);
  return view_;
}

}  // namespace kbuChess
