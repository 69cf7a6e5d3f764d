#include "base/random.h"

#include <chrono>
#include <ctime>
#include <mutex>

namespace kobubase {
namespace {
std::mutex randomLock;
clsRandom shared;
}  // namespace

void seedRandom() {
  auto s0 = static_cast<std::uint64_t>(std::time(nullptr));
  seedRandom(s0, s0 + static_cast<std::uint64_t>(std::clock()));
}

std::uint64_t clockSeed() {
  const auto ms =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
  const std::uint64_t mixed =
      static_cast<std::uint64_t>(ms.count()) * 2654435761u ^ static_cast<std::uint64_t>(std::time(nullptr));
  return mixed % 1000000000000ull + 1;
}

void seedRandom(std::uint64_t s0, std::uint64_t s1) {
  std::lock_guard<std::mutex> guard(randomLock);
  shared.seed(s0, s1);
}

std::uint64_t random64() {
  std::lock_guard<std::mutex> guard(randomLock);
  return shared.next64();
}

std::uint32_t randomAbs32() {
  std::lock_guard<std::mutex> guard(randomLock);
  return shared.abs32();
}

void clsRandom::seed(std::uint64_t s0, std::uint64_t s1) {
  if (s0 == 0 && s1 == 0) {
    s0 = 0x9E3779B97F4A7C15ull;
    s1 = 0xBF58476D1CE4E5B9ull;
  }
  state0_ = s0;
  state1_ = s1;
}

std::uint64_t clsRandom::next64() {
  std::uint64_t x = state0_;
  const std::uint64_t y = state1_;
  state0_ = y;
  x ^= x << 23;
  state1_ = x ^ y ^ (x >> 17) ^ (y >> 26);
  return state1_ + y;
}

std::uint32_t clsRandom::abs32() {
  const auto low = static_cast<std::int32_t>(static_cast<std::uint32_t>(next64()));
  const std::int64_t wide = low;
  return static_cast<std::uint32_t>(wide < 0 ? -wide : wide);
}

}  // namespace kobubase
