// lib/drivers/initpart.cpp - the first bisection of the coarsest level.
// SPDX-License-Identifier: MIT

#include "drivers.h"

#include "base/random.h"
#include "core/constants.h"
#include "refine/twoway/twoway.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Deals the anchors, in random order unless they go by the order of their parts, then the other cells: side 0 until it
// reaches its target, side 1 from then on.
static void DealCells(const Control *ctrl, Level *level, int *perm, Weight target)
{
  const HGraph *graph = level->graph;
  int *where = level->part.where;
  Weight wgts[2] = {0, 0};

  if (graph->nfixed > 0) {
    RandomPermuteFine__(perm, graph->nfixed, 1);
    if (ctrl->bounds.inorder)
      for (int i = 0; i < graph->nfixed; i++)
        perm[i] = i;
    for (int i = 0; i < graph->nfixed; i++) {
      const int side = i < ctrl->bounds.nanchors0 ? 0 : 1;
      where[perm[i]] = side;
      wgts[side] += graph->cellwgt[perm[i]];
    }
  }
  RandomPermuteFine__(perm, graph->ncells, 1);
  for (int i = 0; i < graph->ncells; i++) {
    if (perm[i] < graph->nfixed)
      continue;
    const int side = wgts[0] >= target ? 1 : 0;
    where[perm[i]] = side;
    wgts[side] += graph->cellwgt[perm[i]];
  }
}

static void Random_FMPartition__(const Control *ctrl, Level *level)
{
  const HGraph *graph = level->graph;
  Partition *part = &level->part;

  AllocateRefinementMemory__(level);
  if (graph->ncells == 0)
    return;

  int *perm = imalloc__(graph->ncells, "Random_FMPartition: perm");
  int *bestwhere = imalloc__(graph->ncells, "Random_FMPartition: graph->where");
  const Weight total = iasum__(graph->ncells, graph->cellwgt);
  const Weight target = TruncateWeight(static_cast<Real>(total) * ctrl->bounds.part0frac);
  const int ntrials = ctrl->kwayrefine ? INITIAL_TRIALS_POLISHED : INITIAL_TRIALS;
  Weight bestcut = 0;

  for (int t = 0; t < ntrials; t++) {
    EnterPhase(ctrl, PHASE_INITIAL, graph->ncells);
    DealCells(ctrl, level, perm, target);
    Balance__(ctrl, level);
    RefineFull(ctrl, level, MAX_PASSES);
    if (ctrl->dbglvl & DBG_INITPART)
      Trace("%5lld %5lld %5lld\n", Shown(part->pwgts[0]), Shown(part->pwgts[1]), Shown(part->mincut));
    if (t == 0 || part->mincut < bestcut) {
      bestcut = part->mincut;
      icopy__(graph->ncells, part->where, bestwhere);
    }
  }
  if (ctrl->dbglvl & DBG_INITPART)
    Trace("Bestcut Icut: %5lld\n", Shown(bestcut));

  icopy__(graph->ncells, bestwhere, part->where);
  part->mincut = bestcut;
  QVfree__(&perm, &bestwhere);
}

void InitPartition__(const Control *ctrl, Level *level)
{
  const Stopwatch stopwatch(ctrl, &Timers::InitPartTmr);
  Control quiet = *ctrl;

  // The passes inside the trials are not traced.
  quiet.dbglvl &= ~(DBG_PASSES | DBG_MOVES);
  Random_FMPartition__(&quiet, level);
}

} // namespace kapris::engine::KAPRIS_ENGINE
