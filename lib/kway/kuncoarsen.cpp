// lib/kway/kuncoarsen.cpp - uncoarsening of a k-way partition, and its V-cycles.
// SPDX-License-Identifier: MIT

#include "kgain.h"

#include "coarsen/coarsen.h"
#include "control/ctrl.h"

static const int NCYCLES = 10, NPASSES = 10;

static void RefineLevel(Control *ctrl, HGraph *graph)
{
  if (graph->ncells < 1)
    ComputeInitKwayGains__(ctrl, graph);
  else if (ctrl->rtype == 1 || ctrl->rtype == 2)
    RefineObjectiveKway__(ctrl, graph, NPASSES);
  else
    errexit__("Unknown refinement type: %d\n", ctrl->rtype);
}

void RefineKway__(Control *ctrl, HGraph *orggraph, HGraph *coarsest)
{
  HGraph *graph = coarsest;

  // Nothing was coarsened: the level keeps the state that it has.
  if (coarsest->finer == nullptr)
    return;

  StartTimer__(ctrl, &ctrl->UncoarsenTmr);
  do {
    graph = graph->finer;
    ProjectKwayPartition__(ctrl, graph->coarser);
    StartTimer__(ctrl, &ctrl->RefTmr);
    RefineLevel(ctrl, graph);
    PartitionIslandsKway__(ctrl, graph);
    StopTimer__(ctrl, &ctrl->RefTmr);
  } while (graph != orggraph);
  CombineIslands__(orggraph);
  StopTimer__(ctrl, &ctrl->UncoarsenTmr);
}

int VCycleRefinementKway__(Control *ctrl, HGraph *graph, int ncycles)
{
  const int coarsento = ctrl->coarsento, ctype = ctrl->ctype;
  int best = graph->objval, improved = -1;

  ctrl->coarsento = 1000;
  if (ctrl->dbglvl & DBG_LONG)
    Trace__("          [%d ", best);
  for (int k = 0; k < ncycles; k++) {
    ctrl->ctype = k % 2; // stars and pairs in turn
    HGraph *coarsest = CCoarsen__(ctrl, graph);
    RefineKway__(ctrl, graph, coarsest);
    if (ctrl->dbglvl & DBG_LONG) {
      Trace__("%d ", graph->objval);
      TraceFlush__();
    }
    FreeCycleState__(graph);
    if (graph->objval < best) {
      best = graph->objval;
      improved = k;
    } else if (k - improved > 1) {
      break;
    }
  }
  if (ctrl->dbglvl & DBG_LONG)
    Trace__("(min = %d)]\n", graph->objval);

  ctrl->coarsento = coarsento;
  ctrl->ctype = ctype;
  return graph->objval;
}

int RefineKwayPartition__(Control *ctrl, HGraph *graph)
{
  RefineCutKway_Random__(ctrl, graph, NPASSES);
  FreeCycleState__(graph);
  VCycleRefinementKway__(ctrl, graph, NCYCLES);
  return graph->mincut;
}
