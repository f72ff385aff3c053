// lib/bisect/check.cpp - validators of the bisection state and of the queue, written from the definitions.
// SPDX-License-Identifier: MIT

#include "fm.h"

#include <array>
#include <vector>

const char *CheckBisection__(const HGraph *graph)
{
  int wgts[2] = {0, 0};

  for (int i = 0; i < graph->ncells; i++) {
    if (graph->where[i] != 0 && graph->where[i] != 1)
      return "where: a cell is on no side";
    wgts[graph->where[i]] = AddWrap__(wgts[graph->where[i]], graph->cellwgt[i]);
  }
  if (wgts[0] != graph->pwgts[0] || wgts[1] != graph->pwgts[1])
    return "pwgts: not the sums of the sides";
  // Moving the pin of a single-pin net, or a cell that a net lists twice, miscounts the running cut.
  if (HasPlainNets__(graph) && ComputeActualCut__(graph, graph->where) != graph->mincut)
    return "mincut: not the cut of where";
  return nullptr;
}

static const char *CompareGains(const HGraph *graph, const FMState *fm, FMExactness exactness)
{
  std::vector<std::array<int, 2>> npins(static_cast<std::size_t>(graph->nnets));
  for (std::size_t j = 0; j < npins.size(); j++)
    for (int p = graph->netptr[j]; p < graph->netptr[j + 1]; p++)
      npins[j][static_cast<std::size_t>(FM_Side__(fm, graph->netind[p]))]++;

  for (int i = 0; i < graph->ncells; i++) {
    const int *link = FM_Links__(fm, i).first, side = FM_Side__(fm, i);
    int gain = 0;

    if (exactness == FREE_EXACT && fm->place[i] >= LOCKED)
      continue;
    for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
      const int j = graph->incind[k];
      if (graph->netwgt[j] == 0)
        continue;
      const auto &[on0, on1] = npins[static_cast<std::size_t>(j)];
      const int here = side == 0 ? on0 : on1, there = side == 0 ? on1 : on0;
      gain = AddWrap__(gain, graph->netwgt[j] * ((there > 0 && here == 1) - (there == 0)));
      if (*link < 0) {
        link += 2;
        continue;
      }
      const FMNet *net = &fm->nets[*link++];
      if ((net->npins[0] & ~LOCKED_PIN) != on0 || (net->npins[1] & ~LOCKED_PIN) != on1)
        return "nets: not the pins of the net on each side";
    }
    if (gain != fm->nodes[i].gain)
      return "gain: not the fall of the cut when the cell changes sides";
  }
  return nullptr;
}

const char *CheckGains__(const HGraph *graph, const FMState *fm, FMExactness exactness)
{
  return HasPlainNets__(graph) ? CompareGains(graph, fm, exactness) : nullptr;
}

const char *CheckMove__(const HGraph *graph, const FMState *fm, FMExactness exactness, int n)
{
  if (!IsSample__(n, graph->ncells) || !HasPlainNets__(graph))
    return nullptr;

  std::vector<int> sides;
  int wgts[2] = {0, 0};
  for (int i = 0; i < graph->ncells; i++) {
    sides.push_back(FM_Side__(fm, i));
    wgts[sides.back()] = AddWrap__(wgts[sides.back()], graph->cellwgt[i]);
  }
  if (wgts[0] != fm->pwgts[0] || wgts[1] != fm->pwgts[1])
    return "pwgts: not the sums of the sides";
  if (ComputeActualCut__(graph, sides.data()) != fm->newcut)
    return "newcut: not the cut after the moves";
  return CompareGains(graph, fm, exactness);
}

const char *CheckQueue__(const PQueue *queue)
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
  for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++) {
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
