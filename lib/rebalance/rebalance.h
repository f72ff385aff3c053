// lib/rebalance/rebalance.h - the last step of a start: brings every part of a finished partition within its limit.
// SPDX-License-Identifier: MIT
//
// The multilevel engine balances by moving single cells that improve or keep the objective, so that now and
// then a part stays above its limit, above all when some cells are heavy or limits are tight. This step gives
// up as little of the objective as it can to repair that, or shows that it cannot be repaired.
#pragma once

#include <cstdint>

namespace kapris::engine::safe
{

// What is minimised; both together are the SOED.
struct Goal {
  bool cut, connectivity;
};

// What a partition comes to under a goal, or a change of it: the less, the better, and among equals the second decides.
struct Score {
  std::int64_t first, second;
};

constexpr Score ScoreOf(Goal goal, std::int64_t cut, std::int64_t soed)
{
  if (!goal.connectivity)
    return {cut, soed};
  return {goal.cut ? soed : soed - cut, cut};
}

struct BalanceProblem {
  int ncells, nnets;
  const std::int64_t *cellwgt; // [ncells] >= 0, together at most 2^61
  const std::int64_t *netwgt;  // [nnets] >= 0; times min(pins, nparts), together at most 2^61
  const int *netptr, *netind;  // every net has two pins or more and lists none twice
  int nparts;
  const std::int64_t *limits;   // [nparts] largest weight of each part, >= 0
  const std::int64_t *minimums; // [nparts] smallest weight of each part, for Fill
  bool allowempty;              // for Fill
  const int *fixed;             // [ncells] the part that a cell must stay in, or -1; or NULL: all are free
  Goal goal;                    // harm is what a change comes to under it
  bool (*proceed)(void *owner); // asked every few milliseconds; false ends the work. Or NULL
  void *owner;
};

enum BalanceVerdict {
  BALANCED,   // no part is above its limit
  IMPOSSIBLE, // some part is, and it is shown that no assignment of the free cells avoids that
  NOT_FOUND,  // some part is, and nothing is shown
  INTERRUPTED // proceed ended the work
};

// The weight above the limits, summed over the parts. Allocates nothing.
std::int64_t TotalExcess(const BalanceProblem *problem, const int *part);

// Moves cells, least harm first, to parts that weigh less than their minimum or, unless allowempty, have no cell. No
// part comes to exceed its limit by that, to fall below its minimum or to be empty, so that some parts can stay as they
// are. part as below.
void Fill(const BalanceProblem *problem, int *part);

// part: [ncells] 0 .. nparts-1, fixed cells in their parts; on return the best partition found. Fixed cells
// stay and the total excess is never larger than before. A balanced partition is returned as it is, without
// a single allocation. The outcome depends on the arguments alone.
BalanceVerdict Rebalance(const BalanceProblem *problem, int *part);

} // namespace kapris::engine::safe
