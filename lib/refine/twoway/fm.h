// lib/refine/twoway/fm.h - what the two-way passes share: the state of a pass, and its counts and bounds; private to
// this folder. How a move changes gains stands in moves.h.
// SPDX-License-Identifier: MIT
#pragma once

#include "pqueue.h"
#include "twoway.h"

#include <cstring>

namespace kapris::engine::KAPRIS_ENGINE
{

// FMState::place: the side of a cell, and LOCKED when it cannot move in this pass: it has moved or was skipped, is an
// anchor, or belongs to a side that is not queued.
enum { LOCKED = 2 };

// ----------------------------------------------------------------------------------------------------------
// A net

// What the passes know of a net. Its pins follow, in whole units of this record, so that they share its cache line.
// Only the functions below look into the counts and the size, which hold a bit each beside their number.
struct FMNet {
  int npins[2]; // on each side; with PIN_LOCKED where one cannot move, in passes that recompute all gains
  int pins[2];  // of each side, combined by exclusive or: where one is left, which
  Weight weight;
  int size; // with UNCUT where all pins were on one side at the start of the pass
};

// The sign of the number that they stand beside: a comparison with a small count fails without a mask.
enum { PIN_LOCKED = INT_MIN, UNCUT = INT_MIN };
enum { FM_UNIT = sizeof(FMNet) / sizeof(int) }; // pins in the room of a record

inline int FM_PinsOn(const FMNet *net, int side)
{
  return net->npins[side] & ~PIN_LOCKED;
}

// The same, but negative where one of them is locked.
inline int FM_PinsOnIfFree(const FMNet *net, int side)
{
  return net->npins[side];
}

inline void FM_LockPin(FMNet *net, int side)
{
  net->npins[side] |= PIN_LOCKED;
}

inline int FM_Size(const FMNet *net)
{
  return net->size & ~UNCUT;
}

inline bool FM_WasCut(const FMNet *net)
{
  return net->size >= 0;
}

// Units of a net's record and its pins.
inline unsigned FM_Units(int size)
{
  return 1 + (static_cast<unsigned>(size) + FM_UNIT - 1) / FM_UNIT;
}

inline const int *FM_Pins(const FMNet *net)
{
  return reinterpret_cast<const int *>(net + 1);
}

// How the pins of a net change when c moves to side to. The exclusive or of a side's pins loses or gains c; of a single
// pin it is the pin itself, so the last one on a side is known without a search.
inline void FM_MovePin(FMNet *net, int c, int from, int to)
{
  net->npins[from]--;
  net->npins[to]++;
  net->pins[from] ^= c;
  net->pins[to] ^= c;
}

// Its counts for side 0 at the start of the pass.
struct FMNetStart {
  int npins, pins;
};

// ----------------------------------------------------------------------------------------------------------
// A changed gain: one word in the narrow form, which is written at once

#if KAPRIS_WEIGHT_BITS == 64

struct FMChange {
  Weight gain;
  unsigned place; // cell, side in bit 31
};

inline FMChange FM_Change(int cell, int side, Weight gain)
{
  return {gain, static_cast<unsigned>(side) << 31 | static_cast<unsigned>(cell)};
}

inline FMChange FM_ChangeOf(FMChange ofcell0, unsigned cell)
{
  return {ofcell0.gain, ofcell0.place | cell};
}

inline unsigned FM_ChangedPlace(FMChange change)
{
  return change.place;
}

inline Weight FM_ChangedGain(FMChange change)
{
  return change.gain;
}

#else

using FMChange = std::uint64_t; // gain, side in bit 31, cell

inline FMChange FM_Change(int cell, int side, Weight gain)
{
  return static_cast<std::uint64_t>(static_cast<unsigned>(gain)) << 32 | static_cast<unsigned>(side) << 31 |
         static_cast<unsigned>(cell);
}

inline FMChange FM_ChangeOf(FMChange ofcell0, unsigned cell)
{
  return ofcell0 | cell;
}

inline unsigned FM_ChangedPlace(FMChange change)
{
  return static_cast<unsigned>(change);
}

inline Weight FM_ChangedGain(FMChange change)
{
  return static_cast<Weight>(change >> 32);
}

#endif

inline unsigned FM_ChangedCell(FMChange change)
{
  return FM_ChangedPlace(change) & INT_MAX;
}

inline unsigned FM_ChangedSide(FMChange change)
{
  return FM_ChangedPlace(change) >> 31;
}

// ----------------------------------------------------------------------------------------------------------
// The state

// The working storage of one call of a two-way routine: the level laid out for moves, and the state of a pass. Nets of
// two pins have no record: either cell links to the other one. Those of one pin or no weight are not linked: they
// change no gain.
struct FMState {
  // Of each cell from nodes[cell].links on: their length, then the index of each net's record in nets, or for a net of
  // two pins ~(the other cell) and, in LINK_INTS, the net's weight. See FM_ForEachLink.
  int *links;
  FMNet *nets;        // in the order of the level, pins in between
  FMNetStart *starts; // [nrecords] of the nets with a record, in the same order
  int nrecords;
  FMChange *changes;     // those of a move that are collected: of all nets of a cell ...
  FMChange *lastchange;  // ... but those of a net with all pins only up to this one
  CellNode *nodes;       // [ncells+1]
  signed char *place;    // [ncells+1], the last one LOCKED
  const Weight *cellwgt; // [ncells] the level's
  PQueue queue[2];       // the free cells of each side, by gain
  int *swaps;            // [ncells] cells in the order of their moves
  int *perm;             // [ncells] the random order in which cells are queued

