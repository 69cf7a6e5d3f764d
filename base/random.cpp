#include "base/random.h"

#include <ctime>
#include <mutex>

namespace kobubase {
namespace {
std::mutex randomLock;
std::uint64_t state0 = 0x9E3779B97F4A7C15ull;
std::uint64_t state1 = 0xBF58476D1CE4E5B9ull;
}  // namespace

void seedRandom() {
  auto s0 = static_cast<std::uint64_t>(std::time(nullptr));
  seedRandom(s0, s0 + static_cast<std::uint64_t>(std::clock()));
}

void seedRandom(std::uint64_t s0, std::uint64_t s1) {
  std::lock_guard<std::mutex> guard(randomLock);
  state0 = s0;
  state1 = s1;
}

std::uint64_t random64() {
  std::lock_guard<std::mutex> guard(randomLock);
  std::uint64_t x = state0;
  const std::uint64_t y = state1;
  state0 = y;
  x ^= x << 23;
  state1 = x ^ y ^ (x >> 17) ^ (y >> 26);
  return state1 + y;
}

std::uint32_t randomAbs32() {
  const auto low = static_cast<std::int32_t>(static_cast<std::uint32_t>(random64()));
  const std::int64_t wide = low;
  return static_cast<std::uint32_t>(wide < 0 ? -wide : wide);
}

}  // namespace kobubase
