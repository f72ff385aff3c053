// lib/core/prune.cpp - the hypergraph without large nets on which the multilevel work is done, and the coarse-cell
// cap.
// SPDX-License-Identifier: MIT

#include "hgraph.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

HGraph *PruneHGraph__(const Control *ctrl, const HGraph *graph)
{
  int nnets = 0, npins = 0;

  for (int j = 0; j < graph->nnets; j++) {
    int size = NetSize(graph, j);
    if (size <= ctrl->maxnetsize) {
      nnets++;
      npins += size;
    }
  }
  // The traces of coarsening begin at no dropped weight, so a hypergraph that has some is copied all the same.
  if (nnets == graph->nnets && graph->dropwgt == 0)
    return nullptr;

  HGraph *pruned = CreateHGraph__();
  pruned->ncells = graph->ncells;
  pruned->nfixed = graph->nfixed;
  pruned->nnets = nnets;
  pruned->netptr = imalloc__(static_cast<std::int64_t>(nnets) + 1, "PruneHGraph: snetptr");
  pruned->netind = imalloc__(npins, "PruneHGraph: snetind");
  pruned->netwgt = wmalloc(nnets, "PruneHGraph: sgraph->netwgt");

  nnets = npins = 0;
  pruned->netptr[0] = 0;
  for (int j = 0; j < graph->nnets; j++) {
    int size = NetSize(graph, j);
    if (size <= ctrl->maxnetsize) {
      icopy__(size, graph->netind + graph->netptr[j], pruned->netind + npins);
      pruned->netwgt[nnets++] = graph->netwgt[j];
      pruned->netptr[nnets] = npins += size;
    }
  }

  CreateIncidentHGraph__(pruned);
  pruned->cellwgt = wmalloc(graph->ncells, "PruneHGraph: sgraph->cellwgt");
  icopy__(graph->ncells, graph->cellwgt, pruned->cellwgt);
  CHECK_VALID(CheckHGraph(pruned));
  return pruned;
}

void ComputeMaxCellWgt__(Control *ctrl, int n, const Weight *cellwgt)
{
  Weight total = iasum__(n, cellwgt);
  // On hypergraphs of one cell or none there is nothing to coarsen and coarsento is not positive.
  const Weight cap = AddWrap(total, total) / std::max(ctrl->coarsento, 1);
  int nheavy = 0;

  for (int i = 0; i < n; i++) {
    if (cellwgt[i] > cap) {
      nheavy++;
      total = SubWrap(total, cellwgt[i]);
    }
  }
  ctrl->heavycells = nheavy > 0;
  // Each heavy cell takes one of the coarsento places; the rest of the weight shares the others.
  ctrl->maxcellwgt = AddWrap(total, total) / std::max(ctrl->coarsento - nheavy, 1);
}

int NumOfLargeNets__(int nnets, const int *netptr)
{
  int n = 0;

  for (int j = 0; j < nnets; j++)
    n += netptr[j + 1] - netptr[j] >= 4;
  return n;
}

} // namespace kapris::engine::KAPRIS_ENGINE
