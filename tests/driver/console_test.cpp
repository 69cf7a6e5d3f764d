// The expression console inside the driver: the table commands at the prompt,
// the chess functions with exact masks, and the system tables.
#include "chess/driver/console.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "chess/book/book.h"
#include "chess/book/pgn_file.h"
#include "chess/tourney/results_file.h"
#include "driver_test_util.h"
#include "tests/common/test_files.h"

namespace {

using namespace kbuChess;

// The console alone, on its own engine and a book of six short games.
class ConsoleTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }
  ConsoleTest() {
    engine_.output().setEcho(false);
    quiet_.setEcho(false);
    clsPGNFile reader(quiet_, 4);
    reader.readText("1. e4 e5 1-0\n1. e4 e5 1-0\n1. e4 e5 0-1\n1. e4 c5 0-1\n1. e4 e6 1/2-1/2\n1. d4 0-1\n");
    book_.merge(reader.book());
  }
  std::string one(const std::string& line) {
    const Lines lines = console_.line(line);
    EXPECT_EQ(lines.size(), 1u) << line;
    return lines.empty() ? "<none>" : lines[0];
  }

  kobubase::clsOutBuffer quiet_;
  const char* args_[3] = {"talvena", "memory=2", "-log="};
  kobubase::clsOptions options_{3, args_};
  clsEngine engine_;
  clsBook book_;
  clsConsole console_{engine_, engine_, book_, options_};
  testFiles::TempFolder temp_;
  std::string folder_ = temp_.path.string();
};

TEST_F(ConsoleTest, AttackSetsAndLinesFromTheBoardTables) {
  const std::pair<const char*, const char*> cases[] = {
      {"knight(g1)", "329728 (0x50800)"},  // e2 f3 h3
      {"squares(pawn(e4, 0) | king(a1))", "d5 f5 a2 b2 b1"},
      {"squares(pawn(a2, 0))", "b3"},
      {"hex(rook(a1, 0))", "0x808080808080807f"},
      {"squares(rook(a1))", "a2 b1"},  // the position's pieces block
      {"squares(bishop(d4, e5 | c3))", "a7 b6 c5 e5 c3 e3 f2 g1"},
      {"queen(d4, 0) == (rook(d4, 0) | bishop(d4, 0))", "true"},
      {"hex(between(a1, h8))", "0x2040810204000"},
      {"between(a1, b3) | between(e4, e5) | between(e4, e4) | line(a1, b3)", "0 (0x0)"},
      {"squares(line(e3, c1))", "h6 g5 f4 e3 d2 c1"},
      {"knight(e4 | d4)", "error at column 8: expected one square (a mask with one bit set)"},
      {"pawn(e4, 2)", "error at column 10: 2 is out of range 0..1"},
  };
  for (const auto& [line, shown] : cases) EXPECT_EQ(one(line), shown) << line;
}

