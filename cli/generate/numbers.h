// cli/generate/numbers.h - random numbers and powers that are the same on every machine.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kapris_cli
{

// The state of a generator; any number is a good seed.
struct Random {
  std::uint64_t state;
};

std::uint64_t Draw(Random *random);

// In low .. high, both of them at least 0.
int DrawFrom(Random *random, int low, int high);
std::int64_t DrawWeight(Random *random, std::int64_t low, std::int64_t high);

// In 0 .. 1, without 1.
double DrawShare(Random *random);

// For base >= 1. Built from exactly rounded operations, unlike the power of the C library.
double Power(double base, double exponent);

template <typename Item>
void Shuffle(Random *random, std::vector<Item> *items)
{
  for (size_t n = items->size(); n > 1; n--)
    std::swap((*items)[n - 1], (*items)[Draw(random) % n]);
}

} // namespace kapris_cli
