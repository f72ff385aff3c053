// lib/starts/start.cpp - one start: the engine with the context of the call.
// SPDX-License-Identifier: MIT
//
// While it runs, the engine asks Proceed at short intervals, tells what it does (Enter, Worked) and hands over
// complete partitions (TakeIncumbent); a start that is cut short delivers the last of these.

#include "start.h"

#include "search/engine.h"

#include <algorithm>
#include <cmath>

namespace kapris::engine::safe
{

static constexpr double PROGRESS_INTERVAL = 0.1; // seconds

double SecondsSince(std::chrono::steady_clock::time_point began)
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

bool IsEndless(const Run *run)
{
  return run->options->members > 0 && run->options->time_limit > 0.0 && run->problem->nparts > 1;
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
  progress.done =
      std::min(1.0, IsEndless(run) ? seconds / run->options->time_limit : run->done / run->options->starts);
  progress.phase = static_cast<kapris_phase>(start->phase.load());
  progress.level_cells = start->cells;
  {
    const std::lock_guard<std::mutex> guard(run->lock);
    const Measures *best = &run->shown.measures;
    progress.starts_done = run->nstartsdone;
    if (run->shown.start != NO_CANDIDATE)
      progress.best = ScoreOf(GoalOf(run->options), best->cut, best->soed).first;
  }
  run->options->progress(&progress, run->options->user);
}

bool Proceed(void *owner)
{
  Start *start = static_cast<Start *>(owner);
  Run *run = start->run;
  const kapris_options *options = run->options;

  if (options->cancel != nullptr && __atomic_load_n(options->cancel, __ATOMIC_RELAXED) != 0) {
    int none = GOES_ON;
    run->stop.compare_exchange_strong(none, CANCELLED);
  }
  if (options->time_limit > 0.0 || options->progress != nullptr) {
    const double seconds = SecondsSince(run->began);
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

void LeavePhase()
{
  mark.start = nullptr;
}

void Enter(void *owner, Phase phase, int ncells)
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
  const kapris_options *options = start->run->options;
  const bool once = options->members > 0 || options->scheme == KAPRIS_KWAY || start->run->initial != nullptr;
  const double depth = once ? 1.0 : std::max(1.0, std::ceil(std::log2(problem->nparts)));
  const double done = part * ncells / (depth * std::max(problem->ncells, 1));

  start->done += done;
  start->run->done += done;
}

// Measuring is for the reports alone: the call itself compares partitions when a start ends.
static void ShowIncumbent(const Start *start)
{
  Run *run = start->run;
  const Candidate candidate = {nullptr, Measure(run->problem, start->incumbent, nullptr), start->index};
  const std::lock_guard<std::mutex> guard(run->lock);

  if (run->shown.start == NO_CANDIDATE || IsBetter(run->options, &candidate, &run->shown))
    run->shown = candidate;
}

static void TakeIncumbent(void *taker, const int *part)
{
  Start *start = static_cast<Start *>(taker);
  const kapris_options *options = start->run->options;

  icopy__(start->run->problem->ncells, part, start->incumbent);
  start->hasincumbent = true;
  if (options->progress != nullptr)
    ShowIncumbent(start);
  if (options->improved != nullptr) {
    const std::lock_guard<std::mutex> callbacks(*start->run->callbacks);
    options->improved(part, options->user);
  }
}

static bool TakeVisitor(void *taker, int *part)
{
  const Run *run = static_cast<Start *>(taker)->run;
  {
    const std::lock_guard<std::mutex> callbacks(*run->callbacks);
    if (run->options->arrived(part, run->options->user) == 0)
      return false;
  }
  CheckGiven(run->given, part, "arrived part");
  return true;
}

static void Record(void *owner, const Step *step)
{
  Start *start = static_cast<Start *>(owner);

  NoteStep(&start->records, start->index, step);
}

static void *Fork(void *owner, void (*work)(void *argument), void *argument)
{
  return ForkTask(static_cast<Start *>(owner)->run->pool, work, argument);
}

static void Join(void *owner, void *task)
{
  JoinTask(static_cast<Start *>(owner)->run->pool, static_cast<Task *>(task));
}

// ----------------------------------------------------------------------------------------------------------
// The engine

static EngineCall EngineCallOf(const Run *run, const Hooks *hooks, std::int64_t seed)
{
  const kapris_options *options = run->options;
  const CleanProblem *problem = run->problem;
  const Goal goal = GoalOf(options);
  EngineCall call = {};

  call.ncells = problem->ncells;
  call.nnets = problem->nnets;
  call.cellwgt = problem->cellwgt;
  call.netwgt = problem->netwgt;
  call.netptr = problem->netptr;
  call.netind = problem->netind;
  call.nparts = problem->nparts;
  call.shares = problem->shares;
  call.limits = problem->aims;
  call.minimums = problem->minimums;
  call.fixed = problem->fixed;
  call.initial = run->initial;
  call.others = run->others;
  call.nothers = run->nothers;
  call.total = problem->total;
  call.direct = options->scheme == KAPRIS_KWAY;
  call.cut = goal.cut;
  call.connectivity = goal.connectivity;
  call.coarsening = options->coarsening + 1; // the option vector counts from 1
  call.refinement = options->refinement + 1;
  call.vcycle = options->vcycle;
  call.nruns = options->runs;
  call.members = options->members;
  call.combinations = options->combinations;
  call.endless = IsEndless(run);
  call.reconst = options->reconst != 0;
  call.imbalance = options->epsilon;
  call.seed = seed;
  call.dbglvl = options->log != nullptr ? options->log_level : 0;
  call.hooks = hooks;
  return call;
}

void RunEngine(Start *start, std::int64_t seed, int *part)
{
  const Run *run = start->run;
  Hooks hooks = {};

  if (run->problem->nparts == 1) { // which the engine has nothing to do for
    if (!Proceed(start))
      throw StopRun{};
    iset__(run->problem->ncells, 0, part);
    return;
  }

  hooks.owner = hooks.taker = start;
  hooks.proceed = Proceed;
  hooks.incumbent = TakeIncumbent;
  hooks.visitor = run->options->arrived != nullptr ? TakeVisitor : nullptr;
  hooks.enter = Enter;
  hooks.worked = Worked;
  hooks.record = run->options->records ? Record : nullptr;
  hooks.fork = run->options->threads > 1 ? Fork : nullptr;
  hooks.join = Join;
  const EngineCall call = EngineCallOf(run, &hooks, seed);
  if (run->problem->isnarrow)
    narrow::RunEngine(&call, part);
  else
    wide::RunEngine(&call, part);
}

} // namespace kapris::engine::safe
