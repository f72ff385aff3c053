// lib/core/trials.h - several independent multilevel trials of which the best is kept: the frame that
// bisection and direct k-way partitioning share. Included by their drivers only.
// SPDX-License-Identifier: MIT
//
// A trial works on a copy of the hypergraph without its large nets and finishes on the full one:
//   multilevel  coarsen, partition the coarsest level, refine back up   Scheme::PartitionPruned
//   full        one refinement with the large nets                      FinishOnFull__
//   V-cycle     if the policy asks for it at once                       WantsVCycle__
// With vcycle 1 the best trials get their V-cycles after the last trial instead (CycleKeptTrials__).
//
// Trials are compared by one value: the cut, or the objective of a k-way run. Only a strictly smaller value
// replaces a kept one, so among equals the earliest trial stays.
#pragma once

#include "control/ctrl.h"
#include "core/core.h"

struct Trials {
  int bound;      // above every value that a trial can have, but for a SOED over very many parts
  int bestpruned; // smallest value on the pruned copy
  int best;       // smallest final value
  int sum;        // of the final values, for the average
  int ncells;
  int nkept; // partitions kept for V-cycles after the last trial
  int *parts[3];
  int values[3]; // bound while the slot is empty
  int trials[3]; // -1 while the slot is empty
};

// nkept slots when V-cycles come after the last trial, else none.
void StartTrials__(const Control *ctrl, Trials *trials, int ncells, int bound, int nkept);
void FreeTrials__(Trials *trials);
// Notes a trial's value on the pruned copy; returns whether it is the best so far.
bool NotePrunedValue__(Trials *trials, int value);
// Whether a trial that ended at value gets its V-cycle at once.
bool WantsVCycle__(const Control *ctrl, const Trials *trials, int value, bool improved);
// Notes a trial's final partition; copies it into part when it is the best so far, and into a kept slot. Returns
// whether part has changed.
bool NoteTrial__(Trials *trials, int trial, int value, const int *where, int *part);
// Notes what V-cycles made of a kept slot; returns whether part has changed.
bool NoteCycled__(Trials *trials, int value, const int *where, int *part);

static const int TRIAL_NPASSES = 10; // of the refinement on the full hypergraph
static const int TRIAL_NCYCLES = 10;

// Moves the partition of the pruned copy to the full hypergraph, which may be the same, and refines it there if nets are
// missing in the copy.
template <class Scheme>
void FinishOnFull__(Control *ctrl, HGraph *graph, HGraph *pruned)
{
  const bool traced = ctrl->dbglvl & DBG_LONG;
  int *where = pruned->where;

  pruned->where = nullptr;
  if (pruned->nnets == graph->nnets) {
    graph->where = where;
    graph->mincut = pruned->mincut;
    graph->soed = pruned->soed;
    graph->objval = pruned->objval;
    return;
  }
  if (traced) {
    Trace__("[%d, ", Scheme::Recount(ctrl, graph, where));
    TraceFlush__();
  }
  EnterPhase__(ctrl, PHASE_REFINE, graph->ncells);
  Scheme::AllocateMemory(ctrl, graph);
  QVfree__(&graph->where);
  graph->where = where;
  Scheme::RefineFull(ctrl, graph, TRIAL_NPASSES);
  RecordLevel__(ctrl, PHASE_REFINE, graph, *Scheme::Value(graph));
  if (traced) {
    Trace__("%d]", *Scheme::Value(graph));
    TraceFlush__();
  }
}

template <class Scheme>
void RunTrial__(Control *ctrl, HGraph *graph, HGraph *pruned, Trials *trials, int t, int *part)
{
  RecordBegin__(ctrl, STEP_TRIAL, t);
  Scheme::PartitionPruned(ctrl, pruned);
  const bool improved = NotePrunedValue__(trials, *Scheme::Value(pruned));
  if (ctrl->dbglvl & DBG_LONG) {
    Scheme::TracePruned(t, pruned);
    TraceFlush__();
  }
  FinishOnFull__<Scheme>(ctrl, graph, pruned);
  if (ctrl->dbglvl & DBG_LONG)
    Trace__(" [%4.2f]\n", Scheme::Balance(ctrl, graph, graph->where));

  if (WantsVCycle__(ctrl, trials, *Scheme::Value(graph), improved)) {
    FreeCycleState__(graph);
    Scheme::VCycle(ctrl, graph, TRIAL_NCYCLES);
  }
  if (ctrl->dbglvl & DBG_TRIALS)
    Scheme::TraceTrial(t, graph, Scheme::Balance(ctrl, graph, graph->where));

  const bool taken = NoteTrial__(trials, t, *Scheme::Value(graph), graph->where, part);
  RecordEnd__(ctrl, t, graph, *Scheme::Value(graph), taken, trials->trials, trials->nkept);
  if (taken && ctrl->complete)
    ctrl->context->incumbent(ctrl->context->taker, part);
  FreeRootHGraph__(graph);
  FreeRootHGraph__(pruned);
}

