// lib/drivers/bisection.cpp - one multilevel bisection: several trials, the best kept.
// SPDX-License-Identifier: MIT

#include "drivers.h"

#include "multilevel/trials.h"
#include "refine/twoway/twoway.h"

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

struct Bisection {
  static constexpr int NKEPT = 1;

  static const Refiner *GetRefiner(const Control *ctrl)
  {
    return TwoWayRefiner(ctrl->rtype);
  }

  static Weight Bound(Weight netwgt)
  {
    return AddWrap(netwgt, 1);
  }

  static void PartitionCoarsest(const Control *ctrl, Level *level)
  {
    InitPartition__(ctrl, level);
  }

  static void RefineFully(const Control *ctrl, Level *level, int npasses)
  {
    RefineFull(ctrl, level, npasses);
  }

  static Weight Recount(const Control *, const HGraph *graph, const int *part)
  {
    return ComputeActualCut__(graph, part);
  }

  static float Balance(const Control *, const HGraph *graph, const int *part)
  {
    return ComputeBalance__(graph, part);
  }

  static void TraceHeader(const Control *ctrl, const HGraph *graph)
  {
    Trace("\n  Bisecting a hgraph of size [vertices=%d, hedges=%d, balance=%4.2f]\n", graph->ncells,
          graph->nnets, static_cast<double>(ctrl->bounds.part0frac));
  }

  static void TracePruned(int t, const Level *pruned)
  {
    Trace("    Cut of trial %4d:\t %6lld ", t, Shown(pruned->part.mincut));
  }

  static void TraceTrial(int t, const Level *level, float balance)
  {
    Trace("    Cut of trial %4d:\t %6lld [%4.2f]\n", t, Shown(level->part.mincut),
          static_cast<double>(balance));
  }

  static void TraceSummary(const Control *, Weight best, double average, float balance)
  {
    Trace("    The mincut for this bisection = %lld, (average = %3.1f) (balance = %4.2f)\n", Shown(best),
          average, static_cast<double>(balance));
  }
};

} // namespace

void AimBisection(Control *ctrl, const HGraph *graph, int nparts, int first)
{
  AimBounds(&ctrl->bounds, nparts, first, iasum__(graph->ncells, graph->cellwgt), graph->nfixed);
  ctrl->complete = ctrl->nparts == 2;
  ctrl->recorded = nparts == ctrl->nparts && ctrl->hooks->record != nullptr ? RECORD_SIDES : RECORD_NOTHING;
}

Weight ImproveBisection(const Control *ctrl, HGraph *graph, int *part)
{
  CreateIncidentHGraph__(graph);
  return ImprovePartition<Bisection>(ctrl, graph, part);
}

BisectionOutcome Hypergraph_Bisection__(const Control *ctrl, HGraph *graph, int *part)
{
  if (graph->incptr == nullptr)
    CreateIncidentHGraph__(graph);
  const TrialsOutcome best = RunTrials<Bisection>(ctrl, graph, part);
  const Weight actual = ComputeActualCut__(graph, part);

  if (actual != best.value)
    Trace("Wrong cut! %lld %lld\n", Shown(best.value), Shown(actual));
  return {best.value, best.maxcellwgt};
}

} // namespace kapris::engine::KAPRIS_ENGINE
