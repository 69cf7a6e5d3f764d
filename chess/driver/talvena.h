#pragma once
// clsTalvena is the program: the one driver object that owns the engine, the
// book and the state of the xboard dialogue. Its thread runs the main routine
// (banner, optional tournament, then the polling loop); every input line is
// split into a command word and the rest and handed to dispatch(), which only
// the driver thread calls. All output goes through the clsOutBuffer base.
//
// Sources: talvena.cpp (construction, main routine, loop, think),
// dispatch.cpp (the command table and the xboard commands),
// maintenance.cpp (backslash commands), epd_test.cpp (the EPD test run),
// console_commands.cpp (the expression console mode, "\sql", "\odbc").
#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "base/options.h"
#include "base/text.h"
#include "base/output.h"
#include "base/stdin_thread.h"
#include "base/thread.h"
#include "base/version.h"
#include "chess/book/book.h"
#include "base/command_result.h"
#include "chess/engine/time_control.h"
#include "chess/engine/engine.h"
#include "chess/engine/engine_share.h"
#include "chess/engine/search_control.h"
#include "chess/tourney/learning.h"

namespace kbuChess {

using enum kobubase::CommandResult;

class clsConsole;

// Who the engine plays for. The loop lets the engine move in modes 2 to 5.
enum PlayMode : int { MODE_FORCE = 0, MODE_ENGINE_WHITE = 2, MODE_ENGINE_BLACK = 3, MODE_EPD_TEST = 5 };

// The state of the xboard dialogue.
struct ProtocolState {
  int playMode = MODE_FORCE;
  int depthLimit = 128;  // "sd"; 128 means no limit
  TimeControl level;
  std::int64_t engineTimeMs = 300000;
  std::int64_t opponentTimeMs = 300000;
  int periodMoves = 0;  // moves the engine made in the current period
  std::int64_t lastThinkingMs = 0;
  bool hard = false;
  bool post = false;
  bool debugDisplay = false;
  std::deque<std::string> pendingPings;  // answered in order once no search waits for its move
  std::string ics;
};

// One EPD test run ("\epd"): the positions still to test and the score so far.
struct EpdRun {
  std::vector<std::string> lines;
  std::size_t next = 0;
  std::vector<std::string> operations;  // of the position being tested
  int solved = 0;
  int tested = 0;
};

class clsTalvena : public kobubase::clsThread, public kobubase::clsOutBuffer {
 public:
  static constexpr const char* NAME = kobubase::PROGRAM_NAME;
  static constexpr const char* VERSION = kobubase::PROGRAM_VERSION;
  static constexpr std::int64_t INITIAL_CLOCK_MS = 300000;
  // Perft beyond this depth would run for ages and, past the frame stack, be unsafe.
  static constexpr int PERFT_MAX_DEPTH = 20;

  explicit clsTalvena(const kobubase::clsOptions& options);
  ~clsTalvena() override;

  // Splits a line at its first blank, logs it and dispatches it; then answers
  // the pings that no longer wait for an engine move.
  int execute(const std::string& line);
  int dispatch(const std::string& word, const std::string& rest);
  // One pass of the loop without input: collects a finished search, applies
  // the deadline, prints the periodic thinking line.
  void serviceEngine();
  // True while a search runs or its move has not been played yet.
  bool thinking() const { return search_.awaitingCollect(); }

  clsEngine& engine() { return engine_; }
  const ProtocolState& state() const { return state_; }
  // The game as the GUI sees it: the position and the saved copies that "undo" restores.
  const GamePosition& game() const { return game_; }
  std::size_t undoDepth() const { return undo_.size(); }
  std::string currentFen() { return positionView().fen(); }
  const std::string& logPath() const { return logPath_; }
  // True while input lines go to the expression console ("\console" .. "exit").
  bool inConsole() const { return consoleMode_; }

  // 1 when the last tournament or merge could not be done, else 0: the
  // program's exit status in its -use= modes.
  int exitStatus() const { return exitStatus_; }

 protected:
  void run() override;

 private:
  using Handler = int (clsTalvena::*)(const std::string& rest);
  // What a command does to a running search. Commands that only look or set a
  // value run beside it; commands that change the game or the play mode end it
  // (its move is dropped); commands that keep the driver busy for a while first
  // finish it: the engine plays the best move found so far, then they run.
  enum class SearchRule { BESIDE, ENDS, FINISHES };
  struct Command {
    const char* word;
    Handler handler;
    SearchRule rule;
  };
  static const Command COMMANDS[];

