// lib/bisect/fm.h - what the two-way passes share: the state of a pass and the move update; private to this
// folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "bisect.h"
#include "pqueue.h"

// FMState::place, where it is not a side: the cell has moved or was skipped in this pass, is an anchor, or belongs to a
// side that is not queued.
enum { LOCKED = 2 };

// What a pass that recomputes all gains knows of a net, in one place. No longer kept once both sides have a locked pin:
// the net stays cut until the pass ends, so no free cell can gain or lose by it.
struct FMNet {
  int npins[2]; // on each side
  int weight;
  int begin, end;  // of its pins in netind
  unsigned locked; // bits 1 << side: that side has a pin that cannot move
};

enum { BOTH_LOCKED = 3 };

// The working storage of one call of a two-way routine.
struct FMState {
  PQueue queue[2];    // the free cells of each side, by gain
  signed char *place; // [ncells] the side of a queued cell, or LOCKED
  FMNet *nets;        // [nnets], or NULL where gains stay exact
  int *swaps;         // [ncells] cells in the order of their moves
  int *perm;          // [ncells] the random order in which cells are queued
  int minpwgt[2];     // lowest weight of each side in an accepted bisection

  int initcut; // cut at the start of the pass
  int newcut;  // cut after the moves so far
  int bestcut; // lowest cut of an accepted point
  int best;    // index of the last move before that point, -1 = the start
  int mindiff; // difference of the sides' weights at that point
  int nmoves;  // entries of swaps
};

void FM_Alloc__(const HGraph *graph, FMState *fm);
void FM_Free__(FMState *fm);
// Fills fm->nets from the counts of a fresh ComputeInitGains__.
void FM_LoadNets__(const HGraph *graph, FMState *fm);

// Sets minpwgt from pwgts and the share and allowance of ctrl.
void FM_SetBounds__(const Control *ctrl, const HGraph *graph, FMState *fm);

inline bool FM_IsBalanced__(const HGraph *graph, const FMState *fm)
{
  return graph->pwgts[0] >= fm->minpwgt[0] && graph->pwgts[1] >= fm->minpwgt[1];
}

enum { BOTH_SIDES = -1 };
// Empties the queues, then queues the cells of one side, or of both, in random order; locks the anchors and
// the cells of a side that is not queued.
void FM_FillQueues__(HGraph *graph, FMState *fm, int side);

// Starts the log of a pass at the current cut.
void FM_StartLog__(const HGraph *graph, FMState *fm);

// Changes the side of c and the sides' weights; nothing else.
inline void FM_Shift__(HGraph *graph, int c, int from, int to)
{
  graph->where[c] = to;
  graph->pwgts[from] -= graph->cellwgt[c];
  graph->pwgts[to] += graph->cellwgt[c];
}

// Takes the point after move n as the best one when it is within the bounds and has a lower cut, or the same
// cut and sides of a smaller difference.
inline void FM_NoteBest__(const HGraph *graph, FMState *fm, int n)
{
  if (!FM_IsBalanced__(graph, fm) || fm->newcut > fm->bestcut)
    return;
  const int diff = AbsDiff__(graph->pwgts[0], graph->pwgts[1]);
  if (fm->newcut < fm->bestcut || diff < fm->mindiff) {
    fm->bestcut = fm->newcut;
    fm->best = n;
    fm->mindiff = diff;
  }
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

// Asks for the nets of a cell that is about to move: their records lie anywhere in memory.
inline void FM_Prefetch__(const HGraph *graph, const FMState *fm, int c)
{
  for (int i = graph->incptr[c]; i < graph->incptr[c + 1]; i++)
    __builtin_prefetch(&fm->nets[graph->incind[i]]);
}

// The move of c in a pass that recomputes all gains: only those of free cells are kept up to date. A single pin that is
// locked gains nothing that counts.
inline void FM_UpdateFree__(HGraph *graph, FMState *fm, int c, int from, int to)
{
  const int *net = graph->incind + graph->incptr[c], *end = graph->incind + graph->incptr[c + 1];
  const unsigned onfrom = 1u << from, onto = 1u << to;

  for (; net < end; net++) {
    FMNet *n = &fm->nets[*net];
    const unsigned locked = n->locked;
    if (locked == BOTH_LOCKED)
      continue;
    n->locked = locked | onto;
    const int nto = ++n->npins[to], nfrom = --n->npins[from], w = n->weight;
    if (nto > 2 && nfrom >= 2)
      continue;

    int change[2];
    change[from] = AddWrap__(nfrom == 1 && !(locked & onfrom) ? w : 0, nto == 1 ? w : 0);
    change[to] = -AddWrap__(nfrom == 0 ? w : 0, nto == 2 && !(locked & onto) ? w : 0);
    // Pins that can be concerned, c left out.
    int left = (change[from] != 0 ? nfrom : 0) + (change[to] != 0 ? nto - 1 : 0);
    for (int k = n->begin; left > 0 && k < n->end; k++) {
      const int u = graph->netind[k], side = fm->place[u];
      if (side == LOCKED || change[side] == 0)
        continue;
      const int oldgain = graph->gain[u], newgain = AddWrap__(oldgain, change[side]);
      graph->gain[u] = newgain;
      PQueueUpdate__(&fm->queue[side], u, oldgain, newgain);
      left--;
    }
  }
}

// Whether the queues are told of a move that keeps all gains but the moved cell's.
enum UpdateScope {
  UPDATE_QUEUE, // free cells are queued
  UPDATE_GAINS  // no queue is touched (roll-back)
};

// Brings counts and gains up to date after c has changed from side from to side to.
template <UpdateScope scope>
inline void FM_UpdateMove__(HGraph *graph, FMState *fm, int c, int from, int to)
{
  int *ndegfrom = graph->ndeg[from], *ndegto = graph->ndeg[to];

  for (int i = graph->incptr[c]; i < graph->incptr[c + 1]; i++) {
    const int j = graph->incind[i];
    const int nto = ++ndegto[j], nfrom = --ndegfrom[j];
    if (nto > 2 && nfrom >= 2)
      continue;

    // What a pin on each side gains.
    const int w = graph->netwgt[j];
    int change[2];
    change[from] = AddWrap__(nfrom == 1 ? w : 0, nto == 1 ? w : 0);
    change[to] = -AddWrap__(nfrom == 0 ? w : 0, nto == 2 ? w : 0);

    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      const int u = graph->netind[k];
      if (u == c)
        continue;
      const int side = graph->where[u];
      const int oldgain = graph->gain[u];
      const int newgain = AddWrap__(oldgain, change[side]);
      graph->gain[u] = newgain;
      if (scope == UPDATE_QUEUE && fm->place[u] != LOCKED)
        PQueueUpdate__(&fm->queue[side], u, oldgain, newgain);
    }
  }
}

// Undoes the logged move of c, keeping gains and counts exact.
inline void FM_Undo__(HGraph *graph, FMState *fm, int c)
{
  const int from = graph->where[c], to = 1 - from;

  FM_Shift__(graph, c, from, to);
  graph->gain[c] = SubWrap__(0, graph->gain[c]);
  FM_UpdateMove__<UPDATE_GAINS>(graph, fm, c, from, to);
}
