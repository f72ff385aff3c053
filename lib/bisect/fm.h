// lib/bisect/fm.h - what the two-way passes share: the state of a pass and the move update; private to this
// folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "bisect.h"
#include "pqueue.h"

// FMState::moved.
enum {
  UNMOVED = -1, // free: the cell is in the queue of its side
  LOCKED = 1    // any other value: moved, skipped, an anchor, or of a side that is not queued
};

// The working storage of one call of a two-way routine.
struct FMState {
  PQueue queue[2]; // the free cells of each side, by gain
  int *moved;      // [ncells]
  int *swaps;      // [ncells] cells in the order of their moves
  int *perm;       // [ncells] the random order in which cells are queued
  int minpwgt[2];  // lowest weight of each side in an accepted bisection

  int initcut; // cut at the start of the pass
  int newcut;  // cut after the moves so far
  int bestcut; // lowest cut of an accepted point
  int best;    // index of the last move before that point, -1 = the start
  int mindiff; // difference of the sides' weights at that point
  int nmoves;  // entries of swaps
};

void FM_Alloc__(const HGraph *graph, FMState *fm);
void FM_Free__(FMState *fm);

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

// Which pins of the moved cell's nets a move update reaches, and whether their queues are told.
enum UpdateScope {
  UPDATE_FREE,  // free cells, all queued: the gains of locked cells go stale
  UPDATE_QUEUE, // every cell but the moved one; free cells are queued
  UPDATE_GAINS  // every cell but the moved one; no queue is touched (roll-back)
};

// Brings counts and gains up to date after c has changed from side from to side to. By the counts after the move:
//   pins left on from   a pin there                     a pin on to
//   0                   -                               -w: moving it back would cut the net
//   1                   +w: the last pin can follow     -
//   pins now on to
//   1                   +w: moving it cuts nothing new  -
//   2                   -                               -w: it is no longer the only one there
// So a net with more than two pins on to and at least two on from changes no gain. A net with just one pin on
// each side gives the one on from both gains.
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
      if (scope == UPDATE_FREE ? fm->moved[u] != UNMOVED : u == c)
        continue;
      const int side = graph->where[u];
      const int oldgain = graph->gain[u];
      const int newgain = AddWrap__(oldgain, change[side]);
      graph->gain[u] = newgain;
      if (scope == UPDATE_FREE || (scope == UPDATE_QUEUE && fm->moved[u] == UNMOVED))
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
