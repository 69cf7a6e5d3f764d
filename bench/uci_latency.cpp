// How fast does the UCI session answer? Starts the talvena binary over pipes
// in UCI and measures, over many searches, the time from "stop" to
// "bestmove" during a deep search, and from "go movetime 100" to "bestmove".
// Prints median and worst of each.
//
//   uci_latency /path/to/talvena [rounds]
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
  bench::reportTimes(what, values, false);
}

// Sends the position and "isready", and waits for the reply, so that the
// timed command finds the session idle.
bool setPosition(Child& engine, const char* fen) {
  engine.send(std::string("position fen ") + fen);
  engine.send("isready");
  return engine.waitFor("readyok", 5000).has_value();
}

// A search of 300 ms, then "stop": ms until "bestmove".
std::optional<std::int64_t> stopLatency(Child& engine, const char* fen) {
  if (!setPosition(engine, fen)) return std::nullopt;
  engine.send("go infinite");
  kobubase::sleepMs(300);
  const std::int64_t sent = nowMs();
  engine.send("stop");
  const std::optional<std::int64_t> at = engine.waitFor("bestmove", 5000);
  if (!at) return std::nullopt;
  return *at - sent;
}

// "go movetime 100": ms until "bestmove".
std::optional<std::int64_t> moveTime(Child& engine, const char* fen) {
  if (!setPosition(engine, fen)) return std::nullopt;
  const std::int64_t sent = nowMs();
  engine.send("go movetime 100");
  const std::optional<std::int64_t> at = engine.waitFor("bestmove", 5000);
  if (!at) return std::nullopt;
  return *at - sent;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: uci_latency /path/to/talvena [rounds]\n");
    return 2;
  }
  signal(SIGPIPE, SIG_IGN);
  const std::string path = argv[1];
  const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 50;
  Child engine(path);
  if (!engine.ok()) {
    std::fprintf(stderr, "cannot start %s %s\n", path.c_str(), engine.startError().c_str());
    return 1;
  }
  engine.send("uci");
  engine.send("setoption name OwnBook value false");  // a book move would end the search at once
  if (!engine.waitFor("uciok", 5000)) {
    std::fprintf(stderr, "no uciok\n");
    return 1;
  }
  std::vector<std::int64_t> stops, moves;
  int failures = 0;
  for (int round = 0; round < rounds; ++round) {
    const char* fen = bench::POSITIONS[round % std::size(bench::POSITIONS)];
    const std::optional<std::int64_t> stop = stopLatency(engine, fen);
    stop ? stops.push_back(*stop) : void(++failures);
    const std::optional<std::int64_t> move = moveTime(engine, fen);
    move ? moves.push_back(*move) : void(++failures);
  }
  engine.send("quit");
  std::printf("UCI latency of %s\n", path.c_str());
  report("\"stop\" until \"bestmove\"", stops);
  report("\"go movetime 100\" until \"bestmove\"", moves);
  std::printf("failures (no bestmove): %d\n", failures);
  return failures == 0 ? 0 : 1;
}
