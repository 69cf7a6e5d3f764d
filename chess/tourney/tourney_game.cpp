#include "chess/tourney/tourney_game.h"

#include <algorithm>
#include <exception>

#include "chess/board/game_state.h"
#include "chess/tourney/embedded_engine.h"
#include "chess/tourney/external_engine.h"
#include "chess/tourney/pgn_output.h"
#include "chess/tourney/tourney_text.h"

namespace kbuChess {

namespace {

const char* const SIDE_NAMES[2] = {"white", "black"};

// First word and the rest of a reply.
void splitReply(const std::string& reply, std::string& word, std::string& rest) {
  const std::size_t blank = reply.find(' ');
  word = reply.substr(0, blank);
  rest = blank == std::string::npos ? std::string() : reply.substr(blank + 1);
}

}  // namespace

clsTourneyGame::clsTourneyGame(clsTourneyHost& host, int number, clsPlayer* white, clsPlayer* black,
                               const GameClock& clock)
    : clsThread("game " + std::to_string(number)), host_(host), number_(number), players_{white, black}, clock_(clock) {
  board_.output().setEcho(false);
}

clsTourneyGame::~clsTourneyGame() {
  stopGame();
  wait();
}

bool clsTourneyGame::start() {
  started_ = true;
  finished_.store(false);
  cancelled_.store(false);
  if (clsThread::start()) return true;
  finished_.store(true);  // never ran: counts as done so the round can end
  return false;
}

void clsTourneyGame::rearm() {
  wait();
  started_ = false;
  finished_.store(false);
  cancelled_.store(false);
}

std::vector<std::string> clsTourneyGame::logLines() {
  kobubase::clsLock lock(logLock_);
  return log_;
}

// A player that talks without end fills the log only up to MAX_LOG_LINES.
void clsTourneyGame::logPlayer(int colour, const std::string& text) {
  const std::int64_t at = kobubase::nowMs() - gameStartMs_.load();
  kobubase::clsLock lock(logLock_);
  if (log_.size() > MAX_LOG_LINES) return;
  log_.push_back(log_.size() < MAX_LOG_LINES
                     ? logLine(at, SIDE_NAMES[colour & 1], text)
                     : logLine(at, "game " + std::to_string(number_), "log full: further lines left out"));
}

// A line of the game itself: to its log and to the run's console and log.
void clsTourneyGame::log(const std::string& text) {
  {
    kobubase::clsLock lock(logLock_);
    log_.push_back(logLine(kobubase::nowMs() - gameStartMs_.load(), "game " + std::to_string(number_), text));
  }
  host_.hostLog("game " + std::to_string(number_), text);
}

void clsTourneyGame::run() {
  const std::int64_t started = kobubase::nowMs();
  gameStartMs_.store(started);
  durationMs_ = -1;
  try {
    play();
  } catch (const std::exception&) {
    log("game aborted do to software exception!");
  } catch (...) {
    log("game aborted do to software exception!");
  }
  if (durationMs_ < 0) durationMs_ = kobubase::nowMs() - started;  // not scored
  try {
    endAdapters();
    writeFiles();
  } catch (...) {
    log("game aborted do to software exception!");
  }
  host_.gameFinished(*this);
  finished_.store(true);
}

void clsTourneyGame::play() {
  game_.reset();
  {
    kobubase::clsLock lock(logLock_);
    log_.clear();
  }
  const std::string start = opening_.startFen();
  game_.setStartFen(start);
  board_.readFEN(start);
  board_.resetFrames();
  game_.addPosition(repetitionKey(board_.position()));
  if (players_[0] == nullptr || players_[1] == nullptr) return;
  log(matchLine(players_[0]->name(), players_[1]->name()));
  adjudicator_.reset();
  if (!createAdapters()) {
    if (game_.undecided()) setResult(rc::ABORTED);
  } else {
    playOpening();
    side_ = board_.position().side & 1;
    if (game_.plies() == 0 || !judgePosition(side_ ^ 1)) {
      moveStartMs_ = kobubase::nowMs();
      adapters_[side_]->Go();
      loop();
    }
  }
  score();
}

bool clsTourneyGame::createAdapters() {
  for (int colour = WHITE; colour <= BLACK; ++colour) {
    adapters_[colour] = makeAdapter(colour);
    if (!adapters_[colour]) return false;
    adapters_[colour]->setStartPosition(opening_.fen);
    clocks_[colour] = clock_.gameMs;
    if (!prepareAdapter(colour) || cancelled_.load()) return false;
  }
  return true;
}

// A player that never gets ready otherwise is not an error here: it will not
// move and loses on time.
bool clsTourneyGame::prepareAdapter(int colour) {
  clsEngineInterface& adapter = *adapters_[colour];
  if (adapter.Prepare(colour, clock_.gameMs, clock_.incrementMs)) return true;
  if (const std::string problem = adapter.StartProblem(); !problem.empty()) {
    log(players_[colour]->name() + ": " + problem);
    setResult(lossCode(colour, rc::ENGINE_CRASHED));
    return false;
  }
  if (adapter.notReady()) {
    setResult(lossCode(colour, rc::NOT_READY));
    return false;
  }
  return true;
}

std::unique_ptr<clsEngineInterface> clsTourneyGame::makeAdapter(int colour) {
  const clsPlayer& player = *players_[colour];
  if (player.config().embedded()) {
    auto engine = std::make_unique<clsEmbeddedEngine>(player.name(), player.config().soulText(), this);
    engine->setMoveTime(clock_.movetimeMs);
    return engine;
  }
  const int protocol = player.config().uci() ? clsEngineInterface::PROTOCOL_UCI : clsEngineInterface::PROTOCOL_XBOARD;
  auto engine =
      std::make_unique<clsExternalEngine>(player.name(), player.filename(), player.parameters(), protocol, this);
  engine->setCommandPause(clock_.commandPauseMs);
  return engine;
}

// The opening's moves are played on the board and told to both players as
// moves of the game; an opening move that is not legal ends the opening.
void clsTourneyGame::playOpening() {
  for (const std::string& move : opening_.moves) {
    std::string san;
    if (!playCoordinateMove(board_, move, san)) {
      log("opening move " + move + " is not legal here; the game goes on from the position before it");
      return;
    }
    game_.addMove(san);
    game_.addPosition(repetitionKey(board_.position()));
    for (int colour = WHITE; colour <= BLACK; ++colour) adapters_[colour]->PlayOpeningMove(move, san);
  }
}

void clsTourneyGame::loop() {
  while (!cancelled_.load() && game_.undecided()) {
    const std::int64_t elapsed = kobubase::nowMs() - moveStartMs_;
    clsEngineInterface& mover = *adapters_[side_];
    if (clocks_[side_] < elapsed) {
      const std::string over = std::to_string(elapsed) + ">" + std::to_string(clocks_[side_]);
      game_.setTag("Forfeit_ms", over);
      log(forfeitLine(players_[side_]->name(), elapsed, clocks_[side_]));
      setResult(lossCode(side_, rc::FORFEIT));
      break;
    }
    mover.Service();
    if (const std::optional<Move> record = mover.takeMove()) {
      logPlayer(side_, "move " + clsBoard::moveText(&*record, false));
      if (!playLegal(board_.findLegalMove(*record), elapsed)) break;
      continue;
    }
    const std::string reply = mover.nextReply();
    if (reply.empty()) {
      if (mover.HasEnded()) {
        log(crashLine(players_[side_]->name()));
        setResult(lossCode(side_, rc::ENGINE_CRASHED));
        break;
      }
      if (!mover.HasPendingOutput()) kobubase::sleepMs(1);
      continue;
    }
    logPlayer(side_, reply);
    if (!takeReply(reply, elapsed)) break;
  }
}

bool clsTourneyGame::takeReply(const std::string& reply, std::int64_t elapsed) {
  std::string word, rest;
  splitReply(reply, word, rest);
  if (word == "move") return takeMove(rest.substr(0, rest.find(' ')), elapsed);
  if (word == "resign") {
    setResult(resignCode(side_));
    return false;
  }
  if (word == "result") {
    const std::uint32_t code = claimedResultCode(rest, side_);
    if (code == 0) return true;
    setResult(code);
    return false;
  }
  return true;
}

// The legal move an engine's text names, left in the board's current frame,
// or null. Engines may also answer in SAN ("O-O-O", "Nf3"), as xboard GUIs
// accept: such a move is taken as the legal move it names.
const Move* clsTourneyGame::legalMove(const std::string& text) {
  if (text.empty()) return nullptr;
  if (const Move* move = board_.findCoordinateMove(text)) return move;
  board_.resetFrames();
  board_.generateLegal();
  return board_.readSANMove(text);
}

bool clsTourneyGame::takeMove(const std::string& reply, std::int64_t elapsed) {
  return playLegal(legalMove(reply), elapsed);
}

// Plays the mover's move, checked once on the game's board (null: illegal),
// and tells both players: engines in other processes as coordinate text,
// players in this one the record itself.
bool clsTourneyGame::playLegal(const Move* legal, std::int64_t elapsed) {
  const int mover = side_;
  clocks_[mover] = static_cast<std::int32_t>(clocks_[mover] + clock_.incrementMs - elapsed);
  if (legal == nullptr) {
    setResult(illegalMoveCode(mover));
    return false;
  }
  const Move move = *legal;  // the frame is regenerated for the SAN
  const std::string san = board_.sanText(move);
  board_.playRecord(move);
  board_.resetFrames();
  const std::string text = clsBoard::moveText(&move, false);
  game_.addMove(san);
  if (game_.addPosition(repetitionKey(board_.position()))) {
    setResult(rc::DRAW | rc::REPETITION);
    return false;
  }
  if (judgePosition(mover)) return false;
  if (const std::uint32_t end = adjudicator_.afterMove(mover, adapters_[mover]->takeScore(), game_.plies()); end != 0) {
    setResult(end);
    return false;
  }
  adapters_[mover]->PlayMove(text, mover, san, &move);
  side_ = mover ^ 1;
  moveStartMs_ = kobubase::nowMs();
  adapters_[WHITE]->setClocks(clocks_[WHITE], clocks_[BLACK]);
  adapters_[BLACK]->setClocks(clocks_[BLACK], clocks_[WHITE]);
  adapters_[side_]->PlayMove(text, mover, san, &move);
  return true;
}

// Whether the position after the mover's move ends the game: mate,
// stalemate, 50 moves, dead material, or the length cap (a draw; a mate on
// the capping ply still counts).
bool clsTourneyGame::judgePosition(int mover) {
  if (const std::uint32_t end = gameEndCode(gameEnd(board_), mover); end != 0) {
    setResult(end);
    return true;
  }
  if (clock_.maxPlies > 0 && game_.plies() >= clock_.maxPlies) {
    setResult(rc::DRAW | rc::ADJUDICATION);
    return true;
  }
  return false;
}

void clsTourneyGame::setResult(std::uint32_t code) {
  game_.setResult(code);
  log(resultLine(code));
}

std::pair<int, int> clsTourneyHost::gameScored(clsTourneyGame& game) {
  const GamePoints points = gamePoints(game.record().result());
  return {points.white, points.black};
}

void clsTourneyGame::score() {
  const GamePoints points = gamePoints(game_.result());
  if (!points.decided) return;
  durationMs_ = kobubase::nowMs() - gameStartMs_.load();
  const auto [whiteTotal, blackTotal] = host_.gameScored(*this);
  log(scoreLine(players_[WHITE]->name(), points.white, whiteTotal));
  log(scoreLine(players_[BLACK]->name(), points.black, blackTotal));
}

void clsTourneyGame::endAdapters() {
  for (auto& adapter : adapters_) {
    if (adapter) adapter->Stop();
    adapter.reset();
  }
}

void clsTourneyGame::writeFiles() {
  if (fileBase_.empty()) return;
  for (const std::string& problem : writeGameFiles(game_, logLines(), fileBase_))
    host_.hostLog("game " + std::to_string(number_), problem);
}

}  // namespace kbuChess
