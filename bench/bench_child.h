// The engine under measurement, behind two pipes, for the latency benchmarks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "base/child_process.h"

namespace bench {

// Every read has a deadline. A line's arrival is the moment it is taken,
// within a millisecond of its reading.
class Child : public kobubase::clsRedirectedChild {
 public:
  explicit Child(const std::string& path) : clsRedirectedChild(path) {
    if (start()) waitStarted();
  }
  ~Child() override {
    closeInput();
    waitExit(3000);
    shutDown();
  }
  bool ok() const { return pid() > 0; }
  void send(const std::string& line) {
    if (!sendLine(line)) std::fprintf(stderr, "write failed\n");
  }
  // Reads until a line begins with prefix; the line, and its arrival time in `arrival`.
  std::optional<std::string> waitFor(const std::string& prefix, int timeoutMs, std::int64_t& arrival) {
    for (const std::int64_t deadline = kobubase::nowMs() + timeoutMs;; kobubase::sleepMs(1)) {
      while (hasLine()) {
        std::string line = takeLine();
        if (line.rfind(prefix, 0) == 0) {
          arrival = kobubase::nowMs();
          return line;
        }
      }
      if (!alive() || kobubase::nowMs() > deadline) return std::nullopt;
    }
  }
  // The arrival time of the first line that begins with prefix.
  std::optional<std::int64_t> waitFor(const std::string& prefix, int timeoutMs) {
    std::int64_t arrival = 0;
    if (!waitFor(prefix, timeoutMs, arrival)) return std::nullopt;
    return arrival;
  }

 protected:
  void report(const std::string&) override {}
};

// "what  n=...  median ... ms  [p90 ... ms]  worst ... ms"
inline void reportTimes(const char* what, std::vector<std::int64_t> values, bool withP90) {
  if (values.empty()) {
    std::printf("%-34s no samples\n", what);
    return;
  }
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  std::printf("%-34s n=%3zu  median %4lld ms", what, n, static_cast<long long>(values[n / 2]));
  if (withP90) std::printf("  p90 %4lld ms", static_cast<long long>(values[std::min(n * 9 / 10, n - 1)]));
  std::printf("  worst %4lld ms\n", static_cast<long long>(values.back()));
}

}  // namespace bench