template <class Scheme>
void CycleKeptTrials__(Control *ctrl, HGraph *graph, Trials *trials, int *part)
{
  if (trials->nkept == 0)
    return;
  graph->where = imalloc__(graph->ncells, "Hypergraph_Bisection: where");
  for (int i = 0; i < trials->nkept; i++) {
    if (trials->values[i] == trials->bound)
      continue;
    icopy__(graph->ncells, trials->parts[i], graph->where);
    *Scheme::Value(graph) = trials->values[i];
    RecordBegin__(ctrl, STEP_TRIAL, trials->trials[i]);
    const int value = Scheme::VCycle(ctrl, graph, TRIAL_NCYCLES); // replaces where
    const bool taken = NoteCycled__(trials, value, graph->where, part);
    RecordEnd__(ctrl, trials->trials[i], graph, value, taken, trials->trials, trials->nkept);
    if (taken && ctrl->complete)
      ctrl->context->incumbent(ctrl->context->taker, part);
  }
  FreeRootHGraph__(graph);
}

inline void ReportWork__(const Control *ctrl, const HGraph *graph)
{
  if (ctrl->context != nullptr && ctrl->context->worked != nullptr)
    ctrl->context->worked(ctrl->context->owner, 1.0 / ctrl->nruns, graph->ncells);
}

// Runs ctrl->nruns trials; returns the best value and leaves its partition in part. Builds the incidence of
// graph and leaves maxcellwgt and heavycells set.
template <class Scheme>
int RunTrials__(Control *ctrl, HGraph *graph, int *part)
{
  const bool traced = ctrl->dbglvl & (DBG_RUNS | DBG_LONG);
  const int ctype = ctrl->ctype;
  Trials trials;

  if (traced)
    Scheme::TraceHeader(ctrl, graph);
  CreateIncidentHGraph__(graph);
  HGraph *pruned = PruneHGraph__(ctrl, graph);
  ctrl->maxcellwgt = ComputeMaxCellWgt__(ctrl, graph->ncells, graph->cellwgt);
  StartTrials__(ctrl, &trials, graph->ncells, Scheme::Bound(iasum__(graph->nnets, graph->netwgt)),
                ctrl->nruns > 10 ? 3 : Scheme::NKEPT);

  InitRandom__(ctrl->seed);
  for (int t = 0; t < ctrl->nruns; t++) {
    Checkpoint__(ctrl);
    if (ctype == 1) // take turns
      ctrl->ctype = t % 2 == 0 ? 1 : 2;
    RunTrial__<Scheme>(ctrl, graph, pruned, &trials, t, part);
    ReportWork__(ctrl, graph);
  }
  ctrl->ctype = ctype;
  if (pruned != graph)
    FreeHGraph__(pruned);
  CycleKeptTrials__<Scheme>(ctrl, graph, &trials, part);

  if (traced)
    Scheme::TraceSummary(ctrl, trials.best, static_cast<double>(trials.sum) / ctrl->nruns,
                         Scheme::Balance(ctrl, graph, part));
  FreeTrials__(&trials);
  return trials.best;
}

// Takes the partition in where if its value is below best; returns whether it did.
inline bool TakeImproved__(const Control *ctrl, const HGraph *graph, int value, int *best, int *part)
{
  if (value >= *best)
    return false;
  *best = value;
  icopy__(graph->ncells, graph->where, part);
  if (ctrl->complete)
    ctrl->context->incumbent(ctrl->context->taker, part);
  return true;
}

// Improves the partition part in ctrl->nruns rounds, each from the best so far: refinement, then V-cycles unless
// ctrl->vcycle is 0. Returns the value of what it leaves in part, which is never larger than before.
template <class Scheme>
int ImprovePartition__(Control *ctrl, HGraph *graph, int *part)
{
  int best = Scheme::Recount(ctrl, graph, part);

  CreateIncidentHGraph__(graph);
  ctrl->maxcellwgt = ComputeMaxCellWgt__(ctrl, graph->ncells, graph->cellwgt);
  InitRandom__(ctrl->seed);
  for (int t = 0; t < ctrl->nruns; t++) {
    EnterPhase__(ctrl, PHASE_REFINE, graph->ncells);
    Scheme::AllocateMemory(ctrl, graph);
    icopy__(graph->ncells, part, graph->where);
    RecordBegin__(ctrl, STEP_TRIAL, t);
    Scheme::RefineFull(ctrl, graph, TRIAL_NPASSES);
    RecordLevel__(ctrl, PHASE_REFINE, graph, *Scheme::Value(graph));
    bool taken = TakeImproved__(ctrl, graph, *Scheme::Value(graph), &best, part);
    if (ctrl->vcycle != 0) {
      FreeCycleState__(graph);
      const int value = Scheme::VCycle(ctrl, graph, TRIAL_NCYCLES);
      taken = TakeImproved__(ctrl, graph, value, &best, part) || taken;
    }
    RecordEnd__(ctrl, t, graph, *Scheme::Value(graph), taken, nullptr, 0);
    if (ctrl->dbglvl & DBG_TRIALS)
      Scheme::TraceTrial(t, graph, Scheme::Balance(ctrl, graph, graph->where));
    FreeRootHGraph__(graph);
    ReportWork__(ctrl, graph);
  }
  return best;
}
