// cli/measure/components.cpp - groups of cells that nets connect, in the hypergraph or inside its parts.
// SPDX-License-Identifier: MIT

#include "measure/components.h"

#include <algorithm>
#include <fmt/core.h>
#include <functional>
#include <numeric>
#include <utility>

namespace kapris_report
{

// Shortens the way for the next search.
static int RootOf(std::vector<int> *parent, int cell)
{
  int *up = parent->data();

  while (up[cell] != cell) {
    up[cell] = up[up[cell]];
    cell = up[cell];
  }
  return cell;
}

// For each cell that stands for a component its size, for others 0. Cells of a net belong together where slot, which
// counts up to nslots, is the same.
static std::vector<int> SizesByRoot(const Hgr &hgr, const std::vector<size_t> &slot, size_t nslots)
{
  std::vector<int> parent(static_cast<size_t>(hgr.ncells)), sizes(static_cast<size_t>(hgr.ncells), 1);
  std::vector<int> last_net(nslots, -1), first(nslots);

  std::iota(parent.begin(), parent.end(), 0);
  for (int net = 0; net < hgr.nnets; net++)
    for (int i = hgr.netptr[static_cast<size_t>(net)]; i < hgr.netptr[static_cast<size_t>(net) + 1]; i++) {
      const int cell = hgr.netind[static_cast<size_t>(i)];
      const size_t s = slot[static_cast<size_t>(cell)];
      if (std::exchange(last_net[s], net) != net)
        first[s] = cell;
      int small = RootOf(&parent, cell), large = RootOf(&parent, first[s]);
      if (small == large)
        continue;
      if (sizes[static_cast<size_t>(small)] > sizes[static_cast<size_t>(large)])
        std::swap(small, large);
      parent[static_cast<size_t>(small)] = large;
      sizes[static_cast<size_t>(large)] += std::exchange(sizes[static_cast<size_t>(small)], 0);
    }
  return sizes;
}

std::vector<int> ComponentSizes(const Hgr &hgr)
{
  std::vector<int> sizes = SizesByRoot(hgr, std::vector<size_t>(static_cast<size_t>(hgr.ncells)), 1);

  std::erase(sizes, 0);
  std::sort(sizes.begin(), sizes.end(), std::greater<>());
  return sizes;
}

std::vector<PartComponents> ComponentsOfParts(const Hgr &hgr, const Placement &place)
{
  const std::vector<int> sizes = SizesByRoot(hgr, place.slot, place.numbers.size());
  std::vector<PartComponents> parts;
  std::vector<int> largest(place.numbers.size());

  for (const int number : place.numbers)
    parts.push_back({number, 0, 0});
  for (size_t cell = 0; cell < sizes.size(); cell++) {
    const size_t s = place.slot[cell];
    parts[s].count += sizes[cell] > 0;
    parts[s].outside += sizes[cell];
    largest[s] = std::max(largest[s], sizes[cell]);
  }
  for (size_t s = 0; s < parts.size(); s++)
    parts[s].outside -= largest[s];
  return parts;
}

std::string DescribeComponents(const std::vector<PartComponents> &parts)
{
  size_t nwhole = 0;
  long long outside = 0;

  for (const PartComponents &part : parts) {
    nwhole += part.count == 1;
    outside += part.outside;
  }
  if (nwhole == parts.size())
    return parts.size() == 1 ? "the part is connected"
                             : fmt::format("all {} parts are connected", parts.size());
  return fmt::format("{} of {} parts are connected, {} cells outside the largest components", nwhole,
                     parts.size(), outside);
}

} // namespace kapris_report
