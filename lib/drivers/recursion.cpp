// lib/drivers/recursion.cpp - the recursion over bisections, with fixed cells and the k-way polish around it.
// SPDX-License-Identifier: MIT

#include "drivers.h"

#include "core/constants.h"
#include "multilevel/uncoarsen.h"
#include "refine/kway/kway.h"

#include <chrono>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// What the recursion has still to split: graph into the parts first .. first + nparts - 1.
struct Subproblem {
  HGraph *graph;
  bool isroot;  // the caller's, who keeps it
  Cell *labels; // [ncells] number of each cell at the top
  int nparts, first;
};

// The left side of a bisection, which another thread can do: it shares nothing with the right side but part, where it
// writes other entries.
struct LeftSide {
  const Control *ctrl;
  Subproblem problem;
  int *part;
  Weight cut;
};

} // namespace

static BisectionOutcome MLRB__(const Control *call, Subproblem problem, int *part);

static void BisectLeftSide(void *argument)
{
  LeftSide *left = static_cast<LeftSide *>(argument);

  left->cut = MLRB__(left->ctrl, left->problem, left->part).cut;
  EnterPhase(left->ctrl, PHASE_END, 0);
}

// Both sides, the right one last on this thread: what follows goes on from the random sequence and the cap that its
// last bisection leaves behind.
static BisectionOutcome BisectSides(const Control *ctrl, const Subproblem sides[2], int *part)
{
  const Hooks *hooks = ctrl->hooks;
  LeftSide left = {ctrl, sides[0], part, 0};
  BisectionOutcome right = {0, 0};

  if (hooks->fork == nullptr || ctrl->seed < 0) {
    left.cut = MLRB__(ctrl, sides[0], part).cut;
    right = MLRB__(ctrl, sides[1], part);
    return {AddWrap(left.cut, right.cut), right.maxcellwgt};
  }
  void *task = hooks->fork(hooks->owner, BisectLeftSide, &left);
  try {
    right = MLRB__(ctrl, sides[1], part);
  } catch (...) {
    // The record of the left side is on this stack: wait for whoever uses it.
    try {
      hooks->join(hooks->owner, task);
    } catch (...) {
    }
    throw;
  }
  hooks->join(hooks->owner, task);
  return {AddWrap(left.cut, right.cut), right.maxcellwgt};
}

static void Relabel(const HGraph *graph, const Cell *above, Cell *labels)
{
  for (int i = 0; i < graph->ncells; i++)
    labels[i] = above[labels[i]];
}

// Writes part[label] of all cells; returns the sum of the cuts of all bisections, and the cap of the last one. Frees
// what the problem holds, but the graph of a root.
static BisectionOutcome MLRB__(const Control *call, Subproblem problem, int *part)
{
  const int nparts = problem.nparts, nparts0 = nparts / 2; // side 0 is the smaller one of an odd number
  HGraph *graph = problem.graph, *sides[2] = {nullptr, nullptr};
  Cell *labels[2] = {nullptr, nullptr};
  Control ctrl = *call;

  AimBisection(&ctrl, graph, nparts, problem.first);
  int *bisection = imalloc__(graph->ncells, "MLRB: bisection");
  const auto began = std::chrono::steady_clock::now();
  BisectionOutcome outcome = Hypergraph_Bisection__(&ctrl, graph, bisection);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - began;
  RecordSplit(&ctrl, graph, bisection, problem.first, nparts, outcome.cut, taken.count());
  for (int i = 0; i < graph->ncells; i++)
    part[problem.labels[i]] = problem.first + bisection[i];
  if (nparts > 2) {
    SplitGraphPart__(&ctrl, graph, bisection, sides, labels);
    for (int s = 0; s < 2; s++)
      Relabel(sides[s], problem.labels, labels[s]);
  }
  QVfree__(&bisection, &problem.labels);
  if (!problem.isroot)
    FreeHGraph__(graph);

  if (nparts == 2)
    return outcome;
  const Subproblem subproblems[2] = {{sides[0], false, labels[0], nparts0, problem.first},
                                     {sides[1], false, labels[1], nparts - nparts0, problem.first + nparts0}};
  BisectionOutcome below;
  if (nparts == 3) {
    QVfree__(&labels[0]);
    FreeHGraph__(sides[0]);
    below = MLRB__(call, subproblems[1], part);
  } else {
    below = BisectSides(call, subproblems, part);
  }
  return {AddWrap(outcome.cut, below.cut), below.maxcellwgt};
}

