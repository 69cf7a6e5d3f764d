// The tournament results file: exact bytes written, the round trip, bad
// lines reported by number and skipped.
#include "chess/tourney/results_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/tourney/tourney_test_util.h"

namespace {

using namespace kbuChess;
using tourney_test::Lines;

class ResultsFileTest : public testing::Test {
 protected:
  void write(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }

  tourney_test::TempFolder folder_;
  std::string path_ = folder_.file("run.tsv");
};

TEST_F(ResultsFileTest, LinesAreWrittenWithTheHeaderOnceAndReadBack) {
  const GameResultRow first{1, 1, "Simple5", "fairymax", "1-0", "White mates", 87, 61234, "e2e4 e7e5"};
  const GameResultRow second{1, 2, "fair\tymax", "Simple5", "1/2-1/2", "draw by\nrepetition", 40, 0, ""};
  ASSERT_TRUE(appendResultsLine(path_, first));
  ASSERT_TRUE(appendResultsLine(path_, second));
  EXPECT_EQ(tourney_test::readText(path_),
            "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening\n"
            "1\t1\tSimple5\tfairymax\t1-0\tWhite mates\t87\t61234\te2e4 e7e5\n"
            "1\t2\tfair ymax\tSimple5\t1/2-1/2\tdraw by repetition\t40\t0\t\n");
  std::vector<GameResultRow> rows;
  Lines problems;
  ASSERT_TRUE(readResultsFile(path_, rows, problems));
  EXPECT_EQ(problems, Lines{});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(resultsLine(rows[0]), "1\t1\tSimple5\tfairymax\t1-0\tWhite mates\t87\t61234\te2e4 e7e5");
  EXPECT_EQ(resultsLine(rows[1]), "1\t2\tfair ymax\tSimple5\t1/2-1/2\tdraw by repetition\t40\t0\t");
  EXPECT_FALSE(appendResultsLine(folder_.file("no/such/folder/run.tsv"), first));
  // Files of earlier versions have no opening field.
  write("round\tgame\twhite\tblack\tresult\treason\tplies\tms\n1\t1\tA\tB\t0-1\tmate\t50\t900\n");
  rows.clear();
  ASSERT_TRUE(readResultsFile(path_, rows, problems));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(resultsLine(rows[0]), "1\t1\tA\tB\t0-1\tmate\t50\t900\t");
}

TEST_F(ResultsFileTest, BadLinesAreReportedByNumberAndSkipped) {
  write(std::string(RESULTS_HEADER) + "\r\n" +
        "1\t1\tA\tB\t0-1\tBlack mates\t50\t900\t\r\n"
        "1\t2\tA\n"
        "x\t3\tA\tB\t1-0\tmate\t10\t5\t\n"
        "\n"
        "1\t4\tA\tB\t2-0\tmate\t10\t5\t\n"
        "1\t5\tA\tB\t1-0\tmate\t-3\t5\t\n"
        "1\t6\tA\tB\t1-0\tmate\t99999999999\t5\t\n"
        "2\t7\tB\tA\t*\tinterrupted\t3\t12\td2d4\n"
        "2\t8\tA\tB\t1-0\tmate\t10\t5\te2");
  std::vector<GameResultRow> rows;
  Lines problems;
  ASSERT_TRUE(readResultsFile(path_, rows, problems));
  EXPECT_EQ(problems, (Lines{"line 3: expected 9 tab-separated fields, found 3",
                             "line 4: round, game, plies and ms must be whole numbers", "line 6: unknown result '2-0'",
                             "line 7: round, game, plies and ms must be whole numbers",
                             "line 8: round, game, plies and ms must be whole numbers",
                             "line 10: cut short (the line has no end)"}));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(resultsLine(rows[0]), "1\t1\tA\tB\t0-1\tBlack mates\t50\t900\t");
  EXPECT_EQ(resultsLine(rows[1]), "2\t7\tB\tA\t*\tinterrupted\t3\t12\td2d4");
}

TEST_F(ResultsFileTest, OtherFilesAreRefused) {
  std::vector<GameResultRow> rows;
  Lines problems;
  write("[Event \"not a results file\"]\n");
  EXPECT_FALSE(readResultsFile(path_, rows, problems));
  EXPECT_EQ(problems, Lines{"line 1: not a results file (the header line is missing)"});
  write("");
  EXPECT_FALSE(readResultsFile(path_, rows, problems));
  EXPECT_TRUE(rows.empty());
}

}  // namespace
