// lib/bisect/refine.cpp - uncoarsening of a bisection, and its V-cycles.
// SPDX-License-Identifier: MIT

#include "bisect.h"

#include "coarsen/coarsen.h"
#include "control/ctrl.h"

// coarsest = number of the level on which the bisection was made.
static void RefineLevel(Control *ctrl, HGraph *graph, int coarsest)
{
  Balance__(ctrl, graph);
  switch (ctrl->rtype) {
  case 1:
    RefineFull__(ctrl, graph, 10);
    break;
  case 2:
    Refine_OneWayFM__(ctrl, graph, 10);
    RefineFull__(ctrl, graph, 10);
    break;
  case 3:
    // Full passes where they are cheap, early exit on the larger levels.
    if (graph->level >= coarsest - 2)
      RefineFull__(ctrl, graph, 10);
    else if (ctrl->heavycells)
      Refine_EEFM2__(ctrl, graph, 3, 0.1f);
    else
      Refine_EEFM__(ctrl, graph, 3, 0.1f);
    break;
  default:
    errexit__("Unknown refinement type: %d\n", ctrl->rtype);
  }
}

void Refine__(Control *ctrl, HGraph *orggraph, HGraph *coarsest)
{
  const int level = coarsest->level;
  HGraph *graph = coarsest;

  // Nothing was coarsened: the level keeps the state that it has.
  if (coarsest->finer == nullptr)
    return;

  StartTimer__(ctrl, &ctrl->UncoarsenTmr);
  do {
    graph = graph->finer;
    ProjectPartition__(ctrl, graph->coarser);
    StartTimer__(ctrl, &ctrl->RefTmr);
    if (graph->ncells < 1)
      ComputeInitGains__(graph);
    else
      RefineLevel(ctrl, graph, level);
    PartitionIslands__(graph);
    StopTimer__(ctrl, &ctrl->RefTmr);
  } while (graph != orggraph);
  CombineIslands__(orggraph);
  StopTimer__(ctrl, &ctrl->UncoarsenTmr);
}

int VCycleRefinement__(Control *ctrl, HGraph *graph, int ncycles)
{
  const int coarsento = ctrl->coarsento, ctype = ctrl->ctype;
  int bestcut = graph->mincut, improved = -1;

  ctrl->coarsento = 1000;
  if (ctrl->dbglvl & DBG_LONG)
    Trace__("          [");
  for (int i = 0; i < ncycles; i++) {
    ctrl->ctype = i % 2; // stars and pairs in turn
    HGraph *coarsest = CCoarsen__(ctrl, graph);
    Refine__(ctrl, graph, coarsest);
    if (ctrl->dbglvl & DBG_LONG) {
      Trace__("%d ", graph->mincut);
      TraceFlush__();
    }
    FreeCycleState__(graph);
    if (graph->mincut < bestcut) {
      bestcut = graph->mincut;
      improved = i;
    } else if (i - improved >= 2) {
      break;
    }
  }
  if (ctrl->dbglvl & DBG_LONG)
    Trace__("(min = %d)]\n", graph->mincut);

  ctrl->coarsento = coarsento;
  ctrl->ctype = ctype;
  return graph->mincut;
}
