// cli/measure/measures.cpp - the quality of a partition, from its definition and without the library.
// SPDX-License-Identifier: MIT
//
// Sums stay below 2^63: a file has fewer than 2^31 pins and cells, so the spans of all nets add up to less
// than 2^31, and a weight is less than 2^31.

#include "measure/measures.h"

#include <algorithm>

namespace kapris_cli
{

// The part numbers in use, rising.
static std::vector<int> UsedNumbers(const std::vector<int> &part)
{
  std::vector<int> numbers = part;

  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

static void AddNets(const Hgr &hgr, const std::vector<size_t> &slot, Measures *measures)
{
  std::vector<int> last_net(measures->used.size(), -1);

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    const long long weight = NetWeight(hgr, net);
    long long span = 0;
    for (int i = hgr.netptr[n]; i < hgr.netptr[n + 1]; i++) {
      int &seen = last_net[slot[static_cast<size_t>(hgr.netind[static_cast<size_t>(i)])]];
      if (seen != net)
        span++;
      seen = net;
    }
    if (span > 1) {
      measures->cut += weight;
      measures->soed += span * weight;
      measures->connectivity += (span - 1) * weight;
    }
  }
}

Measures Measure(const Hgr &hgr, const std::vector<int> &part)
{
  const std::vector<int> numbers = UsedNumbers(part);
  std::vector<size_t> slot(part.size());
  Measures measures;

  for (const int number : numbers)
    measures.used.push_back(UsedPart{number, 0});
  for (size_t c = 0; c < part.size(); c++) {
    slot[c] =
        static_cast<size_t>(std::lower_bound(numbers.begin(), numbers.end(), part[c]) - numbers.begin());
    const int weight = CellWeight(hgr, static_cast<int>(c));
    measures.used[slot[c]].weight += weight;
    measures.total += weight;
  }
  AddNets(hgr, slot, &measures);
  return measures;
}

double Imbalance(const Measures &measures, long long nparts)
{
  long long heaviest = 0;

  for (const UsedPart &used : measures.used)
    heaviest = std::max(heaviest, used.weight);
  if (measures.total == 0)
    return 0.0;
  return static_cast<double>(heaviest) * static_cast<double>(nparts) / static_cast<double>(measures.total) -
         1.0;
}

} // namespace kapris_cli
