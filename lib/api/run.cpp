// lib/api/run.cpp - the starts of one call, and which of their partitions is the best.
// SPDX-License-Identifier: MIT
//
// A start is a complete partitioning with a seed of its own:
//   engine    by the scheme, with this file's context in its Control record   Partition
//   balance   if a part is above its limit                                    Consider
//   compare   under a total order, so that neither the number of threads nor their timing decides
// While it runs, the engine asks Proceed at short intervals and hands over complete partitions (TakeIncumbent); a start
// that is cut short delivers the last of these.

#include "run.h"

#include "rebalance.h"

#include "control/ctrl.h"
#include "kway/kway.h"
#include "recursive/recursive.h"

#include <tuple>

static const double PROGRESS_INTERVAL = 0.25; // seconds
static const int MAX_POLISHED_PARTS = 64;

namespace
{

struct Start {
  Run *run;
  int *incumbent; // the best complete partition of this start so far
  bool hasincumbent;
};

} // namespace

double SecondsSince__(std::chrono::steady_clock::time_point began)
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

// ----------------------------------------------------------------------------------------------------------
// What the engine calls

static void ReportProgress(Run *run, double seconds)
{
  // Not worth waiting for: another thread is reporting, or logging.
  const std::unique_lock<std::mutex> callbacks(*run->callbacks, std::try_to_lock);
  if (!callbacks.owns_lock() || seconds - run->lastprogress < PROGRESS_INTERVAL)
    return;

  run->lastprogress = seconds;
  kapris_progress progress = {0, run->options->starts, -1, seconds};
  {
    const std::lock_guard<std::mutex> guard(run->lock);
    const Measures *best = &run->best.measures;
    progress.starts_done = run->nstartsdone;
    if (run->best.start != NO_CANDIDATE)
      progress.best = run->options->objective == KAPRIS_CUT ? best->cut : best->soed;
  }
  run->options->progress(&progress, run->options->user);
}

static bool Proceed(void *owner)
{
  Run *run = static_cast<Start *>(owner)->run;
  const kapris_options *options = run->options;

  if (options->cancel != nullptr && __atomic_load_n(options->cancel, __ATOMIC_RELAXED) != 0) {
    int none = GOES_ON;
    run->stop.compare_exchange_strong(none, CANCELLED);
  }
  if (options->time_limit > 0.0 || options->progress != nullptr) {
    const double seconds = SecondsSince__(run->began);
    if (options->time_limit > 0.0 && seconds >= options->time_limit) {
      int none = GOES_ON;
      run->stop.compare_exchange_strong(none, TIME_IS_UP);
    }
    if (options->progress != nullptr)
      ReportProgress(run, seconds);
  }
  return run->stop == GOES_ON;
}

static void TakeIncumbent(void *owner, const int *part)
{
  Start *start = static_cast<Start *>(owner);

  icopy__(start->run->problem->ncells, part, start->incumbent);
  start->hasincumbent = true;
}

static void *Fork(void *owner, void (*work)(void *argument), void *argument)
{
  return ForkTask__(static_cast<Start *>(owner)->run->pool, work, argument);
}

static void Join(void *owner, void *task)
{
  JoinTask__(static_cast<Start *>(owner)->run->pool, static_cast<Task *>(task));
}

// ----------------------------------------------------------------------------------------------------------
// One start

// The first start has the seed of the call; the others follow from it and their number (splitmix64).
static std::int64_t SeedOf(const Run *run, int index)
{
  if (index == 0)
    return run->seed;
  std::uint64_t z =
      static_cast<std::uint64_t>(run->seed) + static_cast<std::uint64_t>(index) * 0x9e3779b97f4a7c15u;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return static_cast<std::int64_t>((z ^ (z >> 31)) & INT_MAX);
}

static Control ControlOf(const Run *run, const RunContext *context, std::int64_t seed)
{
  static const int ctypes[] = {1, 2, 3, 4, 5}; // of kapris_coarsening
  const kapris_options *options = run->options;
  const CleanProblem *problem = run->problem;
  const bool kway = options->scheme == KAPRIS_KWAY;
  const int byobjective = options->objective == KAPRIS_SOED ? 2 : 1;
  Control ctrl = {};

  ctrl.context = context;
  ctrl.nparts = problem->nparts;
  ctrl.nruns = options->runs;
  ctrl.ctype = ctypes[options->coarsening];
  ctrl.rtype = kway ? byobjective : options->refinement + 1;
  ctrl.polishtype = byobjective;
  ctrl.vcycle = options->vcycle;
  ctrl.reconst = options->reconst;
  ctrl.fixed = problem->fixed != nullptr;
  ctrl.seed = seed;
  ctrl.dbglvl = options->log != nullptr ? options->log_level & ~DBG_TIME : 0;
  ctrl.maxnetsize = 50;
  ctrl.ubfactor = static_cast<float>(1.0 + options->imbalance);
  ctrl.kwayrefine = !kway && problem->nparts <= MAX_POLISHED_PARTS;
  ctrl.coarsento = 100;
  if (kway)
    ctrl.coarsento = static_cast<int>(
        std::min<std::int64_t>(problem->ncells - std::int64_t{1}, std::int64_t{200} * problem->nparts));
  return ctrl;
}

