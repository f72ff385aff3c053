// lib/control/entries.cpp - the public entry points: one frame around five drivers.
// SPDX-License-Identifier: MIT
//
//   fill      the Control record from the arguments and the option vector   FillControl
//   validate  options, then the caller's data                               validate.cpp
//   copy      the hypergraph, so that the caller's arrays stay untouched    CopyHGraph__
//   run       the driver; it leaves part and returns the objective
//   report    CPU times, and release

#include "ctrl.h"
#include "kapris.h"
#include "validate.h"

#include "bisect/bisect.h"
#include "kway/kway.h"
#include "recursive/recursive.h"

#include <algorithm>

namespace
{

enum Family { RECURSIVE, KWAY };

// The options that KAPRIS_PartRecursive polishes by k-way refinement.
constexpr int MAX_POLISHED_PARTS = 64;

} // namespace

// allslots: whether the entry reads Reconst and Fixed.
static Control FillControl(const EntryArgs *args, Family family, bool allslots)
{
  const int *options = args->options;
  Control ctrl = {};

  ctrl.nparts = args->nparts;
  ctrl.coarsento = 100;
  ctrl.maxnetsize = 50;
  ctrl.part0frac = 0.5f;
  if (family == RECURSIVE) {
    ctrl.ubfactor = static_cast<float>(args->UBfactor / 100.0);
  } else {
    const double factor = args->UBfactor / 100.0 + 1.0;
    ctrl.ubfactor = factor >= 1.05 ? static_cast<float>(factor) : 1.05f;
  }

  ctrl.nruns = 10;
  ctrl.ctype = ctrl.rtype = ctrl.vcycle = ctrl.polishtype = 1;
  ctrl.seed = -1;
  if (options[0] != 0) {
    ctrl.nruns = options[1];
    ctrl.ctype = options[2];
    ctrl.rtype = options[3];
    ctrl.vcycle = options[4];
    if (allslots) {
      ctrl.reconst = options[5];
      ctrl.fixed = options[6];
    }
    ctrl.seed = options[7];
    ctrl.dbglvl = options[8];
  }
  return ctrl;
}

// driver(graph) leaves the partition in args->part and returns the objective.
template <class Driver>
static void RunEntry(Control *ctrl, const EntryArgs *args, Driver driver)
{
  if (ctrl->dbglvl & DBG_TIME)
    InitTimers__(ctrl);
  StartTimer__(ctrl, &ctrl->TotalTmr);
  HGraph *graph =
      CopyHGraph__(args->ncells, args->nnets, args->cellwgts, args->netptr, args->netind, args->netwgts);

  StartTimer__(ctrl, &ctrl->MultilevelTmr);
  *args->cut = driver(graph);
  StopTimer__(ctrl, &ctrl->MultilevelTmr);

  StopTimer__(ctrl, &ctrl->TotalTmr);
  if (ctrl->dbglvl & DBG_TIME)
    PrintTimers__(ctrl, 0);
  FreeHGraph__(graph);
}

static void PartRecursive(const EntryArgs *args, bool polish)
{
  CheckPointers__(args);
  Control ctrl = FillControl(args, RECURSIVE, true);
  ctrl.kwayrefine = polish && args->nparts <= MAX_POLISHED_PARTS;
  CheckRecursiveOptions__(&ctrl, args);
  CheckInputHGraph__(args, ctrl.kwayrefine && args->nparts > 2);
  if (ctrl.fixed)
    CheckParts__(args, -1);

  RunEntry(&ctrl, args, [&](HGraph *graph) { return MultilevelPartition__(&ctrl, graph, args->part); });
}

void KAPRIS_PartRecursive(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                          const int *netwgts, int nparts, int UBfactor, const int *options, int *part,
                          int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut,    nullptr};

  PartRecursive(&args, true);
}

void KAPRIS_PartRecursiveInternal(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                  const int *netind, const int *netwgts, int nparts, int UBfactor,
                                  const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut,    nullptr};

  PartRecursive(&args, false);
}

void KAPRIS_PartKway(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                     const int *netwgts, int nparts, int UBfactor, const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut,    nullptr};

  CheckPointers__(&args);
  Control ctrl = FillControl(&args, KWAY, false);
  ctrl.coarsento =
      static_cast<int>(std::min<std::int64_t>(ncells - std::int64_t{1}, std::int64_t{200} * nparts));
  CheckKwayOptions__(&ctrl, &args);
  CheckInputHGraph__(&args, true);

  RunEntry(&ctrl, &args, [&](HGraph *graph) { return MultilevelKwayPartition__(&ctrl, graph, part); });
}

void KAPRIS_2WayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                       const int *netwgts, int UBfactor, const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          2,      UBfactor, options,  part,   cut,    nullptr};

  CheckPointers__(&args);
  Control ctrl = FillControl(&args, RECURSIVE, false);
  CheckRefineOptions__(&ctrl, &args, 3);
  CheckInputHGraph__(&args, false);
  CheckParts__(&args, 0);

  RunEntry(&ctrl, &args, [&](HGraph *graph) {
    CreateIncidentHGraph__(graph);
    AllocateRefinementMemory__(graph);
    icopy__(ncells, part, graph->where);
    Refine_FM__(&ctrl, graph, 10);
    icopy__(ncells, graph->where, part);
    return graph->mincut;
  });
}

void KAPRIS_KWayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                       const int *netwgts, int nparts, int UBfactor, const int *options, int *part, int *cut)
{
  const EntryArgs args = {ncells, nnets,    cellwgts, netptr, netind, netwgts,
                          nparts, UBfactor, options,  part,   cut,    nullptr};

  CheckPointers__(&args);
  Control ctrl = FillControl(&args, KWAY, false);
  CheckRefineOptions__(&ctrl, &args, 2);
  CheckInputHGraph__(&args, true);
  CheckParts__(&args, 0);

  RunEntry(&ctrl, &args, [&](HGraph *graph) {
    CreateIncidentHGraph__(graph);
    // The V-cycles coarsen within the parts and need a cap.
    ctrl.maxcellwgt = ComputeMaxCellWgt__(&ctrl, ncells, graph->cellwgt);
    AllocateKwayRefinementMemory__(&ctrl, graph);
    icopy__(ncells, part, graph->where);
    RefineKwayPartition__(&ctrl, graph);
    icopy__(ncells, graph->where, part);
    return graph->mincut;
  });
}
