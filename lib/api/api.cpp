// lib/api/api.cpp - the safe interface: one frame around everything that can fail.
// SPDX-License-Identifier: MIT
//
//   check    options and problem                              CheckOptions, CheckProblem
//   clean    nets that change no objective                    MakeCleanProblem
//   run      the starts, on the threads of the call           RunStarts
//   deliver  the best partition into memory of the caller     Deliver
// Everything between the first and the last step lives in a ledger of this call: it bounds the memory, knows the peak,
// and gives all blocks back at the end, whichever way the call ended. What outlives the call, the result, is allocated
// apart from it.

#include "kapris.h"
#include "kapris_api.h"

#include "base/random.h"
#include "starts/limits.h"
#include "starts/run.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <new>
#include <string>

using namespace kapris::engine::safe;

void kapris_init_problem(kapris_problem *problem)
{
  *problem = kapris_problem{};
  problem->size = sizeof *problem;
  problem->nparts = 2;
}

void kapris_init_options(kapris_options *options)
{
  *options = kapris_options{};
  options->size = sizeof *options;
  options->scheme = KAPRIS_RECURSIVE;
  options->objective = KAPRIS_CUT;
  options->coarsening = KAPRIS_ALTERNATE;
  options->refinement = KAPRIS_EARLY_EXIT_FM;
  options->vcycle = KAPRIS_VCYCLE_BEST;
  options->runs = 4;
  options->members = 2;
  options->combinations = 8;
  options->epsilon = 0.03;
  options->min_epsilon = 1.0;
  options->starts = 1;
  options->threads = 1;
}

#define TEXT_OF(x)   #x
#define NUMBER_OF(x) TEXT_OF(x)

const char *kapris_version(void)
{
  return NUMBER_OF(KAPRIS_VERSION_MAJOR) "." NUMBER_OF(KAPRIS_VERSION_MINOR) "." NUMBER_OF(
      KAPRIS_VERSION_PATCH);
}

const char *kapris_phase_name(kapris_phase phase)
{
  switch (phase) {
  case KAPRIS_PREPARING:
    return "preparing";
  case KAPRIS_COARSENING:
    return "coarsening";
  case KAPRIS_INITIAL:
    return "initial partition";
  case KAPRIS_REFINING:
    return "refining";
  case KAPRIS_BALANCING:
    return "balancing";
  }
  return "unknown phase";
}

const char *kapris_status_name(kapris_status status)
{
  switch (status) {
  case KAPRIS_OK:
    return "ok";
  case KAPRIS_INVALID_ARGUMENT:
    return "invalid argument";
  case KAPRIS_INFEASIBLE:
    return "infeasible balance";
  case KAPRIS_OUT_OF_MEMORY:
    return "out of memory";
  case KAPRIS_MEMORY_LIMIT:
    return "memory limit";
  case KAPRIS_TIME_LIMIT:
    return "time limit";
  case KAPRIS_CANCELLED:
    return "cancelled";
  case KAPRIS_INTERNAL:
    return "internal";
  }
  return "unknown status";
}

// The share of a part, or with nparts 0 that an argument is out of range.
static Share ShareOf(std::int64_t total, int nparts, const double *targets, int part)
{
  double sum = 0.0;

  if (total < 0 || total > MAX_TOTAL || part < 0 || part >= nparts)
    return {0, 0.0};
  for (int p = 0; targets != nullptr && p < nparts; p++) {
    if (!(targets[p] > 0.0 && std::isfinite(targets[p])))
      return {0, 0.0};
    sum += targets[p];
  }
  return {nparts, targets != nullptr ? targets[part] / sum : 0.0};
}

int64_t kapris_part_limit(int64_t total, int nparts, const double *target_weights, int part, double epsilon)
{
  const Share share = ShareOf(total, nparts, target_weights, part);

  return share.nparts > 0 && epsilon >= 0.0 && std::isfinite(epsilon) ? PartLimit(total, share, epsilon) : -1;
}

int64_t kapris_part_minimum(int64_t total, int nparts, const double *target_weights, int part,
                            double min_epsilon)
{
  const Share share = ShareOf(total, nparts, target_weights, part);

  return share.nparts > 0 && min_epsilon >= 0.0 && min_epsilon <= 1.0 ? PartMinimum(total, share, min_epsilon)
                                                                      : -1;
}

