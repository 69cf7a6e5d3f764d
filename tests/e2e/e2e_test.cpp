#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "chess/board/board.h"
#include "engine_process.h"
#include "tests/common/test_files.h"

namespace {

using Lines = std::vector<std::string>;

const char* const FeatureLine =
    "feature ping=1 setboard=1 done=1 san=0 usermove=1 time=1 draw=1 sigint=0 sigterm=0 reuse=1 analyze=0 "
    "myname=\"Talvena 3.0.23\" colors=0 ics=1 name=1 nps=0 debug=1 memory=1 smp=1";

class E2eTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(engine_.awaits("# Talvena 3.0.23", 5000)) << "no banner"; }
  std::string ask(const std::string& line) { return engine_.ask(line); }

  EngineProcess engine_{TALVENA_BIN};
};

TEST_F(E2eTest, HandshakeIllegalMovesAndEndOfInput) {
  EXPECT_EQ(ask("xboard"), "");
  EXPECT_EQ(ask("protover 2"), FeatureLine);
  EXPECT_EQ(ask("ping 1"), "pong 1");
  for (auto [line, word] : {std::pair{"usermove e2e5", "usermove"}, {"usermove", "usermove"}, {"e4", "e4"}}) {
    EXPECT_EQ(ask(line), std::string("Illegal move: ") + word);
  }
  engine_.closeInput();  // the end of input acts as quit
  engine_.expectFarewell();
}

TEST_F(E2eTest, PingDuringSearchIsAnsweredAfterTheMoveQuitEndsASearch) {
  for (const char* line : {"new", "level 0 0:20 0", "go"}) engine_.send(line);
  ASSERT_TRUE(engine_.awaits("# moves 0/0 - time 498/20000 ms", 3000));
  engine_.send("ping 5");
  const Lines lines = engine_.readUntil("pong 5", 5000);
  ASSERT_TRUE(engine_.found());
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2].rfind("move ", 0), 0u) << lines[lines.size() - 2];
  engine_.send("go");  // now for Black; quit while that search runs
  ASSERT_TRUE(engine_.awaits("# moves", 3000));
  engine_.quit();
}

TEST_F(E2eTest, QuestionMarkStopsAndUndoTakesBack) {
  for (const char* line : {"new", "level 0 60 0", "go"}) engine_.send(line);
  ASSERT_TRUE(engine_.awaits("# moves", 3000));
  engine_.send("?");  // an hour on the clock: only "?" ends the search in time
  ASSERT_TRUE(engine_.awaits("move ", 2000));
  // Back to the start: e2e4 must be legal again and the engine must stay quiet.
  for (const char* line : {"undo", "force", "e2e4", "undo", "undo", "usermove e2e4"}) engine_.send(line);
  engine_.send("ping 3");
  const Lines lines = engine_.readUntil("pong 3", 3000);
  ASSERT_TRUE(engine_.found());
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "# I'm not thinking"), 2);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "# nothing to undo"), 1);
  for (const std::string& line : lines) EXPECT_EQ(line.find("Illegal"), std::string::npos) << line;
  engine_.quit();
}

TEST_F(E2eTest, BadInputGetsRepliesAndTheEngineKeepsWorking) {
  for (const char* line : {"", "\r"}) engine_.send(line);
  const std::string longWord(100 * 1024, 'x');
  EXPECT_EQ(ask(longWord), "Error (unknown command): " + longWord);
  EXPECT_EQ(ask(std::string("\x01\x02\xff\xfe rest\x7f", 10)),
            std::string("Error (unknown command): \x01\x02\xff\xfe", 29));
  EXPECT_EQ(ask("frobnicate 1 2"), "Error (unknown command): frobnicate");
  for (const char* line : {"level a b c", "time abc", "otim -", "sd deep", "memory lots", "setboard"}) {
    engine_.send(line);
  }
  EXPECT_EQ(ask("perft x").rfind("Nodes: 0, Time: ", 0), 0u);
  engine_.send("setboard not a position at all");
  EXPECT_EQ(ask("usermove zz"), "Illegal move: usermove");
  EXPECT_EQ(ask("ping 77"), "pong 77");
  engine_.quit();
}

