// cli/report/sample.h - what the best of several starts or trials can be expected to give; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kapris_report
{

// The smallest of n values drawn from a sample without putting them back: its mean, and the values that it stays below
// in 10 and in 90 of 100 cases.
struct ExpectedBest {
  double mean;
  std::int64_t low, high;
};

// sorted: the sample, rising; 1 <= n <= its size.
ExpectedBest ExpectBest(const std::vector<std::int64_t> &sorted, std::size_t n);

} // namespace kapris_report