void kapris_free_result(kapris_result *result)
{
  if (result == nullptr)
    return;
  std::free(result->part);
  std::free(result->part_weights);
  std::free(result->part_limits);
  std::free(result->part_minimums);
  std::free(result->starts);
  std::free(result->trials);
  std::free(result->levels);
  std::free(result->bisections);
  std::free(result);
}

// ----------------------------------------------------------------------------------------------------------
// The state of the calling thread during a call

namespace
{

enum class Work { PARTITION, REFINE, EVALUATE };

struct LogOwner {
  const kapris_options *options;
  std::mutex lock;
};

// What a call changes of the calling thread, put back when it ends.
struct ThreadGuard {
  Ledger *ledger;
  TraceSink sink;
  RandomState random;

  ThreadGuard(Ledger *used, TraceSink traces)
      : ledger(UseLedger(used)), sink(UseTraceSink(traces)), random(SaveRandom())
  {
    PushErrorHandler();
  }

  ~ThreadGuard()
  {
    PopErrorHandler();
    ReleaseLedger(0);
    RestoreRandom(&random);
    UseTraceSink(sink);
    UseLedger(ledger);
  }

  ThreadGuard(const ThreadGuard &) = delete;
  ThreadGuard &operator=(const ThreadGuard &) = delete;
};

struct PoolCloser {
  void operator()(TaskPool *pool) const
  {
    StopPool(pool);
  }
};

} // namespace

static void WriteLog(void *owner, const char *text)
{
  LogOwner *log = static_cast<LogOwner *>(owner);
  const std::lock_guard<std::mutex> guard(log->lock);

  if (log->options->log != nullptr)
    log->options->log(text, log->options->user);
}

// ----------------------------------------------------------------------------------------------------------
// The result

// An array of the result; one element at least, so that NULL means failure.
template <class T>
static T *NewArray(int n)
{
  T *array = static_cast<T *>(std::calloc(static_cast<std::size_t>(std::max(n, 1)), sizeof(T)));

  if (array == nullptr)
    throw std::bad_alloc();
  return array;
}

template <class T>
static T *CopyArray(const std::vector<T> &values)
{
  T *array = NewArray<T>(static_cast<int>(values.size()));

  std::copy(values.begin(), values.end(), array);
  return array;
}

static void SetStatus(kapris_result *result, kapris_status status, const char *message)
{
  result->status = status;
  std::snprintf(result->message, sizeof result->message, "%s", message);
  // Those of the plain interface end their sentence and their line.
  std::size_t length = std::strlen(result->message);
  while (length > 0 && (result->message[length - 1] == '\n' || result->message[length - 1] == '.'))
    result->message[--length] = '\0';
}

static bool OverLimit(const kapris_result *result)
{
  for (int p = 0; p < result->nparts; p++)
    if (result->part_weights[p] > result->part_limits[p])
      return true;
  return false;
}

// How far a call came that has run out of memory.
static void SetShortage(kapris_result *result, const Run *run)
{
  const bool limited = run->shortage.kind == FATAL_MEMORY_LIMIT;
  // What follows it has room, too.
  const std::string reason = std::string(run->shortage.message).substr(0, 140);
  int ncompleted = 0;

  for (const kapris_start &start : run->starts)
    ncompleted += start.completed;
  const std::string text = std::string(limited ? "memory limit" : "out of memory") + " after " +
                           std::to_string(ncompleted) + " of " + std::to_string(run->options->starts) +
                           " starts (" + reason.substr(0, reason.find('\n')) +
                           "); this is the best partition so far";
  SetStatus(result, limited ? KAPRIS_MEMORY_LIMIT : KAPRIS_OUT_OF_MEMORY, text.c_str());
}

