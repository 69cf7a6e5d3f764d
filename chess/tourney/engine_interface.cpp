#include "chess/tourney/engine_interface.h"

#include <algorithm>
#include <string>

#include "base/text.h"
#include "base/thread.h"

namespace kbuChess {

using kobubase::readInteger;
using kobubase::wordAt;

clsEngineInterface::clsEngineInterface(std::string name, int protocol, clsGameLog* owner)
    : owner_(owner), name_(std::move(name)), protocol_(protocol == PROTOCOL_UCI ? PROTOCOL_UCI : PROTOCOL_XBOARD) {}

void clsEngineInterface::Log(const std::string& text) {
  if (owner_ != nullptr) {
    owner_->logPlayer(colour_, text);
  } else {
    kobubase::clsTSafeOutput::instance().write("# =====>\t" + name_ + ":\t" + text, true);
  }
}

std::string clsEngineInterface::nextReply() {
  std::string reply = ReadReply();
  if (reply.empty()) takeLine(reply);
  return reply;
}

void clsEngineInterface::Init() {
  if (protocol_ == PROTOCOL_UCI) {
    Send("uci");
    return;
  }
  pingSupported_ = false;
  Send("xboard");
  Send("protover 2");
  ready_ = true;
}

void clsEngineInterface::Sync() {
  ready_ = false;
  if (protocol_ == PROTOCOL_UCI) {
    Send("isready");
  } else if (!pingSupported_) {
    ready_ = true;
  } else {
    ++pingCounter_;
    awaitingPong_ = true;
    Send("ping " + std::to_string(pingCounter_));
  }
}

void clsEngineInterface::NewGame() {
  moveHistory_.clear();
  forced_ = false;
  if (protocol_ == PROTOCOL_UCI) {
    Send("ucinewgame");
    Send(positionCommand());
    Sync();
    return;
  }
  Send("new");
  if (!startFen_.empty()) {
    Send("force");  // an engine to move in the new position must not start thinking
    forced_ = true;
    sendStartPosition();
  }
  Send("post");
  Send(levelCommand());
}

std::string clsEngineInterface::positionCommand() const {
  std::string command = startFen_.empty() ? "position startpos" : "position fen " + startFen_;
  return moveHistory_.empty() ? command : command + " moves " + moveHistory_;
}

// Edit mode cannot set the side to move: for Black to move a first move is
// made in force mode, as the protocol does it. Pieces are placed by colour,
// "c" switching to Black; castling follows from kings and rooks at home,
// and no en-passant capture is possible at once.
void clsEngineInterface::sendStartPosition() {
  if (feature("setboard") == "1") {
    Send("setboard " + startFen_);
    return;
  }
  if (wordAt(startFen_, 1) == "b") Send(moveCommand("a2a3", "a3"));
  Send("edit");
  Send("#");
  std::vector<std::string> pieces[2];
  int rank = 8, file = 0;
  for (const char c : wordAt(startFen_, 0)) {
    if (c == '/') {
      --rank, file = 0;
    } else if (c >= '1' && c <= '8') {
      file += c - '0';
    } else {
      const bool black = c >= 'a';
      pieces[black].push_back(std::string(1, static_cast<char>(black ? c - 'a' + 'A' : c)) +
                              static_cast<char>('a' + file++) + static_cast<char>('0' + rank));
    }
  }
  for (const std::string& piece : pieces[0]) Send(piece);
  Send("c");
  for (const std::string& piece : pieces[1]) Send(piece);
  Send(".");
}

// An engine that declared its features ended with done=1 reads "level" as the
// protocol defines it: minutes (or minutes:seconds) and the increment in
// seconds. Older engines get the base time in whole seconds where the
// protocol reads minutes, as they always did; "time" and "otim" before every
// move carry the true clocks for both.
std::string clsEngineInterface::levelCommand() const {
  if (!featuresDone_) return "level 0 " + std::to_string(ownClock_ / 1000) + " " + std::to_string(ownIncrement_ / 1000);
  const std::int32_t seconds = ownClock_ / 1000;
  std::string base = std::to_string(seconds / 60);
  if (seconds % 60 != 0) base += (seconds % 60 < 10 ? ":0" : ":") + std::to_string(seconds % 60);
  std::string increment = std::to_string(ownIncrement_ / 1000);
  if (ownIncrement_ % 1000 != 0) {
    std::string fraction = std::to_string(1000 + ownIncrement_ % 1000).substr(1);
    while (fraction.back() == '0') fraction.pop_back();
    increment += "." + fraction;
  }
  return "level 0 " + base + " " + increment;
}

void clsEngineInterface::Go() {
  if (protocol_ == PROTOCOL_XBOARD) {
    Send("time " + std::to_string(ownClock_ / 10));
    Send("otim " + std::to_string(opponentClock_ / 10));
    Send("go");
    forced_ = false;
    return;
  }
  if (forced_) Send(positionCommand());  // after an opening
  forced_ = false;
  const bool white = colour_ == 0;
  const std::int32_t w = white ? ownClock_ : opponentClock_, b = white ? opponentClock_ : ownClock_;
  const std::int32_t wi = white ? ownIncrement_ : opponentIncrement_, bi = white ? opponentIncrement_ : ownIncrement_;
  Send("go wtime " + std::to_string(w) + " btime " + std::to_string(b) + " winc " + std::to_string(wi) + " binc " +
       std::to_string(bi));
}

std::string clsEngineInterface::moveCommand(const std::string& move, const std::string& san) const {
  const std::string text = feature("san") == "1" && !san.empty() ? san : move;
  return feature("usermove") == "1" ? "usermove " + text : text;
}

void clsEngineInterface::PlayMove(const std::string& played, int side, const std::string& san, const Move*) {
  const std::string move = addToHistory(played);
  if (side == colour_) return;  // our own move coming back
  if (protocol_ == PROTOCOL_UCI) {
    Send(positionCommand());
    forced_ = false;
    Go();
    return;
  }
  Send("time " + std::to_string(ownClock_ / 10));
  Send("otim " + std::to_string(opponentClock_ / 10));
  Send(moveCommand(move, san));
  // After an opening the engine was in force mode: the move alone would not
  // make it think.
  if (forced_) Send("go");
  forced_ = false;
}

std::string clsEngineInterface::addToHistory(std::string move) {
  std::erase(move, '=');  // engines read promotions as e7e8q; our own notation writes e7e8=q
  moveHistory_ += move + " ";
  return move;
}

// xboard engines take the opening in force mode and leave it with "go" (their
// own first move) or with the opponent's first move followed by "go"; UCI
// engines get the opening with their first "position".
void clsEngineInterface::PlayOpeningMove(const std::string& move, const std::string& san) {
  moveHistory_ += move + " ";
  if (protocol_ == PROTOCOL_XBOARD) {
    if (!forced_) Send("force");
    Send(moveCommand(move, san));
  }
  forced_ = true;
}

void clsEngineInterface::Quit() {
  Send("quit");
}

bool clsEngineInterface::Prepare(int colour, std::int32_t gameMs, std::int32_t incrementMs) {
  colour_ = colour;
  ownClock_ = opponentClock_ = gameMs;
  ownIncrement_ = opponentIncrement_ = incrementMs;
  if (ready_) {
    NewGame();
    return true;
  }
  Start();
  if (const std::string problem = StartProblem(); !problem.empty()) {
    Log(problem);
    return false;
  }
  Log("waiting for '" + name_ + "' initialization...");
  kobubase::sleepMs(startPauseMs());
  Init();
  if (declaresFeatures() && !awaitFeatures()) return false;
  if (!awaitReady()) return false;
  NewGame();
  return true;
}

// An xboard engine declares its features after "protover 2" and ends them
// with done=1. One that says nothing is taken as it is after FEATURES_MS;
// the wait counts from its first line when that comes later (an engine still
// busy starting). done=0 asks for up to FEATURES_DELAYED_MS more.
bool clsEngineInterface::awaitFeatures() {
  std::int64_t deadline = kobubase::nowMs() + FEATURES_MS;
  std::int64_t delayedUntil = 0;
  bool heard = false;
  while (!featuresDone_) {
    const std::int64_t now = kobubase::nowMs();
    if (featuresDelayed_ && delayedUntil == 0) delayedUntil = now + FEATURES_DELAYED_MS;
    if (featuresDelayed_ && now > delayedUntil) {
      notReady_ = true;
      Log("no \"feature done=1\" within " + std::to_string(FEATURES_DELAYED_MS / 1000) + " s of \"feature done=0\"");
      return false;
    }
    if (!featuresDelayed_ && now > deadline) return true;
    if (HasPendingOutput()) {
      if (!heard) deadline = std::max(deadline, now + FEATURES_MS);
      heard = true;
      ReadReply();
      continue;
    }
    if (HasEnded()) return true;  // the game finds the engine gone
    kobubase::sleepMs(1);
  }
  return true;
}

// Up to READY_ROUNDS passes for "uciok", "readyok" or the answer to a ping.
bool clsEngineInterface::awaitReady() {
  for (int round = 0; round < READY_ROUNDS; ++round) {
    if (ready_) return true;
    if (!ReadReply().empty()) break;
    if (HasEnded()) break;  // a program that is gone will not get ready
    kobubase::sleepMs(1);
  }
  return ready_;
}

std::string clsEngineInterface::feature(const std::string& key) const {
  for (const auto& [name, value] : features_) {
    if (name == key) return value;
  }
  return {};
}

std::string clsEngineInterface::translate(const std::string& line) {
  const std::size_t blank = line.find(' ');
  const std::string word = line.substr(0, blank);
  const std::string rest = blank == std::string::npos ? std::string() : line.substr(blank + 1);
  return protocol_ == PROTOCOL_UCI ? translateUci(word, rest) : translateXboard(word, rest);
}

std::string clsEngineInterface::translateXboard(const std::string& word, const std::string& rest) {
  if (word == "pong") {
    awaitingPong_ = wordAt(rest, 0).empty() ? pingCounter_ != 0 : readInteger(rest) != pingCounter_;
    ready_ = !awaitingPong_ && !featuresDelayed_;
    return {};
  }
  if (word == "move") return "move " + std::string(wordAt(rest, 0));
  // The older form of a move that xboard GUIs still take (GNU Chess uses it).
  if (word == "My" && rest.rfind("move is", 0) == 0) {
    const std::size_t start = rest.find_first_not_of(" :", 7);
    return "move " + std::string(wordAt(rest.substr(std::min(start, rest.size())), 0));
  }
  readScore(word, rest);
  if (word == "feature") {
    readFeatures(rest);
    return {};
  }
  // A result as the first word: "1-0", "0-1", "1/2-1/2".
  if (word.size() > 1 && word[0] >= '0' && word[0] <= '9' && (word[1] == '-' || word[1] == '/')) {
    return "result " + word;
  }
  return {};
}

// Items are key=value, separated by blanks; a quoted value may hold blanks
// (myname="Some Engine 1.0") and is stored without its quotes. Engines send
// them on one line or on many: each key changes only what it names.
void clsEngineInterface::readFeatures(const std::string& rest) {
  bool ping = false;
  for (const std::string& item : kobubase::splitArguments(rest)) {
    const std::size_t equals = item.find('=');
    if (equals == std::string::npos || equals == 0) continue;
    const std::string key = item.substr(0, equals), value = item.substr(equals + 1);
    bool known = false;
    for (auto& [name, old] : features_) {
      if (name == key) old = value, known = true;
    }
    if (!known) features_.emplace_back(key, value);
    if (key == "done") {
      featuresDelayed_ = readInteger(value) == 0;
      featuresDone_ = !featuresDelayed_;
      ready_ = featuresDone_ && !awaitingPong_;
    }
    if (key == "ping") {
      ping = readInteger(value) != 0 && !pingSupported_;
      pingSupported_ = readInteger(value) != 0;
    }
  }
  if (ping) Sync();  // ready only once the ping is answered
}

// The score of a thinking line: xboard "PLY SCORE TIME NODES PV", UCI
// "info ... score cp N" or "score mate N" (a mate comes out as 100000 less
// the moves to it, negative when being mated).
void clsEngineInterface::readScore(const std::string& word, const std::string& rest) {
  const auto integer = [](std::string_view text) {
    std::size_t digits = text.size() > 1 && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    if (digits == text.size()) return false;
    for (; digits < text.size(); ++digits)
      if (text[digits] < '0' || text[digits] > '9') return false;
    return true;
  };
  if (protocol_ == PROTOCOL_XBOARD) {
    const std::string_view score = wordAt(rest, 0);
    if (integer(word) && word[0] >= '0' && integer(score))
      score_ = static_cast<int>(kobubase::clampTo(readInteger(score), -1000000, 1000000));
    return;
  }
  if (word != "info") return;
  for (int i = 0; !wordAt(rest, i).empty() && wordAt(rest, i) != "string"; ++i) {
    if (wordAt(rest, i) != "score" || !integer(wordAt(rest, i + 2))) continue;
    const int value = static_cast<int>(kobubase::clampTo(readInteger(wordAt(rest, i + 2)), -99999, 99999));
    if (wordAt(rest, i + 1) == "cp") score_ = value;
    if (wordAt(rest, i + 1) == "mate") score_ = value > 0 ? 100000 - value : -100000 - value;
    return;
  }
}

std::string clsEngineInterface::translateUci(const std::string& word, const std::string& rest) {
  if (word == "readyok" || word == "uciok") {
    ready_ = true;
    return {};
  }
  if (word == "bestmove") return "move " + std::string(wordAt(rest, 0));  // a ponder move is ignored
  readScore(word, rest);
  return {};
}

}  // namespace kbuChess