  // --- talvena.cpp: main routine, loop, think
  void printBanner();
  void runLoop();
  int executeCommand(const std::string& line);
  // Hands the input over to a UCI session for the rest of the run.
  void runUci(const std::string& firstLine);
  void think();
  void collectMove(std::int64_t now);
  void playEngineMove(const Move& move);
  void printThinking(std::int64_t now);
  // Answers every pending ping, in the order they came.
  void pong();
  // Stops a running search and forgets its move.
  void abandonSearch();
  // Stops a running search and plays (or, in an EPD test, scores) its move now.
  void finishSearch();
  void logCommand(const std::string& word, const std::string& rest);
  // Starts a new game from a FEN (its score is the material count).
  void setPosition(const std::string& fen);
  // Plays a legal move of the game's position and saves the position before it for "undo".
  void playOnGame(const Move& move);
  // A copy of the game's position on a board of its own: commands that only
  // look answer from it while the engine thinks on its own board.
  clsBoard& positionView();

  // --- dispatch.cpp: moves and xboard commands
  int userMove(const std::string& word, const std::string& moveText);
  int cmdXboard(const std::string& rest);
  int cmdStop(const std::string& rest);
  int cmdProtover(const std::string& rest);
  int cmdPing(const std::string& rest);
  int cmdNothing(const std::string& rest);
  int cmdIgnored(const std::string& rest);
  int cmdNew(const std::string& rest);
  int cmdQuit(const std::string& rest);
  int cmdForce(const std::string& rest);
  int cmdGo(const std::string& rest);
  int cmdWhite(const std::string& rest);
  int cmdBlack(const std::string& rest);
  int cmdLevel(const std::string& rest);
  int cmdDepth(const std::string& rest);
  int cmdTime(const std::string& rest);
  int cmdOtim(const std::string& rest);
  int cmdResult(const std::string& rest);
  int cmdSetboard(const std::string& rest);
  int cmdIcs(const std::string& rest);
  int cmdBk(const std::string& rest);
  int cmdUndo(const std::string& rest);
  int cmdEasy(const std::string& rest);
  int cmdHard(const std::string& rest);
  int cmdPost(const std::string& rest);
  int cmdNopost(const std::string& rest);
  int cmdName(const std::string& rest);
  int cmdRating(const std::string& rest);
  int cmdComputer(const std::string& rest);
  int cmdMemory(const std::string& rest);
  int cmdOption(const std::string& rest);
  int cmdCores(const std::string& rest);
  int cmdPerft(const std::string& rest);
  int cmdDivide(const std::string& rest);
  int runPerft(const std::string& rest, bool divide);
  void watchPerft(std::int64_t start, bool divide);

  // --- maintenance.cpp: backslash commands
  int cmdDebugBoard(const std::string& rest);
  int cmdDbg(const std::string& rest);
  int cmdLoadSoul(const std::string& rest);
  int cmdSoul(const std::string& rest);
  int cmdMoves(const std::string& rest);
  int cmdTourney(const std::string& rest);
  int cmdMerge(const std::string& rest);
  int cmdLoadBook(const std::string& rest);
  int cmdSaveBook(const std::string& rest);
  int cmdListBook(const std::string& rest);
  int cmdMergeBooks(const std::string& rest);
  int cmdBuildBooks(const std::string& rest);
  int cmdCvBooks(const std::string& rest);
  int cmdLearn(const std::string& rest);
  int cmdLearnt(const std::string& rest);
  int runLearning(const LearningSettings& settings);
  bool runLearnSlices();
  int cmdPlay(const std::string& rest);
  int cmdConsole(const std::string& rest);
  void printMoveList();
  // A preset name, a soul text NAME=v1 ... or a file whose first line is one.
  void loadSoul(const std::string& text);

  // --- console_commands.cpp
  int cmdSql(const std::string& rest);
  int cmdOdbc(const std::string& rest);
  int consoleLine(const std::string& line);
  clsConsole& console();
  void printComments(const std::vector<std::string>& lines);

  // --- epd_test.cpp
  int cmdEpd(const std::string& rest);
  void startNextEpdPosition();
  void scoreEpdMove(const Move& move);

  kobubase::clsOptions options_;
  int exitStatus_ = 0;
  std::string logPath_;
  std::FILE* logFile_ = nullptr;
  clsEngineShare share_;
  clsEngine engine_;
  clsSearchControl search_{engine_};
  GamePosition game_{};
  std::vector<GamePosition> undo_;
  clsBoard view_;
  clsBook book_;
  ProtocolState state_;
  EpdRun epd_;
  LearningSettings learning_;  // the last "\learn" settings, which "\learnt" reuses
  std::unique_ptr<kobubase::clsStdInThread> reader_;
  std::unique_ptr<clsConsole> console_;
  bool consoleMode_ = false;
};

}  // namespace kbuChess
