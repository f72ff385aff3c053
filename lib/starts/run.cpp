// lib/starts/run.cpp - the starts of one call, and which of their partitions is the best.
// SPDX-License-Identifier: MIT
//
// A start is a complete partitioning with a seed of its own:
//   engine    by the scheme, with the context of the call   RunEngine
//   balance   if a part is above its limit                  BringWithinLimits
//   compare   under a total order, so that neither the number of threads nor their timing decides   Consider
// Before the first one there is a candidate already: the given partition, or a simple one.

#include "run.h"

#include "start.h"

#include "base/array.h"
#include "rebalance/rebalance.h"

#include <algorithm>
#include <new>

namespace kapris::engine::safe
{

// ----------------------------------------------------------------------------------------------------------
// Candidates

static BalanceProblem BalanceProblemOf(const Run *run)
{
  const CleanProblem *problem = run->problem;
  BalanceProblem balance = {};

  balance.ncells = problem->ncells;
  balance.nnets = problem->nnets;
  balance.cellwgt = problem->cellwgt;
  balance.netwgt = problem->netwgt;
  balance.netptr = problem->netptr;
  balance.netind = problem->netind;
  balance.nparts = problem->nparts;
  balance.limits = problem->limits;
  balance.minimums = problem->minimums;
  balance.allowempty = problem->allowempty;
  balance.fixed = problem->fixed;
  balance.goal = GoalOf(run->options);
  return balance;
}

// Gives empty parts and those below their minimums what they can have. Not much work, which goes on after a call was
// stopped.
static void FillParts(const Run *run, int *part)
{
  const BalanceProblem balance = BalanceProblemOf(run);

  Fill(&balance, part);
}

// Returns whether it came to an end of its own. Whether a part above its limit has been repaired is for the measures to
// tell.
static bool BringWithinLimits(Start *start, int *part)
{
  const Run *run = start->run;
  BalanceProblem balance = BalanceProblemOf(run);

  balance.proceed = Proceed;
  balance.owner = start;
  Enter(start, PHASE_BALANCE, balance.ncells);
  const BalanceVerdict verdict = Rebalance(&balance, part);
  if (verdict == IMPOSSIBLE)
    start->run->impossible = true;
  FillParts(run, part);
  return verdict != INTERRUPTED;
}

// Makes the partition the best of the call if it is. Takes over its part.
static void Consider(Run *run, Candidate candidate)
{
  const std::lock_guard<std::mutex> guard(run->lock);

  if (candidate.start != SIMPLE_PARTITION && IsBetter(run->options, &candidate, &run->shown))
    run->shown = {nullptr, candidate.measures, candidate.start};
  if (IsBetter(run->options, &candidate, &run->best))
    std::swap(candidate, run->best);
  QVfree__(&candidate.part);
}

static Candidate MakeCandidate(const Run *run, int *part, int start)
{
  return {part, Measure(run->problem, part, nullptr), start};
}

// ----------------------------------------------------------------------------------------------------------
// One start

// The first start of all has the seed of the call; the others follow from it and their number (splitmix64).
static std::int64_t SeedOf(const Run *run, int number)
{
  if (number == 0)
    return run->seed;
  std::uint64_t z =
      static_cast<std::uint64_t>(run->seed) + static_cast<std::uint64_t>(number) * 0x9e3779b97f4a7c15u;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return static_cast<std::int64_t>((z ^ (z >> 31)) & INT_MAX);
}

static kapris_start NewRecord(const Run *run, int index)
{
  kapris_start record = {};

  record.number = run->options->first_start + index;
  record.seed = SeedOf(run, record.number);
  return record;
}

static void RecordStart(kapris_start *record, const Measures *measures, bool completed)
{
  record->cut = measures->cut;
  record->soed = measures->soed;
  record->imbalance = measures->imbalance;
  record->excess = measures->excess;
  record->balanced = measures->excess == 0;
  record->completed = completed;
}

// The records go to the call: those of this start's levels if its partition is the best so far, and so will those of
// a later one that beats it.
static void EndStart(Start *start, const kapris_start *record)
{
  Run *run = start->run;

  Enter(start, PHASE_END, 0);
  run->done += 1.0 - start->done;
  const std::lock_guard<std::mutex> guard(run->lock);
  for (int phase = 0; phase < NPHASES; phase++)
    run->seconds[phase] += start->seconds[phase];
  run->nstartsdone++;
  run->starts[At(start->index)] = *record;
  if (!run->options->records)
    return;
  run->trials[At(start->index)] = std::move(start->records.trials);
  if (run->best.start == start->index) {
    run->levels = TakeLevels(&start->records);
    run->bisections = TakeBisections(&start->records);
  }
}

// Takes the partition from another call, if the caller has it; then record has its time, and whether it was completed.
static bool Recall(Start *start, kapris_start *record, int *part)
{
  const Run *run = start->run;
  const kapris_options *options = run->options;

  if (options->recall == nullptr)
    return false;
  {
    const std::lock_guard<std::mutex> callbacks(*run->callbacks);
    record->completed = 1;
    if (options->recall(record, part, options->user) == 0) {
      record->completed = 0;
      return false;
    }
  }
  CheckGiven(run->given, part, "recalled part");
  // Where all starts are recalled, nobody else looks whether the call is to end.
  Proceed(start);
  return true;
}

static void TellCompleted(const Run *run, const kapris_start *record, const int *part)
{
  const kapris_options *options = run->options;
  const std::lock_guard<std::mutex> callbacks(*run->callbacks);

  options->completed(record, part, options->user);
}

static void RunStart(Run *run, int index)
{
  const auto began = std::chrono::steady_clock::now();
  kapris_start record = NewRecord(run, index);
  int *part = imalloc__(run->problem->ncells, "api: part");
  Start start = {run, index, imalloc__(run->problem->ncells, "api: incumbent"), false, {0}, {0}, {0.0},
                 {},  {}};

  Enter(&start, PHASE_OTHER, 0);
  try {
    const bool recalled = Recall(&start, &record, part);
    if (!recalled)
      RunEngine(&start, record.seed, part);
    const bool completed = recalled ? record.completed != 0 : BringWithinLimits(&start, part);
    const Candidate candidate = MakeCandidate(run, part, index);
    RecordStart(&record, &candidate.measures, completed);
    if (!recalled)
      record.seconds = SecondsSince(began);
    if (completed && !recalled && run->options->completed != nullptr)
      TellCompleted(run, &record, part);
    Consider(run, candidate);
    QVfree__(&start.incumbent);
  } catch (const StopRun &) {
    // What the engine had allocated goes back when the call ends.
    QVfree__(&part);
    if (start.hasincumbent) {
      FillParts(run, start.incumbent);
      const Candidate candidate = MakeCandidate(run, start.incumbent, index);
      RecordStart(&record, &candidate.measures, false);
      Consider(run, candidate);
    } else {
      QVfree__(&start.incumbent);
    }
    record.seconds = SecondsSince(began);
  }
  EndStart(&start, &record);
}

// Keeps the exception that is being handled, if it is the first, and stops the other starts.
static void SetError(Run *run)
{
  const std::lock_guard<std::mutex> guard(run->lock);

  if (!run->error)
    run->error = std::current_exception();
  run->stop = FAILED;
}

// The number of the next start, with room for its figures; -1 if there is none, or the call ends: only the first one
// begins whatever happens.
static int BeginStart(Run *run)
{
  const std::lock_guard<std::mutex> guard(run->lock);
  const int index = static_cast<int>(run->starts.size());

  if (index > 0 && (index >= run->options->starts || run->stop != GOES_ON))
    return -1;
  // Where the second one finds no memory, the first has changed nothing.
  if (run->options->records)
    run->trials.resize(At(index) + 1);
  run->starts.push_back(NewRecord(run, index));
  return index;
}

// One start after the other, on one thread: what does not begin costs nothing, however many were asked for.
static void RunLane(void *argument)
{
  Run *run = static_cast<Run *>(argument);

  try {
    for (int index = BeginStart(run); index >= 0; index = BeginStart(run))
      RunStart(run, index);
  } catch (...) {
    LeavePhase();
    SetError(run);
  }
}

// ----------------------------------------------------------------------------------------------------------
// All of them

static void ConsiderCopy(Run *run, const int *part)
{
  const int ncells = run->problem->ncells;

  Consider(run, MakeCandidate(run, icopy__(ncells, part, imalloc__(ncells, "api: part")), GIVEN_PARTITION));
}

// A given partition, which no result may fall behind. Returns what it is within the limits, from which the starts go
// on.
static int *ConsiderGiven(Run *run, const int *given)
{
  const int ncells = run->problem->ncells;
  Start start = {run, GIVEN_PARTITION, nullptr, false, {0}, {0}, {0.0}, {}, {}};

  ConsiderCopy(run, given);
  int *initial = icopy__(ncells, given, imalloc__(ncells, "api: initial"));
  BringWithinLimits(&start, initial);
  Enter(&start, PHASE_END, 0);
  run->seconds[PHASE_BALANCE] += start.seconds[PHASE_BALANCE];
  ConsiderCopy(run, initial);
  return initial;
}

// Takes over part, if there is none like it.
static void AddOther(Run *run, int *part)
{
  const auto same = [&](const int *other) { return std::equal(part, part + run->problem->ncells, other); };

  if (same(run->initial) || std::any_of(run->others, run->others + run->nothers, same))
    QVfree__(&part);
  else
    run->others[run->nothers++] = part;
}

static void MakeFirstCandidates(Run *run, const GivenParts *given)
{
  if (given->n > 0) {
    run->initial = ConsiderGiven(run, given->parts[0]);
    run->others = QVarray<int *>(given->n - 1, "api: others");
    for (int i = 1; i < given->n; i++)
      AddOther(run, ConsiderGiven(run, given->parts[i]));
    return;
  }
  int *part = imalloc__(run->problem->ncells, "api: part");
  FillPartsInOrder(run->problem, part);
  FillParts(run, part);
  Consider(run, MakeCandidate(run, part, SIMPLE_PARTITION));
}

// Whether the error is a want of memory, which costs what was still to come, not what there is.
static bool EndedForMemory(Run *run)
{
  const auto has = [](const kapris_start &start) { return start.completed != 0; };

  if (run->best.start < 0 && std::none_of(run->starts.begin(), run->starts.end(), has))
    return false;
  run->shortage = {FATAL_MEMORY, "out of memory"};
  try {
    std::rethrow_exception(run->error);
  } catch (const FatalError &error) {
    run->shortage = error;
  } catch (const std::bad_alloc &) {
  } catch (...) {
    return false;
  }
  return run->shortage.kind != FATAL_INPUT;
}

void RunStarts(Run *run, const GivenParts *given)
{
  const int nlanes = std::min(run->options->starts, run->options->threads);
  std::vector<Task *> lanes;

  MakeFirstCandidates(run, given);
  // One lane is for this thread.
  try {
    lanes.reserve(At(nlanes));
    for (int i = 1; i < nlanes; i++)
      lanes.push_back(ForkTask(run->pool, RunLane, run));
    RunLane(run);
  } catch (...) {
    SetError(run);
  }
  // Whatever has happened: the lanes use what belongs to the caller.
  for (Task *lane : lanes)
    JoinTask(run->pool, lane);
  if (!run->error)
    return;
  run->outofmemory = EndedForMemory(run);
  if (!run->outofmemory)
    std::rethrow_exception(run->error);
}

} // namespace kapris::engine::safe
