// lib/base/random.h - random numbers: one generator per thread.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace kapris::engine::base
{

// Seeds with the low 32 bits of seed, or with the wall clock in seconds when seed is negative.
void InitRandom__(std::int64_t seed);
int RandomDraw(); // 0 .. 2^31-1
// The state of the thread's generator, to put it back after work that must not disturb it.
struct RandomState {
  std::uint32_t words[31];
  int next;
};
RandomState SaveRandom();
void RestoreRandom(const RandomState *saved);
// Shuffles p[0..n-1] in blocks of four, n/16 times; init 1 first sets p to 0, 1, ..., n-1.
void RandomPermute__(int *p, int n, int init);
// Shuffles p[0..n-1] by n swaps over the full range; init as above.
void RandomPermuteFine__(int *p, int n, int init);

} // namespace kapris::engine::base
