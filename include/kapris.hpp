// kapris.hpp - multilevel hypergraph partitioning: the C++ interface, a header over kapris_api.h.
// SPDX-License-Identifier: MIT
//
// Arrays go in as spans, the result comes out as a value, and what keeps a call from giving a partition is thrown.
//
//   const std::vector<int> net_starts = {0, 2, 4}, pins = {0, 1, 1, 2};
//   const kapris::Hypergraph hypergraph = {.ncells = 3, .net_starts = net_starts, .pins = pins};
//   const kapris::Result result = kapris::Partition(hypergraph, {.nparts = 2});
//
// Cells, nets and parts are counted from 0. The words, the enumerations with their values, and the figures of a start
// are those of kapris_api.h. What is said there about ownership, figures, determinism and threads holds here too.
#pragma once

#include "kapris_api.h"

#if __cplusplus < 202002L
#error "kapris.hpp needs C++20; kapris_api.h does not"
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kapris
{

// KAPRIS_OK, KAPRIS_INFEASIBLE, ...
using Status = kapris_status;
// A moment of a call.
using Progress = kapris_progress;
// What a start is doing.
using Phase = kapris_phase;
// What one start gave.
using Start = kapris_start;
// What one trial of a start gave.
using Trial = kapris_trial;
// A level on the road of the best trial.
using Level = kapris_level;
// One bisection of the best start.
using Bisection = kapris_bisection;

// Why there is no result: KAPRIS_INVALID_ARGUMENT (what() names the argument, the index and the value),
// KAPRIS_OUT_OF_MEMORY or KAPRIS_MEMORY_LIMIT (before any start had made a partition), or KAPRIS_INTERNAL.
class Error : public std::runtime_error
{
public:
  Error(Status status, const std::string &message) : std::runtime_error(message), code(status)
  {
  }

  Status status() const noexcept
  {
    return code;
  }

private:
  Status code;
};

// The cells and nets. The arrays belong to the caller and are only read, during the call. Any number of calls may read
// them at once.
//
// Two totals must be at most 2^61 = 2305843009213693952: the total cell weight, and the sum over the nets of
// weight x min(pins, nparts). Beyond that, Error is thrown; up to there every figure is exact.
//
// Weights are read in place, as std::int64_t; an array of int does not compile. Of a std::vector<int> weights, make
// std::vector<std::int64_t>(weights.begin(), weights.end()).
struct Hypergraph {
  // >= 0.
  int ncells = 0;
  // [number of nets + 1] offsets into pins, the first is 0, none is below the one before; or empty: no nets.
  std::span<const int> net_starts = {};
  // [net_starts.back()] cell numbers 0 .. ncells-1, those of net 0 first.
  std::span<const int> pins = {};
  // [ncells] >= 0, or empty: all 1.
  std::span<const std::int64_t> cell_weights = {};
  // [number of nets] >= 0, or empty: all 1.
  std::span<const std::int64_t> net_weights = {};
};

// What the parts should be. The arrays belong to the caller, as above.
struct Targets {
  // >= 1. It can be more than ncells.
  int nparts = 2;
  // [nparts] what the parts should weigh, in proportion to each other, > 0; or empty: all the same.
  std::span<const double> target_weights = {};
  // [ncells] the part that a cell must go to, or -1 for a free cell; or empty: all free.
  std::span<const int> fixed = {};
  // The former name of target_weights, which counts where that is empty.
  std::span<const double> part_shares = {};
};

// How to partition. The callbacks are called by any thread of the call, but never by two at once; they must not call
// kapris. Calls that share an Options may call its callbacks at the same time.
struct Options {
  kapris_scheme scheme = KAPRIS_RECURSIVE;
  kapris_objective objective = KAPRIS_CUT;
  kapris_coarsening coarsening = KAPRIS_ALTERNATE;
  // Of bisections.
  kapris_refinement refinement = KAPRIS_EARLY_EXIT_FM;
  kapris_vcycle vcycle = KAPRIS_VCYCLE_BEST;
  // Multilevel runs of each bisection or k-way partitioning, >= 1.
  int runs = 4;
  // true: the pieces of cut nets stay in the recursion.
  bool reconst = false;
  // >= 0; nothing or negative: from the clock, and the result tells which.
  std::optional<int> seed = 0;
  // A part may weigh (1 + epsilon) x its share of the total cell weight, the share rounded up to a whole weight, then
  // the product down; >= 0.
  double epsilon = 0.03;

  // Independent starts, of which the best counts, >= 1.
  int starts = 1;
  // Number of the first of them, >= 0, to spread starts over several calls.
  int first_start = 0;
  // Threads that the call may use, the calling one included, >= 1.
  int threads = 1;
  // Wall time >= 0; nothing: no limit. With members the call uses all of it.
  std::optional<std::chrono::duration<double>> time_limit = {};
  // Bytes that the call may hold at once, the result left out; nothing: no limit.
  std::optional<std::size_t> memory_limit = {};
  // The call ends soon after *cancel becomes non-zero; or NULL. A callback that throws sets it to 1.
  std::atomic<int> *cancel = nullptr;

  // Called up to ten times per second; or empty.
  std::function<void(const Progress &)> progress = {};
  // Receives the traces; or empty. The text lives only as long as the callback runs.
  std::function<void(std::string_view)> log = {};
  // Sum of the traces that log receives: the numbers of option slot 8 in kapris.h.
  int log_level = 0;

  // true: the result holds trials, levels and bisections.
  bool records = false;

  // A part may not weigh less than (1 - min_epsilon) x its share, the share rounded down, then the product up; 0 .. 1.
  double min_epsilon = 1.0;
  // false: no part stays empty while there are cells that it can have.
  bool allow_empty = false;
  // The former name of epsilon, which counts where it is set.
  std::optional<double> imbalance = {};

  // Partitions that a start makes on its own, to combine them; 0: one, and nothing is combined.
  int members = 2;
  // Combinations that it makes at most; of a single partition for Refine or Combine that many
  // improvements.
  int combinations = 8;

  // Told of each start that was completed here, with its partition, which lives only as long as the callback runs; or
  // empty.
  std::function<void(const Start &, std::span<const int>)> completed = {};
  // Asked for each start whether its partition is known, as from an earlier call: writes all of it and returns true, or
  // returns false; or empty. It may set the seconds of the start, and completed to 0 if it was cut short.
  std::function<bool(Start *, std::span<int>)> recall = {};

  // Told of each partition that is better than all before it of its start, which lives only as long as the callback
  // runs; or empty.
  std::function<void(std::span<const int>)> improved = {};
  // Asked between combinations, by starts with members under a time limit, for a partition from elsewhere: writes all
  // of it and returns true, or returns false; or empty. The result then depends on when partitions arrive.
  std::function<bool(std::span<int>)> arrived = {};
};

// Everything a call gives. Belongs to whoever holds it.
struct Result {
  // Or KAPRIS_INFEASIBLE, KAPRIS_TIME_LIMIT, KAPRIS_CANCELLED; KAPRIS_OUT_OF_MEMORY or KAPRIS_MEMORY_LIMIT where other
  // starts had made partitions before.
  Status status = KAPRIS_OK;
  // Empty with KAPRIS_OK.
  std::string message;
  // [ncells] part of each cell, 0 .. nparts-1.
  std::vector<int> part;

  std::int64_t cut = 0;
  std::int64_t soed = 0;
  std::int64_t connectivity = 0;
  // [nparts]
  std::vector<std::int64_t> part_weights;
  // [nparts] largest weight that epsilon allows.
  std::vector<std::int64_t> part_limits;
  // [nparts] smallest weight that min_epsilon allows.
  std::vector<std::int64_t> part_minimums;
  // Largest part weight over its share of the total, less 1.
  double imbalance = 0.0;
  // What parts weigh above their limits and lack to their minimums, added up.
  std::int64_t excess = 0;
  // excess is 0.
  bool balanced = false;

  // The seed that the call used.
  std::int64_t seed = 0;
  // Index into starts, or -1: given, or made before the first one ended.
  int best_start = -1;
  // One per start that has begun.
  std::vector<Start> starts;

  // Wall time of the call; of it, checking and cleaning the input, and the starts.
  double seconds = 0.0;
  double seconds_prepare = 0.0;
  double seconds_starts = 0.0;
  // What the starts spent, all threads added up, by Phase.
  std::array<double, 5> seconds_phase = {};
  // Largest memory in bytes that the call held, the result left out.
  std::size_t peak_bytes = 0;

  // With the option records: by start, then by number.
  std::vector<Trial> trials;
  // With the option records: of the best trial of the best start, in the order of time.
  std::vector<Level> levels;
  // With the option records and recursive bisection: of the best start, each before those of its sides.
  std::vector<Bisection> bisections;
};

// What the following functions share; not for other use.
namespace detail
{

struct Release {
  void operator()(kapris_result *result) const
  {
    kapris_free_result(result);
  }
};

// The callbacks of one call. The first exception that one of them throws is kept here and stops the call.
struct Callbacks {
  const Options *options;
  std::atomic<int> *cancel;
  std::exception_ptr thrown;
  std::size_t ncells;

  template <class Function, class... Argument>
  void Call(const Function &function, Argument &&...argument)
  {
    if (thrown)
      return;
    try {
      function(argument...);
    } catch (...) {
      thrown = std::current_exception();
      cancel->store(1);
    }
  }
};

inline void CallProgress(const Progress *progress, void *user)
{
  Callbacks *callbacks = static_cast<Callbacks *>(user);
  callbacks->Call(callbacks->options->progress, *progress);
}

inline void CallLog(const char *text, void *user)
{
  Callbacks *callbacks = static_cast<Callbacks *>(user);
  callbacks->Call(callbacks->options->log, std::string_view(text));
}

inline void CallCompleted(const Start *start, const int *part, void *user)
{
  Callbacks *callbacks = static_cast<Callbacks *>(user);
  callbacks->Call(callbacks->options->completed, *start, std::span<const int>(part, callbacks->ncells));
}

inline int CallRecall(Start *start, int *part, void *user)
{
  Callbacks *callbacks = static_cast<Callbacks *>(user);
  bool known = false;

  callbacks->Call(
      [&] { known = callbacks->options->recall(start, std::span<int>(part, callbacks->ncells)); });
  return known;
}

inline void CallImproved(const int *part, void *user)
{
  Callbacks *callbacks = static_cast<Callbacks *>(user);
  callbacks->Call(callbacks->options->improved, std::span<const int>(part, callbacks->ncells));
}

inline int CallArrived(int *part, void *user)
{
  Callbacks *callbacks = static_cast<Callbacks *>(user);
  bool arrived = false;

  callbacks->Call([&] { arrived = callbacks->options->arrived(std::span<int>(part, callbacks->ncells)); });
  return arrived;
}

[[noreturn]] inline void Refuse(const char *name, std::size_t size, const std::string &expected)
{
  throw Error(KAPRIS_INVALID_ARGUMENT,
              std::string(name) + " has " + std::to_string(size) + " elements, but it should " + expected);
}

// The array, or NULL for an empty one.
template <class T>
const T *ArrayOf(std::span<const T> array, std::int64_t length, const char *name, const char *lengthname)
{
  if (array.empty())
    return nullptr;
  if (length < 0 || array.size() != static_cast<std::size_t>(length))
    Refuse(name, array.size(), "be empty or have " + std::to_string(length) + ", one per " + lengthname);
  return array.data();
}

inline const double *TargetWeightsOf(const Targets &targets)
{
  const std::span<const double> weights =
      targets.target_weights.empty() ? targets.part_shares : targets.target_weights;
  return ArrayOf(weights, targets.nparts, "target_weights", "part");
}

inline kapris_problem ProblemOf(const Hypergraph &hypergraph, const Targets &targets)
{
  const std::span<const int> starts = hypergraph.net_starts;
  kapris_problem problem;

  kapris_init_problem(&problem);
  if (starts.size() > std::size_t{INT_MAX})
    Refuse("net_starts", starts.size(), "have at most " + std::to_string(INT_MAX));
  // What the library reads of pins is bounded by the last offset.
  const int npins = starts.empty() ? 0 : starts.back();
  if (npins < 0 || hypergraph.pins.size() != static_cast<std::size_t>(npins))
    Refuse("pins", hypergraph.pins.size(),
           "have as many as net_starts ends with, which is " + std::to_string(npins));
  problem.ncells = hypergraph.ncells;
  problem.nnets = starts.empty() ? 0 : static_cast<int>(starts.size() - 1);
  problem.net_starts = starts.data();
  problem.pins = hypergraph.pins.data();
  problem.cell_weights = ArrayOf(hypergraph.cell_weights, problem.ncells, "cell_weights", "cell");
  problem.net_weights = ArrayOf(hypergraph.net_weights, problem.nnets, "net_weights", "net");
  problem.nparts = targets.nparts;
  problem.target_weights = TargetWeightsOf(targets);
  problem.fixed = ArrayOf(targets.fixed, problem.ncells, "fixed", "cell");
  return problem;
}

// In C, a limit of 0 is none; here it is reached at once.
inline double SecondsOf(const std::optional<std::chrono::duration<double>> &limit)
{
  if (!limit)
    return 0.0;
  return limit->count() == 0.0 ? std::numeric_limits<double>::min() : limit->count();
}

inline std::size_t BytesOf(const std::optional<std::size_t> &limit)
{
  if (!limit)
    return 0;
  return *limit == 0 ? 1 : *limit;
}

inline kapris_options OptionsOf(const Options &options, Callbacks *callbacks)
{
  static_assert(sizeof(std::atomic<int>) == sizeof(int) && std::atomic<int>::is_always_lock_free);
  kapris_options c;

  kapris_init_options(&c);
  c.scheme = options.scheme;
  c.objective = options.objective;
  c.coarsening = options.coarsening;
  c.refinement = options.refinement;
  c.vcycle = options.vcycle;
  c.runs = options.runs;
  c.members = options.members;
  c.combinations = options.combinations;
  c.reconst = options.reconst;
  c.seed = options.seed.value_or(-1);
  c.epsilon = options.imbalance.value_or(options.epsilon);
  c.min_epsilon = options.min_epsilon;
  c.allow_empty = options.allow_empty;
  c.starts = options.starts;
  c.first_start = options.first_start;
  c.threads = options.threads;
  c.time_limit = SecondsOf(options.time_limit);
  c.memory_limit = BytesOf(options.memory_limit);
  c.cancel = reinterpret_cast<const volatile int *>(callbacks->cancel);
  c.progress = options.progress ? CallProgress : nullptr;
  c.log = options.log ? CallLog : nullptr;
  c.log_level = options.log_level;
  c.user = callbacks;
  c.records = options.records;
  c.completed = options.completed ? CallCompleted : nullptr;
  c.recall = options.recall ? CallRecall : nullptr;
  c.improved = options.improved ? CallImproved : nullptr;
  c.arrived = options.arrived ? CallArrived : nullptr;
  return c;
}

template <class T>
std::vector<T> Copy(const T *array, int n)
{
  return std::vector<T>(array, array + n);
}

inline Result ResultOf(const kapris_result *c)
{
  Result result;

  result.status = c->status;
  result.message = c->message;
  result.part = Copy(c->part, c->ncells);
  result.cut = c->cut;
  result.soed = c->soed;
  result.connectivity = c->connectivity;
  result.part_weights = Copy(c->part_weights, c->nparts);
  result.part_limits = Copy(c->part_limits, c->nparts);
  result.part_minimums = Copy(c->part_minimums, c->nparts);
  result.imbalance = c->imbalance;
  result.excess = c->excess;
  result.balanced = c->balanced != 0;
  result.seed = c->seed;
  result.best_start = c->best_start;
  result.starts = Copy(c->starts, c->nstarts);
  result.seconds = c->seconds;
  result.seconds_prepare = c->seconds_prepare;
  result.seconds_starts = c->seconds_starts;
  std::copy(std::begin(c->seconds_phase), std::end(c->seconds_phase), result.seconds_phase.begin());
  result.peak_bytes = c->peak_bytes;
  result.trials = Copy(c->trials, c->ntrials);
  result.levels = Copy(c->levels, c->nlevels);
  result.bisections = Copy(c->bisections, c->nbisections);
  return result;
}

// Makes the call that function(problem, options, &result) stands for.
template <class Function>
Result Call(const Hypergraph &hypergraph, const Targets &targets, const Options &options, Function function)
{
  std::atomic<int> own = 0;
  Callbacks callbacks = {&options, options.cancel != nullptr ? options.cancel : &own, nullptr, 0};
  const kapris_problem problem = ProblemOf(hypergraph, targets);
  callbacks.ncells = static_cast<std::size_t>(std::max(problem.ncells, 0));
  const kapris_options c = OptionsOf(options, &callbacks);
  kapris_result *made = nullptr;

  const Status status = function(&problem, &c, &made);
  const std::unique_ptr<kapris_result, Release> result(made);
  if (callbacks.thrown)
    std::rethrow_exception(callbacks.thrown);
  if (result == nullptr || result->part == nullptr)
    throw Error(status, result == nullptr ? kapris_status_name(status) : result->message);
  return ResultOf(result.get());
}

template <class Function>
Result CallWithPart(const Hypergraph &hypergraph, const Targets &targets, const Options &options,
                    std::span<const int> part, Function function)
{
  return Call(hypergraph, targets, options,
              [&](const kapris_problem *problem, const kapris_options *c, kapris_result **result) {
                if (part.size() != static_cast<std::size_t>(problem->ncells))
                  Refuse("part", part.size(), "have " + std::to_string(problem->ncells) + ", one per cell");
                return function(problem, c, part.data(), result);
              });
}

} // namespace detail

// The name of a status in lower case, such as "time limit". Static text; never throws.
inline const char *StatusName(Status status) noexcept
{
  return kapris_status_name(status);
}

// The name of a phase in lower case, such as "coarsening". Static text; never throws.
inline const char *PhaseName(Phase phase) noexcept
{
  return kapris_phase_name(phase);
}

// What a part may weigh at most, or has to weigh at least: kapris_part_limit and kapris_part_minimum. Throws Error if
// target_weights has another length than nparts.
inline std::int64_t PartLimit(std::int64_t total, const Targets &targets, int part, double epsilon)
{
  return kapris_part_limit(total, targets.nparts, detail::TargetWeightsOf(targets), part, epsilon);
}

inline std::int64_t PartMinimum(std::int64_t total, const Targets &targets, int part, double min_epsilon)
{
  return kapris_part_minimum(total, targets.nparts, detail::TargetWeightsOf(targets), part, min_epsilon);
}

// Partitions the cells into targets.nparts parts; minimises options.objective under the limits of the parts. Calls on
// different threads are independent; nothing is printed, and nothing of the arguments is kept.
//
// Returns a complete partition with one of the statuses that Result names: look at status where a part above its limit,
// or a run that was cut short, matters. Throws Error for the others; std::bad_alloc when there is no memory for the
// returned vectors; and, once the call has ended, the first exception that a callback threw, whatever the call gave.
//
// Method: that of kapris_partition.
inline Result Partition(const Hypergraph &hypergraph, const Targets &targets, const Options &options = {})
{
  return detail::Call(hypergraph, targets, options, kapris_partition);
}

// Improves part, which is [ncells] 0 .. nparts-1 with fixed cells in their parts and only read; otherwise as Partition.
// The result is never worse, and part itself if nothing better was found.
//
// Method: that of kapris_refine.
inline Result Refine(const Hypergraph &hypergraph, const Targets &targets, std::span<const int> part,
                     const Options &options = {})
{
  return detail::CallWithPart(hypergraph, targets, options, part, kapris_refine);
}

// The figures of part, which is as for Refine, and the limits of its parts; of the options epsilon, min_epsilon and
// allow_empty matter. The result has no starts.
inline Result Evaluate(const Hypergraph &hypergraph, const Targets &targets, std::span<const int> part,
                       const Options &options = {})
{
  return detail::CallWithPart(hypergraph, targets, options, part, kapris_evaluate);
}

// The version of the library that is linked or loaded, such as "0.1.0".
inline std::string Version()
{
  return kapris_version();
}

// Makes a better partition of several, each as part of Refine; otherwise as Partition. The result is never worse than
// the best of them, and the first of the best itself if nothing better was found.
//
// Method: that of kapris_combine.
inline Result Combine(const Hypergraph &hypergraph, const Targets &targets,
                      std::span<const std::span<const int>> parts, const Options &options = {})
{
  return detail::Call(hypergraph, targets, options,
                      [&](const kapris_problem *problem, const kapris_options *c, kapris_result **result) {
                        std::vector<const int *> pointers;
                        if (parts.size() > std::size_t{INT_MAX})
                          detail::Refuse("parts", parts.size(), "have at most " + std::to_string(INT_MAX));
                        for (const std::span<const int> &part : parts) {
                          if (part.size() != static_cast<std::size_t>(problem->ncells))
                            detail::Refuse("a partition", part.size(),
                                           "have " + std::to_string(problem->ncells) + ", one per cell");
                          pointers.push_back(part.data());
                        }
                        return kapris_combine(problem, c, static_cast<int>(pointers.size()), pointers.data(),
                                              result);
                      });
}

} // namespace kapris
