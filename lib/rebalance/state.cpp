// lib/rebalance/state.cpp - rooms of the parts, parts of the nets, and the harm of a move.
// SPDX-License-Identifier: MIT
//
// Moving a cell changes the number of parts that a net touches by
//   (no pin in the target yet) - (no other pin in the source)
// and SOED by that times the weight, plus the change of the cut. The sums over the cell's nets are gathered
// for all targets at once, in time proportional to the lists of parts of these nets.
// Memory: three words per pin, one per cell and per net, nine per part.

#include "state.h"

#include <algorithm>

namespace kapris::engine::safe
{

static std::int64_t ExcessOf(std::int64_t room)
{
  return room < 0 ? -room : 0;
}

static void BuildIncidence(const BalanceProblem *problem, int *incptr, int *incind)
{
  iset__(static_cast<std::int64_t>(problem->ncells) + 1, 0, incptr);
  for (int k = 0; k < problem->netptr[problem->nnets]; k++)
    incptr[problem->netind[k]]++;
  for (int i = 0; i < problem->ncells; i++)
    incptr[i + 1] += incptr[i];
  // Filled from the end, each pointer comes to stand at the first net of its cell.
  for (int j = problem->nnets - 1; j >= 0; j--)
    for (int k = problem->netptr[j]; k < problem->netptr[j + 1]; k++)
      incind[--incptr[problem->netind[k]]] = j;
}

// The part with more room, the lower one of equals.
static int Roomier(const std::int64_t *room, int p, int q)
{
  if (room[p] != room[q])
    return room[p] > room[q] ? p : q;
  return std::min(p, q);
}

static void CountRooms(Rebalancing *balance)
{
  const BalanceProblem *problem = balance->problem;
  std::int64_t total = 0;

  for (int i = 0; i < problem->ncells; i++)
    total += problem->cellwgt[i];
  for (int p = 0; p < problem->nparts; p++) {
    balance->room[p] = std::min(problem->limits[p], total); // sums of rooms must not overflow
    balance->spare[p] = problem->minimums != nullptr ? -problem->minimums[p] : 0;
    balance->counts[p] = 0;
  }
  for (int i = 0; i < problem->ncells; i++) {
    balance->room[balance->part[i]] -= problem->cellwgt[i];
    balance->spare[balance->part[i]] += problem->cellwgt[i];
    balance->counts[balance->part[i]]++;
  }

  balance->excess = 0;
  for (int p = 0; p < problem->nparts; p++) {
    balance->excess += ExcessOf(balance->room[p]);
    balance->contest[problem->nparts + p] = p;
  }
  for (int k = problem->nparts - 1; k >= 1; k--)
    balance->contest[k] = Roomier(balance->room, balance->contest[2 * k], balance->contest[2 * k + 1]);
}

// Parts are found again by their place in the list of the current net: a search would cost the length of the
// list for every pin of a net that spans thousands of parts.
static void CountParts(Rebalancing *balance)
{
  const BalanceProblem *problem = balance->problem;
  int *place = iset__(problem->nparts, 0, balance->touched);

  for (int j = 0; j < problem->nnets; j++) {
    NetParts *net = &balance->nets[j];
    net->ndegrees = 0;
    net->degrees = balance->netparts + problem->netptr[j];
    for (int k = problem->netptr[j]; k < problem->netptr[j + 1]; k++) {
      const int p = balance->part[problem->netind[k]];
      if (place[p] >= net->ndegrees || net->degrees[place[p]].pid != p) {
        place[p] = net->ndegrees++;
        net->degrees[place[p]] = {p, 0};
      }
      net->degrees[place[p]].npins++;
    }
  }
  balance->ntouched = 0;
}

void ReloadRebalancing(Rebalancing *balance)
{
  CountRooms(balance);
  // The list of touched targets is about to be overwritten.
  std::fill_n(balance->joined, balance->problem->nparts, 0);
  std::fill_n(balance->mended, balance->problem->nparts, 0);
  CountParts(balance);
}

Rebalancing OpenRebalancing(const BalanceProblem *problem, int *part)
{
  const int npins = problem->netptr[problem->nnets], nparts = problem->nparts;
  Rebalancing balance = {};

  balance.problem = problem;
  balance.part = part;
  balance.room = QVarray<std::int64_t>(nparts, "Rebalance: room");
  balance.spare = QVarray<std::int64_t>(nparts, "Rebalance: spare");
  balance.counts = imalloc__(nparts, "Rebalance: counts");
  balance.wanted = LESS_WEIGHT;
  balance.contest = imalloc__(2 * static_cast<std::int64_t>(nparts), "Rebalance: contest");
  balance.incptr = imalloc__(static_cast<std::int64_t>(problem->ncells) + 1, "Rebalance: incptr");
  balance.incind = imalloc__(npins, "Rebalance: incind");
  balance.nets = QVarray<NetParts>(problem->nnets, "Rebalance: nets");
  balance.netparts = QVarray<PartPins>(npins, "Rebalance: netparts");
  balance.joined = QVarray<std::int64_t>(nparts, "Rebalance: joined");
  balance.mended = QVarray<std::int64_t>(nparts, "Rebalance: mended");
  balance.touched = imalloc__(nparts, "Rebalance: touched");

  BuildIncidence(problem, balance.incptr, balance.incind);
  ReloadRebalancing(&balance);
  return balance;
}

void CloseRebalancing(Rebalancing *balance)
{
  QVfree__(&balance->room, &balance->spare, &balance->counts, &balance->contest, &balance->incptr,
           &balance->incind, &balance->nets, &balance->netparts, &balance->joined, &balance->mended,
           &balance->touched);
}

// The net's entry for part p; at its end when there is none.
static PartPins *FindPart(const NetParts *net, int p)
{
  PartPins *entry = net->degrees, *end = net->degrees + net->ndegrees;

  while (entry < end && entry->pid != p)
    entry++;
  return entry;
}

int PinsIn(const NetParts *net, int p)
{
  const PartPins *entry = FindPart(net, p);

  return entry == net->degrees + net->ndegrees ? 0 : entry->npins;
}

void GatherHarm(Rebalancing *balance, int cell)
{
  const BalanceProblem *problem = balance->problem;
  const int source = balance->part[cell];

  for (; balance->ntouched > 0; balance->ntouched--) {
    const int q = balance->touched[balance->ntouched - 1];
    balance->joined[q] = balance->mended[q] = 0;
  }
  balance->newparts = balance->newcut = 0;

  for (int k = balance->incptr[cell]; k < balance->incptr[cell + 1]; k++) {
    const NetParts *net = &balance->nets[balance->incind[k]];
    const std::int64_t w = problem->netwgt[balance->incind[k]];
    const bool alone = PinsIn(net, source) == 1;

    balance->nread += net->ndegrees;
    if (w == 0)
      continue;
    balance->newparts += alone ? 0 : w;
    balance->newcut += net->ndegrees == 1 ? w : 0;
    for (const PartPins *entry = net->degrees; entry < net->degrees + net->ndegrees; entry++) {
      if (entry->pid == source)
        continue;
      if (balance->joined[entry->pid] == 0)
        balance->touched[balance->ntouched++] = entry->pid;
      balance->joined[entry->pid] += w;
      balance->mended[entry->pid] += alone && net->ndegrees == 2 ? w : 0;
    }
  }
}

Harm HarmOfTarget(const Rebalancing *balance, int target)
{
  const std::int64_t cut = balance->newcut - balance->mended[target];
  const std::int64_t soed = balance->newparts - balance->joined[target] + cut;

  return ScoreOf(balance->problem->goal, cut, soed);
}

static void ChangeRoom(Rebalancing *balance, int p, std::int64_t growth)
{
  const int nparts = balance->problem->nparts;

  balance->excess -= ExcessOf(balance->room[p]);
  balance->room[p] += growth;
  balance->spare[p] -= growth;
  balance->excess += ExcessOf(balance->room[p]);
  for (int k = (nparts + p) / 2; k >= 1; k /= 2)
    balance->contest[k] = Roomier(balance->room, balance->contest[2 * k], balance->contest[2 * k + 1]);
}

void MoveCell(Rebalancing *balance, int cell, int target)
{
  const int source = balance->part[cell];
  const std::int64_t w = balance->problem->cellwgt[cell];

  for (int k = balance->incptr[cell]; k < balance->incptr[cell + 1]; k++) {
    NetParts *net = &balance->nets[balance->incind[k]];
    PartPins *from = FindPart(net, source);
    if (--from->npins == 0)
      *from = net->degrees[--net->ndegrees];
    PartPins *to = FindPart(net, target);
    if (to == net->degrees + net->ndegrees)
      net->degrees[net->ndegrees++] = {target, 0};
    to->npins++;
  }
  ChangeRoom(balance, source, w);
  ChangeRoom(balance, target, -w);
  balance->counts[source]--;
  balance->counts[target]++;
  balance->part[cell] = target;
}

} // namespace kapris::engine::safe
