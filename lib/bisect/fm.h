// lib/bisect/fm.h - what the two-way passes share: a level laid out for moves, the state of a pass and the move
// update; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "bisect.h"
#include "pqueue.h"

#include <algorithm>

// FMState::place: the side of a cell, and LOCKED when it cannot move in this pass: it has moved or was skipped, is an
// anchor, or belongs to a side that is not queued.
enum { LOCKED = 2 };

// What the passes know of a net. Its pins follow, in whole units of this record, so that they share its cache line.
struct FMNet {
  int npins[2]; // on each side; with LOCKED_PIN where one cannot move, in passes that recompute all gains
  int pins[2];  // of each side, combined by exclusive or: where one is left, which
  int weight;
  int size; // with UNCUT where all pins were on one side at the start of the pass
};

enum { UNCUT = INT_MIN };

enum { LOCKED_PIN = INT_MIN };
enum { FM_UNIT = sizeof(FMNet) / sizeof(int) }; // pins in the room of a record

// Its counts for side 0 at the start of the pass.
struct FMNetStart {
  int npins, pins;
};

// What a move does to the gain of a free cell: in one word, which is written at once. Cell, side in bit 31, gain.
using FMChange = std::uint64_t;

// The working storage of one call of a two-way routine: the level laid out for moves, and the state of a pass. Nets of
// two pins have no record: either cell links to the other one. Those of one pin or no weight are not linked: they change no gain.
struct FMState {
  // Of each cell from nodes[cell].links on: their length, then the index of each net's record in nets, or for a net of
  // two pins ~(the other cell) and the net's weight.
  int *links;
  FMNet *nets;        // in the order of the level, pins in between
  FMNetStart *starts; // [nrecords] of the nets with a record, in the same order
  int nrecords;
  FMChange *changes;    // those of a move that are collected: of all nets of a cell ...
  FMChange *lastchange; // ... but those of a net with all pins only up to this one
  CellNode *nodes;      // [ncells+1]
  signed char *place;   // [ncells+1], the last one LOCKED
  const int *cellwgt;   // [ncells] the level's
  PQueue queue[2];      // the free cells of each side, by gain
  int *swaps;           // [ncells] cells in the order of their moves
  int *perm;            // [ncells] the random order in which cells are queued

  int minpwgt[2]; // lowest weight of each side in an accepted bisection
  int pwgts[2];   // weights of the sides
  int initcut;    // cut at the start of the pass
  int newcut;     // cut after the moves so far
  int bestcut;    // lowest cut of an accepted point
  int best;       // index of the last move before that point, -1 = the start
  int mindiff;    // difference of the sides' weights at that point
  int nmoves;     // entries of swaps
};

void FM_Alloc__(const HGraph *graph, FMState *fm);
void FM_Free__(FMState *fm);

// Where the counts of the nets come from: the sides of their pins, or the start of the last pass and its moves up to the
// best point.
enum FMCounts { FROM_PINS, FROM_PASS };
// Computes counts, gains, the sides' weights and the cut, which it returns; no pin is locked.
int FM_ComputeGains__(const HGraph *graph, FMState *fm, FMCounts counts);
// Locks the pins of the anchors.
void FM_LockAnchors__(const HGraph *graph, FMState *fm);
// Writes where and pwgts of the level.
void FM_Store__(HGraph *graph, const FMState *fm);

// Sets minpwgt from pwgts and the share and allowance of ctrl.
void FM_SetBounds__(const Control *ctrl, FMState *fm);

inline bool FM_IsBalanced__(const FMState *fm)
{
  return fm->pwgts[0] >= fm->minpwgt[0] && fm->pwgts[1] >= fm->minpwgt[1];
}

enum { BOTH_SIDES = -1 };
// Empties the queues, then queues the cells of one side, or of both, in random order; locks the anchors and
// the cells of a side that is not queued.
void FM_FillQueues__(const HGraph *graph, FMState *fm, int side);

// Starts the log of a pass at the given cut.
void FM_StartLog__(FMState *fm, int cut);

inline int FM_Side__(const FMState *fm, int c)
{
  return fm->place[c] & 1;
}

inline void FM_Lock__(FMState *fm, int c)
{
  fm->place[c] |= LOCKED;
}

// Changes the side of c and the sides' weights; nothing else.
inline void FM_Shift__(FMState *fm, int c, int from, int to)
{
  fm->place[c] ^= 1;
  fm->pwgts[from] -= fm->cellwgt[c];
  fm->pwgts[to] += fm->cellwgt[c];
}

// The links of a cell.
struct FMLinks {
  const int *first, *end;
};

inline FMLinks FM_Links__(const FMState *fm, int c)
{
  const int *links = fm->links + fm->nodes[c].links;

  return {links + 1, links + 1 + *links};
}

