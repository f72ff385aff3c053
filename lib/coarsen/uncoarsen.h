// lib/coarsen/uncoarsen.h - the way back up through the levels, and V-cycles: the frames that two-way and k-way
// refinement share. Included by their drivers only.
// SPDX-License-Identifier: MIT
//
// Per level: project the partition, refine it, deal the level's islands. At the top the islands get their old
// numbers back. A V-cycle coarsens within the parts of a finished partition, which the coarsest level therefore
// inherits unchanged, and refines on the way back up.
#pragma once

#include "coarsen.h"

#include "control/ctrl.h"

// Moves the partition of coarse to the finer level, which has room for it, and frees coarse.
inline void ProjectWhere__(HGraph *coarse)
{
  HGraph *fine = coarse->finer;

  for (int i = 0; i < fine->ncells; i++)
    fine->where[i] = coarse->where[fine->cellmap[i]];
  FreeHGraph__(coarse);
  fine->coarser = nullptr;
}

// Carries the partition of coarsest up to orggraph; frees the levels below. Does nothing when they are the same.
template <class Scheme>
void Uncoarsen__(Control *ctrl, HGraph *orggraph, HGraph *coarsest)
{
  const int level = coarsest->level;
  HGraph *graph = coarsest;

  if (coarsest->finer == nullptr)
    return;

  StartTimer__(ctrl, &ctrl->UncoarsenTmr);
  do {
    graph = graph->finer;
    EnterPhase__(ctrl, PHASE_REFINE, graph->ncells);
    Scheme::Project(ctrl, graph->coarser);
    StartTimer__(ctrl, &ctrl->RefTmr);
    if (graph->ncells < 1)
      Scheme::ComputeGains(ctrl, graph);
    else
      Scheme::RefineLevel(ctrl, graph, level);
    Scheme::DealIslands(ctrl, graph);
    StopTimer__(ctrl, &ctrl->RefTmr);
    RecordLevel__(ctrl, PHASE_REFINE, graph, *Scheme::Value(graph));
  } while (graph != orggraph);
  CombineIslands__(orggraph);
  StopTimer__(ctrl, &ctrl->UncoarsenTmr);
}

// At most ncycles V-cycles on the partition of graph; they end after two in a row without a better value. Returns
// the value of the last cycle, whose partition stays.
template <class Scheme>
int RunVCycles__(Control *ctrl, HGraph *graph, int ncycles)
{
  const int coarsento = ctrl->coarsento, ctype = ctrl->ctype;
  const int *value = Scheme::Value(graph);
  int best = *value, improved = -1;

  ctrl->coarsento = 1000;
  if (ctrl->dbglvl & DBG_LONG)
    Scheme::TraceStart(best);
  for (int i = 0; i < ncycles; i++) {
    ctrl->ctype = i % 2; // stars and pairs in turn
    RecordBegin__(ctrl, STEP_CYCLE, 0);
    HGraph *coarsest = CCoarsen__(ctrl, graph);
    RecordLevel__(ctrl, PHASE_INITIAL, coarsest, *value);
    Uncoarsen__<Scheme>(ctrl, graph, coarsest);
    if (ctrl->dbglvl & DBG_LONG) {
      Trace__("%d ", *value);
      TraceFlush__();
    }
    FreeCycleState__(graph);
    if (*value < best) {
      best = *value;
      improved = i;
    } else if (i - improved >= 2) {
      break;
    }
  }
  if (ctrl->dbglvl & DBG_LONG)
    Trace__("(min = %d)]\n", *value);

  ctrl->coarsento = coarsento;
  ctrl->ctype = ctype;
  return *value;
}
