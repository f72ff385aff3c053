// lib/rebalance/rebalance.cpp - the road of rebalancing, from the least harmful step to the most.
// SPDX-License-Identifier: MIT
//
//   improve  moves, and swaps where no move helps, until neither lowers the excess    Improve
//   count    show that no partition keeps the limits                                  CannotPack
//   pack     cells anew by weight, near the present partition, and improve again      Repack
//   search   any partition that keeps the limits, or show that there is none          Repack
//   polish   what gives objective back at no cost in weight                           Polish
// Packing knows no nets, hence comes last; a partition that still has excess is kept only if it has less.

#include "rebalance.h"

#include "state.h"

#include <algorithm>

namespace kapris::engine::safe
{

std::int64_t TotalExcess(const BalanceProblem *problem, const int *part)
{
  enum { CHUNK = 2048 }; // parts weighed at a time, on the stack
  std::int64_t excess = 0, wgts[CHUNK];

  for (int first = 0; first < problem->nparts; first += CHUNK) {
    const int n = std::min<int>(CHUNK, problem->nparts - first);
    std::fill_n(wgts, n, 0);
    for (int i = 0; i < problem->ncells; i++)
      if (part[i] >= first && part[i] - first < n)
        wgts[part[i] - first] += problem->cellwgt[i];
    for (int p = 0; p < n; p++)
      excess += std::max<std::int64_t>(0, wgts[p] - problem->limits[first + p]);
  }
  return excess;
}

// Whether some part lacks weight, or a cell.
static bool IsLacking(const BalanceProblem *problem, const int *part)
{
  std::int64_t *spare = QVarray<std::int64_t>(problem->nparts, "Fill: spare");
  int *counts = ismalloc__(problem->nparts, 0, "Fill: counts");
  bool lacking = false;

  for (int p = 0; p < problem->nparts; p++)
    spare[p] = -problem->minimums[p];
  for (int i = 0; i < problem->ncells; i++) {
    spare[part[i]] += problem->cellwgt[i];
    counts[part[i]]++;
  }
  for (int p = 0; p < problem->nparts; p++)
    lacking = lacking || spare[p] < 0 || (counts[p] == 0 && !problem->allowempty);
  QVfree__(&spare, &counts);
  return lacking;
}

static void FillWith(Rebalancing *balance, Wanted wanted)
{
  const int nparts = balance->problem->nparts;
  std::int64_t stuck = -1; // no cell to be had is as light as that

  balance->wanted = wanted;
  for (balance->lacking = 0; balance->lacking < nparts;) {
    const int first = balance->lacking;
    if (Lacks(balance, first) && balance->room[first] > stuck)
      RunMoves(balance);
    // It goes on to other parts with the cells that are left in its queue, which had to fit into those before.
    if (balance->lacking != first)
      continue;
    if (Lacks(balance, first))
      stuck = std::max(stuck, balance->room[first]);
    balance->lacking++;
  }
}

void Fill(const BalanceProblem *problem, int *part)
{
  if (!IsLacking(problem, part))
    return;
  Rebalancing balance = OpenRebalancing(problem, part);
  if (!problem->allowempty)
    FillWith(&balance, A_CELL);
  FillWith(&balance, MORE_WEIGHT);
  CloseRebalancing(&balance);
}

static void Improve(Rebalancing *balance)
{
  do {
    while (balance->excess > 0 && RunMoves(balance))
      continue; // a part that gave away more than its excess has room now
  } while (balance->excess > 0 && RunSwaps(balance));
}

static BalanceVerdict Repack(Rebalancing *balance, Packing *packing, int *before)
{
  const int ncells = balance->problem->ncells;
  const std::int64_t excess = balance->excess;
  BalanceVerdict verdict = BALANCED;

  if (CannotPack(packing))
    return IMPOSSIBLE;
  icopy__(ncells, balance->part, before);
  PackNear(packing, balance->part);
  ReloadRebalancing(balance);
  Improve(balance);
  if (balance->excess > 0)
    verdict = SearchPacking(packing, balance->part);
  if (verdict != BALANCED && balance->excess >= excess)
    icopy__(ncells, before, balance->part);
  ReloadRebalancing(balance);
  return verdict;
}

// before, [ncells], receives partitions to fall back on.
static BalanceVerdict RunSteps(const BalanceProblem *problem, int *part, int *before)
{
  BalanceVerdict verdict = BALANCED;
  Rebalancing balance = OpenRebalancing(problem, part);

  Improve(&balance);
  if (balance.excess > 0) {
    Packing packing = CreatePacking(problem);
    verdict = Repack(&balance, &packing, before);
    FreePacking(&packing);
  }
  Polish(&balance);
  CHECK_LIGHT((verdict == BALANCED) == (balance.excess == 0));
  CloseRebalancing(&balance);
  return verdict;
}

BalanceVerdict Rebalance(const BalanceProblem *problem, int *part)
{
  const std::int64_t excess = TotalExcess(problem, part);
  BalanceVerdict verdict = BALANCED;

  if (excess == 0)
    return BALANCED;
  int *before = icopy__(problem->ncells, part, imalloc__(problem->ncells, "Rebalance: before"));
  try {
    verdict = RunSteps(problem, part, before);
  } catch (const StopRun &) {
    verdict = INTERRUPTED;
    // Packing starts from worse partitions. The memory of the steps goes back when the call ends.
    if (TotalExcess(problem, part) > excess)
      icopy__(problem->ncells, before, part);
  }
  QVfree__(&before);
  return verdict;
}

} // namespace kapris::engine::safe
