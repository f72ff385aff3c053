// lib/refine/twoway/moves.h - how a move changes counts and gains; private to this folder.
// SPDX-License-Identifier: MIT
//
// The gain of a cell is the weight of the nets that its move makes whole, less that of the nets that it cuts. So a
// net of weight w gives a pin on side s
//   +w  if the pin is the only one on s (and there is one on the other side)   moving it makes the net whole
//   -w  if there is no pin on the other side                                   moving it cuts the net
// and nothing else. A move of c from one side to the other changes the counts of the net by one each, and with them the
// gains of its other pins. By the counts after the move:
//   pins left on from   a pin there                        a pin on to
//   0                   -                                  -w: moving it back would cut the net
//   1                   +w: the last pin can follow        -
//   pins now on to
//   1                   +w: the net is cut already         -
//   2                   -                                  -w: it is no longer the only one there
// For example a net {a, b, c} on side 0 whose pin c moves: a and b gained -w, as each would have cut it; now they
// gain 0. Then b follows: a is alone and gains +w. So a net with more than two pins on to and at least two left on
// from changes no gain, and for a net with just one pin on each side the one on from gets both of its entries.
#pragma once

#include "fm.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

inline UWeight SmallerSpan(const PQueue queue[2])
{
  return static_cast<UWeight>(std::min(queue[0].gainspan, queue[1].gainspan));
}

// Changes the gains collected so far, which it drops: returns where the next ones go.
inline FMChange *FM_Apply(FMState *fm, const FMChange *end)
{
  CellNode *nodes = fm->nodes;
  PQueue *queue = fm->queue;

  if (queue[0].type == PQ_HEAP) {
    for (const FMChange *change = fm->changes; change < end; change++) {
      const unsigned c = FM_ChangedCell(*change);
      const Weight oldgain = nodes[c].gain;
      nodes[c].gain = AddWrap(oldgain, FM_ChangedGain(*change));
      HeapUpdate(&queue[FM_ChangedSide(*change)], static_cast<int>(c), oldgain, nodes[c].gain);
    }
    return fm->changes;
  }

  // As BucketMove, with what stays the same in registers: ranges and highest gains of both queues, and their middles. A
  // gain lies in -span .. span if the two add up to 0 .. 2 span: one comparison of numbers without a sign.
  const int none = queue[0].maxnodes;
  UWeight span = SmallerSpan(queue);
  int *zero[2] = {queue[0].zero, queue[1].zero};
  Weight top[2] = {queue[0].topgain, queue[1].topgain};
  for (const FMChange *change = fm->changes; change < end; change++) {
    const FMChange word = *change;
    const unsigned c = FM_ChangedCell(word), side = FM_ChangedSide(word);
    const Weight oldgain = nodes[c].gain, newgain = AddWrap(oldgain, FM_ChangedGain(word));
    if (static_cast<UWeight>(newgain) + span > 2 * span) {
      for (int s = 0; s < 2; s++) {
        GrowBuckets(&queue[s], newgain);
        zero[s] = queue[s].zero;
      }
      span = SmallerSpan(queue);
    }
    Relink(nodes, none, static_cast<int>(c), newgain, zero[side] + oldgain, zero[side] + newgain);
    top[side] = newgain > top[side] ? newgain : top[side];
  }
  queue[0].topgain = top[0];
  queue[1].topgain = top[1];
  return fm->changes;
}

// Collects in changes those of the free pins on a side; returns their end. Without a branch per pin: which of them are
// free cannot be foretold, so each change is written and stays if its cell is free there. The last unit of pins is
// filled up with a cell that is never free.
inline FMChange *FM_FindFree(const FMNet *net, const signed char *place, int side, Weight gain,
                             FMChange *changes)
{
  const FMChange change = FM_Change(0, side, gain);
  const signed char here = static_cast<signed char>(side);

  for (const int *pin = FM_Pins(net), *end = pin + FM_Size(net); pin < end; pin += FM_UNIT) {
    for (int k = 0; k < FM_UNIT; k++) {
      const unsigned c = static_cast<unsigned>(pin[k]);
      *changes = FM_ChangeOf(change, c);
      changes += place[c] == here;
    }
  }
  return changes;
}

