// cli/generate/numbers.cpp - random numbers and powers that are the same on every machine.
// SPDX-License-Identifier: MIT

#include "generate/numbers.h"

#include <cmath>

namespace kapris_cli
{

// The splitmix64 generator.
std::uint64_t Draw(Random *random)
{
  std::uint64_t z = random->state += 0x9e3779b97f4a7c15u;

  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

std::int64_t DrawWeight(Random *random, std::int64_t low, std::int64_t high)
{
  const std::uint64_t choices = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;

  return low + static_cast<std::int64_t>(Draw(random) % choices);
}

int DrawFrom(Random *random, int low, int high)
{
  return static_cast<int>(DrawWeight(random, low, high));
}

double DrawShare(Random *random)
{
  return std::ldexp(static_cast<double>(Draw(random) >> 11), -53);
}

// Bits of the fraction of a logarithm. Squaring doubles the error each time: more bits would be noise.
static constexpr int log_bits = 40;

// Squaring a number in 1 .. 2 doubles its logarithm; each time that it reaches 2, the next bit is 1.
static double Log2(double value)
{
  double log = std::ilogb(value);
  double mantissa = std::ldexp(value, -std::ilogb(value));
  double bit = 0.5;

  for (int n = 0; n < log_bits; n++, bit /= 2) {
    mantissa *= mantissa;
    if (mantissa >= 2) {
      mantissa /= 2;
      log += bit;
    }
  }
  return log;
}

// The reverse: a root for each bit, from the last to the first.
double Power(double base, double exponent)
{
  const double log = exponent * Log2(base);
  const double whole = std::floor(log);
  const std::uint64_t fraction = static_cast<std::uint64_t>(std::ldexp(log - whole, log_bits));
  double power = 1;

  for (int n = 0; n < log_bits; n++)
    power = std::sqrt((fraction >> n & 1) != 0 ? 2 * power : power);
  return std::ldexp(power, static_cast<int>(whole));
}

} // namespace kapris_cli
