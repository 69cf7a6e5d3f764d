#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "chess/engine/bench_positions.h"

namespace kbuChess {
namespace {

std::unique_ptr<clsEngine> quietEngine(const kobubase::clsOptions& options = {}) {
  auto engine = std::make_unique<clsEngine>(options);
  engine->output().setEcho(false);
  engine->output().setKeep(true);
  return engine;
}

std::string text(const Move& move) {
  return clsBoard::moveText(&move, false);
}

TEST(Evaluate, WeighsTheStartPositionAndLoneKings) {
  auto engine = quietEngine();
  // King area 5 x 5 and the trade term (8 - 2 x 8) x 1; everything else cancels.
  EXPECT_EQ(engine->evaluate(), 17);
  // Queen against the bare king in the h8 corner: base, edge and corner weights.
  engine->readFEN("7k/8/6K1/8/8/8/8/Q7 w - - 0 1");
  EXPECT_EQ(engine->evaluate(), 5 + 5 + 4 * 5);
  // With the kings adjacent and a bishop on a marked square the corners are h1 and a8.
  engine->readFEN("7k/6K1/8/8/8/8/8/B6R w - - 0 1");
  EXPECT_EQ(engine->evaluate(), 5 + 5 + 5);
  for (const char* drawn :
       {"7k/8/6K1/8/8/8/8/8 w - - 0 1", "7k/8/6K1/8/8/8/8/B7 w - - 0 1", "7k/8/6K1/8/8/8/8/NN6 w - - 0 1"}) {
    engine->readFEN(drawn);
    EXPECT_EQ(engine->evaluate(), clsEngine::DRAW_SCORE) << drawn;
  }
}

TEST(Search, MateInOneIsFoundAtDepthTwo) {
  auto engine = quietEngine();
  engine->readFEN("6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1");
  engine->think();
  EXPECT_EQ(engine->output().takeAll(),
            (std::vector<std::string>{"# engine's running", "# Winning move: d1d8", "# engine stopped"}));
  EXPECT_EQ(text(engine->bestMove()), "d1d8");
  EXPECT_EQ(engine->bestMove().searchScore, 100000);
  EXPECT_EQ(engine->iterationDepth(), 2);
  EXPECT_EQ(engine->thinkingLine(1234), "2 100000 123 " + std::to_string(engine->searchNodes()) + " d1d8");
}

TEST(Search, RootWithoutLegalMovesAndStalemateInsideTheTree) {
  auto engine = quietEngine();
  engine->readFEN("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");  // stalemate
  EXPECT_EQ(engine->rootSearch(2, true), 0);
  engine->readFEN("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1");  // checkmate
  EXPECT_EQ(engine->rootSearch(2, true), clsEngine::MATED_AT_ROOT);
  engine->think();
  EXPECT_FALSE(engine->bestMove().isMove());
  EXPECT_EQ(engine->output().takeAll(), (std::vector<std::string>{"# engine's running", "# engine stopped"}));
  // Qf7 stalemates: the queen's side scores that +13, far below keeping the queen.
  engine->readFEN("7k/8/6K1/8/8/8/5Q2/8 w - - 0 1");
  engine->setFixedDepth(1);
  engine->setSinglePass(true);
  engine->think();
  PlyFrame& root = *engine->rootFrame();
  const Move* stalemate = std::find_if(root.first, root.end, [](const Move& m) { return text(m) == "f2f7"; });
  ASSERT_NE(stalemate, root.end);
  EXPECT_EQ(stalemate->searchScore, 13);
  EXPECT_GT(root.first->searchScore, 1000);
}

TEST(Search, OneSafeMoveAmongLosingOnesIsForced) {
  auto engine = quietEngine();
  // Nxf2 allows Re1 mate; Kg1 is the only move that holds.
  engine->readFEN("k3r3/8/8/8/8/5pP1/5n1P/3N3K w - - 0 1");
  engine->think();
  EXPECT_EQ(engine->output().takeAll(),
            (std::vector<std::string>{"# engine's running", "# forced move", "# engine stopped"}));
  EXPECT_EQ(text(engine->bestMove()), "h1g1");
  EXPECT_EQ(engine->iterationDepth(), 2);
}

TEST(Search, FixedDepthFiveRunsOneIteration) {
  auto engine = quietEngine();
  engine->setFixedDepth(5);
  engine->think();
  EXPECT_EQ(engine->iterationDepth(), 5);
  const u64 nodes = engine->searchNodes();
  auto direct = quietEngine();
  direct->rootSearch(5, true);
  direct->setFixedDepth(5);
  direct->setSinglePass(true);
  direct->think();
  EXPECT_EQ(direct->searchNodes(), nodes);
  EXPECT_EQ(engine->statisticsText(1000),
            "# 1000 ms " + std::to_string(nodes / 1000) + " Knps, TT hits: 0 0.00%, Rept.Hits: 0");
  EXPECT_EQ(engine->statisticsText(0), "# , TT hits: 0 0.00%, Rept.Hits: 0");
  EXPECT_TRUE(engine->readCoordinateMove(text(engine->bestMove())));  // a legal move
}

TEST(Search, RefutedRootMovesNeverBecomeBest) {
  auto engine = quietEngine();
  engine->readFEN(BENCH_POSITIONS[6].fen);
  engine->setFixedDepth(2);
  engine->setSinglePass(true);
  engine->think();
  const Move best = engine->bestMove();
  int refuted = 0;
  PlyFrame& root = *engine->rootFrame();
  for (const Move* m = root.first; m < root.end; ++m) {
    if ((m->flags & mf::REFUTED) == 0) continue;
    ++refuted;
    EXPECT_FALSE(m->sameMove(best)) << text(*m);
  }
  EXPECT_GT(refuted, 10);
  EXPECT_EQ(best.flags & mf::REFUTED, 0u);
}

TEST(Search, RandomModePlaysALegalMoveAfterTwoPlies) {
  kobubase::clsOptions options;
  options.set("-random", "");
  auto engine = quietEngine(options);
  engine->think();
  EXPECT_EQ(engine->iterationDepth(), 2);
  EXPECT_TRUE(engine->readCoordinateMove(text(engine->bestMove())));  // a legal move

  // Accepting every move plays the best-scored one.
  options.set("-proportional", "100");
  auto proportional = quietEngine(options);
  proportional->readFEN("6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1");
  proportional->think();
  EXPECT_EQ(text(proportional->bestMove()), "d1d8");

  // The acceptance percentage: 60 without a value, else held within 0 and 100
  // (a negative one would otherwise accept every move).
  for (auto [value, percent] :
       {std::pair{"", 60}, {"-5", 0}, {"35", 35}, {"250", 100}, {"99999999999999999999", 100}}) {
    options.set("-proportional", value);
    EXPECT_EQ(clsEngine::acceptPercent(options), percent) << value;
  }
}

// A search cut off in the middle of an iteration leaves the root list in the
// previous iteration's order; the proportional walk must still start at the
// search's best move, which is what the same search without random plays.
TEST(Search, ProportionalModeAfterAStoppedIterationPlaysTheBestMove) {
  kobubase::clsOptions random;
  random.set("-random", "");
  random.set("-proportional", "100");
  int differences = 0;
  for (u64 limit = 2000; limit <= 60000; limit += 2000) {
    auto plain = quietEngine();
    auto chooser = quietEngine(random);
    for (clsEngine* engine : {plain.get(), chooser.get()}) {
      engine->readFEN("r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3");
      engine->setNodeLimit(limit);
      engine->think();
    }
    EXPECT_EQ(text(chooser->bestMove()), text(plain->bestMove())) << "node limit " << limit;
    differences += text(plain->bestMove()) != text(plain->rootFrame()->first[0]);
  }
  EXPECT_GT(differences, 0);  // some stops do leave the best move away from the front
}

// The node count of the bench positions; a search repeated after switching souls counts the same.
TEST(Search, BenchSignatureAndRepeatability) {
  auto engine = quietEngine();
  engine->output().setKeep(false);
  u64 total = 0;
  for (const BenchPosition& position : BENCH_POSITIONS) total += benchSearch(*engine, position);
  EXPECT_EQ(total, 6701370u);
  const u64 first = benchSearch(*engine, BENCH_POSITIONS[6]);
  engine->selectSoul("Mass161");
  engine->selectSoul("Simple5");
  EXPECT_EQ(benchSearch(*engine, BENCH_POSITIONS[6]), first);
}

}  // namespace
}  // namespace kbuChess
