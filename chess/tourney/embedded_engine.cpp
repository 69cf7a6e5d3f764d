#include "chess/tourney/embedded_engine.h"

#include "chess/engine/time_control.h"

namespace kbuChess {

clsEmbeddedEngine::clsEmbeddedEngine(const std::string& name, const std::string& soul, clsGameLog* owner, int tableMiB)
    : clsEngineInterface(name, PROTOCOL_XBOARD, owner), clsEngine({}, &table_) {
  table_.sizeTable(tableMiB);
  // The engine's own remarks ("# engine's running", ...) stay out of the way.
  clsEngine::output().setEcho(false);
  if (soul.find('=') != std::string::npos) {
    applySoulText(soul);
  } else {
    selectSoul(soul);
  }
  readFEN(START_FEN);
  gameFen_ = clsEngine::fen();
  setEcho(false);  // replies are for the game, not the console
  setKeep(true);
}

clsEmbeddedEngine::~clsEmbeddedEngine() {
  control_.abandon();
}

bool clsEmbeddedEngine::Start() {
  stopped_ = false;
  return true;
}

void clsEmbeddedEngine::Stop() {
  control_.abandon();
  stopped_ = true;
}

void clsEmbeddedEngine::Service() {
  const SearchPoll state = control_.poll();
  if (state != SearchPoll::ENDED && state != SearchPoll::TIME_EXPIRED) return;
  // The search's score, for adjudication.
  if (const Move best = bestMove(); best.isMove() && best.searchScore != NO_SCORE) score_ = best.searchScore;
  const Move move = control_.collect();
  if (move.isMove()) move_ = move;
}

void clsEmbeddedEngine::NewGame() {
  control_.abandon();
  move_.reset();
  clsEngineInterface::NewGame();  // empties the history; nothing to send
  takeAll();
  readFEN(startFen_.empty() ? std::string(START_FEN) : startFen_);
  gameFen_ = clsEngine::fen();
}

void clsEmbeddedEngine::Go() {
  // One period for the whole game: the same share the xboard loop takes.
  control_.start(moveTimeMs_ > 0 ? moveTimeMs_ : thinkBudget(ownClock_, 0, 0), 0);
}

void clsEmbeddedEngine::PlayMove(const std::string& move, int side, const std::string&, const Move* record) {
  control_.abandon();
  move_.reset();
  addToHistory(move);
  if (record != nullptr) {
    playRecord(*record);  // legal: the game's board checked it
    onMovePlayed();
  } else if (!readCoordinateMove(move)) {
    Log("cannot play " + move + " on " + gameFen_);
    return;
  }
  gameFen_ = clsEngine::fen();
  if (side != colour_) Go();
}

void clsEmbeddedEngine::PlayOpeningMove(const std::string& move, const std::string&) {
  control_.abandon();
  moveHistory_ += move + " ";
  if (readCoordinateMove(move)) gameFen_ = clsEngine::fen();
}

}  // namespace kbuChess
