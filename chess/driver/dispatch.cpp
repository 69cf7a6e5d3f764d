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
    {"xboard", &clsTalvena::cmdXboard, SearchRule::BESIDE},
    {"?", &clsTalvena::cmdStop, SearchRule::BESIDE},
    {"protover", &clsTalvena::cmdProtover, SearchRule::BESIDE},
    {"ping", &clsTalvena::cmdPing, SearchRule::BESIDE},
    {"variant", &clsTalvena::cmdIgnored, SearchRule::BESIDE},
    {"new", &clsTalvena::cmdNew, SearchRule::ENDS},
    {"quit", &clsTalvena::cmdQuit, SearchRule::ENDS},
    {"force", &clsTalvena::cmdForce, SearchRule::ENDS},
    {"go", &clsTalvena::cmdGo, SearchRule::ENDS},
    {"white", &clsTalvena::cmdWhite, SearchRule::ENDS},
    {"black", &clsTalvena::cmdBlack, SearchRule::ENDS},
    {"level", &clsTalvena::cmdLevel, SearchRule::BESIDE},
    {"sd", &clsTalvena::cmdDepth, SearchRule::BESIDE},
    {"time", &clsTalvena::cmdTime, SearchRule::BESIDE},
    {"otim", &clsTalvena::cmdOtim, SearchRule::BESIDE},
    {"draw", &clsTalvena::cmdIgnored, SearchRule::BESIDE},
    {"result", &clsTalvena::cmdResult, SearchRule::ENDS},
    {"setboard", &clsTalvena::cmdSetboard, SearchRule::ENDS},
    {"edit", &clsTalvena::cmdIgnored, SearchRule::BESIDE},
    {"hint", &clsTalvena::cmdIgnored, SearchRule::BESIDE},
    {"ics", &clsTalvena::cmdIcs, SearchRule::BESIDE},
    {"bk", &clsTalvena::cmdBk, SearchRule::BESIDE},
    {"undo", &clsTalvena::cmdUndo, SearchRule::ENDS},
    {"remove", &clsTalvena::cmdIgnored, SearchRule::BESIDE},
    {"easy", &clsTalvena::cmdEasy, SearchRule::BESIDE},
    {"hard", &clsTalvena::cmdHard, SearchRule::BESIDE},
    {"post", &clsTalvena::cmdPost, SearchRule::BESIDE},
    {"nopost", &clsTalvena::cmdNopost, SearchRule::BESIDE},
    {"analyze", &clsTalvena::cmdIgnored, SearchRule::BESIDE},
    {"name", &clsTalvena::cmdName, SearchRule::BESIDE},
    {"rating", &clsTalvena::cmdRating, SearchRule::BESIDE},
    {"computer", &clsTalvena::cmdComputer, SearchRule::BESIDE},
    {"memory", &clsTalvena::cmdMemory, SearchRule::BESIDE},
    {"option", &clsTalvena::cmdOption, SearchRule::BESIDE},
    {"cores", &clsTalvena::cmdCores, SearchRule::BESIDE},
    {"perft", &clsTalvena::cmdPerft, SearchRule::FINISHES},
    {"divide", &clsTalvena::cmdDivide, SearchRule::FINISHES},
    // Maintenance commands (maintenance.cpp, epd_test.cpp).
    {"\\", &clsTalvena::cmdDebugBoard, SearchRule::BESIDE},
    {"\\dbg", &clsTalvena::cmdDbg, SearchRule::BESIDE},
    {"\\loadsoul", &clsTalvena::cmdLoadSoul, SearchRule::FINISHES},
    {"\\epd", &clsTalvena::cmdEpd, SearchRule::ENDS},
    {"\\moves", &clsTalvena::cmdMoves, SearchRule::BESIDE},
    {"\\tourney", &clsTalvena::cmdTourney, SearchRule::FINISHES},
    {"\\soul", &clsTalvena::cmdSoul, SearchRule::BESIDE},
    {"\\testsouls", &clsTalvena::cmdNothing, SearchRule::BESIDE},  // a reserved name, kept deliberately
    {"\\learnt", &clsTalvena::cmdLearnt, SearchRule::FINISHES},
    {"\\learn", &clsTalvena::cmdLearn, SearchRule::FINISHES},
    {"\\mergebooks", &clsTalvena::cmdMergeBooks, SearchRule::FINISHES},
    {"\\cvbooks", &clsTalvena::cmdCvBooks, SearchRule::FINISHES},
    {"\\play", &clsTalvena::cmdPlay, SearchRule::FINISHES},
    {"\\console", &clsTalvena::cmdConsole, SearchRule::FINISHES},
    {"\\buildbooks", &clsTalvena::cmdBuildBooks, SearchRule::FINISHES},
    {"\\loadbook", &clsTalvena::cmdLoadBook, SearchRule::FINISHES},
    {"\\savebook", &clsTalvena::cmdSaveBook, SearchRule::FINISHES},
    {"\\listbook", &clsTalvena::cmdListBook, SearchRule::BESIDE},
    {"\\sql", &clsTalvena::cmdSql, SearchRule::FINISHES},
    {"\\odbc", &clsTalvena::cmdOdbc, SearchRule::FINISHES},
};

