// Table layer benchmark, run by hand:
//   sql [ROWS] [RUNS]  fills a book of ROWS random positions (default one
//       million), then times, RUNS times (default 5), after adding a position
//       to the book:
//       after a change: the console's query on book_all;
//       unchanged:      the same query again;
//       database only:  the same SQL straight on the database.
//   book_all reads the book in place, so the three should agree.
// Prints one line per run and the medians.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/random.h"
#include "bench/bench_timing.h"
#include "chess/board/tables.h"
#include "chess/book/book.h"
#include "chess/driver/console.h"
#include "chess/engine/engine.h"

using namespace kbuChess;
using bench::median;
using bench::secondsSince;

namespace {

const char* const QUERY =
    "SELECT count(*), sum(games), avg(score), max(wins) FROM book_all WHERE score >= 500 AND games > 10";

}  // namespace

int main(int argc, char** argv) {
  const long rows = argc > 1 ? std::clamp(std::atol(argv[1]), 1L, 50000000L) : 1000000L;
  const int runs = argc > 2 ? std::clamp(std::atoi(argv[2]), 1, 100) : 5;
  kobubase::seedRandom();
  initTables();
  clsBook book;
  std::vector<BookRecord> records;
  records.reserve(static_cast<std::size_t>(rows));
  for (long i = 0; i < rows; ++i) {
    const u64 key = (u64{kobubase::randomAbs32()} << 33) ^ (u64{kobubase::randomAbs32()} << 2) ^ static_cast<u64>(i);
    records.push_back(
        BookRecord{key, kobubase::randomAbs32() % 50, kobubase::randomAbs32() % 50, kobubase::randomAbs32() % 50});
  }
  book.addMany(records);
  clsEngine engine;
  engine.output().setEcho(false);
  const kobubase::clsOptions options;
  clsConsole console(engine, engine, book, options);
  std::printf("book_all: %zu rows\n", book.count());
  std::vector<double> changed, again, queryOnly;
  for (int run = 0; run < runs; ++run) {
    book.add(BookRecord{static_cast<u64>(run) + 1, 1, 0, 0});
    auto start = std::chrono::steady_clock::now();
    const std::vector<std::string> lines = console.query(QUERY);
    changed.push_back(secondsSince(start));
    start = std::chrono::steady_clock::now();
    console.query(QUERY);
    again.push_back(secondsSince(start));
    start = std::chrono::steady_clock::now();
    const kobubase::SqlResult result = console.database().query(QUERY);
    queryOnly.push_back(secondsSince(start));
    std::printf("run %d: after a change %.3f s, unchanged %.3f s, database only %.3f s   %s\n", run + 1, changed.back(),
                again.back(), queryOnly.back(),
                lines.size() > 2 ? lines[2].c_str() : (lines.empty() ? "" : lines[0].c_str()));
  }
  std::printf("median: after a change %.3f s, unchanged %.3f s, database only %.3f s\n", median(changed), median(again),
              median(queryOnly));
  return 0;
}
