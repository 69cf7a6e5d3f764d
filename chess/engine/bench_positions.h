#pragma once
// The bench: a fixed list of positions searched to a fixed depth with the
// default soul. The total node count is the search's signature: any change of
// search or evaluation changes it. bench/search prints it and a unit test
// asserts it.
#include <cstdint>

#include "chess/engine/engine.h"

namespace kbuChess {

struct BenchPosition {
  const char* name;
  const char* fen;
};

inline constexpr int BENCH_DEPTH = 5;

inline constexpr BenchPosition BENCH_POSITIONS[] = {
    {"start", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"},
    {"sicilian", "rnbqkbnr/pp1ppppp/8/2p5/4P3/8/PPPP1PPP/RNBQKBNR w KQkq c6 0 2"},
    {"french", "rnbqkbnr/ppp2ppp/4p3/3p4/3PP3/8/PPP2PPP/RNBQKBNR w KQkq d6 0 3"},
    {"italian", "r1bqkbnr/pppp1ppp/2n5/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R b KQkq - 3 3"},
    {"giuoco", "r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/3P1N2/PPP2PPP/RNBQK2R w KQkq - 0 5"},
    {"queens-gambit", "rnbqkb1r/ppp2ppp/4pn2/3p4/2PP4/2N5/PP2PPPP/R1BQKBNR w KQkq - 2 4"},
    {"kiwipete", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1"},
    {"pinned-bishops", "r2q1rk1/ppp2ppp/2np1n2/2b1p1B1/2B1P1b1/2NP1N2/PPP2PPP/R2Q1RK1 w - - 0 8"},
    {"dragon", "2rq1rk1/pp1bppbp/2np1np1/8/3NP3/1BN1BP2/PPPQ2PP/2KR3R b - - 0 11"},
    {"tarrasch", "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 8"},
    {"promotions", "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1"},
    {"knight-fork", "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8"},
    {"rook-pawns", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1"},
    {"rook-ending", "8/5pk1/6p1/8/8/6P1/4RPK1/r7 w - - 0 1"},
    {"pawn-ending", "8/8/4k3/3p4/3P4/4K3/8/8 w - - 0 1"},
    {"lucena", "1K1k4/1P6/8/8/8/8/r7/2R5 w - - 0 1"},
    {"queen-vs-king", "8/8/8/4k3/8/8/8/4K2Q w - - 0 1"},
    {"rook-vs-king", "8/8/8/3k4/8/8/8/R3K3 w - - 0 1"},
    {"bishop-knight", "8/8/8/8/3k4/8/8/2B1K1N1 w - - 0 1"},
    {"back-rank-mate", "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1"},
};

// Searches one bench position with a single fixed-depth pass; returns its node count.
inline std::uint64_t benchSearch(clsEngine& engine, const BenchPosition& position) {
  engine.readFEN(position.fen);
  engine.setFixedDepth(BENCH_DEPTH);
  engine.setSinglePass(true);
  engine.think();
  return engine.searchNodes();
}

}  // namespace kbuChess
