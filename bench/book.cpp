// Book benchmarks, run by hand:
//   book build FILE.pgn [MOVES_COUNT] [RUNS]  builds a book from the file as
//       "\buildbooks" does and prints games per second;
//   book load [POSITIONS] [RUNS]  writes a book of random positions to /tmp
//       and prints the time to load it into an empty book.
// Each prints one line per run and the median.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/random.h"
#include "bench/bench_timing.h"
#include "chess/book/book.h"
#include "chess/book/book_file.h"
#include "chess/book/pgn_file.h"

using namespace kbuChess;
using bench::median;
using bench::secondsSince;

namespace {

int benchBuild(const std::string& file, int movesCount, int runs) {
  kobubase::clsOutBuffer out;
  out.setEcho(false);
  std::vector<double> rates;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    clsPGNFile reader(out, movesCount);
    if (!reader.readFile(file)) {
      std::printf("cannot read %s\n", file.c_str());
      return 1;
    }
    saveBook(reader.book(), "/tmp/bench-book-build.sbk", 0, out);
    const double seconds = secondsSince(start);
    rates.push_back(static_cast<double>(reader.games()) / seconds);
    std::printf("build: %llu games, %zu positions, %.3f s, %.0f games/s\n",
                static_cast<unsigned long long>(reader.games()), reader.book().count(), seconds, rates.back());
  }
  std::printf("build median: %.0f games/s\n", median(rates));
  return 0;
}

int benchLoad(std::size_t positions, int runs) {
  kobubase::clsOutBuffer out;
  out.setEcho(false);
  const std::string path = "/tmp/bench-book-load.sbk";
  {
    kobubase::seedRandom(12345, 67890);
    std::vector<BookRecord> records(positions);
    for (BookRecord& r : records) {
      r.key = kobubase::random64();
      r.wins = kobubase::randomAbs32() % 300;
      r.losses = kobubase::randomAbs32() % 300;
      r.draws = kobubase::randomAbs32() % 300;
    }
    clsBook book;
    book.addMany(records);
    if (!saveBook(book, path, 0, out)) return 1;
  }
  std::vector<double> times;
  for (int run = 0; run < runs; ++run) {
    clsBook book;
    const auto start = std::chrono::steady_clock::now();
    const bool loaded = loadBook(book, path, 0, out);
    times.push_back(secondsSince(start) * 1000);
    std::printf("load: %zu positions, %s, %.1f ms\n", book.count(), loaded ? "ok" : "FAILED", times.back());
  }
  std::printf("load median: %.1f ms\n", median(times));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "build" && argc > 2) {
    return benchBuild(argv[2], argc > 3 ? std::atoi(argv[3]) : 20, argc > 4 ? std::atoi(argv[4]) : 5);
  }
  if (mode == "load") {
    return benchLoad(argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1000000, argc > 3 ? std::atoi(argv[3]) : 5);
  }
  std::printf("usage: book build FILE.pgn [MOVES_COUNT] [RUNS]\n       book load [POSITIONS] [RUNS]\n");
  return 2;
}
