// cli/measure/measures.cpp - the quality of a partition, from its definition and without the library.
// SPDX-License-Identifier: MIT
//
// The weights of all cells or nets add up to at most most_weight; what counts a net for each part that it spans can
// leave
// 64 bits.

#include "measure/measures.h"

#include "formats/failure.h"
#include "measure/sums.h"
#include "report/library.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

// The part numbers in use, rising.
static std::vector<int> UsedNumbers(const std::vector<int> &part)
{
  std::vector<int> numbers = part;

  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

Placement Place(const std::vector<int> &part)
{
  Placement place = {UsedNumbers(part), {}};

  for (const int p : part)
    place.slot.push_back(static_cast<size_t>(std::lower_bound(place.numbers.begin(), place.numbers.end(), p) -
                                             place.numbers.begin()));
  return place;
}

// Calls visit(net, slots) for each net that spans more than one part, with the slots of these parts.
template <typename Visit>
static void VisitCutNets(const Hgr &hgr, const Placement &place, Visit visit)
{
  std::vector<int> last_net(place.numbers.size(), -1);
  std::vector<size_t> slots;

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    slots.clear();
    for (int i = hgr.netptr[n]; i < hgr.netptr[n + 1]; i++) {
      const size_t slot = place.slot[static_cast<size_t>(hgr.netind[static_cast<size_t>(i)])];
      if (last_net[slot] != net)
        slots.push_back(slot);
      last_net[slot] = net;
    }
    if (slots.size() > 1)
      visit(net, slots);
  }
}

Measures Measure(const std::string &name, const Hgr &hgr, const std::vector<int> &part)
{
  const Placement place = Place(part);
  Measures measures;

  for (const int number : place.numbers)
    measures.used.push_back(UsedPart{number, 0});
  for (size_t c = 0; c < part.size(); c++) {
    const std::int64_t weight = CellWeight(hgr, static_cast<int>(c));
    measures.used[place.slot[c]].weight += weight;
    measures.total += weight;
  }
  VisitCutNets(hgr, place, [&](int net, const std::vector<size_t> &slots) {
    const std::int64_t weight = NetWeight(hgr, net), span = static_cast<std::int64_t>(slots.size());
    measures.cut += weight;
    if (!AddProduct(&measures.soed, weight, span))
      throw Failure{
          EXIT_MALFORMED,
          fmt::format("{}: weights too large: net {}, of weight {} in {} parts, takes the SOED above "
                      "{}, the largest number",
                      name, net + 1, weight, span, INT64_MAX)};
  });
  measures.connectivity = measures.soed - measures.cut;
  return measures;
}

double Imbalance(const Measures &measures, long long nparts, const std::vector<double> &shares)
{
  double highest = 0.0;

  for (const UsedPart &used : measures.used) {
    const double weight = static_cast<double>(used.weight), total = static_cast<double>(measures.total);
    if (measures.total > 0)
      highest =
          std::max(highest, shares.empty() ? weight * static_cast<double>(nparts) / total
                                           : weight / (shares[static_cast<size_t>(used.number)] * total));
  }
  return measures.total > 0 ? highest - 1.0 : 0.0;
}

std::vector<CutNet> CutNets(const Hgr &hgr, const std::vector<int> &part)
{
  const Placement place = Place(part);
  std::vector<CutNet> nets;

  VisitCutNets(hgr, place, [&](int net, const std::vector<size_t> &slots) {
    nets.push_back({net, {}});
    for (const size_t slot : slots)
      nets.back().parts.push_back(place.numbers[slot]);
    std::sort(nets.back().parts.begin(), nets.back().parts.end());
  });
  return nets;
}

std::vector<std::vector<std::int64_t>> CutMatrix(const Hgr &hgr, const std::vector<CutNet> &nets, int nparts)
{
  const size_t n = static_cast<size_t>(nparts);
  std::vector<std::vector<std::int64_t>> matrix(n, std::vector<std::int64_t>(n));

  for (const CutNet &cut : nets)
    for (const int p : cut.parts)
      for (const int q : cut.parts)
        matrix[static_cast<size_t>(p)][static_cast<size_t>(q)] += NetWeight(hgr, cut.net);
  return matrix;
}

} // namespace kapris_report
