#include "chess/tourney/engine_interface.h"

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
    Send("ping " + std::to_string(pingCounter_));
  }
}

void clsEngineInterface::NewGame() {
  moveHistory_.clear();
  forced_ = false;
  if (protocol_ == PROTOCOL_UCI) {
    Send("ucinewgame");
    Send("position startpos");
    Sync();
    return;
  }
  Send("new");
  Send("post");
  // The base time goes out in whole seconds where the protocol reads minutes;
  // "time" and "otim" before every move carry the true clocks.
  Send("level 0 " + std::to_string(ownClock_ / 1000) + " " + std::to_string(ownIncrement_ / 1000));
}

void clsEngineInterface::Go() {
  if (protocol_ == PROTOCOL_XBOARD) {
    Send("time " + std::to_string(ownClock_ / 10));
    Send("otim " + std::to_string(opponentClock_ / 10));
    Send("go");
    forced_ = false;
    return;
  }
  if (forced_) Send("position startpos moves " + moveHistory_);  // after an opening
  forced_ = false;
  const bool white = colour_ == 0;
  const std::int32_t w = white ? ownClock_ : opponentClock_, b = white ? opponentClock_ : ownClock_;
  const std::int32_t wi = white ? ownIncrement_ : opponentIncrement_, bi = white ? opponentIncrement_ : ownIncrement_;
  Send("go wtime " + std::to_string(w) + " btime " + std::to_string(b) + " winc " + std::to_string(wi) + " binc " +
       std::to_string(bi));
}

void clsEngineInterface::PlayMove(const std::string& played, int side) {
  // Engines read promotions as e7e8q; our own notation writes e7e8=q.
  std::string move = played;
  std::erase(move, '=');
  moveHistory_ += move + " ";
  if (side == colour_) return;  // our own move coming back
  if (protocol_ == PROTOCOL_UCI) {
    Send("position startpos" + (moveHistory_.empty() ? std::string() : " moves " + moveHistory_));
    forced_ = false;
    Go();
    return;
  }
  Send("time " + std::to_string(ownClock_ / 10));
  Send("otim " + std::to_string(opponentClock_ / 10));
  Send(move);
  // After an opening the engine was in force mode: the move alone would not
  // make it think.
  if (forced_) Send("go");
  forced_ = false;
}

// xboard engines take the opening in force mode and leave it with "go" (their
// own first move) or with the opponent's first move followed by "go"; UCI
// engines get the opening with their first "position".
void clsEngineInterface::PlayOpeningMove(const std::string& move) {
  moveHistory_ += move + " ";
  if (protocol_ == PROTOCOL_XBOARD) {
    if (!forced_) Send("force");
    Send(move);
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
  Log("waiting for '" + name_ + "' initialization...");
  kobubase::sleepMs(startPauseMs());
  Init();
  for (int round = 0; round < READY_ROUNDS; ++round) {
    if (ready_) {
      NewGame();
      return true;
    }
    if (!ReadReply().empty()) break;
    if (HasEnded()) break;  // a program that is gone will not get ready
    kobubase::sleepMs(1);
  }
  if (!ready_) return false;
  NewGame();
  return true;
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
    ready_ = wordAt(rest, 0).empty() ? pingCounter_ == 0 : readInteger(rest) == pingCounter_;
    return {};
  }
  if (word == "move") return "move " + std::string(wordAt(rest, 0));
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
// (myname="Some Engine 1.0") and is stored without its quotes.
void clsEngineInterface::readFeatures(const std::string& rest) {
  pingSupported_ = false;
  ready_ = true;
  for (const std::string& item : kobubase::splitArguments(rest)) {
    const std::size_t equals = item.find('=');
    if (equals == std::string::npos || equals == 0) continue;
    const std::string key = item.substr(0, equals), value = item.substr(equals + 1);
    bool known = false;
    for (auto& [name, old] : features_) {
      if (name == key) old = value, known = true;
    }
    if (!known) features_.emplace_back(key, value);
    if (key == "done") ready_ = readInteger(value) != 0;
    if (key == "ping") {
      pingSupported_ = readInteger(value) != 0;
      ready_ = readInteger(value) == 0;
    }
  }
  if (pingSupported_) Sync();  // ready only once the ping is answered
}

std::string clsEngineInterface::translateUci(const std::string& word, const std::string& rest) {
  if (word == "readyok" || word == "uciok") {
    ready_ = true;
    return {};
  }
  if (word == "bestmove") return "move " + std::string(wordAt(rest, 0));  // a ponder move is ignored
  return {};
}

}  // namespace kbuChess
