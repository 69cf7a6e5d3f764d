// The UCI session of the real program over pipes: the handshake and options,
// bad input, the search commands with their info and bestmove lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "chess/board/board.h"
#include "engine_process.h"

namespace {

using Lines = std::vector<std::string>;

class UciTest : public testing::Test {
 protected:
  explicit UciTest(const Lines& args = {}) : engine_(TALVENA_BIN, args) {}

  // The replies up to one that starts with prefix, which comes last.
  Lines repliesUntil(const std::string& prefix, int timeoutMs = 5000) {
    Lines lines;
    do {
      lines.push_back(engine_.nextReply(timeoutMs));
    } while (lines.back().rfind(prefix, 0) != 0 && lines.back() != "<nothing>");
    return lines;
  }
  // The move of the bestmove line is legal after the moves from the start.
  static bool legalAfter(const std::string& bestmove, const Lines& moves = {}) {
    kbuChess::clsBoard board;
    for (const std::string& move : moves) EXPECT_TRUE(board.readCoordinateMove(move)) << move;
    return bestmove.rfind("bestmove ", 0) == 0 && board.readCoordinateMove(bestmove.substr(9));
  }

  EngineProcess engine_;
};

class UciForcedTest : public UciTest {
 protected:
  UciForcedTest() : UciTest({"-use=uci"}) {}
};

TEST_F(UciTest, HandshakeOptionsAndBadInput) {
  engine_.send("uci");
  EXPECT_EQ(repliesUntil("uciok"),
            (Lines{"id name Talvena 3.0.23", "id author the Talvena developers",
                   "option name Hash type spin default 0 min 0 max 65536",
                   "option name Soul type string default Simple5", "option name OwnBook type check default true",
                   "option name BookFile type string default talvena.sbk", "uciok"}));
  // Commands that answer nothing are followed by "isready", so each reply is the next line.
  EXPECT_EQ(engine_.ask("isready"), "readyok");
  const std::pair<const char*, const char*> cases[] = {
      {"frobnicate 3", "info string unknown command: frobnicate"},
      {"setoption name Soul value Mass161", "info string soul Mass161"},
      {"setoption name soul value Pawns=1 2 3", "info string soul Pawns"},
      {"setoption name Hash value -5", "readyok"},
      {"setoption name OwnBook value false", "readyok"},
      {"setoption name Colour value red", "info string unknown option: Colour"},
      {"setoption Hash 5", "info string setoption needs: name NAME value VALUE"},
      {"position somewhere", "info string position needs startpos or fen; using the start position"},
      {"position startpos moves e2e4 e7e5 e1e8 d2d4",
       "info string illegal move e1e8 in position; the moves before it stand"},
  };
  for (const auto& [command, reply] : cases) {
    engine_.send(command);
    engine_.send("isready");
    EXPECT_EQ(engine_.nextReply(), reply) << command;
    if (std::string(reply) != "readyok") {
      EXPECT_EQ(engine_.nextReply(), "readyok") << command;
    }
  }
  engine_.send("go depth 2");
  const Lines lines = repliesUntil("bestmove");
  EXPECT_TRUE(legalAfter(lines.back(), {"e2e4", "e7e5"})) << lines.back();
  engine_.quit();
}

TEST_F(UciForcedTest, SearchCommandsAlwaysEndInALegalBestMove) {
  EXPECT_EQ(engine_.ask("isready"), "readyok");
  engine_.send("setoption name OwnBook value false");  // a book beside the program would answer at once
  // A "go" before any position searches the start position, until "stop".
  engine_.send("go infinite");
  const std::string info = engine_.nextReply();
  EXPECT_EQ(info.rfind("info depth ", 0), 0u) << info;
  EXPECT_NE(info.find(" score cp "), std::string::npos) << info;
  engine_.send("isready");  // answered while the search goes on, perhaps after more info lines
  EXPECT_EQ(repliesUntil("readyok").back(), "readyok");
  engine_.send("stop");
  EXPECT_TRUE(legalAfter(repliesUntil("bestmove").back()));

  // Absurd clocks are clamped: no time left means a move at once.
  for (const char* go : {"go movetime 100", "go wtime -5 btime 99999999999999999999 movestogo -3 winc x",
                         "go nodes 2000", "go depth 999 movetime 200"}) {
    engine_.send(go);
    EXPECT_TRUE(legalAfter(repliesUntil("bestmove").back())) << go;
  }

  // One legal move, a mate found at depth 2, a promotion; a ponder search
  // waits for "ponderhit", which starts a search on the clocks given.
  const struct {
    const char* fen;
    const char* go;
    const char* bestmove;
  } positions[] = {
      {"7k/8/8/8/8/8/6r1/K7 w - - 0 1", "go movetime 100000", "bestmove a1b1"},
      {"6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1", "go movetime 100000", "bestmove a1a8"},
      {"8/4P3/8/8/8/8/k7/7K w - - 0 1", "go depth 4", "bestmove e7e8q"},
  };
  for (const auto& [fen, go, bestmove] : positions) {
    engine_.send(std::string("position fen ") + fen);
    engine_.send(go);
    const Lines lines = repliesUntil("bestmove", 20000);
    EXPECT_EQ(lines.back(), bestmove) << fen;
  }
  engine_.send("position fen 6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1");
  engine_.send("go ponder wtime 4000 btime 4000");
  const Lines mate = repliesUntil("info depth");
  EXPECT_EQ(mate.back().rfind("info depth 2 score mate 2 nodes ", 0), 0u) << mate.back();
  EXPECT_EQ(mate.back().substr(mate.back().size() - 8), " pv a1a8");
  engine_.send("isready");  // the move waits for the ponderhit
  EXPECT_EQ(repliesUntil("readyok"), Lines{"readyok"});
  engine_.send("ponderhit");
  EXPECT_EQ(repliesUntil("bestmove").back(), "bestmove a1a8");

  engine_.send("position startpos");
  engine_.send("go infinite");
  engine_.send("isready");
  EXPECT_EQ(repliesUntil("readyok").back(), "readyok");
  engine_.quit();  // "quit" ends a running search
}

}  // namespace
