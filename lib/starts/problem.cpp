// lib/starts/problem.cpp - checks and cleans the caller's problem, and measures partitions of it.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "limits.h"

#include "base/arguments.h"
#include "search/engine.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <numeric>

namespace kapris::engine::safe
{

static void Require(bool valid, const char *message)
{
  if (!valid)
    errexit__("%s", message);
}

// Whether an enumeration of the caller has a value 0 .. last; it can hold any int.
template <class Enumeration>
static bool IsUpTo(const Enumeration *value, int last)
{
  static_assert(sizeof(Enumeration) == sizeof(int));
  int number;

  std::memcpy(&number, value, sizeof number);
  return number >= 0 && number <= last;
}

void CheckOptions(const kapris_options *options)
{
  Require(options->size == sizeof(kapris_options),
          "options: not filled by kapris_init_options of this version");
  Require(IsUpTo(&options->scheme, KAPRIS_KWAY), "scheme: no such value");
  Require(IsUpTo(&options->objective, KAPRIS_CONNECTIVITY), "objective: no such value");
  Require(IsUpTo(&options->coarsening, KAPRIS_PAIRS), "coarsening: no such value");
  Require(IsUpTo(&options->refinement, KAPRIS_EARLY_EXIT_FM), "refinement: no such value");
  Require(IsUpTo(&options->vcycle, KAPRIS_VCYCLE_CLOSE), "vcycle: no such value");
  if (options->runs < 1)
    errexit__("runs is %d, but it should be at least 1", options->runs);
  if (options->members < 0)
    errexit__("members is %d, but it should be at least 0", options->members);
  if (options->combinations < 0)
    errexit__("combinations is %d, but it should be at least 0", options->combinations);
  if (options->reconst != 0 && options->reconst != 1)
    errexit__("reconst is %d, but it should be 0 or 1", options->reconst);
  if (options->records != 0 && options->records != 1)
    errexit__("records is %d, but it should be 0 or 1", options->records);
  if (options->seed > INT_MAX)
    errexit__("seed is %lld, but it should be at most %d", static_cast<long long>(options->seed), INT_MAX);
  if (!(options->epsilon >= 0.0 && std::isfinite(options->epsilon)))
    errexit__("epsilon is %g, but it should be at least 0", options->epsilon);
  if (!(options->min_epsilon >= 0.0 && options->min_epsilon <= 1.0))
    errexit__("min_epsilon is %g, but it should be between 0 and 1", options->min_epsilon);
  if (options->allow_empty != 0 && options->allow_empty != 1)
    errexit__("allow_empty is %d, but it should be 0 or 1", options->allow_empty);
  if (options->starts < 1)
    errexit__("starts is %d, but it should be at least 1", options->starts);
  if (options->first_start < 0)
    errexit__("first_start is %d, but it should be at least 0", options->first_start);
  if (options->first_start > INT_MAX - options->starts)
    errexit__("first_start is %d, but first_start and starts, which is %d, should add up to at most %d",
              options->first_start, options->starts, INT_MAX);
  if (options->threads < 1)
    errexit__("threads is %d, but it should be at least 1", options->threads);
  if (!(options->time_limit >= 0.0))
    errexit__("time_limit is %g, but it should be at least 0", options->time_limit);
}

static void CheckTargets(const kapris_problem *problem)
{
  constexpr double most = 1e15, least_share = 1e-9;
  const double *targets = problem->target_weights;
  double sum = 0.0;

  for (int p = 0; targets != nullptr && p < problem->nparts; p++) {
    if (!(targets[p] > 0.0 && targets[p] <= most))
      errexit__("target_weights[%d] is %g, but it should be above 0 and at most %g", p, targets[p], most);
    sum += targets[p];
  }
  for (int p = 0; targets != nullptr && p < problem->nparts; p++)
    if (targets[p] < least_share * sum)
      errexit__("target_weights[%d] is %g, less than %g of the sum, which is %g", p, targets[p], least_share,
                sum);
}

// What adding a weight makes of a total; refuses it, as element index of an array, where the total gets too large.
static std::int64_t AddToTotal(std::int64_t total, std::int64_t weight, int times, const char *what,
                               const char *name, int index)
{
  if (weight > (MAX_TOTAL - total) / times)
    errexit__("%s[%d] is %lld: %s is then above %lld", name, index, static_cast<long long>(weight), what,
              static_cast<long long>(MAX_TOTAL));
  return total + weight * times;
}

static void CheckTotals(const kapris_problem *problem)
{
  std::int64_t cellwgt = 0, maxsoed = 0;

  for (int i = 0; problem->cell_weights != nullptr && i < problem->ncells; i++)
    cellwgt = AddToTotal(cellwgt, problem->cell_weights[i], 1, "the total cell weight", "cell_weights", i);
  for (int j = 0; problem->net_weights != nullptr && j < problem->nnets; j++) {
    const int npins = problem->net_starts[j + 1] - problem->net_starts[j];
    maxsoed = AddToTotal(maxsoed, problem->net_weights[j], std::clamp(npins, 1, problem->nparts),
                         "the sum of net weight x min(pins, nparts)", "net_weights", j);
  }
}

void CheckProblem(const kapris_problem *problem)
{
  static constexpr ArgNames names = {"cell_weights", "net_starts", "pins", "net_weights", "fixed"};

  Require(problem->size == sizeof(kapris_problem),
          "problem: not filled by kapris_init_problem of this version");
  if (problem->nparts < 1)
    errexit__("nparts is %d, but it should be at least 1", problem->nparts);
  CheckNets(problem->ncells, problem->nnets, problem->net_starts, problem->pins, &names);
  CheckWeights(problem->ncells, problem->cell_weights, names.cellwgts);
  CheckWeights(problem->nnets, problem->net_weights, names.netwgts);
  CheckTotals(problem);
  CheckTargets(problem);
  if (problem->fixed != nullptr)
    CheckParts(problem->ncells, problem->fixed, -1, problem->nparts, names.part);
}

void CheckGiven(const kapris_problem *problem, const int *part, const char *name)
{
  if (part == nullptr && problem->ncells > 0)
    errexit__("%s is null", name);
  CheckParts(problem->ncells, part, 0, problem->nparts, name);
  if (problem->fixed == nullptr)
    return;
  for (int i = 0; i < problem->ncells; i++)
    if (problem->fixed[i] != -1 && part[i] != problem->fixed[i])
      errexit__("%s[%d] is %d, but the cell is fixed to part %d", name, i, part[i], problem->fixed[i]);
}

// Copies the distinct pins of the nets that connect at least two cells.
static void CleanNets(const kapris_problem *problem, CleanProblem *clean)
{
  const int npins = problem->nnets > 0 ? problem->net_starts[problem->nnets] : 0;
  int *seen = ismalloc__(problem->ncells, -1, "api: seen");

  clean->netptr = imalloc__(static_cast<std::int64_t>(problem->nnets) + 1, "api: netptr");
  clean->netind = imalloc__(npins, "api: netind");
  clean->netwgt = QVarray<std::int64_t>(problem->nnets, "api: netwgt");
  clean->netptr[0] = 0;
  for (int j = 0; j < problem->nnets; j++) {
    int end = clean->netptr[clean->nnets];
    for (int k = problem->net_starts[j]; k < problem->net_starts[j + 1]; k++) {
      const int c = problem->pins[k];
      if (seen[c] != j) {
        seen[c] = j;
        clean->netind[end++] = c;
      }
    }
    if (end - clean->netptr[clean->nnets] < 2)
      continue;
    clean->netwgt[clean->nnets++] = problem->net_weights == nullptr ? 1 : problem->net_weights[j];
    clean->netptr[clean->nnets] = end;
  }
  QVfree__(&seen);
}

static bool IsNarrow(const CleanProblem *problem, const kapris_options *options)
{
  std::int64_t netwgt = 0, maxsoed = 0;

  for (int j = 0; j < problem->nnets; j++) {
    netwgt += problem->netwgt[j];
    maxsoed += problem->netwgt[j] * std::min(problem->netptr[j + 1] - problem->netptr[j], problem->nparts);
  }
  return FitsNarrow(problem->total, netwgt, maxsoed,
                    problem->nparts == 2 && options->scheme == KAPRIS_RECURSIVE && options->members == 0);
}

static void MakeLimits(const kapris_problem *problem, const kapris_options *options, CleanProblem *clean)
{
  const double *targets = problem->target_weights;
  const double sum = targets != nullptr ? std::accumulate(targets, targets + clean->nparts, 0.0) : 0.0;
  std::int64_t needed = 0;

  clean->shares = QVarray<double>(clean->nparts, "api: shares");
  clean->limits = QVarray<std::int64_t>(clean->nparts, "api: limits");
  clean->minimums = QVarray<std::int64_t>(clean->nparts, "api: minimums");
  clean->aims = QVarray<std::int64_t>(clean->nparts, "api: aims");
  for (int p = 0; p < clean->nparts; p++) {
    const Share share = {clean->nparts, targets != nullptr ? targets[p] / sum : 0.0};
    clean->shares[p] = targets != nullptr ? share.fraction : 1.0 / clean->nparts;
    clean->limits[p] = PartLimit(clean->total, share, options->epsilon);
    clean->minimums[p] = PartMinimum(clean->total, share, options->min_epsilon);
    needed += clean->minimums[p];
  }
  for (int p = 0; p < clean->nparts; p++)
    clean->aims[p] = std::min(clean->limits[p], clean->total - (needed - clean->minimums[p]));
  clean->allowempty = options->allow_empty != 0;
}

CleanProblem MakeCleanProblem(const kapris_problem *problem, const kapris_options *options)
{
  CleanProblem clean = {};

  clean.ncells = problem->ncells;
  clean.nparts = problem->nparts;
  clean.cellwgt = problem->cell_weights != nullptr ? problem->cell_weights
                                                   : QVarrayOf<std::int64_t>(clean.ncells, 1, "api: cellwgt");
  clean.fixed = problem->fixed;
  for (int i = 0; i < clean.ncells; i++)
    clean.total += clean.cellwgt[i];
  CleanNets(problem, &clean);

  MakeLimits(problem, options, &clean);
  clean.isnarrow = IsNarrow(&clean, options);
  return clean;
}

static void MeasureNets(const CleanProblem *problem, const int *part, Measures *measures)
{
  int *seen = ismalloc__(problem->nparts, -1, "api: seen");

  for (int j = 0; j < problem->nnets; j++) {
    int touched = 0;
    for (int k = problem->netptr[j]; k < problem->netptr[j + 1]; k++) {
      int *last = &seen[part[problem->netind[k]]];
      touched += *last != j;
      *last = j;
    }
    if (touched > 1) {
      measures->cut += problem->netwgt[j];
      measures->soed += touched * problem->netwgt[j];
    }
  }
  QVfree__(&seen);
}

static void MeasureParts(const CleanProblem *problem, const int *part, std::int64_t *wgts, Measures *measures)
{
  int *counts = ismalloc__(problem->nparts, 0, "api: counts");

  std::fill_n(wgts, problem->nparts, 0);
  for (int i = 0; i < problem->ncells; i++) {
    wgts[part[i]] += problem->cellwgt[i];
    counts[part[i]]++;
  }
  for (int p = 0; p < problem->nparts; p++) {
    measures->excess +=
        std::max<std::int64_t>({0, wgts[p] - problem->limits[p], problem->minimums[p] - wgts[p]});
    measures->nempty += counts[p] == 0;
    if (problem->total > 0)
      measures->imbalance = std::max(
          measures->imbalance,
          static_cast<double>(wgts[p]) / (problem->shares[p] * static_cast<double>(problem->total)) - 1.0);
  }
  const int inevitable = std::max(0, problem->nparts - problem->ncells);
  measures->nempty = problem->allowempty ? 0 : measures->nempty - inevitable;
  QVfree__(&counts);
}

Measures Measure(const CleanProblem *problem, const int *part, std::int64_t *weights)
{
  Measures measures = {0, 0, 0.0, 0, 0};
  std::int64_t *wgts = weights != nullptr ? weights : QVarray<std::int64_t>(problem->nparts, "api: weights");

  MeasureNets(problem, part, &measures);
  MeasureParts(problem, part, wgts, &measures);
  if (weights == nullptr)
    QVfree__(&wgts);
  return measures;
}

void FillPartsInOrder(const CleanProblem *problem, int *part)
{
  std::int64_t *wgts = QVarray<std::int64_t>(problem->nparts, "api: weights");
  int p = 0;

  std::fill_n(wgts, problem->nparts, 0);
  if (problem->fixed != nullptr)
    for (int i = 0; i < problem->ncells; i++)
      if (problem->fixed[i] != -1)
        wgts[problem->fixed[i]] += problem->cellwgt[i];
  for (int i = 0; i < problem->ncells; i++) {
    if (problem->fixed != nullptr && problem->fixed[i] != -1) {
      part[i] = problem->fixed[i];
      continue;
    }
    while (p + 1 < problem->nparts &&
           static_cast<double>(wgts[p]) >= problem->shares[p] * static_cast<double>(problem->total))
      p++;
    part[i] = p;
    wgts[p] += problem->cellwgt[i];
  }
  QVfree__(&wgts);
}

} // namespace kapris::engine::safe
