// lib/refine/twoway/oneway.cpp - FM passes that move cells out of one side only, the sides taking turns.
// SPDX-License-Identifier: MIT
//
// Gains and counts are computed once per call and stay exact. A cell that its side cannot spare is skipped
// while its gain is positive; it takes up a place of the move log but stays where it is.

#include "moves.h"

namespace kapris::engine::KAPRIS_ENGINE
{

static void TraceStart(const Control *ctrl, const Level *level, const FMState *fm, int pass, int side)
{
  if ((ctrl->dbglvl & DBG_PASSES) && pass == 0)
    Trace("1-way Partitions: [%6d %8lld %8lld] Initial Cut: %8lld [%lld] [%lld %lld]\n",
          fm->queue[side].nnodes, Shown(fm->pwgts[side]), Shown(fm->pwgts[1 - side]), Shown(fm->initcut),
          Shown(ComputeActualCut__(level->graph, level->part.where)), Shown(fm->minpwgt[0]),
          Shown(fm->minpwgt[1]));
}

static void MakeMoves(const Control *ctrl, const HGraph *graph, FMState *fm, int side)
{
  const Stopwatch stopwatch(ctrl, &Timers::IterTmr);
  const int other = 1 - side;

  for (int n = 0; n < graph->ncells; n++) {
    CheckpointAt(ctrl, n);
    const int c = PQueueGetMax__(&fm->queue[side]);
    if (c == -1)
      break;
    if (fm->pwgts[side] - fm->cellwgt[c] < fm->minpwgt[side]) {
      if (fm->nodes[c].gain <= 0)
        break;
      FM_Lock(fm, c);
      fm->swaps[fm->nmoves++] = c;
      continue;
    }

    fm->newcut = SubWrap(fm->newcut, fm->nodes[c].gain);
    FM_Lock(fm, c);
    fm->swaps[fm->nmoves++] = c;
    FM_Shift(fm, c, side, other);
    FM_NoteBest(fm, n);
    if (ctrl->dbglvl & DBG_MOVES)
      Trace("Gains from moving %8d from %2d: %4lld, \tNewcut: %lld\n", c, side, Shown(fm->nodes[c].gain),
            Shown(fm->newcut));
    fm->nodes[c].gain = SubWrap(0, fm->nodes[c].gain);
    FM_UpdateMove<UPDATE_QUEUE>(fm, c, side, other);
    CHECK_VALID(CheckMove(graph, fm, ALL_EXACT, n));
  }
}

static void Rollback(const Control *ctrl, Level *level, FMState *fm, int side)
{
  const Stopwatch stopwatch(ctrl, &Timers::WrapUpTmr);

  for (int n = fm->nmoves - 1; n > fm->best; n--)
    if (FM_Side(fm, fm->swaps[n]) != side) // else it was skipped
      FM_Undo(fm, fm->swaps[n]);
  FM_Store(level, fm);
  if (ctrl->dbglvl & DBG_PASSES)
    Trace("\tMinimum Cut: %8lld [%8lld] at %5d [%6lld %6lld] [%d]\n", Shown(fm->bestcut),
          Shown(ComputeActualCut__(level->graph, level->part.where)), fm->best, Shown(fm->pwgts[0]),
          Shown(fm->pwgts[1]), side);
  level->part.mincut = fm->bestcut;

  CHECK_VALID(CheckBisection(level));
  CHECK_VALID(CheckGains(level->graph, fm, ALL_EXACT));
}

static void StartPass(const Control *ctrl, const Level *level, FMState *fm, int pass, int side)
{
  const Stopwatch stopwatch(ctrl, &Timers::InitTmr);

  FM_FillQueues(level->graph, fm, side);
  FM_StartLog(fm, level->part.mincut);
  TraceStart(ctrl, level, fm, pass, side);
}

void Refine_OneWayFM__(const Control *ctrl, Level *level, int npasses)
{
  const HGraph *graph = level->graph;
  FMState fm;

  FM_Alloc(graph, level->part.where, &fm);
  {
    const Stopwatch stopwatch(ctrl, &Timers::InitTmr);
    level->part.mincut = FM_ComputeGains(graph, &fm, FROM_PINS);
  }
  FM_SetBounds(ctrl, &fm);

  // The first pass moves cells out of the heavier side.
  int side = fm.pwgts[0] >= fm.pwgts[1] ? 0 : 1;
  for (int pass = 0; pass < npasses; pass++, side = 1 - side) {
    StartPass(ctrl, level, &fm, pass, side);
    MakeMoves(ctrl, graph, &fm, side);
    Rollback(ctrl, level, &fm, side);
    // Both directions must have failed.
    if (pass % 2 == 1 && fm.bestcut == fm.initcut)
      break;
  }
  FM_Free(&fm);
}

} // namespace kapris::engine::KAPRIS_ENGINE
