// lib/drivers/kway.cpp - direct k-way partitioning: several multilevel trials, the best kept.
// SPDX-License-Identifier: MIT
//
// As a bisection, but on the objective value, with coarsening that ends earlier and an initial partition by
// recursive bisection of the coarsest level.

#include "refine/kway/kway.h"

#include "drivers.h"

#include "multilevel/trials.h"

namespace kapris::engine::KAPRIS_ENGINE
{

static const char *ObjectiveName(const Control *ctrl)
{
  return ctrl->objective == MINIMISE_CUT ? "cut" : "soed";
}

// A few trials of recursive bisection, coarsened by degree, without V-cycles.
static Control NestedControl(const Control *ctrl, const Hooks *hooks)
{
  Control nested = *ctrl;

  nested.coarsento = COARSEST_BISECTION;
  nested.nruns = NESTED_TRIALS;
  nested.ctype = MATCH_DEGREE;
  nested.rtype = REFINE_FM;
  nested.vcycle = CYCLE_NONE;
  nested.reconst = nested.kwayrefine = nested.complete = false;
  nested.dbglvl = 0;
  nested.recorded = RECORD_NOTHING;
  nested.seed = ctrl->nestedclock ? -1 : RandomDraw();
  // Without limits, a percent for each bisection.
  nested.bounds.ubfactor = static_cast<Real>(1 / 100.0);
  nested.hooks = hooks;
  return nested;
}

static void PartitionCoarsestLevel(const Control *ctrl, const Level *level)
{
  const HGraph *graph = level->graph;
  Hooks hooks = *ctrl->hooks;

  // All of this is one phase, and its partitions are those of a coarse level.
  EnterPhase(ctrl, PHASE_INITIAL, graph->ncells);
  hooks.incumbent = nullptr;
  hooks.enter = nullptr;
  hooks.worked = nullptr;
  hooks.record = nullptr;
  const Control nested = NestedControl(ctrl, &hooks);
  HGraph *copy =
      CopyHGraph(graph->ncells, graph->nnets, graph->cellwgt, graph->netptr, graph->netind, graph->netwgt);
  copy->nfixed = graph->nfixed;
  PartitionByBisection(&nested, copy, level->part.where);
  FreeHGraph__(copy);
}

static void InitPartitionKway__(const Control *ctrl, Level *level)
{
  const Stopwatch stopwatch(ctrl, &Timers::InitPartTmr);

  AllocateKwayRefinementMemory__(ctrl, level);
  PartitionCoarsestLevel(ctrl, level);
  RefineObjectiveKway(ctrl, level, MAX_PASSES);
  if (ctrl->dbglvl & DBG_INITPART)
    Trace("%d-way initial %s: %lld\n", ctrl->nparts, ObjectiveName(ctrl), Shown(level->part.objval));
}

namespace
{

struct DirectKway {
  static constexpr int NKEPT = 2;

  static const Refiner *GetRefiner(const Control *ctrl)
  {
    return KwayRefiner(ctrl->objective);
  }

  // Ten times the weight of the nets is more than they can come to in ten parts each; where that does not fit, no value
  // reaches the largest number.
  static Weight Bound(Weight netwgt)
  {
    return IS_WIDE ? MAX_WEIGHT : AddWrap(MulWrap(10, netwgt), 1);
  }

  static void PartitionCoarsest(const Control *ctrl, Level *level)
  {
    InitPartitionKway__(ctrl, level);
  }

  static void RefineFully(const Control *ctrl, Level *level, int npasses)
  {
    RefineObjectiveKway(ctrl, level, npasses);
  }

  static Weight Recount(const Control *ctrl, const HGraph *graph, const int *part)
  {
    return ctrl->objective == MINIMISE_CUT ? ComputeActualCut__(graph, part)
                                           : ComputeActualSOED__(graph, part);
  }

  static float Balance(const Control *ctrl, const HGraph *graph, const int *part)
  {
    return ComputeBalanceKway__(graph, ctrl->nparts, part);
  }

  static void TraceHeader(const Control *ctrl, const HGraph *graph)
  {
    Trace("\n  Partitioning a hgraph of size [vertices=%d, hedges=%d, balance=%4.2f]\n", graph->ncells,
          graph->nnets, static_cast<double>(ctrl->bounds.ubfactor));
  }

  static void TracePruned(int t, const Level *pruned)
  {
    Trace("    Cut/SOED of trial %4d:\t %6lld %6lld", t, Shown(pruned->part.mincut),
          Shown(pruned->part.soed));
  }

  static void TraceTrial(int t, const Level *level, float balance)
  {
    Trace("    Cut/SOED of trial %4d:\t %6lld %6lld [%4.2f]\n", t, Shown(level->part.mincut),
          Shown(level->part.soed), static_cast<double>(balance));
  }

  static void TraceSummary(const Control *ctrl, Weight best, double average, float balance)
  {
    Trace("    The min%s for this partitioning = %lld, (average = %3.1f) (balance = %4.2f)\n",
          ObjectiveName(ctrl), Shown(best), average, static_cast<double>(balance));
  }
};

} // namespace

// The trials work on the hypergraph of the call and its parts.
static Control WholeControl(const Control *call)
{
  Control ctrl = *call;

  ctrl.complete = true;
  ctrl.recorded = ctrl.hooks->record != nullptr ? RECORD_PARTS : RECORD_NOTHING;
  return ctrl;
}

static Weight PartitionKway(const Control *call, HGraph *graph, int *part)
{
  const Control ctrl = WholeControl(call);

  CreateIncidentHGraph__(graph);
  return RunTrials<DirectKway>(&ctrl, graph, part).value;
}

static Weight ImproveKway(const Control *call, HGraph *graph, int *part)
{
  const Control ctrl = WholeControl(call);

  CreateIncidentHGraph__(graph);
  return ImprovePartition<DirectKway>(&ctrl, graph, part);
}

Weight MultilevelKwayPartition__(const Control *ctrl, HGraph *graph, int *part)
{
  return PartitionAroundFixed(ctrl, graph, part, PartitionKway);
}

Weight ImproveKwayPartition(const Control *ctrl, HGraph *graph, int *part)
{
  return PartitionAroundFixed(ctrl, graph, part, ImproveKway);
}

} // namespace kapris::engine::KAPRIS_ENGINE
