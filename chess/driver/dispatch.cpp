// The command table and the xboard commands.
#include <cctype>

#include "chess/book/book_commands.h"
#include "chess/driver/talvena.h"

namespace kbuChess {

using kobubase::readClamped;
using kobubase::readInteger;
using kobubase::wordAt;

namespace {
// A thousand cores is more than any machine this runs on will offer.
constexpr std::int64_t MAX_CORES = 1024;
}  // namespace

// Exact, case-sensitive words, tried in this order after "usermove" and bare moves.
const clsTalvena::Command clsTalvena::COMMANDS[] = {
    {"xboard", &clsTalvena::cmdXboard},
    {"?", &clsTalvena::cmdStop},
    {"protover", &clsTalvena::cmdProtover},
    {"ping", &clsTalvena::cmdPing},
    {"variant", &clsTalvena::cmdIgnored},
    {"new", &clsTalvena::cmdNew},
    {"quit", &clsTalvena::cmdQuit},
    {"force", &clsTalvena::cmdForce},
    {"go", &clsTalvena::cmdGo},
    {"white", &clsTalvena::cmdWhite},
    {"black", &clsTalvena::cmdBlack},
    {"level", &clsTalvena::cmdLevel},
    {"sd", &clsTalvena::cmdDepth},
    {"time", &clsTalvena::cmdTime},
    {"otim", &clsTalvena::cmdOtim},
    {"draw", &clsTalvena::cmdIgnored},
    {"result", &clsTalvena::cmdResult},
    {"setboard", &clsTalvena::cmdSetboard},
    {"edit", &clsTalvena::cmdIgnored},
    {"hint", &clsTalvena::cmdIgnored},
    {"ics", &clsTalvena::cmdIcs},
    {"bk", &clsTalvena::cmdBk},
    {"undo", &clsTalvena::cmdUndo},
    {"remove", &clsTalvena::cmdIgnored},
    {"easy", &clsTalvena::cmdEasy},
    {"hard", &clsTalvena::cmdHard},
    {"post", &clsTalvena::cmdPost},
    {"nopost", &clsTalvena::cmdNopost},
    {"analyze", &clsTalvena::cmdIgnored},
    {"name", &clsTalvena::cmdName},
    {"rating", &clsTalvena::cmdRating},
    {"computer", &clsTalvena::cmdComputer},
    {"memory", &clsTalvena::cmdMemory},
    {"option", &clsTalvena::cmdOption},
    {"cores", &clsTalvena::cmdCores},
    {"perft", &clsTalvena::cmdPerft},
    {"divide", &clsTalvena::cmdDivide},
    // Maintenance commands (maintenance.cpp, epd_test.cpp).
    {"\\", &clsTalvena::cmdDebugBoard},
    {"\\dbg", &clsTalvena::cmdDbg},
    {"\\loadsoul", &clsTalvena::cmdLoadSoul},
    {"\\epd", &clsTalvena::cmdEpd},
    {"\\moves", &clsTalvena::cmdMoves},
    {"\\tourney", &clsTalvena::cmdTourney},
    {"\\merge", &clsTalvena::cmdMerge},
    {"\\soul", &clsTalvena::cmdSoul},
    {"\\testsouls", &clsTalvena::cmdNothing},
    {"\\learnt", &clsTalvena::cmdLearnt},
    {"\\learn", &clsTalvena::cmdLearn},
    {"\\mergebooks", &clsTalvena::cmdMergeBooks},
    {"\\cvbooks", &clsTalvena::cmdCvBooks},
    {"\\play", &clsTalvena::cmdPlay},
    {"\\console", &clsTalvena::cmdConsole},
    {"\\buildbooks", &clsTalvena::cmdBuildBooks},
    {"\\loadbook", &clsTalvena::cmdLoadBook},
    {"\\savebook", &clsTalvena::cmdSaveBook},
    {"\\listbook", &clsTalvena::cmdListBook},
    {"\\sql", &clsTalvena::cmdSql},
    {"\\odbc", &clsTalvena::cmdOdbc},
};

int clsTalvena::dispatch(const std::string& word, const std::string& rest) {
  if (word == "usermove") return userMove(word, rest);
  if (word.size() > 1 && word[1] >= '1' && word[1] <= '8') return userMove(word, word);
  for (const Command& command : COMMANDS) {
    if (word == command.word) return (this->*command.handler)(rest);
  }
  print("Error (unknown command): " + word);
  return CMD_IGNORED;
}

int clsTalvena::userMove(const std::string& word, const std::string& moveText) {
  // Tried on a copy first: an illegal move leaves a running search alone.
  const std::string move(wordAt(moveText, 0));
  if (move.size() < 4 || !positionView().readCoordinateMove(move)) {
    print("Illegal move: " + word);
    return CMD_ILLEGAL_MOVE;
  }
  haltSearch();
  const std::string previous = engine_.fen();
  if (!engine_.readCoordinateMove(move)) {
    print("Illegal move: " + word);
    return CMD_ILLEGAL_MOVE;
  }
  state_.undoStack.push_back(previous);
  if (state_.playMode == MODE_FORCE) {
    print("# I'm not thinking");
    state_.currentFen = engine_.fen();
  } else if (state_.playMode >= MODE_ENGINE_WHITE && state_.playMode <= 4) {
    think();
  } else {
    state_.currentFen = engine_.fen();
  }
  return CMD_HANDLED;
}

int clsTalvena::cmdXboard(const std::string&) {
  print("");
  return CMD_PRINTED;
}

int clsTalvena::cmdStop(const std::string&) {
  // The loop plays the best move found so far on its next pass.
  search_.stop();
  return CMD_HANDLED;
}

int clsTalvena::cmdProtover(const std::string&) {
  print(std::string("feature ping=1 setboard=1 done=1 san=0 usermove=1 time=1 draw=1 sigint=0 sigterm=0 reuse=1 "
                    "analyze=0 myname=\"") +
        NAME + " " + VERSION + "\" colors=0 ics=1 name=1 nps=0 debug=1 memory=1 smp=1");
  return CMD_PRINTED;
}

int clsTalvena::cmdPing(const std::string& rest) {
  state_.pendingPing = rest;
  if (!thinking()) pong();
  return CMD_HANDLED;
}

int clsTalvena::cmdNothing(const std::string&) { return CMD_HANDLED; }

int clsTalvena::cmdIgnored(const std::string&) { return CMD_IGNORED; }

int clsTalvena::cmdNew(const std::string&) {
  haltSearch();
  state_.playMode = MODE_FORCE;
  setPosition(clsBoard::START_FEN);
  state_.undoStack.clear();
  // The fixed initial time, not the level's base: "level" follows "new" anyway.
  state_.engineTimeMs = state_.opponentTimeMs = INITIAL_CLOCK_MS;
  state_.periodMoves = 0;
  state_.playMode = MODE_ENGINE_BLACK;
  state_.depthLimit = 128;
  return CMD_HANDLED;
}

int clsTalvena::cmdQuit(const std::string&) {
  state_.playMode = MODE_FORCE;
  haltSearch();
  return CMD_QUIT;
}

int clsTalvena::cmdForce(const std::string&) {
  state_.playMode = MODE_FORCE;
  haltSearch();
  return CMD_HANDLED;
}

int clsTalvena::cmdGo(const std::string&) {
  haltSearch();
  state_.playMode = engine_.position().side == WHITE ? MODE_ENGINE_WHITE : MODE_ENGINE_BLACK;
  think();
  return CMD_HANDLED;
}

int clsTalvena::cmdWhite(const std::string&) {
  state_.playMode = MODE_FORCE;
  haltSearch();
  state_.playMode = MODE_ENGINE_BLACK;
  return CMD_HANDLED;
}

int clsTalvena::cmdBlack(const std::string&) {
  state_.playMode = MODE_FORCE;
  haltSearch();
  state_.playMode = MODE_ENGINE_WHITE;
  return CMD_HANDLED;
}

int clsTalvena::cmdLevel(const std::string& rest) {
  state_.level = parseLevel(rest);
  state_.engineTimeMs = state_.opponentTimeMs = state_.level.baseMs;
  state_.periodMoves = 0;
  return CMD_HANDLED;
}

int clsTalvena::cmdDepth(const std::string& rest) {
  const char first = rest.empty() ? ' ' : rest[0];
  std::int64_t depth = std::isdigit(static_cast<unsigned char>(first)) ? readInteger(rest) : 2;
  if (depth > 128) depth = 128;
  if (depth < 1) depth = 1;
  state_.depthLimit = static_cast<int>(depth);
  return CMD_HANDLED;
}

int clsTalvena::cmdTime(const std::string& rest) {
  state_.engineTimeMs = centisecondsToMs(rest);
  return CMD_HANDLED;
}

int clsTalvena::cmdOtim(const std::string& rest) {
  state_.opponentTimeMs = centisecondsToMs(rest);
  return CMD_HANDLED;
}

int clsTalvena::cmdResult(const std::string& rest) {
  state_.playMode = MODE_FORCE;
  haltSearch();
  print("# result " + rest);
  return CMD_PRINTED;
}

int clsTalvena::cmdSetboard(const std::string& rest) {
  haltSearch();
  setPosition(rest);
  state_.undoStack.clear();
  return CMD_HANDLED;
}

int clsTalvena::cmdIcs(const std::string& rest) {
  state_.ics = rest;
  return CMD_HANDLED;
}

int clsTalvena::cmdBk(const std::string&) {
  return commandBk(book_, positionView(), *this);
}

int clsTalvena::cmdUndo(const std::string&) {
  state_.playMode = MODE_FORCE;
  haltSearch();
  if (state_.undoStack.empty()) {
    print("# nothing to undo");
    return CMD_PRINTED;
  }
  setPosition(state_.undoStack.back());
  state_.undoStack.pop_back();
  return CMD_HANDLED;
}

int clsTalvena::cmdEasy(const std::string&) {
  state_.hard = false;
  return CMD_HANDLED;
}

int clsTalvena::cmdHard(const std::string&) {
  state_.hard = true;
  return CMD_HANDLED;
}

int clsTalvena::cmdPost(const std::string&) {
  state_.post = true;
  return CMD_HANDLED;
}

int clsTalvena::cmdNopost(const std::string&) {
  state_.post = false;
  return CMD_HANDLED;
}

int clsTalvena::cmdName(const std::string&) {
  print(std::string(NAME) + " " + VERSION);
  return CMD_PRINTED;
}

int clsTalvena::cmdRating(const std::string&) {
  print("1350 1350");
  return CMD_PRINTED;
}

int clsTalvena::cmdComputer(const std::string&) {
  print("# hello my peer!");
  return CMD_PRINTED;
}

// "memory" and "cores" are kept as the clamped numbers they were read as.
int clsTalvena::cmdMemory(const std::string& rest) {
  engine_.runtimeOptions().set("memory", std::to_string(readClamped(rest, 0, MAX_TABLE_MIB)));
  return CMD_HANDLED;
}

int clsTalvena::cmdOption(const std::string& rest) {
  engine_.runtimeOptions().setPair(rest);
  return CMD_HANDLED;
}

int clsTalvena::cmdCores(const std::string& rest) {
  engine_.runtimeOptions().set("cores", std::to_string(readClamped(rest, 1, MAX_CORES)));
  return CMD_HANDLED;
}

int clsTalvena::cmdPerft(const std::string& rest) { return runPerft(rest, false); }

int clsTalvena::cmdDivide(const std::string& rest) { return runPerft(rest, true); }

int clsTalvena::runPerft(const std::string& rest, bool divide) {
  const std::int64_t asked = readInteger(rest);
  if (asked > PERFT_MAX_DEPTH) {
    print("# perft depth " + std::to_string(asked) + " is too deep, at most " + std::to_string(PERFT_MAX_DEPTH));
    return CMD_PRINTED;
  }
  const int depth = static_cast<int>(kobubase::clampTo(asked, 0, PERFT_MAX_DEPTH));
  haltSearch();
  const std::int64_t start = kobubase::nowMs();
  watchPerft(start, divide);
  const u64 nodes = engine_.perft(depth, divide);
  const std::int64_t ms = kobubase::nowMs() - start;
  engine_.perftPoll = nullptr;
  engine_.perftRootDone = nullptr;
  engine_.resetFrames();
  if (engine_.perftStopped()) {
    print("# perft stopped after " + std::to_string(nodes) + " nodes, " + std::to_string(ms) + " ms");
    return CMD_PRINTED;
  }
  print("Nodes: " + std::to_string(nodes) + ", Time: " + std::to_string(ms) +
        " ms, Nodes/s: " + std::to_string(nodes * 1000 / static_cast<u64>(ms + 1)));
  return CMD_PRINTED;
}

// A count that runs longer than a second reports each finished root move (divide
// prints its own lines), and a "quit" or "?" waiting in the input ends it; the
// loop then takes that line as usual.
void clsTalvena::watchPerft(std::int64_t start, bool divide) {
  engine_.perftPoll = [this] {
    return reader_ && reader_->anyQueued([](const std::string& line) {
      const std::string_view word = wordAt(line, 0);
      return word == "quit" || word == "?";
    });
  };
  engine_.perftRootDone = [this, start, divide, rootMoves = 0, nodesSoFar = u64{0}](const Move& move,
                                                                                     u64 count) mutable {
    ++rootMoves;
    nodesSoFar += count;
    const std::int64_t ms = kobubase::nowMs() - start;
    if (divide || ms < 1000) return;
    print("# perft " + clsBoard::moveText(&move, true) + " " + std::to_string(count) + " - " +
          std::to_string(rootMoves) + " root moves, " + std::to_string(nodesSoFar) + " nodes, " + std::to_string(ms) +
          " ms");
  };
}

}  // namespace kbuChess