BisectionOutcome PartitionByBisection(const Control *ctrl, HGraph *graph, int *part)
{
  const Subproblem root = {graph, true, imalloc__(graph->ncells, "MultilevelPartition: label"), ctrl->nparts,
                           0};

  for (int i = 0; i < graph->ncells; i++)
    root.labels[i] = i;
  return MLRB__(ctrl, root, part);
}

Weight RefineKwayPartition(const Control *ctrl, const HGraph *graph, int *part)
{
  Level level = OpenLevel(graph);

  AllocateKwayRefinementMemory__(ctrl, &level);
  icopy__(graph->ncells, part, level.part.where);
  RefineCutKway_Random__(ctrl, &level, MAX_PASSES);
  RecordLevel(ctrl, PHASE_REFINE, &level, level.part.objval);
  CloseCycle(&level);
  RunVCycles(ctrl, KwayRefiner(ctrl->objective), &level, MAX_CYCLES);
  icopy__(graph->ncells, level.part.where, part);
  const Weight cut = level.part.mincut;
  CloseLevel(&level);
  return cut;
}

// k-way refinement of the partition part of graph under the imbalance that it already has; returns the cut.
static Weight PolishKway(const Control *call, Weight maxcellwgt, const HGraph *graph, int *part)
{
  Control ctrl = *call;
  Weight *kpwgts = wsmalloc(ctrl.nparts, 0, "MultilevelPartition: kpwgts");

  for (int i = 0; i < graph->ncells; i++)
    kpwgts[part[i]] = AddWrap(kpwgts[part[i]], graph->cellwgt[i]);
  ctrl.bounds.ubfactor = static_cast<Real>(static_cast<double>(ctrl.nparts) *
                                           static_cast<double>(kpwgts[iamax__(ctrl.nparts, kpwgts)]) /
                                           static_cast<double>(iasum__(ctrl.nparts, kpwgts)));
  QVfree__(&kpwgts);
  ctrl.maxcellwgt = maxcellwgt;

  EnterPhase(&ctrl, PHASE_REFINE, graph->ncells);
  ctrl.recorded = ctrl.hooks->record != nullptr ? RECORD_PARTS : RECORD_NOTHING;
  RecordBegin(&ctrl, STEP_POLISH, 0);
  return RefineKwayPartition(&ctrl, graph, part);
}

static Weight PartitionRoot(const Control *ctrl, HGraph *graph, int *part)
{
  const BisectionOutcome outcome = PartitionByBisection(ctrl, graph, part);

  Announce(ctrl, part);
  return ctrl->nparts > 2 && ctrl->kwayrefine ? PolishKway(ctrl, outcome.maxcellwgt, graph, part)
                                              : outcome.cut;
}

static Weight ImproveRoot(const Control *call, HGraph *graph, int *part)
{
  Control ctrl = *call;

  AimBisection(&ctrl, graph, 2, 0);
  return ImproveBisection(&ctrl, graph, part);
}

Weight ImproveTwoParts(const Control *ctrl, HGraph *graph, int *part)
{
  return PartitionAroundFixed(ctrl, graph, part, ImproveRoot);
}

Weight MultilevelPartition__(const Control *ctrl, HGraph *graph, int *part)
{
  return PartitionAroundFixed(ctrl, graph, part, PartitionRoot);
}

} // namespace kapris::engine::KAPRIS_ENGINE