TEST_F(ConsoleTest, ThePositionsMasksFollowTheEngine) {
  EXPECT_EQ(one("popcount(occupied)"), "32 (0x20)");
  EXPECT_EQ(one("pawns & white"), "65280 (0xff00)");
  EXPECT_EQ(one("us == white && them == black"), "true");
  EXPECT_EQ(one("squares(kings)"), "e8 e1");
  EXPECT_EQ(one("fen()"), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  ASSERT_TRUE(engine_.readCoordinateMove("e2e4"));
  EXPECT_EQ(one("us == black"), "true");
  EXPECT_EQ(one("squares(pawns & them & rank(3))"), "e4");
  EXPECT_EQ(one("us = 1"), "error at column 1: 'us' is a built-in name");
}

TEST_F(ConsoleTest, SoulsBookAndOptionsTables) {
  engine_.selectSoul("BattleField");
  EXPECT_EQ(console_.query("select name, v4 from SOULS where kind = 'current'"),
            (Lines{"name          v4", "-----------  ---", "BattleField  103", "(1 row)"}));
  ASSERT_TRUE(engine_.readCoordinateMove("e2e4"));
  EXPECT_EQ(console_.query("SELECT move, wins, losses, draws, games, score FROM book ORDER BY score"),
            (Lines{"move  wins  losses  draws  games  score", "----  ----  ------  -----  -----  -----",
                   "e7e5     1       2      0      3    333", "e7e6     0       0      1      1    500",
                   "c7c5     1       0      0      1   1000", "(3 rows)"}));
  // book_all follows every change of the book, counts included; queries can
  // neither change it nor hide it behind a table of their own.
  EXPECT_EQ(console_.query("SELECT count(*) FROM book_all").at(2), "       5");
  book_.add(BookRecord{1, 0, 0, 0});
  EXPECT_EQ(console_.query("SELECT count(*) FROM book_all").at(2), "       6");
  book_.add(BookRecord{1, 5, 0, 0});
  EXPECT_EQ(console_.query("SELECT wins FROM book_all WHERE key = '0000000000000001'").at(2), "   5");
  for (const char* write :
       {"DELETE FROM book_all", "CREATE TABLE book_all (x)", "CREATE TEMP VIEW souls AS SELECT 1"}) {
    EXPECT_EQ(console_.query(write), Lines{"error: not authorized"}) << write;
  }
  engine_.runtimeOptions().set("cores", "2");
  EXPECT_EQ(console_.query("SELECT * FROM options WHERE name <> 'soul' ORDER BY source, name"),
            (Lines{"source        name    value", "------------  ------  -----", "command line  -log",
                   "command line  memory  2", "run-time      cores   2", "(3 rows)"}));
}

TEST_F(ConsoleTest, GamesAndStandingsFromResultsFiles) {
  const std::string ours = folder_ + "/ours.tsv", earlier = folder_ + "/earlier.tsv";
  appendResultsLine(ours, {1, 1, "Simple5", "fairymax", "1-0", "White mates", 61, 1000, ""});
  appendResultsLine(ours, {1, 2, "fairymax", "Simple5", "1/2-1/2", "repetition", 80, 2000, ""});
  appendResultsLine(ours, {1, 3, "Mass161", "Simple5", "*", "interrupted", 9, 10, ""});
  registerResultsFile(ours);
  appendResultsLine(earlier, {1, 1, "Mass161", "fairymax", "0-1", "Black mates", 40, 500, ""});
  std::ofstream(earlier, std::ios::app) << "broken line\n";
  EXPECT_EQ(console_.loadResults(earlier),
            (Lines{"results: " + earlier + " added to games with 1 game, 1 bad line skipped",
                   "results: " + earlier + ": line 3: expected 9 tab-separated fields, found 1"}));
  EXPECT_EQ(console_.loadResults(folder_ + "/none.tsv"),
            (Lines{"results: cannot load " + folder_ + "/none.tsv",
                   folder_ + "/none.tsv: error 2: No such file or directory"}));
  const Lines standings = console_.query("SELECT * FROM standings");
  EXPECT_EQ(Lines(standings.begin() + 1, standings.end()),
            (Lines{"name      games  points  score  draws", "--------  -----  ------  -----  -----",
                   "Simple5       2     1.5     75     50", "fairymax      3     1.5     50   33.3",
                   "Mass161       1       0      0      0", "(3 rows)"}));
  EXPECT_EQ(standings[0], "games: " + earlier + ": line 3: expected 9 tab-separated fields, found 1");
  const Lines games = console_.query("SELECT count(*), sum(plies), count(DISTINCT file) FROM games");
  EXPECT_EQ(games.back(), "(1 row)");
  EXPECT_EQ(games[games.size() - 2], "       4         190                     2");
}

TEST_F(ConsoleTest, SqlCommandsInsideAndOutsideTheConsole) {
  EXPECT_EQ(console_.sqlCommand(""),
            (Lines{"sql QUERY", "sql results PATH   adds an earlier run's results file to the games table",
                   "tables: souls book book_all options games standings"}));
  EXPECT_EQ(console_.line("sql('SELECT 1 + 1 AS two')"), (Lines{"two", "---", "  2", "(1 row)"}));
  EXPECT_EQ(console_.line("len(sql('SELEC'))"), Lines{"33 (0x21)"});  // error: near "SELEC": syntax error
  EXPECT_EQ(console_.odbcCommand("attach no_such_dsn AS x").front().rfind("odbc: cannot connect to no_such_dsn: ", 0),
            0u);
}

// The console as a mode of the whole driver; the real program's dialogue, in
// and out of the console, is in tests/e2e.
using ConsoleModeTest = DriverTest;

TEST_F(ConsoleModeTest, TableCommandsAtTheXboardPrompt) {
  EXPECT_EQ(reply("\\sql select count(*) from souls", CMD_PRINTED),
            (Lines{"# count(*)", "# --------", "#        7", "# (1 row)"}));
  EXPECT_EQ(reply("\\sql select * from", CMD_PRINTED), Lines{"# error: incomplete input"});
  EXPECT_EQ(reply("\\odbc", CMD_PRINTED).front(), "# odbc attach DSN AS name");
  EXPECT_FALSE(driver_->inConsole());
  reply("\\console", CMD_PRINTED);
  EXPECT_EQ(reply("new = 3", CMD_PRINTED), Lines{"# new = 3 (0x3)"});  // command words are plain names here
  reply("exit", CMD_PRINTED);
  reply("\\console", CMD_PRINTED);
  EXPECT_EQ(reply("vars", CMD_PRINTED), Lines{"# new = 3 (0x3)"});  // variables outlive the mode
  EXPECT_EQ(reply("quit", CMD_QUIT), Lines{});                      // quit works inside the console too
}

}  // namespace
