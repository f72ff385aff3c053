// lib/api/start.cpp - one start: the engine with the context of the call.
// SPDX-License-Identifier: MIT
//
// While it runs, the engine asks Proceed__ at short intervals, tells what it does (Enter__, Worked) and hands over
// complete partitions (TakeIncumbent); a start that is cut short delivers the last of these.

#include "start.h"

#include "kway/kway.h"
#include "recursive/recursive.h"

#include <algorithm>
#include <cmath>

static const double PROGRESS_INTERVAL = 0.1; // seconds
static const int MAX_POLISHED_PARTS = 64;

double SecondsSince__(std::chrono::steady_clock::time_point began)
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

// ----------------------------------------------------------------------------------------------------------
// What the engine calls

static void ReportProgress(Start *start, double seconds)
{
  Run *run = start->run;
  // Not worth waiting for: another thread is reporting, or logging.
  const std::unique_lock<std::mutex> callbacks(*run->callbacks, std::try_to_lock);
  if (!callbacks.owns_lock() || seconds - run->lastprogress < PROGRESS_INTERVAL)
    return;

  run->lastprogress = seconds;
  kapris_progress progress = {0, run->options->starts, -1, seconds, 0.0, KAPRIS_PREPARING, 0};
  progress.done = std::min(1.0, run->done / run->options->starts);
  progress.phase = static_cast<kapris_phase>(start->phase.load());
  progress.level_cells = start->cells;
  {
    const std::lock_guard<std::mutex> guard(run->lock);
    const Measures *best = &run->shown.measures;
    progress.starts_done = run->nstartsdone;
    if (run->shown.start != NO_CANDIDATE)
      progress.best = run->options->objective == KAPRIS_CUT ? best->cut : best->soed;
  }
  run->options->progress(&progress, run->options->user);
}

bool Proceed__(void *owner)
{
  Start *start = static_cast<Start *>(owner);
  Run *run = start->run;
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
      ReportProgress(start, seconds);
  }
  return run->stop == GOES_ON;
}

namespace
{

// Since when this thread has been in a phase of a start.
struct PhaseMark {
  const Start *start; // only compared: after an exception the start can be gone
  Phase phase;
  std::chrono::steady_clock::time_point since;
};

} // namespace

static thread_local PhaseMark mark = {nullptr, PHASE_OTHER, {}};

void LeavePhase__()
{
  mark.start = nullptr;
}

void Enter__(void *owner, Phase phase, int ncells)
{
  Start *start = static_cast<Start *>(owner);
  const auto now = std::chrono::steady_clock::now();

  if (mark.start == start)
    start->seconds[mark.phase] += std::chrono::duration<double>(now - mark.since).count();
  mark = {phase == PHASE_END ? nullptr : start, phase, now};
  if (phase == PHASE_END)
    return;
  start->phase = phase;
  start->cells = ncells;
}

// A start has about as much work as its bisections have cells.
static void Worked(void *owner, double part, int ncells)
{
  Start *start = static_cast<Start *>(owner);
  const CleanProblem *problem = start->run->problem;
  const bool once = start->run->options->scheme == KAPRIS_KWAY || start->run->initial != nullptr;
  const double depth = once ? 1.0 : std::ceil(std::log2(problem->nparts));
  const double done = part * ncells / (depth * std::max(problem->ncells, 1));

  start->done += done;
  start->run->done += done;
}

// Measuring is for the reports alone: the call itself compares partitions when a start ends.
static void ShowIncumbent(const Start *start)
{
  Run *run = start->run;
  const Candidate candidate = {nullptr, Measure__(run->problem, start->incumbent, nullptr), start->index};
  const std::lock_guard<std::mutex> guard(run->lock);

  if (run->shown.start == NO_CANDIDATE || IsBetter__(run->options, &candidate, &run->shown))
    run->shown = candidate;
}

static void TakeIncumbent(void *taker, const int *part)
{
  Start *start = static_cast<Start *>(taker);

  icopy__(start->run->problem->ncells, part, start->incumbent);
  start->hasincumbent = true;
  if (start->run->options->progress != nullptr)
    ShowIncumbent(start);
}

static void Record(void *owner, const Step *step)
{
  Start *start = static_cast<Start *>(owner);

  NoteStep__(&start->records, start->index, step);
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
// The engine

static Control ControlOf(const Run *run, const RunContext *context, std::int64_t seed)
{
  static const int ctypes[] = {1, 2, 3, 4, 5}; // of kapris_coarsening
  const kapris_options *options = run->options;
  const CleanProblem *problem = run->problem;
  const bool kway = options->scheme == KAPRIS_KWAY || (run->initial != nullptr && problem->nparts > 2);
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

static void RunDriver(const Run *run, Control *ctrl, HGraph *graph, int *part)
{
  const bool kway = run->options->scheme == KAPRIS_KWAY;

  if (run->initial == nullptr)
    kway ? MultilevelKwayPartition__(ctrl, graph, part) : MultilevelPartition__(ctrl, graph, part);
  else
    kway || ctrl->nparts > 2 ? ImproveKwayPartition__(ctrl, graph, part)
                             : ImproveTwoParts__(ctrl, graph, part);
}

void RunEngine__(Start *start, std::int64_t seed, int *part)
{
  const Run *run = start->run;
  const CleanProblem *problem = run->problem;
  RunContext context = {};

  context.owner = context.taker = start;
  context.proceed = Proceed__;
  context.incumbent = TakeIncumbent;
  context.enter = Enter__;
  context.worked = Worked;
  context.record = run->options->records ? Record : nullptr;
  context.fork = run->options->threads > 1 ? Fork : nullptr;
  context.join = Join;
  context.shares = problem->shares;
  context.limits = problem->intlimits;
  context.initial = run->initial;
  context.total = static_cast<int>(problem->total);
  Control ctrl = ControlOf(run, &context, seed);

  Checkpoint__(&ctrl);
  if (problem->fixed != nullptr)
    icopy__(problem->ncells, problem->fixed, part);
  else if (run->initial != nullptr)
    icopy__(problem->ncells, run->initial, part);
  HGraph *graph = CopyHGraph__(problem->ncells, problem->nnets, problem->cellwgt, problem->netptr,
                               problem->netind, problem->netwgt);
  RunDriver(run, &ctrl, graph, part);
  FreeHGraph__(graph);
}
