// lib/search/netparts.h - how many pins of each net lie in which part, for any number of parts; private to this folder.
// SPDX-License-Identifier: MIT
//
// Most nets touch one part or two, however many there are: a net lists the parts that it touches, in no order, in room
// for as many as it can touch.
#pragma once

#include "goal.h"

#include "base/array.h"

namespace kapris::engine::KAPRIS_ENGINE
{

struct PartPins {
  int part, pins;
};

struct NetHead {
  int first;  // in list
  int nparts; // that the net touches
  int size;   // pins
  Weight wgt;
};

struct NetParts {
  Array<NetHead> nets;
  Array<PartPins> list;
};

// Counts the pins of part.
void CountPins(const HGraph *graph, int nparts, const int *part, NetParts *pins);

// What a net was before a pin moved from one part to another.
struct PinsBefore {
  int from, to; // pins in these parts
};

// Moves one pin of net.
inline PinsBefore MovePin(NetParts *pins, int net, int from, int to)
{
  NetHead *head = &pins->nets[At(net)];
  PartPins *list = &pins->list[At(head->first)], *source = nullptr, *target = nullptr;

  for (int i = 0; i < head->nparts; i++) {
    if (list[i].part == from)
      source = &list[i];
    else if (list[i].part == to)
      target = &list[i];
  }
  const PinsBefore before = {source->pins, target != nullptr ? target->pins : 0};
  if (target == nullptr && source->pins == 1) {
    source->part = to;
    return before;
  }
  if (target == nullptr)
    list[head->nparts++] = {to, 1};
  else
    target->pins++;
  if (--source->pins == 0)
    *source = list[--head->nparts];
  return before;
}

// Validator: the first broken invariant, or NULL.
const char *CheckNetParts(const HGraph *graph, int nparts, const int *part, const NetParts *pins);

} // namespace kapris::engine::KAPRIS_ENGINE
