// lib/rebalance/pack.cpp - places all free cells by weight alone, or shows that they cannot be placed.
// SPDX-License-Identifier: MIT
//
//   count    what no placement can satisfy                              CannotPack
//   near     heavy cells first, staying where they fit, else best fit   PackNear
//   search   branch and bound over the heaviest cells, best fit for the rest, once trying tight parts first
//            and once roomy ones                                        SearchPacking
// A cell of weight 1 fits wherever there is room, so that best fit fails only for lack of room or for heavy
// cells. Weights are multiples of their common divisor, and room beyond the last multiple is worth nothing:
// rooms are rounded down to it.
//
// What the search passes over. Only the room of a part counts for what follows, so that of the placements
// that differ by an exchange of the roles of two parts with the same room, or of two cells with the same
// weight, it keeps the one in which the earlier cell has the lower part. The first placement in this order,
// if there is any, obeys both rules at every step; hence both can be applied together. Room that is less than
// the lightest cell is wasted, and no more can be wasted than the slack.
// Cost: every change of a room moves the part in byroom, at most nparts words.

#include "state.h"

#include <algorithm>
#include <numeric>

namespace kapris::engine::safe
{

namespace
{

enum {
  SEARCH_DEPTH = 256,    // cells for which the search has a choice; the recursion is that deep
  SEARCH_NODES = 200000, // placements tried, for each of the two orders
  COUNTED_CELLS = 4096   // heaviest cells for which CannotPack counts the places
};

struct Search {
  bool roomyfirst;
  int depth;
  std::int64_t nodes;
  bool complete; // nothing was passed over that could be a placement
};

} // namespace

static auto ByRoom(const Packing *packing)
{
  return [room = packing->room](int p, int q) { return room[p] != room[q] ? room[p] < room[q] : p < q; };
}

static std::int64_t WasteOf(const Packing *packing, std::int64_t room)
{
  return room < packing->problem->cellwgt[packing->order[packing->n - 1]] ? room : 0;
}

// Empties the parts of all cells but the fixed ones.
static void ResetRooms(Packing *packing)
{
  const BalanceProblem *problem = packing->problem;
  std::int64_t divisor = 0;

  for (int i = 0; i < packing->n; i++)
    divisor = std::gcd(divisor, problem->cellwgt[packing->order[i]]);
  std::copy_n(problem->limits, problem->nparts, packing->room);
  for (int i = 0; i < problem->ncells; i++)
    if (!IsFree(problem, i))
      packing->room[problem->fixed[i]] -= problem->cellwgt[i];
  packing->slack = -packing->total;
  packing->waste = 0;
  for (int p = 0; p < problem->nparts; p++) {
    // More than total is as good as total.
    packing->room[p] = std::min(packing->room[p], packing->total);
    if (packing->room[p] > 0 && divisor > 0)
      packing->room[p] -= packing->room[p] % divisor;
    packing->slack += packing->room[p];
    packing->waste += packing->n > 0 ? WasteOf(packing, packing->room[p]) : 0;
    packing->byroom[p] = p;
  }
  std::sort(packing->byroom, packing->byroom + problem->nparts, ByRoom(packing));
}

Packing CreatePacking(const BalanceProblem *problem)
{
  const std::int64_t *wgt = problem->cellwgt;
  Packing packing = {};

  packing.problem = problem;
  packing.order = imalloc__(problem->ncells, "Rebalance: order");
  packing.place = imalloc__(problem->ncells, "Rebalance: place");
  packing.room = QVarray<std::int64_t>(problem->nparts, "Rebalance: packing room");
  packing.byroom = imalloc__(problem->nparts, "Rebalance: byroom");
  for (int i = 0; i < problem->ncells; i++)
    if (CanHelp(problem, i)) {
      packing.order[packing.n++] = i;
      packing.total += wgt[i];
    }
  std::sort(packing.order, packing.order + packing.n,
            [wgt](int a, int b) { return wgt[a] != wgt[b] ? wgt[a] > wgt[b] : a < b; });
  ResetRooms(&packing);
  return packing;
}

void FreePacking(Packing *packing)
{
  QVfree__(&packing->order, &packing->place, &packing->room, &packing->byroom);
}

bool CannotPack(const Packing *packing)
{
  const BalanceProblem *problem = packing->problem;
  const std::int64_t *wgt = problem->cellwgt;
  const int counted = std::min<int>(packing->n, COUNTED_CELLS);

  if (packing->slack < 0 || packing->room[packing->byroom[0]] < 0)
    return true;
  // The i heaviest cells need i places for the weight of the i-th.
  for (int i = 1; i <= counted; i++) {
    const std::int64_t w = wgt[packing->order[i - 1]];
    std::int64_t places = 0;
    if (i < packing->n && wgt[packing->order[i]] == w)
      continue;
    for (int k = problem->nparts - 1; k >= 0 && places < i; k--)
      places += packing->room[packing->byroom[k]] / w;
    if (places < i)
      return true;
  }
  return false;
}

static void ChangeRoom(Packing *packing, int p, std::int64_t growth)
{
  int *begin = packing->byroom, *end = begin + packing->problem->nparts;
  int *at = std::lower_bound(begin, end, p, ByRoom(packing));

  packing->waste -= WasteOf(packing, packing->room[p]);
  packing->room[p] += growth;
  packing->waste += WasteOf(packing, packing->room[p]);
  if (growth < 0)
    std::rotate(std::lower_bound(begin, at, p, ByRoom(packing)), at, at + 1);
  else
    std::rotate(at, at + 1, std::lower_bound(at + 1, end, p, ByRoom(packing)));
}

static std::int64_t WeightOf(const Packing *packing, int i)
{
  return packing->problem->cellwgt[packing->order[i]];
}

static void Place(Packing *packing, int i, int p)
{
  packing->place[i] = p;
  ChangeRoom(packing, p, -WeightOf(packing, i));
}

static void Unplace(Packing *packing, int i)
{
  ChangeRoom(packing, packing->place[i], WeightOf(packing, i));
}

// Where in byroom the parts begin that have room for cell i.
static int FirstFit(const Packing *packing, int i)
{
  const std::int64_t *room = packing->room;
  const int *begin = packing->byroom, *end = begin + packing->problem->nparts;

  return static_cast<int>(std::lower_bound(begin, end, WeightOf(packing, i),
                                           [room](int p, std::int64_t weight) { return room[p] < weight; }) -
                          begin);
}

static void WritePlaces(const Packing *packing, int *part)
{
  for (int i = 0; i < packing->n; i++)
    part[packing->order[i]] = packing->place[i];
}

void PackNear(Packing *packing, int *part)
{
  const int last = packing->problem->nparts - 1;

  ResetRooms(packing);
  for (int i = 0; i < packing->n; i++) {
    Breathe(packing->problem, i);
    const int p = part[packing->order[i]];
    const bool stays = packing->room[p] >= WeightOf(packing, i);
    // What fits nowhere goes where it exceeds the limit least.
    Place(packing, i, stays ? p : packing->byroom[std::min(FirstFit(packing, i), last)]);
  }
  WritePlaces(packing, part);
}

// Best fit for the cells below the depth of the search.
static bool PlaceRest(Packing *packing, Search *search)
{
  for (int i = search->depth; i < packing->n; i++) {
    const int k = FirstFit(packing, i);
    Breathe(packing->problem, search->nodes++);
    if (k == packing->problem->nparts) {
      while (--i >= search->depth)
        Unplace(packing, i);
      search->complete = false; // another choice might have done
      return false;
    }
    Place(packing, i, packing->byroom[k]);
  }
  return true;
}

// Whether another part or another order of the same cells stands for this one.
static bool IsRepeated(const Packing *packing, int i, int k)
{
  const int p = packing->byroom[k];

  if (k > 0 && packing->room[packing->byroom[k - 1]] == packing->room[p])
    return true;
  return i > 0 && WeightOf(packing, i) == WeightOf(packing, i - 1) && p < packing->place[i - 1];
}

// Places the cells from i on.
static bool PlaceFrom(Packing *packing, Search *search, int i)
{
  const int first = i < search->depth ? FirstFit(packing, i) : 0, nparts = packing->problem->nparts;

  if (i == search->depth)
    return PlaceRest(packing, search);
  // A cell that is placed and taken back leaves byroom as it was.
  for (int n = first; n < nparts; n++) {
    const int k = search->roomyfirst ? first + nparts - 1 - n : n;
    if (IsRepeated(packing, i, k))
      continue;
    Breathe(packing->problem, search->nodes);
    if (search->nodes++ >= SEARCH_NODES) {
      search->complete = false;
      return false;
    }
    Place(packing, i, packing->byroom[k]);
    if (packing->waste <= packing->slack && PlaceFrom(packing, search, i + 1))
      return true;
    Unplace(packing, i);
  }
  return false;
}

BalanceVerdict SearchPacking(Packing *packing, int *part)
{
  for (const bool roomyfirst : {false, true}) {
    Search search = {roomyfirst, std::min<int>(packing->n, SEARCH_DEPTH), 0, true};
    ResetRooms(packing);
    if (PlaceFrom(packing, &search, 0)) {
      WritePlaces(packing, part);
      return BALANCED;
    }
    if (search.complete)
      return IMPOSSIBLE;
  }
  return NOT_FOUND;
}

} // namespace kapris::engine::safe
