#pragma once
// The program's one pseudo-random source: xorshift128+, seeded from the clock at
// start-up and shared by everything that draws (key tables, soul breeding, book
// choice, random play). Draws are serialised so that threads may share it.
#include <cstdint>

namespace kobubase {

// Seeds the generator: s0 = calendar seconds, s1 = s0 + processor-time ticks.
void seedRandom();
// Seeds with fixed words; tests use it to get repeatable draws.
void seedRandom(std::uint64_t s0, std::uint64_t s1);
// One xorshift128+ step.
std::uint64_t random64();
// The low 32 bits of a draw read as a signed number, made non-negative.
std::uint32_t randomAbs32();

}  // namespace kobubase
