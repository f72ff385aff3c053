// lib/rebalance/swaps.cpp - exchanges a cell of an overfull part with a lighter one of a part with room.
// SPDX-License-Identifier: MIT
//
// With an excess e, a room r on the other side and a weight difference d > 0 the total excess falls by
//   min(d, e) - max(0, d - r)
// which is largest, min(e, r), for all d between e and r. Each part has its movable cells in the order of
// weights, so that for a given heavy cell the partners next to the largest difference wanted are found by
// bisection; on the far side of all of them stands no partner at all, that is, a move beyond the limit. Of
// swaps with the same fall the one with the least harm counts. That of the two moves together is not the sum
// of both when they share nets, but near it.
// Cost of a call: a sort of the cells, and for each overfull part the bisections of its cells in every part.

#include "state.h"

#include <algorithm>

namespace kapris::engine::safe
{

namespace
{

// Swaps of the same fall that are compared by harm for one overfull part.
enum { COMPARED = 256 };
// Bisections for one overfull part after which a swap with the largest fall is good enough.
enum { ENOUGH_STEPS = 4096 };
// Bisections, and four for each cell of each call, in all calls together: bounds the time to a few seconds
// when cells are so many and so heavy that swaps make little progress. Packing takes over from there.
constexpr std::int64_t MAX_STEPS = 50000000;

enum { NO_CELL = -1 };

struct Swap {
  int out, in, target; // out goes to target, in comes from there or is NO_CELL
  std::int64_t fall;   // of the total excess; 0: no swap
  Harm harm;
};

struct Lists {
  int *start; // [nparts+1]
  int *cells; // movable cells, by part, then weight, then number
  int *stale; // [nparts] 1: a swap of this call has changed the part
  int ncompared;
};

} // namespace

static Lists CreateLists(const Rebalancing *balance)
{
  const BalanceProblem *problem = balance->problem;
  const int *part = balance->part;
  Lists lists = {imalloc__(problem->nparts + static_cast<std::int64_t>(1), "Rebalance: start"),
                 imalloc__(problem->ncells, "Rebalance: cells"),
                 ismalloc__(problem->nparts, 0, "Rebalance: stale"), 0};
  int n = 0;

  for (int i = 0; i < problem->ncells; i++)
    if (CanHelp(problem, i))
      lists.cells[n++] = i;
  std::sort(lists.cells, lists.cells + n, [problem, part](int a, int b) {
    if (part[a] != part[b])
      return part[a] < part[b];
    return problem->cellwgt[a] != problem->cellwgt[b] ? problem->cellwgt[a] < problem->cellwgt[b] : a < b;
  });
  for (int p = 0, i = 0; p <= problem->nparts; p++) {
    while (i < n && part[lists.cells[i]] < p)
      i++;
    lists.start[p] = i;
  }
  return lists;
}

static void FreeLists(Lists *lists)
{
  QVfree__(&lists->start, &lists->cells, &lists->stale);
}

static Harm HarmOfSwap(Rebalancing *balance, const Swap *swap)
{
  GatherHarm(balance, swap->out);
  Harm harm = HarmOfTarget(balance, swap->target);

  if (swap->in != NO_CELL) {
    GatherHarm(balance, swap->in);
    const Harm back = HarmOfTarget(balance, balance->part[swap->out]);
    harm = {harm.first + back.first, harm.second + back.second};
  }
  return harm;
}

static void Compare(Rebalancing *balance, Lists *lists, Swap swap, Swap *best)
{
  const std::int64_t *wgt = balance->problem->cellwgt;
  const std::int64_t d = wgt[swap.out] - (swap.in == NO_CELL ? 0 : wgt[swap.in]);
  const std::int64_t excess = -balance->room[balance->part[swap.out]], room = balance->room[swap.target];

  swap.fall = d > 0 ? std::min(d, excess) - std::max<std::int64_t>(0, d - room) : 0;
  if (swap.fall <= 0 || swap.fall < best->fall)
    return;
  if (swap.fall > best->fall)
    lists->ncompared = 0;
  else if (lists->ncompared >= COMPARED)
    return;
  lists->ncompared++;
  swap.harm = HarmOfSwap(balance, &swap);
  if (swap.fall > best->fall || IsLess(swap.harm, best->harm))
    *best = swap;
}

// Compares the swaps of one cell with part q.
static void ComparePartners(Rebalancing *balance, Lists *lists, int out, int q, Swap *best)
{
  const std::int64_t *wgt = balance->problem->cellwgt;
  const std::int64_t widest = std::max(-balance->room[balance->part[out]], balance->room[q]);
  const int *begin = lists->cells + lists->start[q], *end = lists->cells + lists->start[q + 1];
  const int *heavier = std::lower_bound(begin, end, wgt[out] - widest,
                                        [wgt](int cell, std::int64_t weight) { return wgt[cell] < weight; });

  if (heavier < end)
    Compare(balance, lists, {out, *heavier, q, 0, {0, 0}}, best);
  Compare(balance, lists, {out, heavier > begin ? heavier[-1] : NO_CELL, q, 0, {0, 0}}, best);
}

// Starts behind p, so that the partners do not always come from the same parts.
static Swap FindSwap(Rebalancing *balance, Lists *lists, int p)
{
  Swap best = {NO_CELL, NO_CELL, NO_CELL, 0, {0, 0}};
  const std::int64_t most = std::min(-balance->room[p], balance->room[balance->contest[1]]);
  const std::int64_t enough = balance->steps + ENOUGH_STEPS;
  const int nparts = balance->problem->nparts;

  lists->ncompared = 0;
  for (int n = 1; n < nparts; n++) {
    const int q = p + n < nparts ? p + n : p + n - nparts;
    if (balance->room[q] <= 0 || lists->stale[q])
      continue;
    for (int k = lists->start[p]; k < lists->start[p + 1]; k++) {
      // No fall can be larger, and enough of them were compared.
      if (best.fall == most && (lists->ncompared >= COMPARED || balance->steps >= enough))
        return best;
      ComparePartners(balance, lists, lists->cells[k], q, &best);
      Breathe(balance->problem, balance->steps++);
    }
  }
  return best;
}

static void Apply(Rebalancing *balance, Lists *lists, const Swap *swap)
{
  const int source = balance->part[swap->out];

  MoveCell(balance, swap->out, swap->target);
  if (swap->in != NO_CELL)
    MoveCell(balance, swap->in, source);
  lists->stale[source] = lists->stale[swap->target] = 1;
}

bool RunSwaps(Rebalancing *balance)
{
  const std::int64_t before = balance->excess;

  if (balance->steps > MAX_STEPS)
    return false;
  Lists lists = CreateLists(balance);
  balance->steps += 4 * static_cast<std::int64_t>(balance->problem->ncells); // a sort, and the next moves
  for (int p = 0; p < balance->problem->nparts; p++) {
    if (balance->room[p] >= 0 || lists.stale[p])
      continue;
    const Swap swap = FindSwap(balance, &lists, p);
    if (swap.fall > 0)
      Apply(balance, &lists, &swap);
  }
  FreeLists(&lists);
  return balance->excess < before;
}

} // namespace kapris::engine::safe
