// lib/plain/entries.cpp - the public entry points: one frame around five drivers.
// SPDX-License-Identifier: MIT
//
//   fill      the Control record from the arguments and the option vector   FillControl
//   validate  options, then the caller's data                               validate.cpp
//   copy      the hypergraph, so that the caller's arrays stay untouched    CopyHGraph
//   run       the driver; it leaves part and returns the objective
//   report    CPU times, and release

#include "kapris.h"
#include "validate.h"

#include "core/constants.h"
#include "drivers/drivers.h"
#include "refine/twoway/twoway.h"

#include <algorithm>

using namespace kapris::engine::narrow;

namespace
{

enum Family { RECURSIVE, KWAY };

// The smallest factor over the average part weight that k-way refinement is given.
constexpr double LEAST_UBFACTOR = 1.05;

} // namespace

static Real AllowanceOf(const EntryArgs *args, Family family)
{
  if (family == RECURSIVE)
    return static_cast<Real>(args->UBfactor / 100.0);
  const double factor = args->UBfactor / 100.0 + 1.0;
  return factor >= LEAST_UBFACTOR ? static_cast<Real>(factor) : static_cast<Real>(LEAST_UBFACTOR);
}

// allslots: whether the entry reads Reconst and Fixed.
static Control FillControl(const EntryArgs *args, Family family, bool allslots, Timers *timers)
{
  static constexpr int defaults[9] = {1, 10, 1, 1, 1, 0, 0, -1, 0};
  const int *options = args->options[0] != 0 ? args->options : defaults;
  Control ctrl = {};

  ctrl.nparts = args->nparts;
  ctrl.nruns = options[1];
  ctrl.ctype = static_cast<Matching>(options[2]);
  ctrl.rtype = family == RECURSIVE ? static_cast<TwoWayScheme>(options[3]) : REFINE_FM;
  ctrl.objective = family == RECURSIVE ? MINIMISE_CUT : static_cast<KwayObjective>(options[3]);
  ctrl.vcycle = static_cast<CyclePolicy>(options[4]);
  ctrl.reconst = allslots && options[5] != 0;
  ctrl.fixed = allslots && options[6] != 0;
  ctrl.seed = options[7];
  ctrl.dbglvl = options[8];
  ctrl.coarsento = COARSEST_BISECTION;
  ctrl.maxnetsize = MAX_NET_SIZE;
  ctrl.bounds.part0frac = 0.5f;
  ctrl.bounds.dealshare = 0.5;
  ctrl.bounds.ubfactor = AllowanceOf(args, family);
  ctrl.hooks = &kapris::engine::base::NO_HOOKS;
  ctrl.timers = timers;
  return ctrl;
}

// driver(graph) leaves the partition in args->part and returns the objective.
template <class Driver>
static void RunEntry(const Control *ctrl, const EntryArgs *args, Driver driver)
{
  HGraph *graph;

  InitTimers__(ctrl->timers);
  {
    const Stopwatch oftotal(ctrl, &Timers::TotalTmr);
    graph = CopyHGraph(args->ncells, args->nnets, args->cellwgts, args->netptr, args->netind, args->netwgts);
    const Stopwatch ofdriver(ctrl, &Timers::MultilevelTmr);
    *args->cut = driver(graph);
  }
  if (ctrl->dbglvl & DBG_TIME)
    PrintTimers__(ctrl->timers, 0);
  FreeHGraph__(graph);
}

static void PartRecursive(const EntryArgs *args, bool polish)
{
  Timers timers;

  CheckPointers(args);
  Control ctrl = FillControl(args, RECURSIVE, true, &timers);
  ctrl.kwayrefine = polish && args->nparts <= MAX_POLISHED_PARTS;
  CheckRecursiveOptions(&ctrl, args);
  CheckInputHGraph(args, ctrl.kwayrefine && args->nparts > 2);
  if (ctrl.fixed)
    CheckPartArgument(args, -1);

  RunEntry(&ctrl, args, [&](HGraph *graph) { return MultilevelPartition__(&ctrl, graph, args->part); });
}

void KAPRIS_PartRecursive(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                          const int *netwgts, int nparts, int UBfactor, const int *options, int *part,
                          int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut};

  PartRecursive(&args, true);
}

void KAPRIS_PartRecursiveInternal(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                  const int *netind, const int *netwgts, int nparts, int UBfactor,
                                  const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut};

  PartRecursive(&args, false);
}

void KAPRIS_PartKway(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                     const int *netwgts, int nparts, int UBfactor, const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut};

  CheckPointers(&args);
  Timers timers;
  Control ctrl = FillControl(&args, KWAY, false, &timers);
  ctrl.nestedclock = true;
  ctrl.coarsento = static_cast<int>(
      std::min<std::int64_t>(ncells - std::int64_t{1}, std::int64_t{COARSEST_PER_PART} * nparts));
  CheckKwayOptions(&ctrl, &args);
  CheckInputHGraph(&args, true);

  RunEntry(&ctrl, &args, [&](HGraph *graph) { return MultilevelKwayPartition__(&ctrl, graph, part); });
}

void KAPRIS_2WayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                       const int *netwgts, int UBfactor, const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets, cellwgts, netptr, netind, netwgts, 2, UBfactor, options, part, cut};

  CheckPointers(&args);
  Timers timers;
  const Control ctrl = FillControl(&args, RECURSIVE, false, &timers);
  CheckTwoWayRefineOptions(&ctrl, &args);
  CheckInputHGraph(&args, false);
  CheckPartArgument(&args, 0);

  RunEntry(&ctrl, &args, [&](HGraph *graph) {
    Level level = OpenLevel(graph);
    CreateIncidentHGraph__(graph);
    AllocateRefinementMemory__(&level);
    icopy__(ncells, part, level.part.where);
    Refine_FM__(&ctrl, &level, MAX_PASSES);
    icopy__(ncells, level.part.where, part);
    CloseLevel(&level);
    return level.part.mincut;
  });
}

void KAPRIS_KWayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                       const int *netwgts, int nparts, int UBfactor, const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut};

  CheckPointers(&args);
  Timers timers;
  Control ctrl = FillControl(&args, KWAY, false, &timers);
  CheckKwayRefineOptions(&ctrl, &args);
  CheckInputHGraph(&args, true);
  CheckPartArgument(&args, 0);

  RunEntry(&ctrl, &args, [&](HGraph *graph) {
    CreateIncidentHGraph__(graph);
    // The V-cycles coarsen within the parts and need a cap.
    ComputeMaxCellWgt__(&ctrl, ncells, graph->cellwgt);
    return RefineKwayPartition(&ctrl, graph, part);
  });
}
