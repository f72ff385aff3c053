// lib/kway/kuncoarsen.cpp - uncoarsening of a k-way partition, and its V-cycles.
// SPDX-License-Identifier: MIT

#include "kgain.h"

#include "coarsen/uncoarsen.h"

namespace
{

struct Kway {
  static const int *Value(const HGraph *graph)
  {
    return &graph->objval;
  }

  static void Project(Control *ctrl, HGraph *coarse)
  {
    ProjectKwayPartition__(ctrl, coarse);
  }

  static void ComputeGains(const Control *ctrl, HGraph *graph)
  {
    ComputeInitKwayGains__(ctrl, graph);
  }

  static void DealIslands(const Control *ctrl, HGraph *graph)
  {
    PartitionIslandsKway__(ctrl, graph);
  }

  static void TraceStart(int value)
  {
    Trace__("          [%d ", value);
  }

  static void RefineLevel(Control *ctrl, HGraph *graph, int)
  {
    if (ctrl->rtype != 1 && ctrl->rtype != 2)
      errexit__("Unknown refinement type: %d\n", ctrl->rtype);
    RefineObjectiveKway__(ctrl, graph, 10);
  }
};

} // namespace

void RefineKway__(Control *ctrl, HGraph *orggraph, HGraph *coarsest)
{
  Uncoarsen__<Kway>(ctrl, orggraph, coarsest);
}

int VCycleRefinementKway__(Control *ctrl, HGraph *graph, int ncycles)
{
  return RunVCycles__<Kway>(ctrl, graph, ncycles);
}

int RefineKwayPartition__(Control *ctrl, HGraph *graph)
{
  RefineCutKway_Random__(ctrl, graph, 10);
  RecordLevel__(ctrl, PHASE_REFINE, graph, graph->objval);
  FreeCycleState__(graph);
  VCycleRefinementKway__(ctrl, graph, 10);
  return graph->mincut;
}
