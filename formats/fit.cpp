// formats/fit.cpp - what remains of a hypergraph in a format that cannot hold everything.
// SPDX-License-Identifier: MIT

#include "formats/fit.h"

#include "formats/entries.h"
#include "formats/failure.h"

#include <algorithm>
#include <cstdint>
#include <fmt/core.h>
#include <string>
#include <utility>
#include <vector>

namespace kapris_formats
{

static bool AllOnes(const std::vector<std::int64_t> &weights)
{
  return std::all_of(weights.begin(), weights.end(), [](std::int64_t weight) { return weight == 1; });
}

// Whether the cells weigh what the reader of matrices gives them.
static bool WeighTheirEntries(const Hgr &hgr)
{
  std::vector<std::int64_t> left = hgr.cellwgts;

  for (const int pin : hgr.netind)
    left[static_cast<size_t>(pin)]--;
  return std::all_of(left.begin(), left.end(), [](std::int64_t weight) { return weight == 0; });
}

Hgr FitIntoMatrix(const Drops &drops, const Hgr &hgr)
{
  Hgr meant = hgr;

  SortPins(&meant);
  if (meant.netind.size() < hgr.netind.size() && !drops.repeats)
    throw Failure{EXIT_USAGE, fmt::format("{} pins are repeated in their nets, which a matrix cannot hold: "
                                          "--drop-repeats leaves them out",
                                          hgr.netind.size() - meant.netind.size())};
  const bool cells_kept = AllOnes(meant.cellwgts) || WeighTheirEntries(meant);
  if (!drops.weights && !(AllOnes(meant.netwgts) && cells_kept))
    throw Failure{EXIT_USAGE, fmt::format("the {} weights would be lost in a matrix: --drop-weights leaves "
                                          "them out, .hgr and .patoh hold them",
                                          cells_kept ? "net" : "cell")};
  meant.netwgts.clear();
  meant.cellwgts.clear();
  return meant;
}

Hgr FitIntoGraph(const Drops &drops, const Hgr &hgr, Details *details)
{
  std::vector<std::pair<std::vector<int>, int>> nets;
  Hgr sorted = hgr, meant = {hgr.ncells, hgr.nnets, {0}, {}, hgr.cellwgts, {}};
  std::vector<std::string> names;

  SortPins(&sorted);
  if (sorted.netind.size() < hgr.netind.size() && !drops.repeats)
    throw Failure{EXIT_USAGE, fmt::format("{} pins are repeated in their nets, which a graph cannot hold: "
                                          "--drop-repeats leaves them out",
                                          hgr.netind.size() - sorted.netind.size())};
  for (size_t n = 0; n < static_cast<size_t>(hgr.nnets); n++) {
    const auto pins = sorted.netind.begin();
    const std::vector<int> net(pins + sorted.netptr[n], pins + sorted.netptr[n + 1]);
    if (net.size() != 2)
      throw Failure{EXIT_USAGE,
                    fmt::format("net {} has {} cells, and an edge of a graph has two: write .hgr or .patoh",
                                n + 1, net.size())};
    nets.emplace_back(net, static_cast<int>(n));
  }
  std::sort(nets.begin(), nets.end());
  for (size_t i = 0; i < nets.size(); i++) {
    const auto &[net, number] = nets[i];
    if (i > 0 && nets[i - 1].first == net)
      throw Failure{EXIT_USAGE,
                    fmt::format("nets {} and {} have the same cells, and a graph has one edge between two: "
                                "write .hgr or .patoh",
                                nets[i - 1].second + 1, number + 1)};
    meant.netind.insert(meant.netind.end(), net.begin(), net.end());
    meant.netptr.push_back(static_cast<int>(meant.netind.size()));
    if (!hgr.netwgts.empty())
      meant.netwgts.push_back(hgr.netwgts[static_cast<size_t>(number)]);
    if (!details->nets.empty())
      names.push_back(details->nets[static_cast<size_t>(number)]);
  }
  details->nets = std::move(names);
  return meant;
}

} // namespace kapris_formats