int clsTalvena::dispatch(const std::string& word, const std::string& rest) {
  if (word == "usermove") return userMove(word, rest);
  if (word.size() > 1 && word[1] >= '1' && word[1] <= '8') return userMove(word, word);
  for (const Command& command : COMMANDS) {
    if (word != command.word) continue;
    if (command.rule == SearchRule::ENDS) abandonSearch();
    if (command.rule == SearchRule::FINISHES) finishSearch();
    return (this->*command.handler)(rest);
  }
  print("Error (unknown command): " + word);
  return CMD_IGNORED;
}

// Read on a copy of the game's position: an illegal move leaves a running search alone.
int clsTalvena::userMove(const std::string& word, const std::string& moveText) {
  const std::string_view text = wordAt(moveText, 0);
  const Move* found = text.size() < 4 ? nullptr : positionView().findCoordinateMove(text);
  if (found == nullptr) {
    // Names the command word ("usermove"), not the move: kept deliberately, GUIs match this reply.
    print("Illegal move: " + word);
    return CMD_ILLEGAL_MOVE;
  }
  const Move move = *found;
  abandonSearch();
  playOnGame(move);
  if (state_.playMode == MODE_FORCE) {
    print("# I'm not thinking");
  } else if (state_.playMode >= MODE_ENGINE_WHITE && state_.playMode <= 4) {
    think();
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

// Answered once the commands before it are handled and no search waits for its move.
int clsTalvena::cmdPing(const std::string& rest) {
  state_.pendingPings.push_back(rest);
  return CMD_HANDLED;
}

int clsTalvena::cmdNothing(const std::string&) { return CMD_HANDLED; }

int clsTalvena::cmdIgnored(const std::string&) { return CMD_IGNORED; }

int clsTalvena::cmdNew(const std::string&) {
  state_.playMode = MODE_FORCE;
  setPosition(clsBoard::START_FEN);
  undo_.clear();
  // The fixed initial time, not the level's base: "level" follows "new" anyway.
  state_.engineTimeMs = state_.opponentTimeMs = INITIAL_CLOCK_MS;
  state_.periodMoves = 0;
  state_.playMode = MODE_ENGINE_BLACK;
  state_.depthLimit = 128;
  return CMD_HANDLED;
}

int clsTalvena::cmdQuit(const std::string&) {
  state_.playMode = MODE_FORCE;
  return CMD_QUIT;
}

int clsTalvena::cmdForce(const std::string&) {
  state_.playMode = MODE_FORCE;
  return CMD_HANDLED;
}

int clsTalvena::cmdGo(const std::string&) {
  state_.playMode = game_.position.side == WHITE ? MODE_ENGINE_WHITE : MODE_ENGINE_BLACK;
  think();
  return CMD_HANDLED;
}

int clsTalvena::cmdWhite(const std::string&) {
  state_.playMode = MODE_FORCE;
  state_.playMode = MODE_ENGINE_BLACK;
  return CMD_HANDLED;
}

int clsTalvena::cmdBlack(const std::string&) {
  state_.playMode = MODE_FORCE;
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
  print("# result " + rest);
  return CMD_PRINTED;
}

int clsTalvena::cmdSetboard(const std::string& rest) {
  setPosition(rest);
  undo_.clear();
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
  if (undo_.empty()) {
    print("# nothing to undo");
    return CMD_PRINTED;
  }
  game_ = undo_.back();
  undo_.pop_back();
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
  const std::int64_t start = kobubase::nowMs();
  watchPerft(start, divide);
  engine_.setGamePosition(game_);
  u64 nodes = engine_.perft(depth, divide);
  const std::int64_t ms = kobubase::nowMs() - start;
  engine_.perftPoll = nullptr;
  engine_.perftRootDone = nullptr;
  engine_.resetFrames();
  if (engine_.perftStopped()) {
    print("# perft stopped after " + std::to_string(nodes) + " nodes, " + std::to_string(ms) + " ms");
    return CMD_PRINTED;
  }
  // The board answers all ones when the side to move can take a king; such
  // a position has no legal move tree below it, so no leaves.
  if (nodes == clsBoard::KING_CAPTURE_COUNT) {
    print("# perft: the side to move can capture a king; the position has no legal move tree");
    nodes = 0;
  }
  print("Nodes: " + std::to_string(nodes) + ", Time: " + std::to_string(ms) +
        " ms, Nodes/s: " + std::to_string(nodes * 1000 / static_cast<u64>(ms + 1)));
  return CMD_PRINTED;
}

// A count that runs longer than a second reports each finished root move (divide
// prints its own lines), and a "?" waiting in the input ends it. Anything else
// waits for the count, "quit" and the end of input too: a script that pipes a
// perft and then quits gets its count.
void clsTalvena::watchPerft(std::int64_t start, bool divide) {
  engine_.perftPoll = [this] {
    return reader_ && reader_->anyQueued([](const std::string& line) { return wordAt(line, 0) == "?"; });
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