// A long count reports each root move once it has run a second, and "?"
// waiting in the input ends it.
TEST_F(E2eTest, LongPerftReportsProgressAndEndsOnQuestionMark) {
  engine_.send("perft 7");
  const Lines lines = engine_.readUntil("# perft ", 180000);  // sanitizer builds count slowly
  ASSERT_TRUE(engine_.found()) << "no progress line";
  const std::string& progress = lines.back();  // "# perft Nb1-c3 9755531 - 1 root moves, 9755531 nodes, 1890 ms"
  std::smatch parts;
  ASSERT_TRUE(
      std::regex_match(progress, parts, std::regex(R"(# perft (\S+) (\d+) - (\d+) root moves, (\d+) nodes, (\d+) ms)")))
      << progress;
  std::string move = parts[1];  // in long form ("Nb1-c3", "e2xd3"): its squares are the coordinates
  std::erase_if(move, [](char c) { return !((c >= 'a' && c <= 'h') || (c >= '1' && c <= '8')); });
  const unsigned long long count = std::stoull(parts[2]);
  EXPECT_GE(std::stoull(parts[4]), count);
  EXPECT_GE(std::stoull(parts[5]), 1000u);
  kbuChess::clsBoard board;
  ASSERT_TRUE(board.readCoordinateMove(move)) << progress;
  EXPECT_EQ(board.perft(6, false), count) << progress;

  engine_.send("?");
  ASSERT_TRUE(engine_.awaits("# perft stopped after ", 30000)) << "? did not end the count";
  EXPECT_EQ(ask("ping 4"), "pong 4");
  // A queued quit, like the end of input, waits for the count: scripts that
  // pipe a perft get their number.
  engine_.send("perft 5");
  const Lines end = engine_.quit(60000);
  ASSERT_GE(end.size(), 4u);
  EXPECT_TRUE(std::regex_match(end[end.size() - 4], std::regex(R"(Nodes: 4865609, Time: \d+ ms, Nodes/s: \d+)")))
      << end[end.size() - 4];
}

// The board display reads the position record the game keeps, so its value
// carries everything the incremental score does: the soul's castling bonus,
// and a promoting capture's value ORed with the promotion gain.
TEST_F(E2eTest, BoardValueIsTheIncrementalScoreAndUndoRestoresIt) {
  const auto value = [this](const std::string& line) {
    const Lines lines = engine_.readUntil("# black value:", 3000);
    EXPECT_TRUE(engine_.found()) << line;
    return lines.empty() ? std::string() : lines.back().substr(lines.back().find("# black value:"));
  };
  const std::string castled = "# black value: -0.19 FEN: r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R4RK1 b kq -";
  const char* const castling = "setboard r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R3K2R w KQkq - 0 1";
  for (const char* line : {"force", castling, "e1g1", "\\"}) engine_.send(line);
  EXPECT_EQ(value("castled"), castled);
  for (const char* line : {"undo", "e1g1", "\\"}) engine_.send(line);
  EXPECT_EQ(value("replayed"), castled);
  for (const char* line : {"\\soul X=0 0 0 105", castling, "e1g1", "\\"}) engine_.send(line);
  EXPECT_EQ(value("other soul"), "# black value: -1.00 FEN: r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R4RK1 b kq -");
  for (const char* line : {"setboard 1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7b8=q", "\\"}) engine_.send(line);
  EXPECT_EQ(value("queen"), "# black value: -5.98 FEN: 1Q2k3/8/8/8/8/8/8/4K3 b - -");
  for (const char* line : {"undo", "a7b8r", "\\"}) engine_.send(line);
  EXPECT_EQ(value("rook"), "# black value: -1.10 FEN: 1R2k3/8/8/8/8/8/8/4K3 b - -");
  engine_.quit();
}

// The engine on move always moves: a command that keeps the driver busy
// first plays the best move found; every ping is answered once, in order,
// whatever ends the search.
TEST_F(E2eTest, EngineOnMoveAlwaysMovesAndEveryPingIsAnswered) {
  for (const char* line : {"new", "level 0 1 0", "usermove e2e4", "perft 1"}) engine_.send(line);
  Lines lines = engine_.readUntil("Nodes: ", 10000);
  ASSERT_TRUE(engine_.found());
  ASSERT_GE(lines.size(), 2u);
  const std::string& reply = lines[lines.size() - 2];
  ASSERT_EQ(reply.rfind("move ", 0), 0u) << reply;
  kbuChess::clsBoard board;  // the count is of the position after Black's reply
  ASSERT_TRUE(board.readCoordinateMove("e2e4") && board.readCoordinateMove(reply.substr(5)));
  EXPECT_EQ(lines.back().rfind("Nodes: " + std::to_string(board.perft(1, false)) + ", ", 0), 0u) << lines.back();
  for (const char* line : {"go", "ping 7", "ping 8", "force", "ping 9"}) engine_.send(line);
  lines = engine_.readUntil("pong 9", 5000);
  ASSERT_TRUE(engine_.found());
  Lines pongs;
  for (const std::string& l : lines)
    if (l.rfind("pong", 0) == 0 || l.rfind("move", 0) == 0) pongs.push_back(l);
  EXPECT_EQ(pongs, (Lines{"pong 7", "pong 8", "pong 9"}));
  engine_.send("setboard k7/PPPPPPPP/8/8/8/8/pppppppp/K7 w - - 0 1");
  EXPECT_EQ(ask("perft 3").rfind("Nodes: 0, ", 0), 0u);
  engine_.quit();
}

