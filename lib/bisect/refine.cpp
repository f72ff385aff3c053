// lib/bisect/refine.cpp - uncoarsening of a bisection, and its V-cycles.
// SPDX-License-Identifier: MIT

#include "bisect.h"

#include "coarsen/uncoarsen.h"

namespace
{

struct TwoWay {
  static const int *Value(const HGraph *graph)
  {
    return &graph->mincut;
  }

  static void Project(Control *ctrl, HGraph *coarse)
  {
    ProjectPartition__(ctrl, coarse);
  }

  static void ComputeGains(const Control *, HGraph *graph)
  {
    graph->mincut = graph->pwgts[0] = graph->pwgts[1] = 0;
  }

  static void DealIslands(const Control *ctrl, HGraph *graph)
  {
    PartitionIslands__(ctrl, graph);
  }

  static void TraceStart(int)
  {
    Trace__("          [");
  }

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
};

} // namespace

void Refine__(Control *ctrl, HGraph *orggraph, HGraph *coarsest)
{
  Uncoarsen__<TwoWay>(ctrl, orggraph, coarsest);
}

int VCycleRefinement__(Control *ctrl, HGraph *graph, int ncycles)
{
  return RunVCycles__<TwoWay>(ctrl, graph, ncycles);
}
