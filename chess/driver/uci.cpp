#include "chess/driver/uci.h"

#include <cctype>

#include "base/text.h"
#include "base/thread.h"
#include "base/version.h"
#include "chess/book/book_commands.h"
#include "chess/engine/engine_share.h"

namespace kbuChess {

using kobubase::readClamped;
using kobubase::trimmed;
using kobubase::wordAt;

namespace {

std::string lowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// UCI writes a promotion as e7e8q, the board's move text as e7e8=q.
std::string uciMoveText(const Move& move) {
  std::string text = clsBoard::moveText(&move, false);
  std::erase(text, '=');
  return text;
}

// "score cp S", or "score mate N" for a won or lost line. The search does not
// know the mate's distance; N is the depth of the iteration that found it.
std::string scoreText(i32 score, int depth) {
  if (score > clsEngine::WIN_THRESHOLD) return "score mate " + std::to_string(depth);
  if (score < -clsEngine::WIN_THRESHOLD) return "score mate -" + std::to_string(depth);
  return "score cp " + std::to_string(score);
}

}  // namespace

clsUciSession::clsUciSession(clsEngine& engine, clsSearchControl& search, clsBook& book, kobubase::clsOutBuffer& out,
                             UciHooks hooks)
    : engine_(engine), search_(search), book_(book), out_(out), hooks_(std::move(hooks)) {
  bookFile_ = engine_.commandOptions().get("book");
  if (bookFile_.empty()) bookFile_ = "talvena.sbk";
}

clsUciSession::~clsUciSession() {
  search_.abandon();
}

void clsUciSession::run(kobubase::clsStdInThread& reader, const std::string& firstLine) {
  if (!firstLine.empty() && !execute(firstLine)) return;
  while (!hooks_.stopRequested()) {
    serviceSearch();
    kobubase::sleepMs(1);
    const std::string line = reader.getLine(false);
    if (!line.empty() && !execute(line)) return;
  }
}

bool clsUciSession::execute(const std::string& line) {
  const std::string text = trimmed(line);
  if (text.empty()) return true;
  const std::size_t blank = text.find_first_of(" \t");
  const std::string word = text.substr(0, blank);
  const std::string rest = blank == std::string::npos ? std::string() : trimmed(text.substr(blank));
  if (hooks_.log) hooks_.log(word, rest);
  if (word == "quit") {
    search_.abandon();
    return false;
  }
  if (word == "isready") {
    out_.print("readyok");
  } else if (word == "uci") {
    cmdUci();
  } else if (word == "setoption") {
    cmdSetOption(rest);
  } else if (word == "ucinewgame") {
    cmdNewGame();
  } else if (word == "position") {
    cmdPosition(rest);
  } else if (word == "go") {
    cmdGo(rest);
  } else if (word == "stop") {
    cmdStop();
  } else if (word == "ponderhit") {
    cmdPonderHit();
  } else if (word != "debug" && word != "register") {
    infoString("unknown command: " + word);
  }
  return true;
}

void clsUciSession::cmdUci() {
  const clsEngineShare* share = engine_.share();
  const std::uint64_t tableMiB = share ? share->entryCount() * sizeof(TTEntry) >> 20 : 0;
  out_.print(std::string("id name ") + kobubase::PROGRAM_NAME + " " + kobubase::PROGRAM_VERSION);
  out_.print("id author the Talvena developers");
  out_.print("option name Hash type spin default " + std::to_string(tableMiB) + " min 0 max " +
             std::to_string(MAX_TABLE_MIB));
  out_.print("option name Soul type string default " + engine_.soulName());
  out_.print("option name OwnBook type check default true");
  out_.print("option name BookFile type string default " + bookFile_);
  out_.print("uciok");
}

// "name NAME [value VALUE]": the name may hold blanks and is matched in any
// case of letters; the value is the rest of the line.
void clsUciSession::cmdSetOption(const std::string& rest) {
  finishSearch();
  const std::string lower = lowerCase(rest);
  if (lower.rfind("name ", 0) != 0) {
    infoString("setoption needs: name NAME value VALUE");
    return;
  }
  const std::size_t valueAt = lower.find(" value ");
  const std::string given = trimmed(rest.substr(5, valueAt == std::string::npos ? std::string::npos : valueAt - 5));
  const std::string name = lowerCase(given);
  const std::string value = valueAt == std::string::npos ? std::string() : trimmed(rest.substr(valueAt + 7));
  if (name == "hash") {
    setHash(value);
  } else if (name == "soul") {
    hooks_.loadSoul(value);
    infoString("soul " + engine_.soulName());
  } else if (name == "ownbook") {
    engine_.setBookProbe(lowerCase(value) == "false" ? nullptr : &book_);
  } else if (name == "bookfile") {
    setBookFile(value);
  } else {
    infoString("unknown option: " + given);
  }
}

// The table size in MiB, as "memory" on the command line, held within 0 and MAX_TABLE_MIB.
void clsUciSession::setHash(const std::string& value) {
  const std::int64_t mebibytes = readClamped(value, 0, MAX_TABLE_MIB);
  engine_.runtimeOptions().set("memory", std::to_string(mebibytes));
  if (clsEngineShare* share = engine_.share()) share->sizeTable(static_cast<std::int32_t>(mebibytes));
}

void clsUciSession::setBookFile(const std::string& file) {
  if (file.empty()) return;
  bookFile_ = file;
  commandLoadBook(book_, "\"" + file + "\"", out_);
}

void clsUciSession::cmdNewGame() {
  finishSearch();
  game_.readFEN(clsBoard::START_FEN);
}

// "startpos | fen FEN [moves M1 M2 ...]". The moves are played up to the first
// one that is not legal; that one is named and the rest is dropped.
void clsUciSession::cmdPosition(const std::string& rest) {
  finishSearch();
  const std::size_t movesAt = rest.find("moves");
  const std::string setup = trimmed(rest.substr(0, movesAt));
  game_.setCastlingBonus(engine_.castlingBonus());
  if (setup.rfind("fen", 0) == 0) {
    game_.readFEN(trimmed(setup.substr(3)));
  } else {
    if (setup != "startpos") infoString("position needs startpos or fen; using the start position");
    game_.readFEN(clsBoard::START_FEN);
  }
  if (movesAt == std::string::npos) return;
  const std::string moves = rest.substr(movesAt + 5);
  for (int i = 0; !wordAt(moves, i).empty(); ++i) {
    const std::string_view text = wordAt(moves, i);
    const Move* move = text.size() < 4 ? nullptr : game_.findCoordinateMove(text);
    if (move == nullptr) {
      infoString("illegal move " + std::string(text) + " in position; the moves before it stand");
      return;
    }
    game_.playRecord(Move(*move));
    if (clsEngineShare* share = engine_.share()) share->markPlayed(game_.positionKey());
  }
}

void clsUciSession::cmdGo(const std::string& rest) {
  finishSearch();
  lastGo_ = parseGo(rest);
  startSearch(lastGo_);
}

void clsUciSession::startSearch(const UciGo& go) {
  holdMove_ = go.infinite || go.ponder;
  endReported_ = false;
  reportedDepth_ = 0;
  lastInfoMs_ = kobubase::nowMs();
  engine_.setNodeLimit(static_cast<u64>(go.nodes));
  engine_.setGamePosition(game_.gamePosition());
  search_.start(goBudgetMs(go, game_.position().side), go.depth);
}

void clsUciSession::cmdStop() {
  holdMove_ = false;
  finishSearch();
}

// The move the GUI pondered on was played: a fresh search with the clocks of
// the "go ponder" starts on the same position.
void clsUciSession::cmdPonderHit() {
  if (!search_.awaitingCollect() || !lastGo_.ponder) return;
  search_.abandon();
  lastGo_.ponder = false;
  startSearch(lastGo_);
}

void clsUciSession::serviceSearch() {
  const std::int64_t now = kobubase::nowMs();
  switch (search_.poll()) {
    case SearchPoll::RUNNING: {
      // The iteration depth moves on when an iteration is done.
      const int depth = engine_.iterationDepth();
      if (reportedDepth_ != 0 && depth > reportedDepth_) {
        printInfo(reportedDepth_);
      } else if (now - lastInfoMs_ >= 1000) {
        printInfo(depth);
      }
      reportedDepth_ = depth;
      return;
    }
    case SearchPoll::ENDED:
      if (!endReported_) printInfo(engine_.iterationDepth());
      endReported_ = true;
      if (!holdMove_) printBestMove();
      return;
    case SearchPoll::TIME_EXPIRED:
    case SearchPoll::IDLE: return;
  }
}

void clsUciSession::finishSearch() {
  if (!search_.awaitingCollect()) return;
  search_.stop();
  holdMove_ = false;
  serviceSearch();
}

void clsUciSession::printInfo(int depth) {
  const Move best = engine_.bestMove();
  lastInfoMs_ = kobubase::nowMs();
  // A book move (depth 0) or a search stopped before its first root move has no score to show.
  if (!best.isMove() || depth == 0 || best.searchScore == clsEngine::NO_SCORE) return;
  const std::int64_t ms = lastInfoMs_ - search_.startMs();
  const u64 nodes = engine_.searchNodes();
  const u64 nps = ms > 0 ? nodes * 1000 / static_cast<u64>(ms) : 0;
  out_.print("info depth " + std::to_string(depth) + " " + scoreText(best.searchScore, depth) + " nodes " +
             std::to_string(nodes) + " nps " + std::to_string(nps) + " time " + std::to_string(ms) + " pv " +
             uciMoveText(best));
}

void clsUciSession::printBestMove() {
  const std::int64_t elapsed = search_.elapsedMs();
  const Move move = search_.collect();
  const std::string statistics = engine_.statisticsText(static_cast<std::uint64_t>(elapsed));
  infoString(statistics.substr(statistics.rfind("# ", 0) == 0 ? 2 : 0));
  out_.print("bestmove " + (move.isMove() ? uciMoveText(move) : std::string("0000")));
}

}  // namespace kbuChess
