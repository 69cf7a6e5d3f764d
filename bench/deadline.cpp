// How punctual is the engine? Starts the talvena binary over pipes and
// measures, for many short searches, how long after its deadline the "move"
// line arrives (the deadline is read from the budget line the engine prints
// when it starts thinking), and how fast "?" and "quit" take effect during a
// deep search. Prints median, 90th percentile and worst of each.
//
//   deadline /path/to/talvena [rounds]
#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "bench/bench_child.h"
#include "bench/bench_timing.h"

namespace {

using bench::Child;
using kobubase::nowMs;

void report(const char* what, const std::vector<std::int64_t>& values) {
  bench::reportTimes(what, values, true);
}

// One timed search; how far after its deadline the move came (negative: early).
std::optional<std::int64_t> lateness(Child& engine, const char* fen, int centiseconds) {
  engine.send("force");
  engine.send(std::string("setboard ") + fen);
  engine.send("level 0 0:05 0");
  engine.send("time " + std::to_string(centiseconds));
  engine.send("go");
  std::int64_t started = 0, moved = 0;
  const std::optional<std::string> budgetLine = engine.waitFor("# moves ", 5000, started);
  if (!budgetLine) return std::nullopt;
  const std::size_t time = budgetLine->find(" - time ");
  if (time == std::string::npos) return std::nullopt;
  const std::int64_t budget = std::atoll(budgetLine->c_str() + time + 8);
  if (!engine.waitFor("move ", 10000 + static_cast<int>(budget), moved)) return std::nullopt;
  return moved - (started + budget);
}

// Starts a deep search, waits, sends the command; ms until the expected line.
std::optional<std::int64_t> commandLatency(Child& engine, const char* fen, const char* command, const char* answer) {
  engine.send("force");
  engine.send(std::string("setboard ") + fen);
  engine.send("level 0 60 0");
  engine.send("go");
  std::int64_t at = 0;
  if (!engine.waitFor("# moves ", 5000, at)) return std::nullopt;
  kobubase::sleepMs(300);
  const std::int64_t sent = nowMs();
  engine.send(command);
  if (!engine.waitFor(answer, 5000, at)) return std::nullopt;
  return at - sent;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: deadline /path/to/talvena [rounds]\n");
    return 2;
  }
  signal(SIGPIPE, SIG_IGN);
  const std::string path = argv[1];
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 60;
  std::vector<std::int64_t> late, early, stops, quits;
  int failures = 0;
  {
    Child engine(path);
    if (!engine.ok()) {
      std::fprintf(stderr, "cannot start %s %s\n", path.c_str(), engine.startError().c_str());
      return 1;
    }
    engine.send("xboard");
    engine.send("protover 2");
    const int clocks[] = {30, 60, 150, 300, 1000};  // centiseconds: budgets 7, 13, 36, 73, 248 ms
    for (int round = 0; round < rounds; ++round) {
      const char* fen = bench::POSITIONS[round % std::size(bench::POSITIONS)];
      const std::optional<std::int64_t> ms = lateness(engine, fen, clocks[(round / 5) % std::size(clocks)]);
      if (!ms) {
        ++failures;
      } else {
        (*ms >= 0 ? late : early).push_back(*ms >= 0 ? *ms : -*ms);
      }
    }
    for (int round = 0; round < 10; ++round) {
      const std::optional<std::int64_t> ms =
          commandLatency(engine, bench::POSITIONS[round % std::size(bench::POSITIONS)], "?", "move ");
      ms ? stops.push_back(*ms) : void(++failures);
    }
  }
  for (int round = 0; round < 5; ++round) {
    Child engine(path);
    const std::optional<std::int64_t> ms =
        commandLatency(engine, bench::POSITIONS[round % std::size(bench::POSITIONS)], "quit", "# end");
    ms ? quits.push_back(*ms) : void(++failures);
  }
  std::printf("deadline and command latency of %s\n", path.c_str());
  report("move after its deadline", late);
  report("move before its deadline (early)", early);
  report("\"?\" until the move line", stops);
  report("\"quit\" until \"# end\"", quits);
  std::printf("failures (no budget or no move): %d\n", failures);
  const bool punctual = (late.empty() || late.back() <= 20) && (stops.empty() || stops.back() <= 20) &&
                        (quits.empty() || quits.back() <= 20);
  std::printf("target (every figure within 20 ms): %s\n", punctual ? "met" : "missed");
  return failures == 0 ? 0 : 1;
}
