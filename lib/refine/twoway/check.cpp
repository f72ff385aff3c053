// lib/refine/twoway/check.cpp - validators of gains, moves and the queue, written from the definitions.
// SPDX-License-Identifier: MIT

#include "fm.h"

#include <array>
#include <vector>

namespace kapris::engine::KAPRIS_ENGINE
{

typedef std::array<int, 2> PinsBySide;

static std::vector<PinsBySide> CountPins(const HGraph *graph, const FMState *fm)
{
  std::vector<PinsBySide> npins(static_cast<std::size_t>(graph->nnets), PinsBySide{});

  for (std::size_t j = 0; j < npins.size(); j++)
    for (int p = graph->netptr[j]; p < graph->netptr[j + 1]; p++)
      npins[j][static_cast<std::size_t>(FM_Side(fm, graph->netind[p]))]++;
  return npins;
}

// The records that cell i is linked to are those of its nets of more than two pins, in their order.
static bool HasExactCounts(const HGraph *graph, const FMState *fm, const std::vector<PinsBySide> &npins,
                           int i)
{
  std::vector<PinsBySide> expected, counted;

  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++)
    if (graph->netwgt[graph->incind[k]] != 0 && NetSize(graph, graph->incind[k]) > 2)
      expected.push_back(npins[static_cast<std::size_t>(graph->incind[k])]);
  FM_ForEachLink(
      fm, i,
      [&](const FMNet *net) {
        counted.push_back({FM_PinsOn(net, 0), FM_PinsOn(net, 1)});
      },
      [](int, Weight) {});
  return counted == expected;
}

static const char *CompareGains(const HGraph *graph, const FMState *fm, FMExactness exactness)
{
  const std::vector<PinsBySide> npins = CountPins(graph, fm);

  for (int i = 0; i < graph->ncells; i++) {
    const int side = FM_Side(fm, i);
    Weight gain = 0;

    if (exactness == FREE_EXACT && fm->place[i] >= LOCKED)
      continue;
    for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
      const int j = graph->incind[k];
      const auto &[on0, on1] = npins[static_cast<std::size_t>(j)];
      const int here = side == 0 ? on0 : on1, there = side == 0 ? on1 : on0;
      gain = AddWrap(gain, graph->netwgt[j] * ((there > 0 && here == 1) - (there == 0)));
    }
    if (!HasExactCounts(graph, fm, npins, i))
      return "nets: not the pins of the net on each side";
    if (gain != fm->nodes[i].gain)
      return "gain: not the fall of the cut when the cell changes sides";
  }
  return nullptr;
}

const char *CheckGains(const HGraph *graph, const FMState *fm, FMExactness exactness)
{
  return HasPlainNets(graph) ? CompareGains(graph, fm, exactness) : nullptr;
}

// The free cells of a side are queued there, at their gains.
static const char *CheckQueued(const HGraph *graph, const FMState *fm)
{
  int nfree[2] = {0, 0};

  for (int i = 0; i < graph->ncells; i++) {
    const PQueue *queue = &fm->queue[FM_Side(fm, i)];
    if (fm->place[i] >= LOCKED)
      continue;
    nfree[FM_Side(fm, i)]++;
    if (queue->type == PQ_HEAP
            ? queue->locator[i] == NOT_QUEUED || queue->heap[queue->locator[i]].key != fm->nodes[i].gain
            : fm->nodes[i].prev == queue->maxnodes && *Bucket(queue, fm->nodes[i].gain) != i)
      return "queue: a free cell is not where its gain says";
  }
  return nfree[0] == fm->queue[0].nnodes && nfree[1] == fm->queue[1].nnodes
             ? nullptr
             : "queue: not the free cells of its side";
}

const char *CheckMove(const HGraph *graph, const FMState *fm, FMExactness exactness, int n)
{
  if (!IsSample(n, graph->ncells))
    return nullptr;
  for (const PQueue &queue : fm->queue)
    if (const char *broken = CheckQueue(&queue))
      return broken;
  if (const char *broken = CheckQueued(graph, fm))
    return broken;
  if (!HasPlainNets(graph))
    return nullptr;

  std::vector<int> sides;
  Weight wgts[2] = {0, 0};
  for (int i = 0; i < graph->ncells; i++) {
    sides.push_back(FM_Side(fm, i));
    wgts[sides.back()] = AddWrap(wgts[sides.back()], graph->cellwgt[i]);
  }
  if (wgts[0] != fm->pwgts[0] || wgts[1] != fm->pwgts[1])
    return "pwgts: not the sums of the sides";
  if (ComputeActualCut__(graph, sides.data()) != fm->newcut)
    return "newcut: not the cut after the moves";
  return CompareGains(graph, fm, exactness);
}

const char *CheckQueue(const PQueue *queue)
{
  int n = 0;

  if (queue->type == PQ_HEAP) {
    for (int i = 0; i < queue->nnodes; i++) {
      if (queue->locator[queue->heap[i].value] != i)
        return "locator: an item is not where it says";
      if (i > 0 && queue->heap[(i - 1) / 2].key < queue->heap[i].key)
        return "heap: a child is above its parent";
    }
    for (int item = 0; item < queue->maxnodes; item++)
      n += queue->locator[item] != NOT_QUEUED;
    return n == queue->nnodes ? nullptr : "nnodes: not the number of queued items";
  }

  std::vector<bool> listed(static_cast<std::size_t>(queue->maxnodes), false);
  for (Weight gain = -queue->gainspan; gain <= queue->gainspan; gain++) {
    int prev = queue->maxnodes;
    if (gain > queue->topgain && queue->buckets[gain + queue->gainspan] != queue->maxnodes)
      return "topgain: below an item";
    for (int item = queue->buckets[gain + queue->gainspan]; item != queue->maxnodes;
         item = queue->nodes[item].next) {
      if (listed[static_cast<std::size_t>(item)] || queue->nodes[item].prev != prev)
        return "nodes: a bucket's list is not linked both ways";
      listed[static_cast<std::size_t>(item)] = true;
      prev = item;
      n++;
    }
  }
  return n == queue->nnodes ? nullptr : "nnodes: not the number of queued items";
}

} // namespace kapris::engine::KAPRIS_ENGINE