  Weight minpwgt[2]; // lowest weight of each side in an accepted bisection
  Weight pwgts[2];   // weights of the sides
  Weight initcut;    // cut at the start of the pass
  Weight newcut;     // cut after the moves so far
  Weight bestcut;    // lowest cut of an accepted point
  int best;          // index of the last move before that point, -1 = the start
  Weight mindiff;    // difference of the sides' weights at that point
  int nmoves;        // entries of swaps
};

// The weight of a net of two pins among the links.
constexpr int LINK_INTS = sizeof(Weight) / sizeof(int);

inline Weight FM_LinkedWeight(const int *link)
{
  Weight weight = *link;

  if constexpr (IS_WIDE)
    std::memcpy(&weight, link, sizeof weight);
  return weight;
}

inline void FM_LinkWeight(int *link, Weight weight)
{
  *link = static_cast<int>(weight);
  if constexpr (IS_WIDE)
    std::memcpy(link, &weight, sizeof weight);
}

void FM_Alloc(const HGraph *graph, const int *where, FMState *fm);
void FM_Free(FMState *fm);

// Calls onnet(net) for each net of c that has a record, and onpair(other, weight) for each of two pins, in the order of
// the cell's nets.
template <class OnNet, class OnPair>
__attribute__((always_inline)) inline void FM_ForEachLink(const FMState *fm, int c, OnNet onnet,
                                                          OnPair onpair)
{
  const int *link = fm->links + fm->nodes[c].links;
  const int *end = link + 1 + *link;

  link++;
  while (link < end) {
    const int target = *link++;
    if (target < 0) {
      const Weight weight = FM_LinkedWeight(link);
      link += LINK_INTS;
      onpair(~target, weight);
    } else {
      onnet(&fm->nets[target]);
    }
  }
}

// Where the counts of the nets come from: the sides of their pins, or the start of the last pass and its moves up to
// the best point.
enum FMCounts { FROM_PINS, FROM_PASS };
// Computes counts, gains, the sides' weights and the cut, which it returns; no pin is locked.
Weight FM_ComputeGains(const HGraph *graph, FMState *fm, FMCounts counts);
// Locks the pins of the anchors.
void FM_LockAnchors(const HGraph *graph, FMState *fm);
// Writes where and pwgts of the level.
void FM_Store(Level *level, const FMState *fm);

// Sets minpwgt from pwgts and the bounds of ctrl.
inline void FM_SetBounds(const Control *ctrl, FMState *fm)
{
  SideBounds(&ctrl->bounds, AddWrap(fm->pwgts[0], fm->pwgts[1]), fm->minpwgt);
}

inline bool FM_IsBalanced(const FMState *fm)
{
  return fm->pwgts[0] >= fm->minpwgt[0] && fm->pwgts[1] >= fm->minpwgt[1];
}

enum { BOTH_SIDES = -1 };
// Empties the queues, then queues the cells of one side, or of both, in random order; locks the anchors and
// the cells of a side that is not queued.
void FM_FillQueues(const HGraph *graph, FMState *fm, int side);

// Starts the log of a pass at the given cut.
void FM_StartLog(FMState *fm, Weight cut);

inline int FM_Side(const FMState *fm, int c)
{
  return fm->place[c] & 1;
}

inline void FM_Lock(FMState *fm, int c)
{
  fm->place[c] |= LOCKED;
}

// Changes the side of c and the sides' weights; nothing else.
inline void FM_Shift(FMState *fm, int c, int from, int to)
{
  fm->place[c] ^= 1;
  fm->pwgts[from] -= fm->cellwgt[c];
  fm->pwgts[to] += fm->cellwgt[c];
}

// Takes the point after move n as the best one when it is within the bounds and has a lower cut, or the same
// cut and sides of a smaller difference.
inline void FM_NoteBest(FMState *fm, int n)
{
  if (fm->newcut > fm->bestcut || !FM_IsBalanced(fm))
    return;
  const Weight diff = AbsDiff(fm->pwgts[0], fm->pwgts[1]);
  if (fm->newcut < fm->bestcut || diff < fm->mindiff) {
    fm->bestcut = fm->newcut;
    fm->best = n;
    fm->mindiff = diff;
  }
}

// Validators: gains and counts; those, the queues, weights and cut after move n of a pass.
enum FMExactness { FREE_EXACT, ALL_EXACT }; // whose gains are kept exact: those of free cells, or of all
const char *CheckGains(const HGraph *graph, const FMState *fm, FMExactness exactness);
const char *CheckMove(const HGraph *graph, const FMState *fm, FMExactness exactness, int n);

} // namespace kapris::engine::KAPRIS_ENGINE
