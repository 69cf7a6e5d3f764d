// Perft benchmark: counts the leaves of the six standard test positions and
// compares them with the known figures.
//   perft [--quick] [DATAFILE]
// --quick runs each position one ply shallower than the full run.
#include <chrono>
#include <cstdio>
#include <string>

#include "bench/perft_data.h"
#include "chess/board/board.h"

int main(int argc, char** argv) {
  bool quick = false;
  std::string path = PERFT_DATA;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--quick") quick = true;
    else path = arg;
  }
  const auto cases = readPerftCases(path);
  if (cases.empty()) {
    std::fprintf(stderr, "no positions in %s\n", path.c_str());
    return 2;
  }
  kbuChess::clsBoard board;
  board.output().setEcho(false);
  unsigned long long totalNodes = 0;
  double totalMs = 0;
  int mismatches = 0;
  for (const auto& c : cases) {
    const auto& [depth, expected] = quick && c.counts.size() > 1 ? c.counts[c.counts.size() - 2] : c.counts.back();
    board.readFEN(c.fen);
    const auto start = std::chrono::steady_clock::now();
    const unsigned long long nodes = board.perft(depth, false);
    const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    totalNodes += nodes;
    totalMs += ms;
    if (nodes != expected) ++mismatches;
    std::printf("%-10s depth %d: %llu nodes, expected %llu, %.0f ms, %.1f Mnps%s\n", c.name.c_str(), depth, nodes,
                expected, ms, nodes / (ms * 1000.0 + 1e-9), nodes == expected ? "" : "  MISMATCH");
    std::fflush(stdout);
  }
  std::printf("total: %llu nodes in %.0f ms, %.1f Mnps, %d mismatches\n", totalNodes, totalMs,
              totalNodes / (totalMs * 1000.0 + 1e-9), mismatches);
  return mismatches == 0 ? 0 : 1;
}
