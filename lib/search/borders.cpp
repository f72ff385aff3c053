// lib/search/borders.cpp - which parts lie side by side.
// SPDX-License-Identifier: MIT

#include "borders.h"

#include <algorithm>
#include <tuple>

namespace kapris::engine::KAPRIS_ENGINE
{

Array<BorderNet> FindBorderNets(const HGraph *graph, const int *part, int mostparts)
{
  Array<BorderNet> borders;
  Array<int> met;

  for (int j = 0; j < graph->nnets; j++) {
    met.clear();
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1] && std::ssize(met) <= mostparts; k++) {
      const int p = part[graph->netind[k]];
      if (std::find(met.begin(), met.end(), p) == met.end())
        met.push_back(p);
    }
    if (std::ssize(met) > mostparts)
      continue;
    for (std::size_t a = 0; a < met.size(); a++)
      for (std::size_t b = a + 1; b < met.size(); b++)
        borders.push_back({std::min(met[a], met[b]), std::max(met[a], met[b]), j});
  }
  std::sort(borders.begin(), borders.end(), [](const BorderNet &a, const BorderNet &b) {
    return std::tie(a.p, a.q, a.net) < std::tie(b.p, b.q, b.net);
  });
  return borders;
}

} // namespace kapris::engine::KAPRIS_ENGINE
