#pragma once
// The program's one pseudo-random source: xorshift128+, seeded from the clock at
// start-up and shared by everything that draws (key tables, soul breeding, book
// choice, random play). Draws are serialised so that threads may share it.
#include <cstdint>

namespace kobubase {

// Seeds the generator: s0 = calendar seconds, s1 = s0 + processor-time ticks.
void seedRandom();
// A seed for a run that was given none, drawn from the clocks: from 1 to
// 10^12, so that the run can print it and a person can type it again.
std::uint64_t clockSeed();
// Seeds with fixed words; tests use it to get repeatable draws.
void seedRandom(std::uint64_t s0, std::uint64_t s1);
// One xorshift128+ step.
std::uint64_t random64();
// The low 32 bits of a draw read as a signed number, made non-negative.
std::uint32_t randomAbs32();

// A generator of its own with the same algorithm, for work that must repeat
// exactly from a seed whatever else draws meanwhile (learning runs). Not
// locked: one owner draws from it.
class clsRandom {
 public:
  clsRandom(std::uint64_t s0 = 0x9E3779B97F4A7C15ull, std::uint64_t s1 = 0xBF58476D1CE4E5B9ull) { seed(s0, s1); }
  // Both words zero would make every draw zero; a zero seed takes fixed words instead.
  void seed(std::uint64_t s0, std::uint64_t s1);
  std::uint64_t next64();
  std::uint32_t abs32();

 private:
  std::uint64_t state0_ = 0;
  std::uint64_t state1_ = 0;
};

}  // namespace kobubase
