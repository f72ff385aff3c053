// lib/api/rebalance_state.h - what the steps of rebalancing share; private to rebalance*.cpp.
// SPDX-License-Identifier: MIT
#pragma once

#include "rebalance.h"

#include "control/ctrl.h"
#include "core/core.h"

// ----------------------------------------------------------------------------------------------------------
// The state (rebalance_state.cpp)

// The rise of the objectives by a move, negative for a gain: first the one that the caller asked for.
struct Harm {
  std::int64_t first, second;
};

struct Balance {
  const BalanceProblem *problem;
  int *part;           // the caller's
  std::int64_t *room;  // [nparts] limit less weight; negative: the part is overfull
  std::int64_t excess; // sum of the negative rooms, as a positive number
  std::int64_t steps;  // taken by the search for swaps so far
  std::int64_t nread;  // entries of the nets' lists read by GatherHarm__ so far
  int *contest;        // [2 nparts] tournament over the parts: entry 1 is the one with the most room
  int *incptr, *incind;
  NetInfo *nets; // [nnets] the parts that each net touches
  NetDegree *netparts;

  // The harm of moving one cell, by target (GatherHarm__).
  std::int64_t newparts, newcut; // to a part that none of its nets touches: rise of parts touched, of the cut
  std::int64_t *joined, *mended; // [nparts] what a target saves of the two
  int *touched, ntouched;        // the targets for which joined is not 0
};

Balance CreateBalance__(const BalanceProblem *problem, int *part);
void FreeBalance__(Balance *balance);
// Counts rooms and nets anew after part was rewritten as a whole.
void ReloadBalance__(Balance *balance);

void GatherHarm__(Balance *balance, int cell);
// Of moving the cell of the last GatherHarm__ to another part.
Harm HarmOfTarget__(const Balance *balance, int target);
void MoveCell__(Balance *balance, int cell, int target);

int PinsIn__(const NetInfo *net, int p);

// Called in loops, with a number that counts up by about a microsecond's work.
inline void Breathe__(const BalanceProblem *problem, std::int64_t step)
{
  if ((step & 1023) == 0 && problem->proceed != nullptr && !problem->proceed(problem->owner))
    throw StopRun{};
}

inline bool IsFree__(const BalanceProblem *problem, int cell)
{
  return problem->fixed == nullptr || problem->fixed[cell] < 0;
}

// Whether moving the cell changes the weight of a part.
inline bool CanHelp__(const BalanceProblem *problem, int cell)
{
  return problem->cellwgt[cell] > 0 && IsFree__(problem, cell);
}

inline bool IsLess__(Harm a, Harm b)
{
  return a.first != b.first ? a.first < b.first : a.second < b.second;
}

// ----------------------------------------------------------------------------------------------------------
// The steps

// rebalance_moves.cpp: cells go from overfull parts to parts with room, least harm first. Whether any did.
bool RunMoves__(Balance *balance);
// Moves that lower the objective and respect the limits.
void Polish__(Balance *balance);

// rebalance_swaps.cpp: exchanges that let the total excess fall, at most one per part. Whether there was any.
bool RunSwaps__(Balance *balance);

// rebalance_pack.cpp: parts for all free cells by their weights alone.
struct Packing {
  const BalanceProblem *problem;
  int n;              // cells to place: the free ones that have weight
  int *order;         // [n] heaviest first
  int *place;         // [n] part of order[i]
  std::int64_t *room; // [nparts] what the fixed cells and the cells placed so far leave of the limit
  int *byroom;        // [nparts] parts by increasing room, then number
  std::int64_t total; // weight of the cells to place
  std::int64_t slack; // room of all parts less total
  std::int64_t waste; // room in parts that the lightest cell no longer fits into
};

Packing CreatePacking__(const BalanceProblem *problem);
void FreePacking__(Packing *packing);
// Whether sums and counts of weights rule every placement out.
bool CannotPack__(const Packing *packing);
// Places cells in their parts where they fit, heavy ones first, and the others as tightly as possible. Writes
// part.
void PackNear__(Packing *packing, int *part);
// Searches for a placement within the limits; writes part if it finds one.
BalanceVerdict SearchPacking__(Packing *packing, int *part);
