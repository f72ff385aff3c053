// lib/recursive/bisection.cpp - one multilevel bisection: several trials, the best kept.
// SPDX-License-Identifier: MIT

#include "recursive.h"

#include "bisect/bisect.h"
#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "core/trials.h"

namespace
{

struct Bisection {
  static const int NKEPT = 1;

  static int *Value(HGraph *graph)
  {
    return &graph->mincut;
  }

  static int Bound(int netwgt)
  {
    return AddWrap__(netwgt, 1);
  }

  static void PartitionPruned(Control *ctrl, HGraph *pruned)
  {
    HGraph *coarsest = Coarsen__(ctrl, pruned);

    InitPartition__(ctrl, coarsest);
    RecordLevel__(ctrl, PHASE_INITIAL, coarsest, coarsest->mincut);
    Refine__(ctrl, pruned, coarsest);
  }

  static void AllocateMemory(const Control *, HGraph *graph)
  {
    AllocateRefinementMemory__(graph);
  }

  static void RefineFull(Control *ctrl, HGraph *graph, int npasses)
  {
    RefineFull__(ctrl, graph, npasses);
  }

  static int VCycle(Control *ctrl, HGraph *graph, int ncycles)
  {
    return VCycleRefinement__(ctrl, graph, ncycles);
  }

  static int Recount(const Control *, const HGraph *graph, const int *part)
  {
    return ComputeActualCut__(graph, part);
  }

  static float Balance(const Control *, const HGraph *graph, const int *part)
  {
    return ComputeBalance__(graph, part);
  }

  static void TraceHeader(const Control *ctrl, const HGraph *graph)
  {
    Trace__("\n  Bisecting a hgraph of size [vertices=%d, hedges=%d, balance=%4.2f]\n", graph->ncells,
            graph->nnets, ctrl->part0frac);
  }

  static void TracePruned(int t, const HGraph *pruned)
  {
    Trace__("    Cut of trial %4d:\t %6d ", t, pruned->mincut);
  }

  static void TraceTrial(int t, const HGraph *graph, float balance)
  {
    Trace__("    Cut of trial %4d:\t %6d [%4.2f]\n", t, graph->mincut, balance);
  }

  static void TraceSummary(const Control *, int best, double average, float balance)
  {
    Trace__("    The mincut for this bisection = %d, (average = %3.1f) (balance = %4.2f)\n", best, average,
            balance);
  }
};

} // namespace

int ImproveBisection__(Control *ctrl, HGraph *graph, int *part)
{
  return ImprovePartition__<Bisection>(ctrl, graph, part);
}

int Hypergraph_Bisection__(Control *ctrl, HGraph *graph, int *part)
{
  const int best = RunTrials__<Bisection>(ctrl, graph, part);
  const int actual = ComputeActualCut__(graph, part);

  if (actual != best)
    Trace__("Wrong cut! %d %d\n", best, actual);
  return best;
}
