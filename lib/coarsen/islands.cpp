// lib/coarsen/islands.cpp - cells on no net: set aside, dealt to the parts, and put back.
// SPDX-License-Identifier: MIT
//
// A level with k kept cells and m islands keeps k+m entries in its per-cell arrays: the kept cells first, in
// their old order, then the islands, the one of the lowest old number last. Projection through the finer
// level's cellmap therefore still reaches every cell.

#include "coarsen.h"

#include "control/ctrl.h"

// Moves the entry at index i to map[i]; aux has room for n entries.
static void PermuteEntries(int n, const int *map, int *x, int *aux)
{
  if (x == nullptr)
    return;
  for (int i = 0; i < n; i++)
    aux[map[i]] = x[i];
  icopy__(n, aux, x);
}

static void PermuteCells(HGraph *graph, int n, const int *map, int *aux)
{
  PermuteEntries(n, map, graph->where, aux);
  PermuteEntries(n, map, graph->cellwgt, aux);
  PermuteEntries(n, map, graph->adjwgt, aux);
  for (int k = 0; k < graph->netptr[graph->nnets]; k++)
    graph->netind[k] = map[graph->netind[k]];
}

void SeparateIslands__(HGraph *graph)
{
  const int n = graph->ncells;
  const int *incptr = graph->incptr;
  int *map = imalloc__(n, "SeparateIslands: ncells");
  int nkept = graph->nfixed, last = n;

  for (int i = 0; i < graph->nfixed; i++)
    map[i] = i;
  for (int i = graph->nfixed; i < n; i++)
    map[i] = incptr[i + 1] > incptr[i] ? nkept++ : --last;

  graph->nislands = n - nkept;
  graph->ncells = nkept;
  if (graph->nislands == 0) {
    QVfree__(&map);
    return;
  }

  // Islands have empty lists, so dropping their entries keeps the lists of the others in place.
  for (int i = graph->nfixed, end = graph->nfixed; i < n; i++)
    if (map[i] < nkept)
      graph->incptr[++end] = graph->incptr[i + 1];

  int *aux = imalloc__(n, "SeparateIslands: aux");
  PermuteCells(graph, n, map, aux);
  QVfree__(&aux);

  if (graph->finer == nullptr) {
    graph->islandmap = imalloc__(n, "SeparateIslands: graph->islandmap");
    icopy__(n, map, graph->islandmap);
  } else {
    for (int i = 0; i < graph->finer->ncells; i++)
      graph->finer->cellmap[i] = map[graph->finer->cellmap[i]];
  }
  QVfree__(&map);
  CHECK_VALID(CheckHGraph__(graph));
}

void PartitionIslands__(const Control *ctrl, HGraph *graph)
{
  // By weight alone, or by weight in proportion to the shares of the sides.
  const double share0 = ctrl->context != nullptr ? ctrl->part0frac : 0.5;

  for (int i = graph->ncells; i < graph->ncells + graph->nislands; i++) {
    const int p = graph->pwgts[0] * (1.0 - share0) >= graph->pwgts[1] * share0 ? 1 : 0;
    graph->where[i] = p;
    graph->pwgts[p] += graph->cellwgt[i];
  }
}

// The part of the smallest weight in proportion to its share; the lowest number among equals.
static int LightestPart(const Control *ctrl, const int *kpwgts)
{
  if (ctrl->context == nullptr)
    return iamin__(ctrl->nparts, kpwgts);

  const double *shares = ctrl->context->shares;
  int lightest = 0;
  for (int p = 1; p < ctrl->nparts; p++)
    if (kpwgts[p] * shares[lightest] < kpwgts[lightest] * shares[p])
      lightest = p;
  return lightest;
}

void PartitionIslandsKway__(const Control *ctrl, HGraph *graph)
{
  for (int i = graph->ncells; i < graph->ncells + graph->nislands; i++) {
    const int p = LightestPart(ctrl, graph->kpwgts);
    graph->where[i] = p;
    graph->kpwgts[p] += graph->cellwgt[i];
  }
}

void CombineIslands__(HGraph *graph)
{
  if (graph->nislands == 0)
    return;

  const int nkept = graph->ncells, n = nkept + graph->nislands;
  int *imap = imalloc__(n, "CombineIslands: imap");
  int *aux = imalloc__(n, "CombineIslands: aux");

  for (int i = 0; i < n; i++)
    imap[graph->islandmap[i]] = i;

  // The degrees at their old places, then starts again; the lists themselves never moved.
  iset__(n, 0, aux);
  for (int i = 0; i < nkept; i++)
    aux[imap[i]] = graph->incptr[i + 1] - graph->incptr[i];
  for (int i = 0; i < n; i++)
    graph->incptr[i + 1] = graph->incptr[i] + aux[i];

  PermuteCells(graph, n, imap, aux);
  QVfree__(&imap, &aux);
  graph->ncells = n;
  graph->nislands = 0;
  CHECK_VALID(CheckIncidence__(graph));
}
