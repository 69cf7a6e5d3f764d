// Timing helpers shared by the benchmark programs.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

inline double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace bench