static void SetFinalStatus(kapris_result *result, const Run *run)
{
  if (run->outofmemory)
    SetShortage(result, run);
  else if (run->stop == TIME_IS_UP)
    SetStatus(result, KAPRIS_TIME_LIMIT, "the time limit was reached; this is the best partition so far");
  else if (run->stop == CANCELLED)
    SetStatus(result, KAPRIS_CANCELLED, "cancelled; this is the best partition so far");
  else if (!result->balanced)
    SetStatus(result, KAPRIS_INFEASIBLE,
              run->impossible     ? "no partition keeps all limits; this is the best one found"
              : OverLimit(result) ? "some part is above its limit; this is the best partition found"
                                  : "some part is below its minimum; this is the best partition found");
}

static void DeliverRecords(const Run *run, kapris_result *result)
{
  std::vector<kapris_trial> trials;

  for (const std::vector<kapris_trial> &start : run->trials)
    trials.insert(trials.end(), start.begin(), start.end());
  trials.resize(std::min<std::size_t>(trials.size(), INT_MAX));
  result->trials = CopyArray(trials);
  result->ntrials = static_cast<int>(trials.size());
  if (run->best.start < 0)
    return;
  result->levels = CopyArray(run->levels);
  result->nlevels = static_cast<int>(run->levels.size());
  result->bisections = CopyArray(run->bisections);
  result->nbisections = static_cast<int>(run->bisections.size());
}

// Before the run, so that there is room for what it has found if memory runs out.
static void MakeRoom(const CleanProblem *problem, kapris_result *result)
{
  result->ncells = problem->ncells;
  result->nparts = problem->nparts;
  result->part = NewArray<int>(problem->ncells);
  result->part_weights = NewArray<std::int64_t>(problem->nparts);
  result->part_limits = NewArray<std::int64_t>(problem->nparts);
  result->part_minimums = NewArray<std::int64_t>(problem->nparts);
}

// serial = the newest block that is needed for the figures.
static void Deliver(const Run *run, std::uint64_t serial, kapris_result *result)
{
  const CleanProblem *problem = run->problem;

  icopy__(problem->ncells, run->best.part, result->part);
  // Starts that were cut short have left all that they held, perhaps up to the memory limit.
  ReleaseLedger(serial);
  std::copy_n(problem->limits, problem->nparts, result->part_limits);
  std::copy_n(problem->minimums, problem->nparts, result->part_minimums);

  const Measures measures = Measure(problem, result->part, result->part_weights);
  result->cut = measures.cut;
  result->soed = measures.soed;
  result->connectivity = measures.soed - measures.cut; // a net counts 0 while it is whole
  result->imbalance = measures.imbalance;
  result->excess = measures.excess;
  result->balanced = measures.excess == 0;
  result->starts = CopyArray(run->starts);
  result->nstarts = static_cast<int>(run->starts.size());
  result->best_start = std::max(run->best.start, -1);
  SetFinalStatus(result, run);
}

// There is never more to do at once than one bisection per part of every start, or of every partition that it makes
// side by side.
static int MostThreads(const CleanProblem &problem, const kapris_options *options)
{
  constexpr int SIDE_BY_SIDE = 4;
  const double most = static_cast<double>(options->starts) * problem.nparts *
                      (options->members > 0 ? std::max(options->members, SIDE_BY_SIDE) : 1);

  return static_cast<int>(std::min<double>(options->threads, most));
}

static void CheckGivenParts(const kapris_problem *problem, const GivenParts *given)
{
  char name[32] = "part";

  if (given->combined && given->n < 1)
    errexit__("ngiven is %d, but it should be at least 1", given->n);
  if (given->combined && given->parts == nullptr)
    errexit__("parts is null");
  for (int i = 0; i < given->n; i++) {
    if (given->combined)
      std::snprintf(name, sizeof name, "parts[%d]", i);
    CheckGiven(problem, given->parts[i], name);
  }
}

