// cli/report/sample.cpp - what the best of several starts or trials can be expected to give.
// SPDX-License-Identifier: MIT

#include "report/sample.h"

namespace kapris_report
{

// The i-th smallest of m values is the smallest of n drawn ones with probability C(m - i, n - 1) / C(m, n): n / m for
// the first, and from one to the next (m - i - n + 1) / (m - i) of it.
ExpectedBest ExpectBest(const std::vector<std::int64_t> &sorted, std::size_t n)
{
  const double m = static_cast<double>(sorted.size()), drawn = static_cast<double>(n);
  ExpectedBest best = {0.0, sorted[0], sorted[0]};
  double chance = drawn / m, sum = 0.0;
  bool below_low = true, below_high = true;

  for (std::size_t i = 0; i < sorted.size() && chance > 0.0; i++) {
    best.mean += chance * static_cast<double>(sorted[i]);
    sum += chance;
    if (below_low)
      best.low = sorted[i];
    if (below_high)
      best.high = sorted[i];
    below_low = below_low && sum < 0.1;
    below_high = below_high && sum < 0.9;
    const double left = m - static_cast<double>(i) - 1.0;
    chance = left > 0.0 ? chance * (left - drawn + 1.0) / left : 0.0;
  }
  return best;
}

} // namespace kapris_report