// Takes the point after move n as the best one when it is within the bounds and has a lower cut, or the same
// cut and sides of a smaller difference.
inline void FM_NoteBest__(FMState *fm, int n)
{
  if (fm->newcut > fm->bestcut || !FM_IsBalanced__(fm))
    return;
  const int diff = AbsDiff__(fm->pwgts[0], fm->pwgts[1]);
  if (fm->newcut < fm->bestcut || diff < fm->mindiff) {
    fm->bestcut = fm->newcut;
    fm->best = n;
    fm->mindiff = diff;
  }
}

inline const int *FM_Pins__(const FMNet *net)
{
  return reinterpret_cast<const int *>(net + 1);
}

inline int FM_Size__(const FMNet *net)
{
  return net->size & ~UNCUT;
}

// How a move changes gains. By the counts after the move of a cell to side to:
//   pins left on from   a pin there                     a pin on to
//   0                   -                               -w: moving it back would cut the net
//   1                   +w: the last pin can follow     -
//   pins now on to
//   1                   +w: moving it cuts nothing new  -
//   2                   -                               -w: it is no longer the only one there
// So a net with more than two pins on to and at least two on from changes no gain. A net with just one pin on
// each side gives the one on from both gains.

inline FMChange FM_Change__(int cell, int side, int gain)
{
  return static_cast<std::uint64_t>(static_cast<unsigned>(gain)) << 32 | static_cast<unsigned>(side) << 31 |
         static_cast<unsigned>(cell);
}

// Changes the gains collected so far, which it drops: returns where the next ones go.
inline FMChange *FM_Apply__(FMState *fm, const FMChange *end)
{
  CellNode *nodes = fm->nodes;
  PQueue *queue = fm->queue;

  if (queue[0].type == PQ_HEAP) {
    for (const FMChange *change = fm->changes; change < end; change++) {
      const unsigned where = static_cast<unsigned>(*change), c = where & INT_MAX;
      const int oldgain = nodes[c].gain;
      nodes[c].gain = AddWrap__(oldgain, static_cast<int>(*change >> 32));
      HeapUpdate__(&queue[where >> 31], static_cast<int>(c), oldgain, nodes[c].gain);
    }
    return fm->changes;
  }

  // BucketMove__ with what stays the same in registers.
  const int none = queue[0].maxnodes;
  int span = std::min(queue[0].gainspan, queue[1].gainspan);
  int *zero[2] = {queue[0].zero, queue[1].zero};
  int top[2] = {queue[0].topgain, queue[1].topgain};
  for (const FMChange *change = fm->changes; change < end; change++) {
    const std::uint64_t word = *change;
    const unsigned c = static_cast<unsigned>(word) & INT_MAX, side = static_cast<unsigned>(word) >> 31;
    CellNode *node = &nodes[c];
    const int prev = node->prev, next = node->next, oldgain = node->gain;
    const int newgain = AddWrap__(oldgain, static_cast<int>(word >> 32));
    if (newgain > span || newgain < -span) {
      for (int s = 0; s < 2; s++) {
        GrowBuckets__(&queue[s], newgain);
        zero[s] = queue[s].zero;
      }
      span = std::min(queue[0].gainspan, queue[1].gainspan);
    }
    int *from = zero[side] + oldgain, *to = zero[side] + newgain;
    nodes[next].prev = prev;
    nodes[prev].next = next;
    *from = *from == static_cast<int>(c) ? next : *from;
    const int head = *to;
    *node = {none, head, newgain, node->links};
    nodes[head].prev = static_cast<int>(c);
    *to = static_cast<int>(c);
    top[side] = newgain > top[side] ? newgain : top[side];
  }
  queue[0].topgain = top[0];
  queue[1].topgain = top[1];
  return fm->changes;
}

// How the pins of a net change when c has moved to side to.
inline void FM_MovePin__(FMNet *net, int c, int from, int to)
{
  net->npins[from]--;
  net->npins[to]++;
  net->pins[from] ^= c;
  net->pins[to] ^= c;
}

// Collects in changes those of the free pins on a side; returns their end. Without a branch per pin: which of them are
// free cannot be foretold. The last unit of pins is filled up with a cell that is never free.
inline FMChange *FM_FindFree__(const FMNet *net, const signed char *place, int side, int gain,
                               FMChange *changes)
{
  const FMChange change = FM_Change__(0, side, gain);
  const signed char here = static_cast<signed char>(side);

  for (const int *pin = FM_Pins__(net), *end = pin + FM_Size__(net); pin < end; pin += FM_UNIT) {
    for (int k = 0; k < FM_UNIT; k++) {
      const unsigned c = static_cast<unsigned>(pin[k]);
      *changes = change | c;
      changes += place[c] == here;
    }
  }
  return changes;
}

