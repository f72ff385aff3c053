// lib/bisect/gain.cpp - refinement memory, gains from scratch, projection, and the storage of the two-way
// passes.
// SPDX-License-Identifier: MIT

#include "fm.h"

#include "coarsen/uncoarsen.h"
#include "control/ctrl.h"

void AllocateRefinementMemory__(HGraph *graph)
{
  graph->where = imalloc__(static_cast<std::int64_t>(graph->ncells) + graph->nislands,
                           "AllocateRefinementMemory: where");
  graph->gain = imalloc__(graph->ncells, "AllocateRefinementMemory: gain");
  graph->ndeg[0] = imalloc__(graph->nnets, "AllocateRefinementMemory: ndeg[0]");
  graph->ndeg[1] = imalloc__(graph->nnets, "AllocateRefinementMemory: ndeg[1]");
}

void ComputeInitGains__(HGraph *graph)
{
  const int *where = graph->where;

  graph->mincut = 0;
  for (int j = 0; j < graph->nnets; j++) {
    int ndeg[2] = {0, 0};
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      ndeg[where[graph->netind[k]]]++;
    graph->ndeg[0][j] = ndeg[0];
    graph->ndeg[1][j] = ndeg[1];
    if (ndeg[0] != 0 && ndeg[1] != 0)
      graph->mincut = AddWrap__(graph->mincut, graph->netwgt[j]);
  }

  graph->pwgts[0] = graph->pwgts[1] = 0;
  for (int i = 0; i < graph->ncells; i++) {
    const int p = where[i];
    const int *inside = graph->ndeg[p], *outside = graph->ndeg[1 - p];
    int gain = 0;

    graph->pwgts[p] = AddWrap__(graph->pwgts[p], graph->cellwgt[i]);
    for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
      const int j = graph->incind[k];
      if (outside[j] == 0)
        gain = SubWrap__(gain, graph->netwgt[j]);
      else if (inside[j] == 1)
        gain = AddWrap__(gain, graph->netwgt[j]);
    }
    graph->gain[i] = gain;
  }
}

void ProjectPartition__(Control *ctrl, HGraph *coarse)
{
  StartTimer__(ctrl, &ctrl->ProjectTmr);
  AllocateRefinementMemory__(coarse->finer);
  ProjectWhere__(coarse);
  StopTimer__(ctrl, &ctrl->ProjectTmr);
}

void FM_Alloc__(const HGraph *graph, FMState *fm)
{
  const int n = graph->ncells;
  // The weight of a cell's nets bounds its gain.
  const int maxgain = n > 0 ? graph->adjwgt[iamax__(n, graph->adjwgt)] : 0;

  *fm = FMState{};
  PQueueInit__(&fm->queue[0], n, maxgain);
  PQueueInit__(&fm->queue[1], n, maxgain);
  fm->place = QVarray__<signed char>(n, "FM_Refine: place");
  fm->swaps = imalloc__(n, "FM_Refine: swaps");
  fm->perm = imalloc__(n, "FM_Refine: perm");
}

void FM_Free__(FMState *fm)
{
  PQueueFree__(&fm->queue[0]);
  PQueueFree__(&fm->queue[1]);
  QVfree__(&fm->place, &fm->nets, &fm->swaps, &fm->perm);
}

void FM_LoadNets__(const HGraph *graph, FMState *fm)
{
  for (int j = 0; j < graph->nnets; j++)
    fm->nets[j] = {
        {graph->ndeg[0][j], graph->ndeg[1][j]}, graph->netwgt[j], graph->netptr[j], graph->netptr[j + 1], 0};
  for (int c = 0; c < graph->nfixed; c++)
    for (int k = graph->incptr[c]; k < graph->incptr[c + 1]; k++)
      fm->nets[graph->incind[k]].locked |= 1u << graph->where[c];
}

void FM_SetBounds__(const Control *ctrl, const HGraph *graph, FMState *fm)
{
  const int total = AddWrap__(graph->pwgts[0], graph->pwgts[1]);

  // Single precision for side 0 and double for side 1, on purpose: the bounds of an even split differ by one.
  fm->minpwgt[0] = Truncate__((ctrl->part0frac - ctrl->ubfactor) * static_cast<float>(total));
  fm->minpwgt[1] = Truncate__((1.0 - ctrl->part0frac - ctrl->ubfactor) * total);
}

void FM_FillQueues__(HGraph *graph, FMState *fm, int side)
{
  PQueueReset__(&fm->queue[0]);
  PQueueReset__(&fm->queue[1]);
  RandomPermute__(fm->perm, graph->ncells, 1);
  for (int i = 0; i < graph->ncells; i++) {
    const int c = fm->perm[i];
    if (c < graph->nfixed || (side != BOTH_SIDES && graph->where[c] != side)) {
      fm->place[c] = LOCKED;
    } else {
      fm->place[c] = static_cast<signed char>(graph->where[c]);
      PQueueInsert__(&fm->queue[graph->where[c]], c, graph->gain[c]);
    }
  }
  CHECK_VALID(CheckQueue__(&fm->queue[0]));
  CHECK_VALID(CheckQueue__(&fm->queue[1]));
}

void FM_StartLog__(const HGraph *graph, FMState *fm)
{
  fm->initcut = fm->newcut = fm->bestcut = graph->mincut;
  fm->best = -1;
  fm->mindiff = AbsDiff__(graph->pwgts[0], graph->pwgts[1]);
  fm->nmoves = 0;
}
