// lib/core/measures.cpp - quality of a partition, recomputed from the pins or from the pin counts.
// SPDX-License-Identifier: MIT

#include "hgraph.h"

#include <cmath>

namespace kapris::engine::KAPRIS_ENGINE
{

Weight ComputeActualCut__(const HGraph *graph, const int *part)
{
  Weight cut = 0;

  for (int j = 0; j < graph->nnets; j++) {
    const int first = graph->netptr[j];
    for (int k = first + 1; k < graph->netptr[j + 1]; k++) {
      if (part[graph->netind[k]] != part[graph->netind[first]]) {
        cut = AddWrap(cut, graph->netwgt[j]);
        break;
      }
    }
  }
  return cut;
}

Weight ComputeActualSOED__(const HGraph *graph, const int *part)
{
  const int maxpart = graph->ncells > 0 ? part[iamax__(graph->ncells, part)] : 0;
  // Marked with the net number, so nothing is cleared between nets.
  int *htable = ismalloc__(static_cast<std::int64_t>(maxpart) + 1, -1, "htable");
  Weight soed = 0;

  for (int j = 0; j < graph->nnets; j++) {
    int touched = 0;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      int p = part[graph->netind[k]];
      if (htable[p] != j) {
        htable[p] = j;
        touched++;
      }
    }
    if (touched > 1)
      soed = AddWrap(soed, MulWrap(touched, graph->netwgt[j]));
  }
  QVfree__(&htable);
  return soed;
}

float ComputeBalance__(const HGraph *graph, const int *part)
{
  double wgts[2] = {0.0, 0.0};

  if (graph->ncells < 1)
    return std::nanf("");
  for (int i = 0; i < graph->ncells; i++)
    wgts[part[i]] += static_cast<double>(graph->cellwgt[i]);
  return static_cast<float>((wgts[0] < wgts[1] ? wgts[0] : wgts[1]) / (wgts[0] + wgts[1]));
}

float ComputeBalanceKway__(const HGraph *graph, int nparts, const int *part)
{
  Weight *kpwgts = wsmalloc(nparts, 0, "ComputeBalanceKway: kpwgts");

  for (int i = 0; i < graph->ncells; i++)
    kpwgts[part[i]] += graph->cellwgt[i];
  const double largest = static_cast<double>(kpwgts[iamax__(nparts, kpwgts)]);
  const double total = static_cast<double>(iasum__(nparts, kpwgts));
  QVfree__(&kpwgts);
  return static_cast<float>(nparts * largest / total);
}

} // namespace kapris::engine::KAPRIS_ENGINE