// The move of c in a pass that recomputes all gains: only those of free cells are kept up to date. Once both sides of a net
// have a locked pin it stays cut until the pass ends, so no free cell can gain or lose by it any more: its counts, which
// are negative then, ask for nothing.
// First the changes are collected, then the cells are queued anew in the same order.
inline void FM_UpdateFree__(FMState *fm, int c, int from, int to)
{
  auto [link, end] = FM_Links__(fm, c);
  const signed char *place = fm->place;
  FMChange *changes = fm->changes;

  while (link < end) {
    const int target = *link++;
    if (target < 0) {
      const int u = ~target, w = MulWrap__(*link++, 2), side = place[u], loss = -(side == to);
      *changes = FM_Change__(u, side & 1, SubWrap__(w ^ loss, loss)); // w, or -w if it is a loss
      changes += side < LOCKED;
      continue;
    }

    FMNet *net = &fm->nets[target];
    const int onfrom = net->npins[from], onto = net->npins[to], w = net->weight;
    FM_MovePin__(net, c, from, to);
    net->npins[to] |= LOCKED_PIN;
    // All other pins are on one side, where more than one is left: other nets of two pins have no record. When the last
    // pin of a net follows all others, none of them is free.
    if ((onto == 0) | ((onfrom == 1) & (net->size >= 0))) {
      if (changes > fm->lastchange)
        changes = FM_Apply__(fm, changes);
      changes = onto == 0 ? FM_FindFree__(net, place, from, w, changes)
                          : FM_FindFree__(net, place, to, SubWrap__(0, w), changes);
      continue;
    }
    // The only one left, unless c has another pin, and the only one there; not if they are locked.
    *changes = FM_Change__(net->pins[from], from, w);
    changes += onfrom == 2 && net->pins[from] != c;
    *changes = FM_Change__(net->pins[to] ^ c, to, SubWrap__(0, w));
    changes += onto == 1;
  }
  FM_Apply__(fm, changes);
}

// Whether the queues are told of a move that keeps all gains but the moved cell's.
enum UpdateScope {
  UPDATE_QUEUE, // free cells are queued
  UPDATE_GAINS  // no queue is touched (roll-back)
};

// Brings counts and gains up to date after c has changed from side from to side to.
template <UpdateScope scope>
inline void FM_UpdateMove__(FMState *fm, int c, int from, int to)
{
  auto [link, end] = FM_Links__(fm, c);
  const auto update = [&](int u, const int *change) {
    const int side = FM_Side__(fm, u);
    if (u == c)
      return;
    int *gain = &fm->nodes[u].gain;
    const int oldgain = *gain;
    *gain = AddWrap__(oldgain, change[side]);
    if (scope == UPDATE_QUEUE && fm->place[u] < LOCKED)
      PQueueUpdate__(&fm->queue[side], u, oldgain, *gain);
  };

  while (link < end) {
    const int target = *link++;
    int change[2];
    if (target < 0) {
      const int w = *link++;
      change[from] = MulWrap__(w, 2);
      change[to] = MulWrap__(w, -2);
      update(~target, change);
      continue;
    }

    FMNet *net = &fm->nets[target];
    FM_MovePin__(net, c, from, to);
    const int nfrom = net->npins[from], nto = net->npins[to], w = net->weight;
    if (nto > 2 && nfrom >= 2)
      continue;
    change[from] = AddWrap__(nfrom == 1 ? w : 0, nto == 1 ? w : 0);
    change[to] = -AddWrap__(nfrom == 0 ? w : 0, nto == 2 ? w : 0);
    for (const int *pin = FM_Pins__(net), *last = pin + FM_Size__(net); pin < last; pin++)
      update(*pin, change);
  }
}

// Moves c, keeping all gains and counts exact.
template <UpdateScope scope>
inline void FM_MoveExactly__(FMState *fm, int c, int from, int to)
{
  FM_Shift__(fm, c, from, to);
  fm->nodes[c].gain = SubWrap__(0, fm->nodes[c].gain);
  FM_UpdateMove__<scope>(fm, c, from, to);
}

// Undoes the logged move of c.
inline void FM_Undo__(FMState *fm, int c)
{
  const int from = FM_Side__(fm, c);

  FM_MoveExactly__<UPDATE_GAINS>(fm, c, from, 1 - from);
}

// Validators: gains and counts; those, weights and cut after move n of a pass.
enum FMExactness { FREE_EXACT, ALL_EXACT }; // whose gains are kept exact: those of free cells, or of all
const char *CheckGains__(const HGraph *graph, const FMState *fm, FMExactness exactness);
const char *CheckMove__(const HGraph *graph, const FMState *fm, FMExactness exactness, int n);
