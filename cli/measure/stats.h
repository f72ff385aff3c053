// cli/measure/stats.h - what a hypergraph looks like: sizes, degrees, components, repetition.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/hgr.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kapris_cli
{

// How many values are in low .. high.
struct Bin {
  std::int64_t low, high, count;
};

struct Distribution {
  std::int64_t total = 0;
  // Only of values that there are:
  std::int64_t min = 0, max = 0, median_twice = 0;
  double average = 0.0;
  std::vector<Bin> histogram; // by powers of two; empty without values
};

// By the names that docs/json.md and the help of the verb stats explain.
struct Stats {
  std::vector<std::pair<std::string, std::int64_t>> counts;
  std::vector<std::pair<std::string, Distribution>> distributions;
  std::vector<int> largest_components; // cells of up to ten
};

// In time near linear.
Stats CountStats(const Hgr &hgr);

} // namespace kapris_cli
