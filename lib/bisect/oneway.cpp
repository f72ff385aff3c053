// lib/bisect/oneway.cpp - FM passes that move cells out of one side only, the sides taking turns.
// SPDX-License-Identifier: MIT
//
// Gains and counts are computed once per call and stay exact. A cell that its side cannot spare is skipped
// while its gain is positive; it takes up a place of the move log but stays where it is.

#include "fm.h"

#include "control/ctrl.h"

static void TraceStart(const Control *ctrl, const HGraph *graph, const FMState *fm, int pass, int side)
{
  if ((ctrl->dbglvl & DBG_PASSES) && pass == 0)
    Trace__("1-way Partitions: [%6d %8d %8d] Initial Cut: %8d [%d] [%d %d]\n", fm->queue[side].nnodes,
            fm->pwgts[side], fm->pwgts[1 - side], fm->initcut, ComputeActualCut__(graph, graph->where),
            fm->minpwgt[0], fm->minpwgt[1]);
}

static void MakeMoves(Control *ctrl, const HGraph *graph, FMState *fm, int side)
{
  const int other = 1 - side;

  StartTimer__(ctrl, &ctrl->IterTmr);
  for (int n = 0; n < graph->ncells; n++) {
    CheckpointAt__(ctrl, n);
    const int c = PQueueGetMax__(&fm->queue[side]);
    if (c == -1)
      break;
    if (fm->pwgts[side] - fm->cellwgt[c] < fm->minpwgt[side]) {
      if (fm->nodes[c].gain <= 0)
        break;
      FM_Lock__(fm, c);
      fm->swaps[fm->nmoves++] = c;
      continue;
    }

    fm->newcut = SubWrap__(fm->newcut, fm->nodes[c].gain);
    FM_Lock__(fm, c);
    fm->swaps[fm->nmoves++] = c;
    FM_Shift__(fm, c, side, other);
    FM_NoteBest__(fm, n);
    if (ctrl->dbglvl & DBG_MOVES)
      Trace__("Gains from moving %8d from %2d: %4d, \tNewcut: %d\n", c, side, fm->nodes[c].gain, fm->newcut);
    fm->nodes[c].gain = SubWrap__(0, fm->nodes[c].gain);
    FM_UpdateMove__<UPDATE_QUEUE>(fm, c, side, other);
    CHECK_VALID(CheckMove__(graph, fm, ALL_EXACT, n));
  }
  StopTimer__(ctrl, &ctrl->IterTmr);
}

static void Rollback(Control *ctrl, HGraph *graph, FMState *fm, int side)
{
  StartTimer__(ctrl, &ctrl->WrapUpTmr);
  for (int n = fm->nmoves - 1; n > fm->best; n--)
    if (FM_Side__(fm, fm->swaps[n]) != side) // else it was skipped
      FM_Undo__(fm, fm->swaps[n]);
  FM_Store__(graph, fm);
  if (ctrl->dbglvl & DBG_PASSES)
    Trace__("\tMinimum Cut: %8d [%8d] at %5d [%6d %6d] [%d]\n", fm->bestcut,
            ComputeActualCut__(graph, graph->where), fm->best, fm->pwgts[0], fm->pwgts[1], side);
  graph->mincut = fm->bestcut;
  StopTimer__(ctrl, &ctrl->WrapUpTmr);

  CHECK_VALID(CheckBisection__(graph));
  CHECK_VALID(CheckGains__(graph, fm, ALL_EXACT));
}

void Refine_OneWayFM__(Control *ctrl, HGraph *graph, int npasses)
{
  FMState fm;

  FM_Alloc__(graph, &fm);
  StartTimer__(ctrl, &ctrl->InitTmr);
  graph->mincut = FM_ComputeGains__(graph, &fm, FROM_PINS);
  StopTimer__(ctrl, &ctrl->InitTmr);
  FM_SetBounds__(ctrl, &fm);

  // The first pass moves cells out of the heavier side.
  int side = fm.pwgts[0] >= fm.pwgts[1] ? 0 : 1;
  for (int pass = 0; pass < npasses; pass++, side = 1 - side) {
    StartTimer__(ctrl, &ctrl->InitTmr);
    FM_FillQueues__(graph, &fm, side);
    FM_StartLog__(&fm, graph->mincut);
    TraceStart(ctrl, graph, &fm, pass, side);
    StopTimer__(ctrl, &ctrl->InitTmr);

    MakeMoves(ctrl, graph, &fm, side);
    Rollback(ctrl, graph, &fm, side);
    // Both directions must have failed.
    if (pass % 2 == 1 && fm.bestcut == fm.initcut)
      break;
  }
  FM_Free__(&fm);
}
