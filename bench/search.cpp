// Search speed and signature: every bench position searched to the bench depth
// with the default soul. Prints "name nodes ms nps" per position and the total.
#include <chrono>
#include <cstdio>
#include <memory>

#include "chess/engine/bench_positions.h"

int main() {
  using namespace kbuChess;
  auto engine = std::make_unique<clsEngine>();
  engine->output().setEcho(false);
  std::uint64_t totalNodes = 0;
  double totalMs = 0;
  for (const BenchPosition& position : BENCH_POSITIONS) {
    const auto begin = std::chrono::steady_clock::now();
    const std::uint64_t nodes = benchSearch(*engine, position);
    const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    totalNodes += nodes;
    totalMs += ms;
    std::printf("%s %llu %.0f %.0f\n", position.name, static_cast<unsigned long long>(nodes), ms,
                ms > 0 ? static_cast<double>(nodes) * 1000.0 / ms : 0.0);
  }
  const auto wholeMs = static_cast<unsigned long long>(totalMs + 0.5);
  std::printf("total: %llu nodes in %llu ms, %llu knps\n", static_cast<unsigned long long>(totalNodes), wholeMs,
              static_cast<unsigned long long>(totalMs > 0 ? static_cast<double>(totalNodes) / totalMs : 0));
  return 0;
}
