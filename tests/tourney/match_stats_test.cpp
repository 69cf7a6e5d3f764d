// Figures over result rows: pairs and their cells, Elo from the pairs, the
// sequential test's LLR, and the openings of a suite.
#include "chess/tourney/match_stats.h"

#include <gtest/gtest.h>

#include "chess/tourney/openings.h"
#include "chess/tourney/tourney_resume.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using namespace kbuChess;
using Lines = std::vector<std::string>;

GameResultRow row(int round, int game, const std::string& white, const std::string& black, const std::string& result) {
  return GameResultRow{round, game, white, black, result, "", 40, 100, ""};
}

// Round 1: A wins with White, draws with Black (WD). Round 2: A loses both
// (LL). Round 3: A wins with White and loses with Black (DD+WL). Round 4: a
// draw whose partner was never played. C's game and "*" count for no pair.
const std::vector<GameResultRow> ROWS = {
    row(1, 1, "A", "B", "1-0"), row(1, 3, "C", "A", "0-1"),     row(1, 2, "B", "A", "1/2-1/2"),
    row(2, 1, "A", "B", "0-1"), row(2, 2, "B", "A", "1-0"),     row(3, 1, "A", "B", "1-0"),
    row(3, 2, "B", "A", "1-0"), row(4, 1, "A", "B", "1/2-1/2"), row(4, 2, "B", "A", "*"),
};

TEST(MatchStats, PairsCellsAndFiguresComeFromTheRows) {
  const MatchFigures figures = matchFigures(ROWS, "A", "B");
  EXPECT_EQ(
      matchFiguresLine("A", "B", figures),
      "# A vs B: games 7 W-L-D 2-3-2, pairs LL 1 LD 0 DD+WL 1 WD 1 WW 0 (1 unpaired), elo -58.5 +/- 338.0, LOS 32.2%");
  const auto counts = countsOfRows(ROWS, {"A", "B", "C"});
  const GameCounts &a = counts[0].second, &c = counts[2].second;
  EXPECT_EQ(std::vector<int>({a.wins, a.losses, a.draws, c.wins, c.losses, c.draws}),
            std::vector<int>({3, 3, 2, 0, 1, 0}));
  EXPECT_EQ(matchFiguresLine("A", "C", matchFigures(ROWS, "A", "C")),
            "# A vs C: games 1 W-L-D 1-0-0, pairs LL 0 LD 0 DD+WL 0 WD 0 WW 0 (1 unpaired), elo - +/- -, LOS 50.0%");
}

TEST(MatchStats, ResumeKeepsWholePairsOnce) {
  std::vector<GameResultRow> rows = ROWS;
  rows.push_back(row(1, 1, "A", "B", "0-1"));  // the same game again
  int dropped = 0;
  const std::vector<GameResultRow> kept = rowsOfWholePairs(rows, dropped);
  EXPECT_EQ(kept.size(), 8u);  // C's single game in round 1 and the repeated row go
  EXPECT_EQ(dropped, 2);
  // A resumed run without a seed of its own takes the stored one (differences are the resume tests').
  EXPECT_EQ(seedOfSettings(eventSettingsLines(TourneyConfig{}, 7)), 7u);
}

// Values from an independent script over the same model, to 0.01.
TEST(MatchStats, SprtLlrMatchesIndependentValues) {
  struct Case {
    Pentanomial cells;
    double elo0, elo1, llr;
  };
  for (const Case& c : {Case{{10, 40, 100, 45, 12}, 0, 5, 0.1577}, Case{{3, 20, 60, 30, 5}, 0, 5, 0.3209},
                        Case{{0, 5, 20, 10, 0}, -5, 5, 0.3185}, Case{{50, 200, 500, 180, 40}, 0, 2, -0.4054}}) {
    EXPECT_NEAR(sprtLlr(c.cells, c.elo0, c.elo1), c.llr, 0.01) << c.cells[0];
  }
  const SprtSettings sprt;
  EXPECT_NEAR(sprt.lowerBound(), -2.944, 0.001);
  EXPECT_EQ(std::vector<int>({sprtDecision(2.95, sprt), sprtDecision(-2.95, sprt), sprtDecision(0, sprt)}),
            std::vector<int>({1, -1, 0}));
  EXPECT_EQ(sprtLine("A", "B", sprt, 0.5),
            "# sprt A vs B (elo0 0, elo1 5, alpha 0.05, beta 0.05): LLR 0.50 in (-2.94, 2.94)");
}

TEST(Openings, SuiteLinesFromPgnRepeatForEveryPair) {
  tourney_test::KeptOutput out;
  const std::string pgn =
      "[Event \"a\"]\n\n1. e4 e5 2. Nf3 Nc6 *\n\n"
      "[Event \"set up\"]\n[FEN \"8/8/8/8/8/8/k7/K7 w - - 0 1\"]\n[SetUp \"1\"]\n\n1. Kb1 *\n\n"
      "[Event \"b\"]\n\n1. d4 d5 *\n";
  const auto lines = readPgnLines(pgn, 3, out);
  ASSERT_EQ(lines, (std::vector<Opening>{{{}, {"e2e4", "e7e5", "g1f3"}}, {{}, {"d2d4", "d7d5"}}}));
  EXPECT_EQ(out.takeAll(), Lines{"# openings: game 2 has no playable move, skipped"});
  clsSuiteOpenings sequential(lines, OpeningOrder::SEQUENTIAL, 1);
  EXPECT_EQ(sequential.lineOfPair(5, 0), lines[1]);
  EXPECT_EQ(sequential.lineOfPair(5, 1), lines[0]);
  clsRandomOpenings random(6);
  EXPECT_EQ(random.lineOfPair(42, 17), random.lineOfPair(42, 17));
  EXPECT_NE(random.lineOfPair(42, 17), random.lineOfPair(43, 17));
}

}  // namespace