// The expression console: in, a formula, a diagram, a table, out again, and
// the xboard dialogue goes on.
TEST_F(E2eTest, ConsoleFormulaDiagramExitAndBackToXboard) {
  engine_.send("\\console");
  ASSERT_TRUE(engine_.awaits("#   help ", 3000)) << "no sample commands";
  engine_.send("popcount(pawns & us) * 2 + (1 << 64)");
  EXPECT_EQ(engine_.readLine(3000).value_or("<nothing>"), "# 16 (0x10)");
  engine_.send("1 / (e4 & d4)");
  EXPECT_EQ(engine_.readLine(3000).value_or("<nothing>"), "# error at column 3: division by zero");
  engine_.send("board(knight(g1) | e4)");
  Lines diagram;
  for (int i = 0; i < 9; ++i) diagram.push_back(engine_.readLine(3000).value_or("<nothing>"));
  EXPECT_EQ(diagram, (Lines{"# 8 . . . . . . . .", "# 7 . . . . . . . .", "# 6 . . . . . . . .", "# 5 . . . . . . . .",
                            "# 4 . . . . x . . .", "# 3 . . . . . x . x", "# 2 . . . . x . . .", "# 1 . . . . . . . .",
                            "#   a b c d e f g h"}));
  engine_.send("sql(\"select name from souls where kind = 'current'\")");
  EXPECT_EQ(engine_.readUntil("# (1 row)", 3000), (Lines{"# name", "# -------", "# Simple5", "# (1 row)"}));
  engine_.send("exit");
  EXPECT_EQ(engine_.readLine(3000).value_or("<nothing>"), "# back to xboard");
  engine_.send("ping 1");
  EXPECT_EQ(engine_.readLine(3000).value_or("<nothing>"), "pong 1");
  engine_.quit();
}

// Command-line options: the table size, a soul loaded before the loop, the
// log of received commands; and the tournament mode, which never reads input.
TEST(E2eStartTest, OptionsFromTheCommandLine) {
  const testFiles::TempFolder folder;
  const std::string log = folder.file("commands.log");
  EngineProcess engine(TALVENA_BIN, {"memory=1", "-memory=64", "-load=Quick=1 2 3", "-log=" + log});
  EXPECT_EQ(engine.readLine(5000).value_or(""), "# TT 32768 entries - 1 MiB");
  const Lines start = engine.readUntil("# new soul: ", 3000);
  ASSERT_TRUE(engine.found());
  EXPECT_EQ(start.back(), "# new soul: Quick=1 2 3");
  EXPECT_EQ(start.front().rfind("# Talvena 3.0.23", 0), 0u);
  engine.send("ping  8 ");
  EXPECT_EQ(engine.readLine(3000).value_or(""), "pong 8");
  engine.quit();
  // Every received line is logged as word, tab, the rest; commands the program
  // runs itself go through the same dispatcher and log.
  EXPECT_EQ(testFiles::readText(log), "\\loadsoul\tQuick=1 2 3\nping\t8\nquit\t\n");
}

// "--help" and "--version" answer and leave at once, without the banner; a
// word that is no name=value option gets one warning and the engine starts.
TEST(E2eStartTest, HelpVersionAndUnknownArguments) {
  for (const char* help : {"--help", "-h"}) {
    EngineProcess engine(TALVENA_BIN, {"memory=1", help});
    EXPECT_EQ(engine.readLine(3000).value_or(""), "Usage: talvena [name=value ...]") << help;
    EXPECT_EQ(engine.waitExit(3000), 0);
  }
  EngineProcess version(TALVENA_BIN, {"--version"});
  EXPECT_EQ(version.readLine(3000).value_or(""), "Talvena 3.0.23");
  EXPECT_FALSE(version.readLine(500).has_value());
  EXPECT_EQ(version.waitExit(3000), 0);

  EngineProcess engine(TALVENA_BIN, {"frobnicate", "-random", "x=y", "-soul=Bogus"});
  EXPECT_EQ(engine.readLine(5000).value_or(""), "# ignoring argument frobnicate: options are name=value, see --help");
  EXPECT_EQ(engine.readLine(5000).value_or(""), "# TT 0 entries - 0 MiB");
  EXPECT_EQ(engine.readLine(5000).value_or(""), "# no preset or file named Bogus; the soul in use is Simple5");
  engine.quit();
}

// Its input stays open: the tournament mode needs no line to end.
TEST(E2eStartTest, TourneyModeRunsWithoutTheLoop) {
  EngineProcess::run({"-use=tourney"}, 10000);
}

}  // namespace
