// lib/search/engine.cpp - one run of the engine for the safe interface.
// SPDX-License-Identifier: MIT

#include "engine.h"

#include "search.h"

#include "core/constants.h"
#include "drivers/drivers.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

static Weight *Narrowed(int n, const std::int64_t *weights, const char *label)
{
  Weight *narrowed = wmalloc(n, label);

  for (int i = 0; i < n; i++)
    narrowed[i] = static_cast<Weight>(std::min<std::int64_t>(weights[i], MAX_WEIGHT));
  return narrowed;
}

static HGraph *GraphOf(const EngineCall *call)
{
  const int npins = call->nnets > 0 ? call->netptr[call->nnets] : 0;
  HGraph *graph = CreateHGraph__();

  graph->ncells = call->ncells;
  graph->nnets = call->nnets;
  graph->nfixed = 0;
  graph->cellwgt = Narrowed(call->ncells, call->cellwgt, "KAPRIS: graph->cellwgt");
  graph->netwgt = Narrowed(call->nnets, call->netwgt, "KAPRIS: graph->netwgt");
  graph->netptr = ismalloc__(static_cast<std::int64_t>(call->nnets) + 1, 0, "KAPRIS: graph->netptr");
  graph->netind = imalloc__(npins, "KAPRIS: graph->netind");
  if (call->nnets > 0)
    icopy__(static_cast<std::int64_t>(call->nnets) + 1, call->netptr, graph->netptr);
  icopy__(npins, call->netind, graph->netind);
  CHECK_VALID(CheckHGraph(graph));
  return graph;
}

static bool IsKway(const EngineCall *call)
{
  return call->members == 0 && (call->direct || (call->initial != nullptr && call->nparts > 2));
}

static Control ControlOf(const EngineCall *call, const Weight *limits)
{
  Control ctrl = {};

  ctrl.nparts = call->nparts;
  ctrl.nruns = call->nruns;
  ctrl.ctype = static_cast<Matching>(call->coarsening);
  ctrl.rtype = static_cast<TwoWayScheme>(call->refinement);
  ctrl.objective = call->connectivity ? MINIMISE_SOED : MINIMISE_CUT;
  ctrl.vcycle = static_cast<CyclePolicy>(call->vcycle);
  // What a piece of a cut net adds further down counts for both figures but the cut.
  ctrl.reconst = call->reconst || (call->members > 0 && call->connectivity);
  ctrl.fixed = call->fixed != nullptr;
  ctrl.kwayrefine = !IsKway(call) && call->nparts <= MAX_POLISHED_PARTS;
  ctrl.seed = call->seed;
  ctrl.dbglvl = call->dbglvl & ~DBG_TIME;
  ctrl.maxnetsize = MAX_NET_SIZE;
  ctrl.coarsento = COARSEST_BISECTION;
  if (IsKway(call))
    ctrl.coarsento = static_cast<int>(std::min<std::int64_t>(call->ncells - std::int64_t{1},
                                                             std::int64_t{COARSEST_PER_PART} * call->nparts));
  ctrl.initial = call->initial;
  ctrl.others = call->others;
  ctrl.nothers = call->nothers;
  ctrl.bounds.shares = call->shares;
  ctrl.bounds.limits = limits;
  ctrl.bounds.total = static_cast<Weight>(call->total);
  ctrl.bounds.ubfactor = static_cast<Real>(1.0 + call->imbalance);
  ctrl.hooks = call->hooks;
  return ctrl;
}

static void RunDriver(const EngineCall *call, const Control *ctrl, HGraph *graph, int *part)
{
  if (call->initial == nullptr)
    call->direct ? MultilevelKwayPartition__(ctrl, graph, part) : MultilevelPartition__(ctrl, graph, part);
  else
    IsKway(call) ? ImproveKwayPartition(ctrl, graph, part) : ImproveTwoParts(ctrl, graph, part);
}

// Limits that leave single moves some room: a partition that is a little above the tight ones of the call is repaired
// when it is complete.
static Weight *RoomyLimits(const EngineCall *call, const Weight *limits)
{
  Weight *roomy = wmalloc(call->nparts, "api: roomy limits");

  for (int p = 0; p < call->nparts; p++) {
    const double least = (1.0 + LEAST_ROOM) * call->shares[p] * static_cast<double>(call->total);
    roomy[p] = std::max(limits[p], TruncateWeight(least));
  }
  return roomy;
}

static void RunSearch(const EngineCall *call, const Control *ctrl, HGraph *graph, int *part)
{
  Weight *minimums = Narrowed(call->nparts, call->minimums, "api: minimums");
  Weight *limits = RoomyLimits(call, ctrl->bounds.limits);
  const SearchGoal goal = {call->nparts, call->cut, call->connectivity, limits, minimums};
  Control roomy = *ctrl;
  roomy.bounds.limits = limits;
  const SearchPlan plan = {call->members, call->combinations, call->direct, call->endless};

  PartitionAroundFixed(&roomy, graph, part, [&](const Control *inner, HGraph *compressed, int *cpart) {
    return Search(inner, &goal, &plan, compressed, cpart);
  });
  QVfree__(&minimums, &limits);
}

void RunEngine(const EngineCall *call, int *part)
{
  Weight *limits = Narrowed(call->nparts, call->limits, "api: limits");
  const Control ctrl = ControlOf(call, limits);

  Checkpoint(&ctrl);
  if (call->fixed != nullptr)
    icopy__(call->ncells, call->fixed, part);
  else if (call->initial != nullptr)
    icopy__(call->ncells, call->initial, part);
  HGraph *graph = GraphOf(call);
  if (call->members > 0)
    RunSearch(call, &ctrl, graph, part);
  else
    RunDriver(call, &ctrl, graph, part);
  FreeHGraph__(graph);
  QVfree__(&limits);
}

} // namespace kapris::engine::KAPRIS_ENGINE
