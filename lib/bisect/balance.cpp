// lib/bisect/balance.cpp - brings a bisection within its bounds before it is refined.
// SPDX-License-Identifier: MIT
//
// Moves cells, best gain first, out of the side that has weight to spare until both sides reach their lower
// bounds or no cell can move. Every move stays, even if it raises the cut: FM accepts only what is within the
// bounds.

#include "fm.h"

#include "control/ctrl.h"

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

    FM_Lock__(fm, c);
    // A cell that its side cannot spare is out for the rest of the call.
    if (fm->pwgts[from] - fm->cellwgt[c] < fm->minpwgt[from])
      continue;
    fm->newcut = SubWrap__(fm->newcut, fm->nodes[c].gain);
    FM_MoveExactly__<UPDATE_QUEUE>(fm, c, from, 1 - from);
    CHECK_VALID(CheckMove__(graph, fm, ALL_EXACT, step));
  }
}

void Balance__(Control *ctrl, HGraph *graph)
{
  FMState fm = {};

  for (int i = 0; i < graph->ncells; i++)
    fm.pwgts[graph->where[i]] = AddWrap__(fm.pwgts[graph->where[i]], graph->cellwgt[i]);
  graph->pwgts[0] = fm.pwgts[0];
  graph->pwgts[1] = fm.pwgts[1];
  FM_SetBounds__(ctrl, &fm);
  if (FM_IsBalanced__(&fm))
    return;

  FM_Alloc__(graph, &fm);
  StartTimer__(ctrl, &ctrl->InitTmr);
  FM_StartLog__(&fm, FM_ComputeGains__(graph, &fm, FROM_PINS));
  FM_SetBounds__(ctrl, &fm);
  FM_FillQueues__(graph, &fm, BOTH_SIDES);
  if (ctrl->dbglvl & DBG_PASSES)
    Trace__("Partitions[B]: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n", fm.queue[0].nnodes,
            fm.pwgts[0], fm.queue[1].nnodes, fm.pwgts[1], fm.initcut, ComputeActualCut__(graph, graph->where),
            fm.minpwgt[0]);
  StopTimer__(ctrl, &ctrl->InitTmr);

  StartTimer__(ctrl, &ctrl->IterTmr);
  MakeMoves(graph, &fm);
  FM_Store__(graph, &fm);
  graph->mincut = fm.newcut;
  StopTimer__(ctrl, &ctrl->IterTmr);

  CHECK_VALID(CheckBisection__(graph));
  CHECK_VALID(CheckGains__(graph, &fm, ALL_EXACT));
  FM_Free__(&fm);
}
