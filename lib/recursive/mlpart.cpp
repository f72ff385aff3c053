// lib/recursive/mlpart.cpp - the recursion over bisections, with fixed cells and the k-way polish around it.
// SPDX-License-Identifier: MIT

#include "recursive.h"

#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "kway/kway.h"

#include <utility>

// Partitions graph into nparts parts from number first on, writing part[label]; returns the sum of the cuts
// of all bisections. Frees label, and graph itself unless it is a root.
static int MLRB__(Control *ctrl, HGraph *graph, int *part, int nparts, int first)
{
  int cut = 0;

  for (;;) {
    const int nparts0 = nparts / 2; // side 0 is the smaller one of an odd number
    HGraph *lgraph = nullptr, *rgraph = nullptr;

    ctrl->part0frac = static_cast<float>(nparts0 / static_cast<double>(nparts));
    int *bisection = imalloc__(graph->ncells, "MLRB: bisection");
    cut = AddWrap__(cut, Hypergraph_Bisection__(ctrl, graph, bisection));
    for (int i = 0; i < graph->ncells; i++)
      part[graph->label[i]] = first + bisection[i];
    if (nparts > 2) {
      lgraph = CreateHGraph__();
      rgraph = CreateHGraph__();
      SplitGraphPart__(ctrl, graph, bisection, lgraph, rgraph);
    }
    QVfree__(&bisection, &graph->label);
    if (!graph->isroot)
      FreeHGraph__(graph);
    if (nparts == 2)
      return cut;

    if (nparts == 3) {
      QVfree__(&lgraph->label);
      FreeHGraph__(lgraph);
    } else {
      cut = AddWrap__(cut, MLRB__(ctrl, lgraph, part, nparts0, first));
    }
    // The right side by iteration, so that the depth grows with the logarithm of nparts.
    graph = rgraph;
    nparts -= nparts0;
    first += nparts0;
  }
}

// k-way refinement of the partition part of graph under the imbalance that it already has; returns the cut.
static int PolishKway(Control *ctrl, HGraph *graph, int *part)
{
  const int rtype = std::exchange(ctrl->rtype, 1);
  int *kpwgts = ismalloc__(ctrl->nparts, 0, "MultilevelPartition: kpwgts");

  for (int i = 0; i < graph->ncells; i++)
    kpwgts[part[i]] = AddWrap__(kpwgts[part[i]], graph->cellwgt[i]);
  ctrl->ubfactor = static_cast<float>(static_cast<double>(ctrl->nparts) *
                                      kpwgts[iamax__(ctrl->nparts, kpwgts)] / iasum__(ctrl->nparts, kpwgts));

  AllocateKwayRefinementMemory__(ctrl, graph);
  icopy__(graph->ncells, part, graph->where);
  const int cut = RefineKwayPartition__(ctrl, graph);
  icopy__(graph->ncells, graph->where, part);

  ctrl->rtype = rtype;
  QVfree__(&kpwgts);
  return cut;
}

// graph becomes the root of a recursion.
static int PartitionRoot(Control *ctrl, HGraph *graph, int nfixed, int *part)
{
  graph->isroot = 1;
  graph->nfixed = nfixed;
  graph->label = imalloc__(graph->ncells, "MultilevelPartition: label");
  for (int i = 0; i < graph->ncells; i++)
    graph->label[i] = i;

  const int cut = MLRB__(ctrl, graph, part, ctrl->nparts, 0);
  return ctrl->nparts > 2 && ctrl->kwayrefine ? PolishKway(ctrl, graph, part) : cut;
}

static int PartitionWithFixedCells(Control *ctrl, HGraph *graph, int *part)
{
  int *orgpart = imalloc__(graph->ncells, "orgpart");

  icopy__(graph->ncells, part, orgpart);
  CompressFixedCells__(ctrl, graph, part);
  HGraph *compressed = std::exchange(graph->coarser, nullptr);
  compressed->finer = nullptr;
  int *fpart = imalloc__(compressed->ncells, "MultilevelPartition: fpart");

  const int cut = PartitionRoot(ctrl, compressed, ctrl->nparts, fpart);

  ProjectFixedCells__(ctrl, graph, part, fpart);
  for (int i = 0; i < graph->ncells; i++)
    if (orgpart[i] != -1 && orgpart[i] != part[i])
      Trace__("Fixing failed: %d %d %d\n", i, orgpart[i], part[i]);
  QVfree__(&fpart, &orgpart);
  FreeHGraph__(compressed);
  return cut;
}

int MultilevelPartition__(Control *ctrl, HGraph *graph, int *part)
{
  return ctrl->fixed ? PartitionWithFixedCells(ctrl, graph, part) : PartitionRoot(ctrl, graph, 0, part);
}
