// lib/multilevel/uncoarsen.cpp - the way back up through the levels, and V-cycles.
// SPDX-License-Identifier: MIT

#include "uncoarsen.h"

#include "coarsen/coarsen.h"
#include "core/constants.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Gives the partition of coarse to the finer level, and frees coarse.
static void Project(const Control *ctrl, const Refiner *refiner, Level *coarse)
{
  const Stopwatch stopwatch(ctrl, &Timers::ProjectTmr);
  Level *fine = coarse->finer;

  refiner->initialise(ctrl, fine);
  for (int i = 0; i < fine->graph->ncells; i++)
    fine->part.where[i] = coarse->part.where[fine->cellmap[i]];
  FreeLevel(coarse);
  fine->coarser = nullptr;
}

void Uncoarsen(const Control *ctrl, const Refiner *refiner, Level *top, Level *coarsest)
{
  const int depth = coarsest->level;
  Level *level = coarsest;

  if (coarsest == top)
    return;

  const Stopwatch stopwatch(ctrl, &Timers::UncoarsenTmr);
  do {
    level = level->finer;
    EnterPhase(ctrl, PHASE_REFINE, level->graph->ncells);
    Project(ctrl, refiner, level->coarser);
    {
      const Stopwatch ofrefining(ctrl, &Timers::RefTmr);
      refiner->refine(ctrl, level, depth);
      refiner->dealislands(ctrl, level);
    }
    RecordLevel(ctrl, PHASE_REFINE, level, level->part.*refiner->value);
  } while (level != top);
  CombineIslands__(top);
}

static void TraceStart(const Refiner *refiner, Weight value)
{
  if (refiner->tracesbefore)
    Trace("          [%lld ", Shown(value));
  else
    Trace("          [");
}

static void RunVCycle(const Control *ctrl, const Refiner *refiner, RestrictedMatching matching, Level *top)
{
  const Weight *value = &(top->part.*refiner->value);

  RecordBegin(ctrl, STEP_CYCLE, 0);
  Level *coarsest = CCoarsen__(ctrl, matching, top);
  RecordLevel(ctrl, PHASE_INITIAL, coarsest, *value);
  Uncoarsen(ctrl, refiner, top, coarsest);
  if (ctrl->dbglvl & DBG_LONG) {
    Trace("%lld ", Shown(*value));
    TraceFlush();
  }
  CloseCycle(top);
}

Weight RunVCycles(const Control *ctrl, const Refiner *refiner, Level *top, int ncycles)
{
  const Weight *value = &(top->part.*refiner->value);
  Weight best = *value;
  int improved = -1;

  if (ctrl->dbglvl & DBG_LONG)
    TraceStart(refiner, best);
  for (int i = 0; i < ncycles; i++) {
    RunVCycle(ctrl, refiner, i % 2 == 0 ? MATCH_PART_STARS : MATCH_PART_PAIRS, top);
    if (*value < best) {
      best = *value;
      improved = i;
    } else if (i - improved >= IDLE_CYCLES) {
      break;
    }
  }
  if (ctrl->dbglvl & DBG_LONG)
    Trace("(min = %lld)]\n", Shown(*value));
  return *value;
}

} // namespace kapris::engine::KAPRIS_ENGINE
