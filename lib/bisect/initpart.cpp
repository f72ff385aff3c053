// lib/bisect/initpart.cpp - the first bisection of the coarsest level.
// SPDX-License-Identifier: MIT

#include "bisect.h"

#include "control/ctrl.h"

#include <utility>

int AnchorsOfSide0__(const Control *ctrl, const HGraph *graph)
{
  // Where the parts have shares of their own, the anchors go by part number.
  if (ctrl->context != nullptr)
    return graph->nfixed > 0 ? ctrl->nanchors0 : 0;
  // The product in single precision, the sum in double; 0.4 keeps whole-number products whole.
  const float share = static_cast<float>(graph->nfixed) * ctrl->part0frac;

  return Truncate__(static_cast<double>(share) + 0.4);
}

// Deals the anchors, in random order unless each belongs to a part, then the other cells: side 0 until it
// reaches its target, side 1 from then on.
static void DealCells(const Control *ctrl, HGraph *graph, int *perm, int nanchors0, int target)
{
  int wgts[2] = {0, 0};

  if (graph->nfixed > 0) {
    RandomPermuteFine__(perm, graph->nfixed, 1);
    if (ctrl->context != nullptr)
      for (int i = 0; i < graph->nfixed; i++)
        perm[i] = i;
    for (int i = 0; i < graph->nfixed; i++) {
      const int side = i < nanchors0 ? 0 : 1;
      graph->where[perm[i]] = side;
      wgts[side] += graph->cellwgt[perm[i]];
    }
  }
  RandomPermuteFine__(perm, graph->ncells, 1);
  for (int i = 0; i < graph->ncells; i++) {
    if (perm[i] < graph->nfixed)
      continue;
    const int side = wgts[0] >= target ? 1 : 0;
    graph->where[perm[i]] = side;
    wgts[side] += graph->cellwgt[perm[i]];
  }
}

static void Random_FMPartition__(Control *ctrl, HGraph *graph)
{
  AllocateRefinementMemory__(graph);
  if (graph->ncells == 0)
    return;

  int *perm = imalloc__(graph->ncells, "Random_FMPartition: perm");
  int *bestwhere = imalloc__(graph->ncells, "Random_FMPartition: graph->where");
  const int total = iasum__(graph->ncells, graph->cellwgt);
  const int target = Truncate__(static_cast<float>(total) * ctrl->part0frac);
  const int nanchors0 = AnchorsOfSide0__(ctrl, graph);
  const int ntrials = ctrl->kwayrefine ? 20 : 10;
  int bestcut = 0;

  for (int t = 0; t < ntrials; t++) {
    EnterPhase__(ctrl, PHASE_INITIAL, graph->ncells);
    DealCells(ctrl, graph, perm, nanchors0, target);
    Balance__(ctrl, graph);
    RefineFull__(ctrl, graph, 10);
    if (ctrl->dbglvl & DBG_INITPART)
      Trace__("%5d %5d %5d\n", graph->pwgts[0], graph->pwgts[1], graph->mincut);
    if (t == 0 || graph->mincut < bestcut) {
      bestcut = graph->mincut;
      icopy__(graph->ncells, graph->where, bestwhere);
    }
  }
  if (ctrl->dbglvl & DBG_INITPART)
    Trace__("Bestcut Icut: %5d\n", bestcut);

  icopy__(graph->ncells, bestwhere, graph->where);
  graph->mincut = bestcut;
  QVfree__(&perm, &bestwhere);
}

void InitPartition__(Control *ctrl, HGraph *graph)
{
  // The passes inside the trials are not traced.
  const int dbglvl = std::exchange(ctrl->dbglvl, ctrl->dbglvl & ~(DBG_PASSES | DBG_MOVES));

  StartTimer__(ctrl, &ctrl->InitPartTmr);
  Random_FMPartition__(ctrl, graph);
  StopTimer__(ctrl, &ctrl->InitPartTmr);
  ctrl->dbglvl = dbglvl;
}
