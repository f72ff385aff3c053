// lib/rebalance/moves.cpp - moves single cells out of overfull parts, or into parts that lack them, and polishes.
// SPDX-License-Identifier: MIT
//
// A heap holds the cells that may go, those of the overfull parts or those that parts can spare, under the rank that
// their best move had when last looked at:
//   look     at the first cell again: others may have moved since     Advance
//   correct  its place in the heap, if its move has become worse      Settle
//   move     it otherwise                                             MoveCell
//   look     at the pins of the nets that the move changed decisively  LookAround
// so that only ranks that improved unseen can be out of date, in large nets. A target always has room for the
// cell, hence no part ever becomes overfull. Cost: O(log n) and one look per cell moved, per correction and
// per neighbour looked at again.

#include "state.h"

#include <algorithm>
#include <cstdlib>

namespace kapris::engine::safe
{

namespace
{

// Pins of larger nets are not looked at again after a move: one cell rarely decides the fate of such a net.
enum { LARGE_NET = 200 };
// Polishing ends early when so many entries of the lists of parts have been read: about a second, which only
// nets with many pins in many parts take.
enum { POLISH_PASSES = 2, POLISH_ENTRIES = 200000000 };
enum { NOT_QUEUED = -1 };

struct Move {
  int target; // -1: none has room
  Harm harm;
};

constexpr Move NOWHERE = {-1, {0, 0}};

// The harm for each unit of weight that has to go. double on purpose: 64 bits are not enough to compare
// fractions exactly, and every machine rounds one division in the same way.
struct Rank {
  double first, second;
  std::int64_t misfit; // distance of the weight from the excess of its part
  int cell;
};

struct Queue {
  int n;
  Rank *heap;
  int *locator; // [ncells] position in heap
};

} // namespace

// Of targets with equal harm the one with more room.
static bool IsBetterTarget(const Rebalancing *balance, int q, Harm harm, const Move *best)
{
  if (best->target < 0 || IsLess(harm, best->harm))
    return true;
  if (IsLess(best->harm, harm))
    return false;
  return balance->room[q] != balance->room[best->target] ? balance->room[q] > balance->room[best->target]
                                                         : q < best->target;
}

static bool IsTarget(const Rebalancing *balance, int q, std::int64_t w)
{
  if (balance->room[q] < w)
    return false;
  return balance->wanted == LESS_WEIGHT || (Lacks(balance, q) && (w > 0 || balance->wanted == A_CELL));
}

// The parts that no net of the cell touches differ only in room: the roomiest of all stands for them, or the first that
// lacks something.
static Move FindMove(Rebalancing *balance, int cell)
{
  const std::int64_t w = balance->problem->cellwgt[cell];
  Move best = NOWHERE;

  GatherHarm(balance, cell);
  for (int k = -1; k < balance->ntouched; k++) {
    const int other = balance->wanted == LESS_WEIGHT ? balance->contest[1] : balance->lacking;
    const int q = k < 0 ? other : balance->touched[k];
    if (q == balance->part[cell] || !IsTarget(balance, q, w))
      continue;
    const Harm harm = HarmOfTarget(balance, q);
    if (IsBetterTarget(balance, q, harm, &best))
      best = {q, harm};
  }
  return best;
}

static double PerUnit(std::int64_t harm, std::int64_t weight)
{
  // A gain is a gain whatever the weight.
  return harm > 0 ? static_cast<double>(harm) / static_cast<double>(weight) : static_cast<double>(harm);
}

static Rank RankOf(const Rebalancing *balance, int cell, const Move *move)
{
  const std::int64_t w = balance->problem->cellwgt[cell];
  const std::int64_t weight = balance->wanted == LESS_WEIGHT ? -balance->room[balance->part[cell]]
                              : balance->wanted == A_CELL    ? 1
                                                             : -balance->spare[move->target];
  const std::int64_t useful = std::max<std::int64_t>(1, std::min(w, weight));

  return {PerUnit(move->harm.first, useful), PerUnit(move->harm.second, useful), std::abs(weight - w), cell};
}

static bool IsBefore(const Rank *a, const Rank *b)
{
  if (a->first != b->first)
    return a->first < b->first;
  if (a->second != b->second)
    return a->second < b->second;
  return a->misfit != b->misfit ? a->misfit < b->misfit : a->cell < b->cell;
}

static void Store(Queue *queue, int at, Rank rank)
{
  queue->heap[at] = rank;
  queue->locator[rank.cell] = at;
}

// Settles the rank in the subtree or on the path through the free position at.
static void Settle(Queue *queue, int at, Rank rank)
{
  for (int up = (at - 1) / 2; at > 0 && IsBefore(&rank, &queue->heap[up]); at = up, up = (at - 1) / 2)
    Store(queue, at, queue->heap[up]);
  for (int down = 2 * at + 1; down < queue->n; at = down, down = 2 * at + 1) {
    if (down + 1 < queue->n && IsBefore(&queue->heap[down + 1], &queue->heap[down]))
      down++;
    if (!IsBefore(&queue->heap[down], &rank))
      break;
    Store(queue, at, queue->heap[down]);
  }
  Store(queue, at, rank);
}

static void Remove(Queue *queue, int cell)
{
  const int at = queue->locator[cell];

  if (at == NOT_QUEUED)
    return;
  queue->locator[cell] = NOT_QUEUED;
  if (at < --queue->n)
    Settle(queue, at, queue->heap[queue->n]);
}

// Queues the cell under the rank of its best move, or takes it out when it has none.
static void Look(Rebalancing *balance, Queue *queue, int cell)
{
  const Move move = FindMove(balance, cell);

  if (move.target < 0) {
    Remove(queue, cell);
    return;
  }
  if (queue->locator[cell] == NOT_QUEUED)
    queue->locator[cell] = queue->n++;
  Settle(queue, queue->locator[cell], RankOf(balance, cell, &move));
}

static bool IsCandidate(const Rebalancing *balance, int cell)
{
  const int source = balance->part[cell];

  if (balance->wanted == LESS_WEIGHT)
    return balance->room[source] < 0 && CanHelp(balance->problem, cell);
  return IsFree(balance->problem, cell) && balance->spare[source] >= balance->problem->cellwgt[cell] &&
         (balance->counts[source] > 1 || balance->problem->allowempty);
}

static void FillQueue(Rebalancing *balance, Queue *queue)
{
  const int ncells = balance->problem->ncells;

  queue->n = 0;
  iset__(ncells, NOT_QUEUED, queue->locator);
  for (int i = 0; i < ncells; i++) {
    Breathe(balance->problem, i);
    if (IsCandidate(balance, i))
      Look(balance, queue, i);
  }
}

// The pins whose moves can have become better: those of nets that the cell left, or left to one last pin, and
// those of nets that it brought to a new part.
static void LookAround(Rebalancing *balance, Queue *queue, int cell, int source)
{
  const BalanceProblem *problem = balance->problem;
  const int target = balance->part[cell];

  for (int k = balance->incptr[cell]; k < balance->incptr[cell + 1]; k++) {
    const int j = balance->incind[k], *pin = problem->netind + problem->netptr[j];
    const int *end = problem->netind + problem->netptr[j + 1];
    if (end - pin > LARGE_NET ||
        (PinsIn(&balance->nets[j], source) > 1 && PinsIn(&balance->nets[j], target) > 1))
      continue;
    for (; pin < end; pin++)
      if (IsCandidate(balance, *pin))
        Look(balance, queue, *pin);
  }
}

// Whether there is anything left to do; goes on to the next part that lacks what is wanted.
static bool IsWanting(Rebalancing *balance)
{
  if (balance->wanted == LESS_WEIGHT)
    return balance->excess > 0;
  while (balance->lacking < balance->problem->nparts && !Lacks(balance, balance->lacking))
    balance->lacking++;
  return balance->lacking < balance->problem->nparts;
}

// The first cell of the queue moves, or takes the place that it should have.
static void Advance(Rebalancing *balance, Queue *queue)
{
  const Rank first = queue->heap[0];
  const int cell = first.cell, source = balance->part[cell];
  const Move move = IsCandidate(balance, cell) ? FindMove(balance, cell) : NOWHERE;

  if (move.target < 0) {
    Remove(queue, cell);
    return;
  }
  const Rank rank = RankOf(balance, cell, &move);
  if (IsBefore(&first, &rank)) {
    Settle(queue, 0, rank);
    return;
  }
  Remove(queue, cell);
  MoveCell(balance, cell, move.target);
  // For the part that is lacking by now: cells that have no target leave the queue.
  if (IsWanting(balance))
    LookAround(balance, queue, cell, source);
}

bool RunMoves(Rebalancing *balance)
{
  const int ncells = balance->problem->ncells;
  const std::int64_t before = balance->excess;
  Queue queue = {0, QVarray<Rank>(ncells, "Rebalance: heap"), imalloc__(ncells, "Rebalance: locator")};

  FillQueue(balance, &queue);
  for (std::int64_t n = 0; queue.n > 0 && IsWanting(balance); n += 16) {
    Breathe(balance->problem, n);
    Advance(balance, &queue);
  }
  QVfree__(&queue.heap, &queue.locator);
  return balance->excess < before;
}

void Polish(Rebalancing *balance)
{
  const BalanceProblem *problem = balance->problem;
  const std::int64_t last = balance->nread + POLISH_ENTRIES;

  for (int pass = 0; pass < POLISH_PASSES; pass++) {
    for (int i = 0; i < problem->ncells && balance->nread < last; i++) {
      Breathe(problem, i);
      if (!IsFree(problem, i))
        continue;
      const Move move = FindMove(balance, i);
      if (move.target >= 0 && IsLess(move.harm, {0, 0}))
        MoveCell(balance, i, move.target);
    }
  }
}

} // namespace kapris::engine::safe
