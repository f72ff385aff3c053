// lib/api/rebalance.cpp - the road of rebalancing, from the least harmful step to the most.
// SPDX-License-Identifier: MIT
//
//   improve  moves, and swaps where no move helps, until neither lowers the excess    Improve
//   count    show that no partition keeps the limits                                  CannotPack__
//   pack     cells anew by weight, near the present partition, and improve again      Repack
//   search   any partition that keeps the limits, or show that there is none          Repack
//   polish   what gives objective back at no cost in weight                           Polish__
// Packing knows no nets, hence comes last; a partition that still has excess is kept only if it has less.

#include "rebalance.h"

#include "rebalance_state.h"

#include <algorithm>

std::int64_t TotalExcess__(const BalanceProblem *problem, const int *part)
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

static void Improve(Balance *balance)
{
  do {
    while (balance->excess > 0 && RunMoves__(balance))
      continue; // a part that gave away more than its excess has room now
  } while (balance->excess > 0 && RunSwaps__(balance));
}

static BalanceVerdict Repack(Balance *balance, Packing *packing)
{
  const int ncells = balance->problem->ncells;
  const std::int64_t excess = balance->excess;
  BalanceVerdict verdict = BALANCED;

  if (CannotPack__(packing))
    return IMPOSSIBLE;
  int *before = icopy__(ncells, balance->part, imalloc__(ncells, "Rebalance: before"));
  PackNear__(packing, balance->part);
  ReloadBalance__(balance);
  Improve(balance);
  if (balance->excess > 0)
    verdict = SearchPacking__(packing, balance->part);
  if (verdict != BALANCED && balance->excess >= excess)
    icopy__(ncells, before, balance->part);
  ReloadBalance__(balance);
  QVfree__(&before);
  return verdict;
}

BalanceVerdict Rebalance__(const BalanceProblem *problem, int *part)
{
  BalanceVerdict verdict = BALANCED;

  if (TotalExcess__(problem, part) == 0)
    return BALANCED;
  Balance balance = CreateBalance__(problem, part);
  Improve(&balance);
  if (balance.excess > 0) {
    Packing packing = CreatePacking__(problem);
    verdict = Repack(&balance, &packing);
    FreePacking__(&packing);
  }
  Polish__(&balance);
  CHECK_LIGHT((verdict == BALANCED) == (balance.excess == 0));
  FreeBalance__(&balance);
  return verdict;
}
