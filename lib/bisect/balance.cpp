// lib/bisect/balance.cpp - brings a bisection within its bounds before it is refined.
// SPDX-License-Identifier: MIT
//
// Moves cells, best gain first, out of the side that has weight to spare until both sides reach their lower
// bounds or no cell can move. Every move stays, even if it raises the cut: FM accepts only what is within the
// bounds.

#include "fm.h"

#include "control/ctrl.h"

// The side that must give a cell, or -1 when balancing is over. Side 0 counts as low first.
static int GivingSide(const HGraph *graph, const FMState *fm)
{
  if (graph->pwgts[0] < fm->minpwgt[0])
    return 1;
  return graph->pwgts[1] < fm->minpwgt[1] ? 0 : -1;
}

static void MakeMoves(HGraph *graph, FMState *fm)
{
  for (int step = 0; step < graph->ncells; step++) {
    const int from = GivingSide(graph, fm);
    const int c = from == -1 ? -1 : PQueueGetMax__(&fm->queue[from]);
    if (c == -1)
      return;

    fm->place[c] = LOCKED;
    // A cell that its side cannot spare is out for the rest of the call.
    if (graph->pwgts[from] - graph->cellwgt[c] < fm->minpwgt[from])
      continue;
    fm->newcut = SubWrap__(fm->newcut, graph->gain[c]);
    FM_Shift__(graph, c, from, 1 - from);
    graph->gain[c] = SubWrap__(0, graph->gain[c]);
    FM_UpdateMove__<UPDATE_QUEUE>(graph, fm, c, from, 1 - from);
  }
}

void Balance__(Control *ctrl, HGraph *graph)
{
  FMState fm = {};

  graph->pwgts[0] = graph->pwgts[1] = 0;
  for (int i = 0; i < graph->ncells; i++)
    graph->pwgts[graph->where[i]] = AddWrap__(graph->pwgts[graph->where[i]], graph->cellwgt[i]);
  FM_SetBounds__(ctrl, graph, &fm);
  if (FM_IsBalanced__(graph, &fm))
    return;

  FM_Alloc__(graph, &fm);
  StartTimer__(ctrl, &ctrl->InitTmr);
  ComputeInitGains__(graph);
  FM_SetBounds__(ctrl, graph, &fm);
  FM_FillQueues__(graph, &fm, BOTH_SIDES);
  FM_StartLog__(graph, &fm);
  if (ctrl->dbglvl & DBG_PASSES)
    Trace__("Partitions[B]: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d]\n", fm.queue[0].nnodes,
            graph->pwgts[0], fm.queue[1].nnodes, graph->pwgts[1], fm.initcut, ComputeCut__(graph),
            fm.minpwgt[0]);
  StopTimer__(ctrl, &ctrl->InitTmr);

  StartTimer__(ctrl, &ctrl->IterTmr);
  MakeMoves(graph, &fm);
  graph->mincut = fm.newcut;
  StopTimer__(ctrl, &ctrl->IterTmr);
  FM_Free__(&fm);

  CHECK_VALID(CheckBisection__(graph));
  CHECK_VALID(CheckGains__(graph));
}
