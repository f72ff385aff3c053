// cli/measure/stats.cpp - what a hypergraph looks like: sizes, degrees, components, repetition.
// SPDX-License-Identifier: MIT
//
//   sets        the cells of each net, sorted and once each    CellsOfNets
//   identical   sets that come again                           CountIdentical
//   sum up      average, median, powers of two                 DistributionOf

#include "measure/stats.h"

#include "libraries.h"

#include "measure/components.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <span>
#include <utility>
#include <xxhash.h>

namespace kapris_cli
{

namespace
{

using Cells = std::span<const int>;

} // namespace

static Cells CellsOf(const Hgr &sets, size_t net)
{
  return Cells(sets.netind)
      .subspan(static_cast<size_t>(sets.netptr[net]),
               static_cast<size_t>(sets.netptr[net + 1] - sets.netptr[net]));
}

// The same nets without weights.
static Hgr CellsOfNets(const Hgr &hgr)
{
  Hgr sets = {hgr.ncells, hgr.nnets, {0}, {}, {}, {}};

  sets.netind.reserve(hgr.netind.size());
  for (size_t net = 0; net < static_cast<size_t>(hgr.nnets); net++) {
    const Cells pins = CellsOf(hgr, net);
    const auto first = sets.netind.insert(sets.netind.end(), pins.begin(), pins.end());
    std::sort(first, sets.netind.end());
    sets.netind.erase(std::unique(first, sets.netind.end()), sets.netind.end());
    sets.netptr.push_back(static_cast<int>(sets.netind.size()));
  }
  return sets;
}

// The hash only brings likely equals together; what counts are the cells.
static int CountIdentical(const Hgr &sets)
{
  std::vector<std::pair<std::uint64_t, size_t>> order;
  int identical = 0;

  for (size_t net = 0; net < static_cast<size_t>(sets.nnets); net++) {
    const Cells cells = CellsOf(sets, net);
    order.emplace_back(XXH3_64bits(cells.data(), cells.size_bytes()), net);
  }
  std::sort(order.begin(), order.end(), [&](const auto &a, const auto &b) {
    if (a.first != b.first)
      return a.first < b.first;
    const Cells one = CellsOf(sets, a.second), other = CellsOf(sets, b.second);
    return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end());
  });
  for (size_t n = 1; n < order.size(); n++) {
    const Cells one = CellsOf(sets, order[n - 1].second), other = CellsOf(sets, order[n].second);
    if (std::equal(one.begin(), one.end(), other.begin(), other.end()))
      identical++;
  }
  return identical;
}

// How many of the values are 0, 1, 2-3, 4-7, and so on.
static std::vector<Bin> Histogram(const std::vector<std::int64_t> &values)
{
  std::array<std::int64_t, 64> counts = {};
  std::vector<Bin> histogram;

  for (const std::int64_t value : values)
    counts[static_cast<size_t>(std::bit_width(static_cast<std::uint64_t>(value)))]++;
  for (size_t n = 0; n < counts.size(); n++)
    if (counts[n] > 0)
      histogram.push_back({(std::int64_t{1} << n) / 2, (std::int64_t{1} << n) - 1, counts[n]});
  return histogram;
}

static Distribution DistributionOf(std::vector<std::int64_t> values)
{
  Distribution distribution;

  if (values.empty())
    return distribution;
  const auto [min, max] = std::minmax_element(values.begin(), values.end());
  distribution.total = std::accumulate(values.begin(), values.end(), std::int64_t{0});
  distribution.min = *min;
  distribution.max = *max;
  distribution.average = static_cast<double>(distribution.total) / static_cast<double>(values.size());
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  // Of an even number of values, the middle of the middle two.
  distribution.median_twice =
      *middle + (values.size() % 2 == 0 ? *std::max_element(values.begin(), middle) : *middle);
  distribution.histogram = Histogram(values);
  return distribution;
}

static std::vector<std::int64_t> WeightsOf(const std::vector<std::int64_t> &weights, int count)
{
  return weights.empty() ? std::vector<std::int64_t>(static_cast<size_t>(count), 1) : weights;
}

static Distribution DistributionOf(const std::vector<int> &counts)
{
  return DistributionOf(std::vector<std::int64_t>(counts.begin(), counts.end()));
}

Stats CountStats(const Hgr &hgr)
{
  constexpr std::ptrdiff_t most_listed = 10;
  const Hgr sets = CellsOfNets(hgr);
  const std::vector<int> components = ComponentSizes(sets);
  std::vector<int> sizes, degrees(static_cast<size_t>(hgr.ncells));

  for (size_t net = 0; net < static_cast<size_t>(hgr.nnets); net++)
    sizes.push_back(static_cast<int>(CellsOf(sets, net).size()));
  for (const int cell : sets.netind)
    degrees[static_cast<size_t>(cell)]++;
  return {{{"repeated_pins", static_cast<std::int64_t>(hgr.netind.size() - sets.netind.size())},
           {"empty_nets", std::count(sizes.begin(), sizes.end(), 0)},
           {"one_cell_nets", std::count(sizes.begin(), sizes.end(), 1)},
           {"identical_nets", CountIdentical(sets)},
           {"islands", std::count(degrees.begin(), degrees.end(), 0)},
           {"components", static_cast<std::int64_t>(components.size())}},
          {{"cell_weight", DistributionOf(WeightsOf(hgr.cellwgts, hgr.ncells))},
           {"net_weight", DistributionOf(WeightsOf(hgr.netwgts, hgr.nnets))},
           {"net_size", DistributionOf(sizes)},
           {"cell_degree", DistributionOf(degrees)},
           {"component_size", DistributionOf(components)}},
          {components.begin(), components.begin() + std::min(std::ssize(components), most_listed)}};
}

} // namespace kapris_cli
