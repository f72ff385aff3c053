// lib/kway/kdriver.cpp - direct k-way partitioning: several multilevel trials, the best kept.
// SPDX-License-Identifier: MIT
//
// As a bisection, but on the objective value, with coarsening that ends earlier and an initial partition by
// recursive bisection of the coarsest level.

#include "kway.h"

#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "kapris.h"
#include "core/trials.h"
#include "recursive/recursive.h"

static const char *ObjectiveName(const Control *ctrl)
{
  return ctrl->rtype == 1 ? "cut" : "soed";
}

// The weight of the heaviest part over the average.
static float ComputeBalanceKway__(const Control *ctrl, const HGraph *graph, const int *part)
{
  int *kpwgts = ismalloc__(ctrl->nparts, 0, "ComputeBalanceKway: kpwgts");

  for (int i = 0; i < graph->ncells; i++)
    kpwgts[part[i]] += graph->cellwgt[i];
  const double largest = kpwgts[iamax__(ctrl->nparts, kpwgts)];
  const double total = iasum__(ctrl->nparts, kpwgts);
  QVfree__(&kpwgts);
  return static_cast<float>(ctrl->nparts * largest / total);
}

// Two trials, coarsened by degree, without V-cycles; seeded from the clock.
static void PartitionClassic(const Control *ctrl, HGraph *graph)
{
  static const int options[9] = {1, 2, 2, 1, 0, 0, 0, -1, 0};
  int cut;

  KAPRIS_PartRecursiveInternal(graph->ncells, graph->nnets, graph->cellwgt, graph->netptr, graph->netind,
                               graph->netwgt, ctrl->nparts, 1, options, graph->where, &cut);
}

// The same towards the shares and limits of the context, and seeded from the run's own random sequence.
static void PartitionInContext(const Control *ctrl, HGraph *graph)
{
  RunContext context = *ctrl->context;
  Control nested = *ctrl;

  // All of this is one phase, and its partitions are those of a coarse level.
  EnterPhase__(ctrl, PHASE_INITIAL, graph->ncells);
  context.incumbent = nullptr;
  context.enter = nullptr;
  context.worked = nullptr;
  context.record = nullptr;
  nested.context = &context;
  nested.coarsento = 100;
  nested.nruns = nested.ctype = 2;
  nested.rtype = 1;
  nested.vcycle = nested.reconst = nested.kwayrefine = nested.dbglvl = 0;
  nested.seed = RandomDraw__();
  HGraph *copy =
      CopyHGraph__(graph->ncells, graph->nnets, graph->cellwgt, graph->netptr, graph->netind, graph->netwgt);
  PartitionByBisection__(&nested, copy, graph->nfixed, graph->where);
  FreeHGraph__(copy);
}

static void InitPartitionKway__(Control *ctrl, HGraph *graph)
{
  StartTimer__(ctrl, &ctrl->InitPartTmr);
  AllocateKwayRefinementMemory__(ctrl, graph);
  if (ctrl->context == nullptr)
    PartitionClassic(ctrl, graph);
  else
    PartitionInContext(ctrl, graph);
  RefineObjectiveKway__(ctrl, graph, 10);
  if (ctrl->dbglvl & DBG_INITPART)
    Trace__("%d-way initial %s: %d\n", ctrl->nparts, ObjectiveName(ctrl), graph->objval);
  StopTimer__(ctrl, &ctrl->InitPartTmr);
}

namespace
{

struct DirectKway {
  static const int NKEPT = 2;

  static int *Value(HGraph *graph)
  {
    return &graph->objval;
  }

  static int Bound(int netwgt)
  {
    return AddWrap__(MulWrap__(10, netwgt), 1);
  }

  static void PartitionPruned(Control *ctrl, HGraph *pruned)
  {
    HGraph *coarsest = Coarsen__(ctrl, pruned);

    InitPartitionKway__(ctrl, coarsest);
    RecordLevel__(ctrl, PHASE_INITIAL, coarsest, coarsest->objval);
    RefineKway__(ctrl, pruned, coarsest);
  }

  static void AllocateMemory(const Control *ctrl, HGraph *graph)
  {
    AllocateKwayRefinementMemory__(ctrl, graph);
  }

  static void RefineFull(Control *ctrl, HGraph *graph, int npasses)
  {
    RefineObjectiveKway__(ctrl, graph, npasses);
  }

  static int VCycle(Control *ctrl, HGraph *graph, int ncycles)
  {
    return VCycleRefinementKway__(ctrl, graph, ncycles);
  }

  static int Recount(const Control *ctrl, const HGraph *graph, const int *part)
  {
    return ctrl->rtype == 1 ? ComputeActualCut__(graph, part) : ComputeActualSOED__(graph, part);
  }

  static float Balance(const Control *ctrl, const HGraph *graph, const int *part)
  {
    return ComputeBalanceKway__(ctrl, graph, part);
  }

  static void TraceHeader(const Control *ctrl, const HGraph *graph)
  {
    Trace__("\n  Partitioning a hgraph of size [vertices=%d, hedges=%d, balance=%4.2f]\n", graph->ncells,
            graph->nnets, ctrl->ubfactor);
  }

  static void TracePruned(int t, const HGraph *pruned)
  {
    Trace__("    Cut/SOED of trial %4d:\t %6d %6d", t, pruned->mincut, pruned->soed);
  }

  static void TraceTrial(int t, const HGraph *graph, float balance)
  {
    Trace__("    Cut/SOED of trial %4d:\t %6d %6d [%4.2f]\n", t, graph->mincut, graph->soed, balance);
  }

  static void TraceSummary(const Control *ctrl, int best, double average, float balance)
  {
    Trace__("    The min%s for this partitioning = %d, (average = %3.1f) (balance = %4.2f)\n",
            ObjectiveName(ctrl), best, average, balance);
  }
};

} // namespace

static int PartitionKway(Control *ctrl, HGraph *graph, int nfixed, int *part)
{
  graph->nfixed = nfixed;
  ctrl->complete = ctrl->context != nullptr && ctrl->context->incumbent != nullptr;
  ctrl->recorded =
      ctrl->context != nullptr && ctrl->context->record != nullptr ? RECORD_PARTS : RECORD_NOTHING;
  return RunTrials__<DirectKway>(ctrl, graph, part);
}

int MultilevelKwayPartition__(Control *ctrl, HGraph *graph, int *part)
{
  return ctrl->fixed ? PartitionAroundFixed__(ctrl, graph, part, PartitionKway)
                     : PartitionKway(ctrl, graph, 0, part);
}

static int ImproveKway(Control *ctrl, HGraph *graph, int nfixed, int *part)
{
  graph->nfixed = nfixed;
  ctrl->complete = 1;
  ctrl->recorded = ctrl->context->record != nullptr ? RECORD_PARTS : RECORD_NOTHING;
  return ImprovePartition__<DirectKway>(ctrl, graph, part);
}

int ImproveKwayPartition__(Control *ctrl, HGraph *graph, int *part)
{
  return ctrl->fixed ? PartitionAroundFixed__(ctrl, graph, part, ImproveKway)
                     : ImproveKway(ctrl, graph, 0, part);
}
