// lib/search/engine.h - the engine in either width, as the safe interface calls it.
// SPDX-License-Identifier: MIT
#pragma once

#include "base/hooks.h"

#include <cstdint>

namespace kapris::engine::base
{

// One run of the engine. Weights have 64 bits here; the form that is called must be able to hold their sums.
struct EngineCall {
  int ncells, nnets;
  const std::int64_t *cellwgt; // [ncells]
  const std::int64_t *netwgt;  // [nnets]
  const int *netptr, *netind;  // every net has two pins or more and lists none twice
  int nparts;
  const double *shares;         // [nparts] of the total weight, sum 1
  const std::int64_t *limits;   // [nparts] largest part weights
  const std::int64_t *minimums; // [nparts] smallest part weights
  const int *fixed;             // [ncells] or NULL
  const int *initial;           // [ncells] the partition to improve; or NULL: partition anew
  const int *const *others;     // [nothers] of [ncells]: with members, what the initial one is combined with
  int nothers;
  std::int64_t total; // cell weight

  bool direct;                        // not by recursive bisection
  bool cut, connectivity;             // what is minimised; both together are the SOED
  int members, combinations;          // of a population; without members one partition is made
  bool endless;                       // the population goes on until StopRun
  int coarsening, refinement, vcycle; // as in the option vector
  int nruns;
  bool reconst;
  double imbalance;
  std::int64_t seed;
  int dbglvl;
  const Hooks *hooks;
};

} // namespace kapris::engine::base

// Each partitions, or improves the initial partition; part, [ncells], receives the result. Throws StopRun when the call
// is to end.
namespace kapris::engine::narrow
{
void RunEngine(const base::EngineCall *call, int *part);
}

namespace kapris::engine::wide
{
void RunEngine(const base::EngineCall *call, int *part);
}

namespace kapris::engine::base
{

// Whether the sums of a call with these totals fit the narrow form: of the cells' weights, of the nets' weights, of the
// nets' weights x min(pins, nparts). twoway: the call never refines more than two parts, nor directly.
constexpr bool FitsNarrow(std::int64_t cellwgt, std::int64_t netwgt, std::int64_t maxsoed, bool twoway)
{
  constexpr std::int64_t limit = INT32_MAX;

  if (cellwgt > limit / 2 || netwgt > limit - 1)
    return false;
  // Ten times the weight of the nets is above every value that a trial can have.
  return twoway || (netwgt <= (limit - 1) / 10 && maxsoed <= limit);
}

} // namespace kapris::engine::base
