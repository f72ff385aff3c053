// lib/rebalance/state.h - what the steps of rebalancing share; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "rebalance.h"

#include "base/check.h"
#include "base/hooks.h"
#include "base/memory.h"

namespace kapris::engine::safe
{

using namespace base;

// ----------------------------------------------------------------------------------------------------------
// The state (rebalance_state.cpp)

// Of a move, negative for a gain.
using Harm = Score;

// What a net knows of a part that it touches.
struct PartPins {
  int pid;   // part
  int npins; // its pins there
};

struct NetParts {
  int ndegrees;      // parts that the net touches
  PartPins *degrees; // [ndegrees], room for one entry per pin
};

enum Wanted { LESS_WEIGHT, A_CELL, MORE_WEIGHT };

struct Rebalancing {
  const BalanceProblem *problem;
  int *part;           // the caller's
  std::int64_t *room;  // [nparts] limit less weight; negative: the part is overfull
  std::int64_t excess; // sum of the negative rooms, as a positive number
  std::int64_t *spare; // [nparts] weight less minimum
  int *counts;         // [nparts] cells
  Wanted wanted;       // what RunMoves is to bring about
  int lacking;         // the first part that lacks that, if it is not room; nparts if none does
  std::int64_t steps;  // taken by the search for swaps so far
  std::int64_t nread;  // entries of the nets' lists read by GatherHarm so far
  int *contest;        // [2 nparts] tournament over the parts: entry 1 is the one with the most room
  int *incptr, *incind;
  NetParts *nets; // [nnets] the parts that each net touches
  PartPins *netparts;

  // The harm of moving one cell, by target (GatherHarm).
  std::int64_t newparts, newcut; // to a part that none of its nets touches: rise of parts touched, of the cut
  std::int64_t *joined, *mended; // [nparts] what a target saves of the two
  int *touched, ntouched;        // the targets for which joined is not 0
};

Rebalancing OpenRebalancing(const BalanceProblem *problem, int *part);
void CloseRebalancing(Rebalancing *balance);
// Counts rooms and nets anew after part was rewritten as a whole.
void ReloadRebalancing(Rebalancing *balance);

void GatherHarm(Rebalancing *balance, int cell);
// Of moving the cell of the last GatherHarm to another part.
Harm HarmOfTarget(const Rebalancing *balance, int target);
void MoveCell(Rebalancing *balance, int cell, int target);

int PinsIn(const NetParts *net, int p);

// Called in loops, with a number that counts up by about a microsecond's work.
inline void Breathe(const BalanceProblem *problem, std::int64_t step)
{
  if ((step & 1023) == 0 && problem->proceed != nullptr && !problem->proceed(problem->owner))
    throw StopRun{};
}

inline bool IsFree(const BalanceProblem *problem, int cell)
{
  return problem->fixed == nullptr || problem->fixed[cell] < 0;
}

// Whether moving the cell changes the weight of a part.
inline bool CanHelp(const BalanceProblem *problem, int cell)
{
  return problem->cellwgt[cell] > 0 && IsFree(problem, cell);
}

inline bool Lacks(const Rebalancing *balance, int p)
{
  return balance->wanted == A_CELL ? balance->counts[p] == 0 : balance->spare[p] < 0;
}

inline bool IsLess(Harm a, Harm b)
{
  return a.first != b.first ? a.first < b.first : a.second < b.second;
}

// ----------------------------------------------------------------------------------------------------------
// The steps

// rebalance_moves.cpp: cells go from overfull parts to parts with room, least harm first; or from parts that have them
// to spare to those that lack a cell or weight, as balance->wanted says. Whether the excess fell.
bool RunMoves(Rebalancing *balance);
// Moves that lower the objective and respect the limits.
void Polish(Rebalancing *balance);

// rebalance_swaps.cpp: exchanges that let the total excess fall, at most one per part. Whether there was any.
bool RunSwaps(Rebalancing *balance);

// rebalance_pack.cpp: parts for all free cells by their weights alone.
// Rooms of all parts can add up to more than any weight.
__extension__ typedef __int128 WideSum;

struct Packing {
  const BalanceProblem *problem;
  int n;              // cells to place: the free ones that have weight
  int *order;         // [n] heaviest first
  int *place;         // [n] part of order[i]
  std::int64_t *room; // [nparts] what the fixed cells and the cells placed so far leave of the limit
  int *byroom;        // [nparts] parts by increasing room, then number
  std::int64_t total; // weight of the cells to place
  WideSum slack;      // room of all parts less total
  WideSum waste;      // room in parts that the lightest cell no longer fits into
};

Packing CreatePacking(const BalanceProblem *problem);
void FreePacking(Packing *packing);
// Whether sums and counts of weights rule every placement out.
bool CannotPack(const Packing *packing);
// Places cells in their parts where they fit, heavy ones first, and the others as tightly as possible. Writes
// part.
void PackNear(Packing *packing, int *part);
// Searches for a placement within the limits; writes part if it finds one.
BalanceVerdict SearchPacking(Packing *packing, int *part);

} // namespace kapris::engine::safe