static void Partition(Start *start, std::int64_t seed, int *part)
{
  Run *run = start->run;
  const CleanProblem *problem = run->problem;
  const RunContext context = {
      start, Proceed,         TakeIncumbent,      run->options->threads > 1 ? Fork : nullptr,
      Join,  problem->shares, problem->intlimits, static_cast<int>(problem->total)};
  Control ctrl = ControlOf(run, &context, seed);

  Checkpoint__(&ctrl);
  if (problem->fixed != nullptr)
    icopy__(problem->ncells, problem->fixed, part);
  HGraph *graph = CopyHGraph__(problem->ncells, problem->nnets, problem->cellwgt, problem->netptr,
                               problem->netind, problem->netwgt);
  if (run->options->scheme == KAPRIS_KWAY)
    MultilevelKwayPartition__(&ctrl, graph, part);
  else
    MultilevelPartition__(&ctrl, graph, part);
  FreeHGraph__(graph);
}

// ----------------------------------------------------------------------------------------------------------
// Candidates

static bool IsBetter(const Run *run, const Candidate *a, const Candidate *b)
{
  const bool bycut = run->options->objective == KAPRIS_CUT;
  const auto key = [bycut](const Candidate *c) {
    const Measures *m = &c->measures;
    return std::make_tuple(!m->balanced, bycut ? m->cut : m->soed, bycut ? m->soed : m->cut, m->imbalance,
                           c->start);
  };

  // What was made before the first start counts only while no start has a partition.
  if (b->start < 0)
    return a->start > b->start;
  return key(a) < key(b);
}

// Makes the partition, balanced if need be, the best of the call if it is. Takes over part.
static Measures Consider(Run *run, int index, int *part)
{
  const CleanProblem *problem = run->problem;
  Candidate candidate = {part, Measure__(problem, part, nullptr), index};

  // Balancing cannot be interrupted: not for what is only a fallback, nor after the end of the time.
  if (!candidate.measures.balanced && index != BEFORE_STARTS && run->stop == GOES_ON) {
    const BalanceProblem balance = {problem->ncells,  problem->nnets,
                                    problem->cellwgt, problem->netwgt,
                                    problem->netptr,  problem->netind,
                                    problem->nparts,  problem->limits,
                                    problem->fixed,   run->options->objective == KAPRIS_SOED};
    Rebalance__(&balance, part);
    candidate.measures = Measure__(problem, part, nullptr);
  }

  const Measures measures = candidate.measures;
  const std::lock_guard<std::mutex> guard(run->lock);
  if (IsBetter(run, &candidate, &run->best))
    std::swap(candidate, run->best);
  QVfree__(&candidate.part);
  return measures;
}

static void RecordStart(kapris_start *record, const Measures *measures, bool completed)
{
  record->cut = measures->cut;
  record->soed = measures->soed;
  record->imbalance = measures->imbalance;
  record->balanced = measures->balanced;
  record->completed = completed;
}

static void RunStart(Run *run, int index)
{
  const auto began = std::chrono::steady_clock::now();
  kapris_start *record = &run->starts[index];
  int *part = imalloc__(run->problem->ncells, "api: part");
  Start start = {run, imalloc__(run->problem->ncells, "api: incumbent"), false};

  record->seed = SeedOf(run, index);
  try {
    Partition(&start, record->seed, part);
    const Measures measures = Consider(run, index, part);
    RecordStart(record, &measures, true);
    QVfree__(&start.incumbent);
  } catch (const StopRun &) {
    // What the engine had allocated goes back when the call ends.
    QVfree__(&part);
    if (start.hasincumbent) {
      const Measures measures = Consider(run, index, start.incumbent);
      RecordStart(record, &measures, false);
    } else {
      QVfree__(&start.incumbent);
    }
  }
  record->seconds = SecondsSince__(began);
  const std::lock_guard<std::mutex> guard(run->lock);
  run->nstartsdone++;
}

namespace
{

struct StartTask {
  Run *run;
  int index;
  Task *task;
};

} // namespace

// Keeps the exception that is being handled, if it is the first, and stops the other starts.
static void SetError(Run *run)
{
  const std::lock_guard<std::mutex> guard(run->lock);

  if (!run->error)
    run->error = std::current_exception();
  run->stop = FAILED;
}

static void RunStartTask(void *argument)
{
  const StartTask *start = static_cast<StartTask *>(argument);

  try {
    RunStart(start->run, start->index);
  } catch (...) {
    SetError(start->run);
  }
}

void RunStarts__(Run *run)
{
  const int nstarts = run->options->starts;
  int *part = imalloc__(run->problem->ncells, "api: part");

  FillPartsInOrder__(run->problem, part);
  Consider(run, BEFORE_STARTS, part);

  StartTask *tasks = QVarray__<StartTask>(nstarts, "api: tasks");
  int nforked = 1;
  for (int i = 0; i < nstarts; i++)
    tasks[i] = {run, i, nullptr};
  // The first one is for this thread.
  try {
    for (; nforked < nstarts; nforked++)
      tasks[nforked].task = ForkTask__(run->pool, RunStartTask, &tasks[nforked]);
    RunStartTask(&tasks[0]);
  } catch (...) {
    SetError(run);
  }
  // Whatever has happened: the tasks use what is on this stack.
  for (int i = 1; i < nforked; i++)
    JoinTask__(run->pool, tasks[i].task);
  QVfree__(&tasks);
  if (run->error)
    std::rethrow_exception(run->error);
}
