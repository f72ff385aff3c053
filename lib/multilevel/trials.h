// lib/multilevel/trials.h - several independent multilevel trials of which the best is kept: the frame that
// bisection and direct k-way partitioning share. Included by their drivers only.
// SPDX-License-Identifier: MIT
//
// A trial works on a copy of the hypergraph without its large nets and finishes on the full one:
//   multilevel  coarsen, partition the coarsest level, refine back up   PartitionPruned
//   full        one refinement with the large nets                      FinishOnFull
//   V-cycle     if the policy asks for it at once                       WantsVCycle
// With vcycle 1 the best trials get their V-cycles after the last trial instead (CycleKeptTrials).
//
// Trials are compared by one value: the cut, or the objective of a k-way run. Only a strictly smaller value
// replaces a kept one, so among equals the earliest trial stays.
#pragma once

#include "uncoarsen.h"

#include "base/random.h"
#include "coarsen/coarsen.h"
#include "core/constants.h"

#include <concepts>

namespace kapris::engine::KAPRIS_ENGINE
{

struct Trials {
  Weight bound;      // above every value that a trial can have, but for a SOED over very many parts
  Weight bestpruned; // smallest value on the pruned copy
  Weight best;       // smallest final value
  Weight sum;        // of the final values, for the average
  int ncells;
  int nkept; // partitions kept for V-cycles after the last trial
  int *parts[MOST_KEPT];
  Weight values[MOST_KEPT]; // bound while the slot is empty
  int trials[MOST_KEPT];    // -1 while the slot is empty
};

// nkept slots when V-cycles come after the last trial, else none.
void StartTrials(const Control *ctrl, Trials *trials, int ncells, Weight bound, int nkept);
void FreeTrials(Trials *trials);
// Notes a trial's value on the pruned copy; returns whether it is the best so far.
bool NotePrunedValue(Trials *trials, Weight value);
// Whether a trial that ended at value gets its V-cycle at once.
bool WantsVCycle(const Control *ctrl, const Trials *trials, Weight value, bool improved);
// Notes a trial's final partition; copies it into part when it is the best so far, and into a kept slot. Returns
// whether part has changed.
bool NoteTrial(Trials *trials, int trial, Weight value, const int *where, int *part);
// Notes what V-cycles made of a kept slot; returns whether part has changed.
bool NoteCycled(Trials *trials, Weight value, const int *where, int *part);

// What the frame needs to know of the partitions that its trials make. All functions are static.
template <class S>
concept TrialScheme = requires(const Control *ctrl, const HGraph *graph, Level *level,
                               const Level *constlevel, const int *part, Weight weight, int number,
                               double average, float balance)
{
  {
    S::NKEPT
    } -> std::convertible_to<int>; // partitions kept for V-cycles, of few trials
  {
    S::GetRefiner(ctrl)
    } -> std::same_as<const Refiner *>;
  {
    S::Bound(weight)
    } -> std::same_as<Weight>; // above all values, by the weight of the nets
  // The first partition of the coarsest level.
  {
    S::PartitionCoarsest(ctrl, level)
    } -> std::same_as<void>;
  // Passes on the full hypergraph.
  {
    S::RefineFully(ctrl, level, number)
    } -> std::same_as<void>;
  {
    S::Recount(ctrl, graph, part)
    } -> std::same_as<Weight>; // the value by its definition
  {
    S::Balance(ctrl, graph, part)
    } -> std::same_as<float>;
  // Traces: before the trials, after the multilevel part of one, after one, after all.
  {
    S::TraceHeader(ctrl, graph)
    } -> std::same_as<void>;
  {
    S::TracePruned(number, constlevel)
    } -> std::same_as<void>;
  {
    S::TraceTrial(number, constlevel, balance)
    } -> std::same_as<void>;
  {
    S::TraceSummary(ctrl, weight, average, balance)
    } -> std::same_as<void>;
};

template <TrialScheme Scheme>
Weight *ValueOf(const Control *ctrl, Level *level)
{
  return &(level->part.*Scheme::GetRefiner(ctrl)->value);
}

// The multilevel part of a trial: leaves a partition of the level.
template <TrialScheme Scheme>
void PartitionPruned(const Control *ctrl, Level *pruned)
{
  Level *coarsest = Coarsen__(ctrl, pruned);

  Scheme::PartitionCoarsest(ctrl, coarsest);
  RecordLevel(ctrl, PHASE_INITIAL, coarsest, *ValueOf<Scheme>(ctrl, coarsest));
  Uncoarsen(ctrl, Scheme::GetRefiner(ctrl), pruned, coarsest);
}

// Moves the partition of the pruned copy to the full hypergraph, which may be the same, and refines it there if nets
// are missing in the copy.
template <TrialScheme Scheme>
void FinishOnFull(const Control *ctrl, Level *full, Level *pruned)
{
  const bool traced = ctrl->dbglvl & DBG_LONG;

  if (pruned->graph->nnets == full->graph->nnets) {
    full->part = pruned->part;
    full->part.kpwgts = nullptr;
    pruned->part.where = nullptr;
    return;
  }
  if (traced) {
    Trace("[%lld, ", Shown(Scheme::Recount(ctrl, full->graph, pruned->part.where)));
    TraceFlush();
  }
  EnterPhase(ctrl, PHASE_REFINE, full->graph->ncells);
  Scheme::GetRefiner(ctrl)->initialise(ctrl, full);
  std::swap(full->part.where, pruned->part.where);
  QVfree__(&pruned->part.where);
  Scheme::RefineFully(ctrl, full, MAX_PASSES);
  RecordLevel(ctrl, PHASE_REFINE, full, *ValueOf<Scheme>(ctrl, full));
  if (traced) {
    Trace("%lld]", Shown(*ValueOf<Scheme>(ctrl, full)));
    TraceFlush();
  }
}

template <TrialScheme Scheme>
void RunTrial(const Control *ctrl, const HGraph *graph, const HGraph *prunedgraph, Trials *trials, int t,
              int *part)
{
  Level full = OpenLevel(graph), pruned = OpenLevel(prunedgraph);
  const Weight *value = ValueOf<Scheme>(ctrl, &full);

  RecordBegin(ctrl, STEP_TRIAL, t);
  PartitionPruned<Scheme>(ctrl, &pruned);
  const bool improved = NotePrunedValue(trials, *ValueOf<Scheme>(ctrl, &pruned));
  if (ctrl->dbglvl & DBG_LONG) {
    Scheme::TracePruned(t, &pruned);
    TraceFlush();
  }
  FinishOnFull<Scheme>(ctrl, &full, &pruned);
  if (ctrl->dbglvl & DBG_LONG)
    Trace(" [%4.2f]\n", static_cast<double>(Scheme::Balance(ctrl, graph, full.part.where)));

  if (WantsVCycle(ctrl, trials, *value, improved)) {
    CloseCycle(&full);
    RunVCycles(ctrl, Scheme::GetRefiner(ctrl), &full, MAX_CYCLES);
  }
  if (ctrl->dbglvl & DBG_TRIALS)
    Scheme::TraceTrial(t, &full, Scheme::Balance(ctrl, graph, full.part.where));

  const bool taken = NoteTrial(trials, t, *value, full.part.where, part);
  RecordEnd(ctrl, t, &full, *value, taken, trials->trials, trials->nkept);
  if (taken && ctrl->complete)
    Announce(ctrl, part);
  CloseLevel(&full);
  CloseLevel(&pruned);
}

template <TrialScheme Scheme>
void CycleKeptTrials(const Control *ctrl, const HGraph *graph, Trials *trials, int *part)
{
  if (trials->nkept == 0)
    return;
  Level full = OpenLevel(graph);
  full.part.where = imalloc__(graph->ncells, "Hypergraph_Bisection: where");
  for (int i = 0; i < trials->nkept; i++) {
    if (trials->values[i] == trials->bound)
      continue;
    icopy__(graph->ncells, trials->parts[i], full.part.where);
    *ValueOf<Scheme>(ctrl, &full) = trials->values[i];
    RecordBegin(ctrl, STEP_TRIAL, trials->trials[i]);
    const Weight value = RunVCycles(ctrl, Scheme::GetRefiner(ctrl), &full, MAX_CYCLES); // replaces where
    const bool taken = NoteCycled(trials, value, full.part.where, part);
    RecordEnd(ctrl, trials->trials[i], &full, value, taken, trials->trials, trials->nkept);
    if (taken && ctrl->complete)
      Announce(ctrl, part);
  }
  CloseLevel(&full);
}

inline void ReportWork(const Control *ctrl, const HGraph *graph)
{
  if (ctrl->hooks->worked != nullptr)
    ctrl->hooks->worked(ctrl->hooks->owner, 1.0 / ctrl->nruns, graph->ncells);
}

// What trials came to.
struct TrialsOutcome {
  Weight value;
  Weight maxcellwgt; // the cap that they coarsened under
};

// Runs call->nruns trials; leaves the best partition in part. Needs the incidence of graph.
template <TrialScheme Scheme>
TrialsOutcome RunTrials(const Control *call, const HGraph *graph, int *part)
{
  const bool traced = call->dbglvl & (DBG_RUNS | DBG_LONG);
  Control ctrl = *call;
  Trials trials;

  if (traced)
    Scheme::TraceHeader(&ctrl, graph);
  HGraph *copy = PruneHGraph__(&ctrl, graph);
  const HGraph *pruned = copy != nullptr ? copy : graph;
  ComputeMaxCellWgt__(&ctrl, graph->ncells, graph->cellwgt);
  StartTrials(&ctrl, &trials, graph->ncells, Scheme::Bound(iasum__(graph->nnets, graph->netwgt)),
              ctrl.nruns > MANY_TRIALS ? MOST_KEPT : Scheme::NKEPT);

  InitRandom__(ctrl.seed);
  for (int t = 0; t < ctrl.nruns; t++) {
    Checkpoint(&ctrl);
    if (call->ctype == MATCH_ALTERNATE)
      ctrl.ctype = t % 2 == 0 ? MATCH_ALTERNATE : MATCH_DEGREE;
    RunTrial<Scheme>(&ctrl, graph, pruned, &trials, t, part);
    ReportWork(&ctrl, graph);
  }
  if (copy != nullptr)
    FreeHGraph__(copy);
  CycleKeptTrials<Scheme>(&ctrl, graph, &trials, part);

  if (traced)
    Scheme::TraceSummary(&ctrl, trials.best, static_cast<double>(trials.sum) / ctrl.nruns,
                         Scheme::Balance(&ctrl, graph, part));
  FreeTrials(&trials);
  return {trials.best, ctrl.maxcellwgt};
}

// Takes the partition of level if its value is below best; returns whether it did.
inline bool TakeImproved(const Control *ctrl, const Level *level, Weight value, Weight *best, int *part)
{
  if (value >= *best)
    return false;
  *best = value;
  icopy__(level->graph->ncells, level->part.where, part);
  if (ctrl->complete)
    Announce(ctrl, part);
  return true;
}

// Improves the partition part in call->nruns rounds, each from the best so far: refinement, then V-cycles unless
// call->vcycle is CYCLE_NONE. Returns the value of what it leaves in part, which is never larger than before. Needs the
// incidence of graph.
template <TrialScheme Scheme>
Weight ImprovePartition(const Control *call, const HGraph *graph, int *part)
{
  const Refiner *refiner = Scheme::GetRefiner(call);
  Control ctrl = *call;
  Weight best = Scheme::Recount(call, graph, part);

  ComputeMaxCellWgt__(&ctrl, graph->ncells, graph->cellwgt);
  InitRandom__(ctrl.seed);
  for (int t = 0; t < ctrl.nruns; t++) {
    Level level = OpenLevel(graph);
    const Weight *value = ValueOf<Scheme>(&ctrl, &level);

    EnterPhase(&ctrl, PHASE_REFINE, graph->ncells);
    refiner->initialise(&ctrl, &level);
    icopy__(graph->ncells, part, level.part.where);
    RecordBegin(&ctrl, STEP_TRIAL, t);
    Scheme::RefineFully(&ctrl, &level, MAX_PASSES);
    RecordLevel(&ctrl, PHASE_REFINE, &level, *value);
    bool taken = TakeImproved(&ctrl, &level, *value, &best, part);
    if (ctrl.vcycle != CYCLE_NONE) {
      CloseCycle(&level);
      taken =
          TakeImproved(&ctrl, &level, RunVCycles(&ctrl, refiner, &level, MAX_CYCLES), &best, part) || taken;
    }
    RecordEnd(&ctrl, t, &level, *value, taken, nullptr, 0);
    if (ctrl.dbglvl & DBG_TRIALS)
      Scheme::TraceTrial(t, &level, Scheme::Balance(&ctrl, graph, level.part.where));
    CloseLevel(&level);
    ReportWork(&ctrl, graph);
  }
  return best;
}

} // namespace kapris::engine::KAPRIS_ENGINE