static void DoWork(Work work, const kapris_problem *problem, const kapris_options *asked,
                   const GivenParts *given, Ledger *ledger, LogOwner *log,
                   std::chrono::steady_clock::time_point began, kapris_result *result)
{
  if (problem == nullptr || asked == nullptr)
    errexit__("%s is null", problem == nullptr ? "problem" : "options");
  CheckOptions(asked);
  LimitLedger(asked->memory_limit, -1);
  CheckProblem(problem);
  CheckGivenParts(problem, given);
  kapris_options own = *asked;
  const kapris_options *options = &own;
  // Only a population combines.
  if (given->combined)
    own.members = std::max(own.members, 1);
  const CleanProblem clean = MakeCleanProblem(problem, options);
  MakeRoom(&clean, result);
  result->seconds_prepare = SecondsSince(began);

  Run run = {};
  run.given = problem;
  run.problem = &clean;
  run.options = options;
  run.seed = options->seed;
  if (work == Work::EVALUATE) {
    run.best = {const_cast<int *>(given->parts[0]), {}, GIVEN_PARTITION}; // only read
    Deliver(&run, ledger->serial, result);
    return;
  }
  const std::unique_ptr<TaskPool, PoolCloser> pool(
      StartPool(MostThreads(clean, options), ledger, TraceSink{WriteLog, log}));
  run.began = began;
  run.pool = pool.get();
  run.callbacks = &log->lock;
  run.seconds = result->seconds_phase;
  if (run.seed < 0)
    run.seed = std::time(nullptr) & INT_MAX;
  run.best.start = run.shown.start = NO_CANDIDATE;
  result->seed = run.seed;
  const std::uint64_t serial = ledger->serial;
  RunStarts(&run, given);
  result->seconds_starts = SecondsSince(began) - result->seconds_prepare;

  Deliver(&run, serial, result);
  if (options->records)
    DeliverRecords(&run, result);
}

static kapris_status StatusOf(FatalKind kind)
{
  switch (kind) {
  case FATAL_MEMORY:
    return KAPRIS_OUT_OF_MEMORY;
  case FATAL_MEMORY_LIMIT:
    return KAPRIS_MEMORY_LIMIT;
  default:
    return KAPRIS_INVALID_ARGUMENT;
  }
}

static kapris_status Call(Work work, const kapris_problem *problem, const kapris_options *options,
                          const GivenParts &given, kapris_result **result)
{
  const auto began = std::chrono::steady_clock::now();
  kapris_result *made = static_cast<kapris_result *>(std::calloc(1, sizeof(kapris_result)));
  LogOwner log = {options, {}};
  Ledger ledger;
  bool delivered = false;

  if (result != nullptr)
    *result = made;
  if (result == nullptr || made == nullptr) {
    std::free(made);
    return result == nullptr ? KAPRIS_INVALID_ARGUMENT : KAPRIS_OUT_OF_MEMORY;
  }

  made->size = sizeof *made;
  made->best_start = -1;
  try {
    const ThreadGuard guard(&ledger, TraceSink{WriteLog, &log});
    DoWork(work, problem, options, &given, &ledger, &log, began, made);
    delivered = true;
  } catch (const FatalError &error) {
    SetStatus(made, StatusOf(error.kind), error.message);
  } catch (const std::bad_alloc &) {
    SetStatus(made, KAPRIS_OUT_OF_MEMORY, "out of memory");
  } catch (const std::exception &error) {
    SetStatus(made, KAPRIS_INTERNAL, error.what());
  } catch (...) {
    SetStatus(made, KAPRIS_INTERNAL, "an unknown fault");
  }
  if (!delivered) {
    std::free(made->part);
    made->part = nullptr;
    made->ntrials = made->nlevels = made->nbisections = 0;
  }
  made->peak_bytes = ledger.peak;
  made->seconds = SecondsSince(began);
  return made->status;
}

kapris_status kapris_partition(const kapris_problem *problem, const kapris_options *options,
                               kapris_result **result)
{
  return Call(Work::PARTITION, problem, options, {0, nullptr, false}, result);
}

kapris_status kapris_refine(const kapris_problem *problem, const kapris_options *options, const int *part,
                            kapris_result **result)
{
  return Call(Work::REFINE, problem, options, {1, &part, false}, result);
}

kapris_status kapris_combine(const kapris_problem *problem, const kapris_options *options, int ngiven,
                             const int *const *parts, kapris_result **result)
{
  return Call(Work::REFINE, problem, options, {ngiven, parts, true}, result);
}

kapris_status kapris_evaluate(const kapris_problem *problem, const kapris_options *options, const int *part,
                              kapris_result **result)
{
  return Call(Work::EVALUATE, problem, options, {1, &part, false}, result);
}
