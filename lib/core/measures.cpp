// lib/core/measures.cpp - quality of a partition, recomputed from the pins or from the pin counts.
// SPDX-License-Identifier: MIT

#include "core.h"

#include <cmath>

int ComputeActualCut__(const HGraph *graph, const int *part)
{
  int cut = 0;

  for (int j = 0; j < graph->nnets; j++) {
    const int first = graph->netptr[j];
    for (int k = first + 1; k < graph->netptr[j + 1]; k++) {
      if (part[graph->netind[k]] != part[graph->netind[first]]) {
        cut = AddWrap__(cut, graph->netwgt[j]);
        break;
      }
    }
  }
  return cut;
}

int ComputeActualSOED__(const HGraph *graph, const int *part)
{
  const int maxpart = graph->ncells > 0 ? part[iamax__(graph->ncells, part)] : 0;
  // Marked with the net number, so nothing is cleared between nets.
  int *htable = ismalloc__(static_cast<std::int64_t>(maxpart) + 1, -1, "htable");
  int soed = 0;

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
      soed = AddWrap__(soed, MulWrap__(touched, graph->netwgt[j]));
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
    wgts[part[i]] += graph->cellwgt[i];
  return static_cast<float>((wgts[0] < wgts[1] ? wgts[0] : wgts[1]) / (wgts[0] + wgts[1]));
}
