// cli/generate/generate.h - synthetic hypergraphs, the same for the same recipe on every machine.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/hgr.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kapris_cli
{

enum class Kind { CIRCUIT, GRID, RANDOM, POWERLAW, PLANTED };

struct Range {
  int low, high;
};

struct WeightRange {
  std::int64_t low, high; // high <= most_weight
};

// What to generate. A kind uses the fields that its options set.
struct Recipe {
  Kind kind = Kind::CIRCUIT;
  int seed = 1;
  int cells = 10000;
  int nets = 0;                  // 0: as many as cells
  Range size = {2, 6};           // cells of a net
  WeightRange cellwgts = {1, 1}; // without weights in the file if all are 1
  WeightRange netwgts = {1, 1};
  double rent = 0.6; // circuit: nets that leave a block grow with this power of its size
  double pins = 3.5; // circuit: average per cell, about
  int rows = 100;    // grid
  int cols = 100;
  int depth = 1;
  double exponent = 2.5; // powerlaw: nets of s cells are as frequent as s^-exponent
  int max_size = 100;
  int parts = 2; // planted
  int crossing = 100;
};

struct Generated {
  Hgr hgr;
  std::vector<int> planted;     // planted: the part of each cell
  std::int64_t planted_cut = 0; // the weight of the crossing nets
};

// Throws a usage failure that names the options if no such hypergraph exists, it would have 2^31 pins or its weights
// add up to more than most_weight.
Generated Generate(const Recipe &recipe);

} // namespace kapris_cli
