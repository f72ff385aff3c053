// lib/starts/problem.cpp - checks and cleans the caller's problem, and measures partitions of it.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "base/arguments.h"
#include "drivers/engine.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

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
  Require(IsUpTo(&options->objective, KAPRIS_SOED), "objective: no such value");
  Require(IsUpTo(&options->coarsening, KAPRIS_PAIRS), "coarsening: no such value");
  Require(IsUpTo(&options->refinement, KAPRIS_EARLY_EXIT_FM), "refinement: no such value");
  Require(IsUpTo(&options->vcycle, KAPRIS_VCYCLE_CLOSE), "vcycle: no such value");
  if (options->runs < 1)
    errexit__("runs is %d, but it should be at least 1", options->runs);
  if (options->reconst != 0 && options->reconst != 1)
    errexit__("reconst is %d, but it should be 0 or 1", options->reconst);
  if (options->records != 0 && options->records != 1)
    errexit__("records is %d, but it should be 0 or 1", options->records);
  if (options->seed > INT_MAX)
    errexit__("seed is %lld, but it should be at most %d", static_cast<long long>(options->seed), INT_MAX);
  if (!(options->imbalance >= 0.0 && std::isfinite(options->imbalance)))
    errexit__("imbalance is %g, but it should be at least 0", options->imbalance);
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

static void CheckShares(const kapris_problem *problem)
{
  double sum = 0.0;

  if (problem->part_shares == nullptr)
    return;
  for (int p = 0; p < problem->nparts; p++) {
    if (!(problem->part_shares[p] > 0.0 && problem->part_shares[p] <= 1.0))
      errexit__("part_shares[%d] is %g, but it should be above 0 and at most 1", p, problem->part_shares[p]);
    sum += problem->part_shares[p];
  }
  if (std::fabs(sum - 1.0) > 1e-6)
    errexit__("part_shares: the sum is %.9g, but it should be 1", sum);
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
  if (problem->nparts < 2)
    errexit__("nparts is %d, but it should be at least 2", problem->nparts);
  CheckNets(problem->ncells, problem->nnets, problem->net_starts, problem->pins, &names);
  CheckWeights(problem->ncells, problem->cell_weights, names.cellwgts);
  CheckWeights(problem->nnets, problem->net_weights, names.netwgts);
  CheckTotals(problem);
  CheckShares(problem);
  if (problem->fixed != nullptr)
    CheckParts(problem->ncells, problem->fixed, -1, problem->nparts, names.part);
}

void CheckGiven(const kapris_problem *problem, const int *part)
{
  Require(part != nullptr || problem->ncells == 0, "part is null");
  CheckParts(problem->ncells, part, 0, problem->nparts, "part");
  if (problem->fixed == nullptr)
    return;
  for (int i = 0; i < problem->ncells; i++)
    if (problem->fixed[i] != -1 && part[i] != problem->fixed[i])
      errexit__("part[%d] is %d, but the cell is fixed to part %d", i, part[i], problem->fixed[i]);
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

// (1 + imbalance) x share x total, rounded up; a hair above a whole number is rounding error of the product.
static std::int64_t PartLimit(double imbalance, double share, std::int64_t total)
{
  const double limit = (1.0 + imbalance) * share * static_cast<double>(total);

  if (limit >= 9e18)
    return INT64_MAX;
  // Of large limits that hair would be whole numbers: no more than what is surely less than one.
  return static_cast<std::int64_t>(std::ceil(limit < 0x1p31 ? limit * (1.0 - 1e-12) : limit - 0x1p-8));
}

// Beyond 53 bits a product can come out below what an even division needs.
static std::int64_t EvenShare(std::int64_t total, int nparts)
{
  return total / nparts + (total % nparts != 0);
}

static bool IsNarrow(const CleanProblem *problem, const kapris_options *options)
{
  std::int64_t netwgt = 0, maxsoed = 0;

  for (int j = 0; j < problem->nnets; j++) {
    netwgt += problem->netwgt[j];
    maxsoed += problem->netwgt[j] * std::min(problem->netptr[j + 1] - problem->netptr[j], problem->nparts);
  }
  return FitsNarrow(problem->total, netwgt, maxsoed,
                    problem->nparts == 2 && options->scheme == KAPRIS_RECURSIVE);
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

  clean.shares = QVarray<double>(clean.nparts, "api: shares");
  clean.limits = QVarray<std::int64_t>(clean.nparts, "api: limits");
  for (int p = 0; p < clean.nparts; p++) {
    clean.shares[p] = problem->part_shares == nullptr ? 1.0 / clean.nparts : problem->part_shares[p];
    clean.limits[p] = PartLimit(options->imbalance, clean.shares[p], clean.total);
    if (problem->part_shares == nullptr)
      clean.limits[p] = std::max(clean.limits[p], EvenShare(clean.total, clean.nparts));
  }
  clean.isnarrow = IsNarrow(&clean, options);
  return clean;
}

Measures Measure(const CleanProblem *problem, const int *part, std::int64_t *weights)
{
  Measures measures = {0, 0, 0.0, 1};
  std::int64_t *wgts = weights != nullptr ? weights : QVarray<std::int64_t>(problem->nparts, "api: weights");
  int *seen = ismalloc__(problem->nparts, -1, "api: seen");

  for (int j = 0; j < problem->nnets; j++) {
    int touched = 0;
    for (int k = problem->netptr[j]; k < problem->netptr[j + 1]; k++) {
      int *last = &seen[part[problem->netind[k]]];
      touched += *last != j;
      *last = j;
    }
    if (touched > 1) {
      measures.cut += problem->netwgt[j];
      measures.soed += touched * problem->netwgt[j];
    }
  }

  std::fill_n(wgts, problem->nparts, 0);
  for (int i = 0; i < problem->ncells; i++)
    wgts[part[i]] += problem->cellwgt[i];
  for (int p = 0; p < problem->nparts; p++) {
    if (wgts[p] > problem->limits[p])
      measures.balanced = 0;
    if (problem->total > 0)
      measures.imbalance = std::max(
          measures.imbalance,
          static_cast<double>(wgts[p]) / (problem->shares[p] * static_cast<double>(problem->total)) - 1.0);
  }
  QVfree__(&seen);
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
