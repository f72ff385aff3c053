// lib/refine/twoway/balance.cpp - brings a bisection within its bounds before it is refined.
// SPDX-License-Identifier: MIT
//
// Moves cells, best gain first, out of the side that has weight to spare until both sides reach their lower
// bounds or no cell can move. Every move stays, even if it raises the cut: FM accepts only what is within the
// bounds.

#include "moves.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// The side that must give a cell, or -1 when balancing is over. Side 0 counts as low first.
static int GivingSide(const FMState *fm)
{
  if (fm->pwgts[0] < fm->minpwgt[0])
    return 1;
  return fm->pwgts[1] < fm->minpwgt[1] ? 0 : -1;
}

static void MakeMoves(const HGraph *graph, FMState *fm)
{
  for (int step = 0; step < graph->ncells; step++) {
    const int from = GivingSide(fm);
    const int c = from == -1 ? -1 : PQueueGetMax__(&fm->queue[from]);
    if (c == -1)
      return;

    FM_Lock(fm, c);
    // A cell that its side cannot spare is out for the rest of the call.
    if (fm->pwgts[from] - fm->cellwgt[c] < fm->minpwgt[from])
      continue;
    fm->newcut = SubWrap(fm->newcut, fm->nodes[c].gain);
    FM_MoveExactly<UPDATE_QUEUE>(fm, c, from, 1 - from);
    CHECK_VALID(CheckMove(graph, fm, ALL_EXACT, step));
  }
}

void Balance__(const Control *ctrl, Level *level)
{
  const HGraph *graph = level->graph;
  FMState fm = {};

  for (int i = 0; i < graph->ncells; i++)
    fm.pwgts[level->part.where[i]] = AddWrap(fm.pwgts[level->part.where[i]], graph->cellwgt[i]);
  level->part.pwgts[0] = fm.pwgts[0];
  level->part.pwgts[1] = fm.pwgts[1];
  FM_SetBounds(ctrl, &fm);
  if (FM_IsBalanced(&fm))
    return;

  FM_Alloc(graph, level->part.where, &fm);
  {
    const Stopwatch stopwatch(ctrl, &Timers::InitTmr);
    FM_StartLog(&fm, FM_ComputeGains(graph, &fm, FROM_PINS));
    FM_SetBounds(ctrl, &fm);
    FM_FillQueues(graph, &fm, BOTH_SIDES);
    if (ctrl->dbglvl & DBG_PASSES)
      Trace("Partitions[B]: [%6d,%8lld]  [%6d,%8lld], Initial Cut: %8lld [%lld] [%lld]\n", fm.queue[0].nnodes,
            Shown(fm.pwgts[0]), fm.queue[1].nnodes, Shown(fm.pwgts[1]), Shown(fm.initcut),
            Shown(ComputeActualCut__(graph, level->part.where)), Shown(fm.minpwgt[0]));
  }
  {
    const Stopwatch stopwatch(ctrl, &Timers::IterTmr);
    MakeMoves(graph, &fm);
    FM_Store(level, &fm);
    level->part.mincut = fm.newcut;
  }

  CHECK_VALID(CheckBisection(level));
  CHECK_VALID(CheckGains(graph, &fm, ALL_EXACT));
  FM_Free(&fm);
}

} // namespace kapris::engine::KAPRIS_ENGINE
