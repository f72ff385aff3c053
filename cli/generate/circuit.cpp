// cli/generate/circuit.cpp - hypergraphs that resemble circuits.
// SPDX-License-Identifier: MIT
//
// Cells are halved into blocks down to pairs. Each block gets nets that join its halves, about as many as a
// power of its size. The nets that leave a block then grow with the same power of its size (Rent's rule), which
// is why circuits have small cuts.
//   plan     nets that a block of each size should get      ExpectedNets
//   blocks   nets for each block of the hierarchy           AddBlockNets
//   repair   a net for each cell that got none              AddMissingNets

#include "generate/draft.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>

namespace kapris_cli
{

namespace
{

// By the size of a block.
using Expected = std::map<int, double>;

} // namespace

static constexpr int most_pins = 40;
static constexpr int least_clocked = 1000;

// The average of the smaller of a net's pins, as DrawPinCount gives them, and the cells that there are: the sum over
// n of the chance of at least n pins.
static double AveragePins(int size)
{
  constexpr double chances[] = {1, 1, 0.53, 0.31, 0.18};
  double chance = 1, average = 0;

  for (int n = 0; n < std::min(size, most_pins); n++) {
    chance = n < 5 ? chances[n] : chance * 5 / 6;
    average += chance;
  }
  return average;
}

// Mostly 2 to 4 pins, then a tail that thins out.
static int DrawPinCount(Random *random)
{
  const int percent = DrawFrom(random, 0, 99);

  if (percent < 47)
    return 2;
  if (percent < 69)
    return 3;
  if (percent < 82)
    return 4;
  int npins = 5;
  while (npins < most_pins && DrawFrom(random, 0, 5) != 0)
    npins++;
  return npins;
}

// Halving gives at most two sizes per level: few enough to count blocks by size.
static Expected ExpectedNets(const Recipe &recipe)
{
  std::map<int, int> blocks = {{recipe.cells, 1}};
  Expected expected;
  double pins = 0;

  for (auto block = blocks.rbegin(); block != blocks.rend() && block->first > 1; ++block) {
    const auto [size, count] = *block;
    blocks[size / 2] += count;
    blocks[size - size / 2] += count;
    expected[size] = Power(size, recipe.rent);
    pins += count * expected[size] * AveragePins(size);
  }
  for (auto &[size, nets] : expected)
    nets *= recipe.pins * recipe.cells / pins;
  return expected;
}

static void AddBlockNets(const Expected &expected, Block block, Draft *draft)
{
  if (block.size < 2)
    return;
  const Block left = {block.first, block.size / 2};
  const Block right = {block.first + left.size, block.size - left.size};
  const double nets = expected.at(block.size);
  int count = static_cast<int>(nets);

  if (DrawShare(&draft->random) < nets - count)
    count++;
  for (int n = 0; n < count; n++)
    AddNetAcross(draft, left, right, std::min(DrawPinCount(&draft->random), block.size));
  // Clocks and resets: a few nets that reach all over a large block.
  if (block.size >= least_clocked)
    AddNetAcross(draft, left, right, DrawFrom(&draft->random, 20, most_pins));
  AddBlockNets(expected, left, draft);
  AddBlockNets(expected, right, draft);
}

// Joins each cell without a net to a cell near by.
static void AddMissingNets(Draft *draft)
{
  for (int cell = 0; cell < draft->hgr.ncells; cell++) {
    if (draft->last_net[static_cast<size_t>(cell)] != 0)
      continue;
    AddPin(draft, cell);
    AddPin(draft, cell == 0 ? 1 : cell - 1);
    EndNet(draft);
  }
}

void AddCircuitNets(const Recipe &recipe, Draft *draft)
{
  // Half of what fits: the pins vary, and cells without a net get one more.
  constexpr double most = 1 << 30;

  if (recipe.cells * recipe.pins > most)
    FailUsage(
        fmt::format("--cells {} with --pins {} are more than {} pins", recipe.cells, recipe.pins, most));
  AddBlockNets(ExpectedNets(recipe), {0, recipe.cells}, draft);
  AddMissingNets(draft);
}

} // namespace kapris_cli