// The move of c in a pass that recomputes all gains: only those of free cells are kept up to date. Once both sides of a
// net have a locked pin it stays cut until the pass ends, so no free cell can gain or lose by it any more: its counts,
// which are negative then, ask for nothing.
// First the changes are collected, then the cells are queued anew in the same order.
inline void FM_UpdateFree(FMState *fm, int c, int from, int to)
{
  const signed char *place = fm->place;
  FMChange *changes = fm->changes;

  FM_ForEachLink(
      fm, c,
      [&](FMNet * net) __attribute__((always_inline)) {
        const int onfrom = FM_PinsOnIfFree(net, from), onto = FM_PinsOnIfFree(net, to);
        const Weight w = net->weight;
        FM_MovePin(net, c, from, to);
        FM_LockPin(net, to);
        // All other pins are on one side, where more than one is left: other nets of two pins have no record. When the
        // last pin follows all others in a net that was whole, they have all moved in this pass: none of them is free.
        if ((onto == 0) | ((onfrom == 1) & FM_WasCut(net))) {
          if (changes > fm->lastchange)
            changes = FM_Apply(fm, changes);
          changes = onto == 0 ? FM_FindFree(net, place, from, w, changes)
                              : FM_FindFree(net, place, to, SubWrap(0, w), changes);
          return;
        }
        // The only one left, unless c has another pin, and the only one there; not if they are locked.
        *changes = FM_Change(net->pins[from], from, w);
        changes += onfrom == 2 && net->pins[from] != c;
        *changes = FM_Change(net->pins[to] ^ c, to, SubWrap(0, w));
        changes += onto == 1;
      },
      [&](int u, Weight weight) __attribute__((always_inline)) {
        // The only pins of their sides, or both on one: by the table, either way twice the weight.
        const Weight w = MulWrap(weight, 2);
        const int side = place[u];
        const Weight loss = -(side == to);
        *changes = FM_Change(u, side & 1, SubWrap(w ^ loss, loss)); // w, or -w if it is a loss
        changes += side < LOCKED;
      });
  FM_Apply(fm, changes);
}

// Whether the queues are told of a move that keeps all gains but the moved cell's.
enum UpdateScope {
  UPDATE_QUEUE, // free cells are queued
  UPDATE_GAINS  // no queue is touched (roll-back)
};

// Brings counts and gains up to date after c has changed from side from to side to.
template <UpdateScope scope>
inline void FM_UpdateMove(FMState *fm, int c, int from, int to)
{
  const auto update = [&](int u, const Weight *change) {
    const int side = FM_Side(fm, u);
    if (u == c)
      return;
    Weight *gain = &fm->nodes[u].gain;
    const Weight oldgain = *gain;
    *gain = AddWrap(oldgain, change[side]);
    if (scope == UPDATE_QUEUE && fm->place[u] < LOCKED)
      PQueueUpdate__(&fm->queue[side], u, oldgain, *gain);
  };

  FM_ForEachLink(
      fm, c,
      [&](FMNet * net) __attribute__((always_inline)) {
        FM_MovePin(net, c, from, to);
        const int nfrom = net->npins[from], nto = net->npins[to];
        const Weight w = net->weight;
        Weight change[2];
        if (nto > 2 && nfrom >= 2)
          return;
        change[from] = AddWrap(nfrom == 1 ? w : 0, nto == 1 ? w : 0);
        change[to] = -AddWrap(nfrom == 0 ? w : 0, nto == 2 ? w : 0);
        for (const int *pin = FM_Pins(net), *last = pin + FM_Size(net); pin < last; pin++)
          update(*pin, change);
      },
      [&](int other, Weight w) __attribute__((always_inline)) {
        Weight change[2];
        change[from] = MulWrap(w, 2);
        change[to] = MulWrap(w, -2);
        update(other, change);
      });
}

// Moves c, keeping all gains and counts exact.
template <UpdateScope scope>
inline void FM_MoveExactly(FMState *fm, int c, int from, int to)
{
  FM_Shift(fm, c, from, to);
  fm->nodes[c].gain = SubWrap(0, fm->nodes[c].gain);
  FM_UpdateMove<scope>(fm, c, from, to);
}

// Undoes the logged move of c.
inline void FM_Undo(FMState *fm, int c)
{
  const int from = FM_Side(fm, c);

  FM_MoveExactly<UPDATE_GAINS>(fm, c, from, 1 - from);
}

} // namespace kapris::engine::KAPRIS_ENGINE
