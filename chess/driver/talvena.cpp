#include "chess/driver/talvena.h"

#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstring>

#include "chess/board/tables.h"
#include "chess/book/book_commands.h"
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
    execute("\\tourney " + options_.get("-ini"));
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
  while (!stopRequested()) {
    serviceEngine();
    kobubase::sleepMs(1);
    const std::string line = reader_->getLine(false);
    if (!line.empty() && execute(line) == CMD_QUIT) break;
  }
  reader_->cancel();
}

void clsTalvena::serviceEngine() {
  const std::int64_t now = kobubase::nowMs();
  if (engine_.searching()) {
    if (now > state_.deadlineMs) {
      print("# time has expired");
      engine_.stop();
    } else if (now - state_.lastThinkingMs >= 1000) {
      state_.lastThinkingMs = now;
      printThinking(now);
    }
    return;
  }
  if (state_.awaitingMove && state_.playMode >= MODE_ENGINE_WHITE) collectMove(now);
}

int clsTalvena::execute(const std::string& line) {
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
  if (!logFile_) {
    logFile_ = std::fopen(logPath_.c_str(), "ab");
    if (!logFile_) {
      print(kobubase::errorLine(errno));
      logPath_.clear();  // say it once, then go on without a log
      return;
    }
  }
  std::fprintf(logFile_, "%s\t%s\n", word.c_str(), rest.c_str());
  std::fflush(logFile_);
}

// --- think and play

void clsTalvena::think() {
  haltSearch();
  if (state_.level.movesPerPeriod > 0 && state_.periodMoves >= state_.level.movesPerPeriod) {
    state_.engineTimeMs += state_.level.baseMs;
    state_.periodMoves = 0;
  }
  state_.currentFen = engine_.fen();
  const std::int64_t now = kobubase::nowMs();
  state_.searchStartMs = state_.lastThinkingMs = now;
  std::int64_t budget;
  if (state_.playMode == MODE_EPD_TEST) {
    budget = state_.level.baseMs;
    state_.engineTimeMs = 100 * state_.level.baseMs;
  } else {
    budget = thinkBudget(state_.engineTimeMs, state_.level.movesPerPeriod, state_.periodMoves);
  }
  state_.deadlineMs = now + budget;
  if (state_.playMode != MODE_EPD_TEST) {
    print("# moves " + std::to_string(state_.periodMoves) + "/" + std::to_string(state_.level.movesPerPeriod) +
          " - time " + std::to_string(budget) + "/" + std::to_string(state_.engineTimeMs) + " ms");
  }
  // "sd N" makes the engine search exactly N plies (its fixed depth) within
  // the same time budget; without "sd" it deepens by two plies at a time
  // until stopped, never beyond its own 127-ply limit.
  const int limit = state_.depthLimit;
  engine_.setFixedDepth(limit >= 128 ? 0 : (limit > clsEngine::MAX_DEPTH ? clsEngine::MAX_DEPTH : limit));
  engine_.setSinglePass(false);
  // A search that finds a mate at once may be over before start() returns,
  // so the move is awaited either way. Should the thread fail to start, the
  // cleared best move makes the loop fall back to a legal move instead of
  // replaying an old one.
  Move none{};
  none.flags = mf::NOT_A_MOVE;
  engine_.setBestMove(none);
  engine_.start();
  state_.awaitingMove = true;
}

void clsTalvena::collectMove(std::int64_t now) {
  state_.awaitingMove = false;
  printThinking(now);
  Move move{};
  if (takeBestMove(move)) {
    if (state_.playMode == MODE_EPD_TEST) {
      scoreEpdMove(move);
    } else {
      playEngineMove(move, now);
    }
  } else if (state_.playMode == MODE_EPD_TEST) {
    scoreEpdMove(move);
  } else {
    print("# no legal move");
  }
  pong();
}

// The search's move; when a very short search was stopped before any root
// move finished, the first legal move stands in, so the engine never sits
// silent on its clock while it has a move to make.
bool clsTalvena::takeBestMove(Move& move) {
  move = engine_.bestMove();
  if (move.isMove()) return true;
  engine_.resetFrames();
  const int count = engine_.generateLegal();
  if (count <= 0) return false;
  move = engine_.frame().first[0];
  return true;
}

void clsTalvena::playEngineMove(const Move& move, std::int64_t now) {
  const std::int64_t elapsed = now - state_.searchStartMs + 1;
  const std::string text = clsBoard::moveText(&move, false);
  const std::string previous = state_.currentFen;
  if (!engine_.readCoordinateMove(text)) {
    print("# error: the engine chose a move it cannot play: " + text);
    return;
  }
  state_.undoStack.push_back(previous);
  state_.currentFen = engine_.fen();
  state_.engineTimeMs += state_.level.incrementMs - elapsed;
  ++state_.periodMoves;
  print(engine_.statisticsText(static_cast<std::uint64_t>(elapsed)));
  print("move " + text);
  if (state_.debugDisplay) engine_.printBoard();
}

void clsTalvena::printThinking(std::int64_t now) {
  if (!state_.post) return;
  const std::string line = engine_.thinkingLine(static_cast<std::uint64_t>(now - state_.searchStartMs));
  if (!line.empty()) print(line);
}

void clsTalvena::pong() {
  if (state_.pendingPing.empty()) return;
  print("pong " + state_.pendingPing);
  state_.pendingPing.clear();
}

void clsTalvena::haltSearch() {
  if (engine_.searching()) engine_.stop();
  state_.awaitingMove = false;
}

void clsTalvena::setPosition(const std::string& fen) {
  engine_.readFEN(fen);
  state_.currentFen = engine_.fen();
}

// One king a side and no pawn on the first or last rank: the generator and
// the search take both for granted.
bool clsTalvena::validPosition() const {
  const Position& pos = engine_.position();
  const u64 kings = pos.masks[KING];
  if (std::popcount(kings & pos.masks[US]) != 1 || std::popcount(kings & pos.masks[THEM]) != 1) return false;
  return (pos.masks[PAWN] & (RANK_1 | RANK_8)) == 0;
}

}  // namespace kbuChess
