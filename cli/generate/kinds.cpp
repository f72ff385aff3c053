// cli/generate/kinds.cpp - the kinds of synthetic hypergraphs, and what all of them share.
// SPDX-License-Identifier: MIT
//
//   check    sizes, before memory is taken for pins         Complete, CheckPins
//   nets     of the kind                                    AddNets
//   weights  of cells and nets                              DrawWeights
//   hide     random numbers for cells and order for nets    Hide

#include "generate/draft.h"

#include <algorithm>
#include <climits>
#include <fmt/core.h>
#include <functional>
#include <utility>

namespace kapris_cli
{

// A net for each cell, of the cell and its neighbours.
static void AddGridNets(const Recipe &recipe, Draft *draft)
{
  for (int z = 0; z < recipe.depth; z++)
    for (int y = 0; y < recipe.rows; y++)
      for (int x = 0; x < recipe.cols; x++) {
        const int layer = recipe.rows * recipe.cols;
        const int cell = z * layer + y * recipe.cols + x;
        const std::pair<bool, int> pins[] = {{true, 0},
                                             {z > 0, -layer},
                                             {y > 0, -recipe.cols},
                                             {x > 0, -1},
                                             {x + 1 < recipe.cols, 1},
                                             {y + 1 < recipe.rows, recipe.cols},
                                             {z + 1 < recipe.depth, layer}};
        for (const auto &[inside, step] : pins)
          if (inside)
            AddPin(draft, cell + step);
        EndNet(draft);
      }
}

// 7 pins per cell bound the pins.
static int GridCells(const Recipe &recipe)
{
  const long long layer = 1LL * recipe.rows * recipe.cols;

  if (layer > INT_MAX / 7 || layer * recipe.depth > INT_MAX / 7)
    FailUsage(fmt::format("--rows {}, --cols {} and --depth {} are more than {} cells", recipe.rows,
                          recipe.cols, recipe.depth, INT_MAX / 7));
  return static_cast<int>(layer * recipe.depth);
}

namespace
{

using DrawSize = std::function<int(Random *)>;

} // namespace

// Nets of 2 .. max_size cells: the first size at which the sum of the frequencies so far exceeds a random share.
static DrawSize PowerlawSizes(const Recipe &recipe)
{
  std::vector<double> sums;

  for (int size = 2; size <= std::min(recipe.max_size, recipe.cells); size++)
    sums.push_back((sums.empty() ? 0 : sums.back()) + Power(size, -recipe.exponent));
  return [sums](Random *random) {
    const auto at = std::upper_bound(sums.begin(), sums.end() - 1, DrawShare(random) * sums.back());
    return static_cast<int>(at - sums.begin()) + 2;
  };
}

static DrawSize UniformSizes(const Recipe &recipe)
{
  return [range = recipe.size](Random *random) { return DrawFrom(random, range.low, range.high); };
}

// Draws all sizes once before the first net takes memory. The generator is a copy: they come again.
static void CheckPins(const Recipe &recipe, const DrawSize &draw, Random sizes)
{
  long long pins = 0;

  for (int net = 0; net < recipe.nets; net++) {
    pins += draw(&sizes);
    if (pins > INT_MAX)
      FailUsage(fmt::format("--nets {} of such sizes are more than {} pins", recipe.nets, INT_MAX));
  }
}

static Block PartBlock(const Recipe &recipe, int part)
{
  const auto first = [&](long long p) { return static_cast<int>(p * recipe.cells / recipe.parts); };

  return {first(part), first(part + 1) - first(part)};
}

static void CheckParts(const Recipe &recipe)
{
  if (recipe.size.low < 2)
    FailUsage(fmt::format("--size starts at {}: crossing nets need at least 2 cells", recipe.size.low));
  if (recipe.cells / recipe.parts < recipe.size.high)
    FailUsage(fmt::format("--cells {} in --parts {} are too few for nets of {} cells inside a part",
                          recipe.cells, recipe.parts, recipe.size.high));
  if (recipe.crossing > recipe.nets)
    FailUsage(fmt::format("--crossing {} is more than --nets {}", recipe.crossing, recipe.nets));
}

// A crossing net is of exactly two parts.
static void AddPlantedNet(const Recipe &recipe, bool crossing, int size, Draft *draft)
{
  const int part = DrawFrom(&draft->random, 0, recipe.parts - 1);

  if (!crossing)
    return AddNetInside(draft, PartBlock(recipe, part), size);
  const int other = (part + DrawFrom(&draft->random, 1, recipe.parts - 1)) % recipe.parts;
  AddNetAcross(draft, PartBlock(recipe, part), PartBlock(recipe, other), size);
}

static void AddNets(const Recipe &recipe, Draft *draft)
{
  if (recipe.kind == Kind::CIRCUIT)
    return AddCircuitNets(recipe, draft);
  if (recipe.kind == Kind::GRID)
    return AddGridNets(recipe, draft);
  const DrawSize draw = recipe.kind == Kind::POWERLAW ? PowerlawSizes(recipe) : UniformSizes(recipe);
  Random sizes = {Draw(&draft->random)};

  CheckPins(recipe, draw, sizes);
  for (int net = 0; net < recipe.nets; net++) {
    if (recipe.kind == Kind::PLANTED)
      AddPlantedNet(recipe, net < recipe.crossing, draw(&sizes), draft);
    else
      AddNetInside(draft, {0, recipe.cells}, draw(&sizes));
  }
}

// What the options leave open or get wrong together.
static Recipe Complete(Recipe recipe)
{
  if (recipe.kind == Kind::GRID)
    recipe.cells = GridCells(recipe);
  if (recipe.nets == 0)
    recipe.nets = recipe.cells;
  if (recipe.kind == Kind::PLANTED)
    CheckParts(recipe);
  if (recipe.kind == Kind::RANDOM && recipe.size.high > recipe.cells)
    FailUsage(fmt::format("--size goes up to {}, but --cells is {}", recipe.size.high, recipe.cells));
  return recipe;
}

static std::vector<std::int64_t> DrawWeights(Random *random, const char *option, WeightRange range, int count)
{
  std::vector<std::int64_t> weights;
  std::int64_t total = 0;

  if (range.low == 1 && range.high == 1)
    return weights;
  for (int n = 0; n < count; n++) {
    weights.push_back(DrawWeight(random, range.low, range.high));
    total += weights.back();
    if (total > most_weight)
      FailUsage(fmt::format("{} {}:{}: the first {} of {} weights add up to {}, above {}", option, range.low,
                            range.high, n + 1, count, total, most_weight));
  }
  return weights;
}

Generated Generate(const Recipe &given)
{
  const Recipe recipe = Complete(given);
  Draft draft = StartDraft(recipe.cells, recipe.seed);
  Generated generated;

  AddNets(recipe, &draft);
  draft.hgr.cellwgts = DrawWeights(&draft.random, "--cell-weights", recipe.cellwgts, draft.hgr.ncells);
  draft.hgr.netwgts = DrawWeights(&draft.random, "--net-weights", recipe.netwgts, draft.hgr.nnets);
  if (recipe.kind == Kind::PLANTED) {
    for (int part = 0; part < recipe.parts; part++)
      generated.planted.insert(generated.planted.end(), static_cast<size_t>(PartBlock(recipe, part).size),
                               part);
    for (int net = 0; net < recipe.crossing; net++)
      generated.planted_cut += NetWeight(draft.hgr, net);
  }
  if (recipe.kind == Kind::PLANTED || recipe.kind == Kind::CIRCUIT)
    Hide(&draft, &generated.planted);
  generated.hgr = std::move(draft.hgr);
  return generated;
}

} // namespace kapris_cli
