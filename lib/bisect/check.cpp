// lib/bisect/check.cpp - validators of the bisection state and of the queue, written from the definitions.
// SPDX-License-Identifier: MIT

#include "bisect.h"
#include "pqueue.h"

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

const char *CheckGains__(const HGraph *graph)
{
  for (int j = 0; j < graph->nnets; j++) {
    int ndeg[2] = {0, 0};
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      ndeg[graph->where[graph->netind[k]]]++;
    if (ndeg[0] != graph->ndeg[0][j] || ndeg[1] != graph->ndeg[1][j])
      return "ndeg: not the pins of the net on each side";
  }
  if (!HasPlainNets__(graph))
    return nullptr;
  for (int i = 0; i < graph->ncells; i++) {
    int gain = 0;
    for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
      const int j = graph->incind[k];
      const int here = graph->ndeg[graph->where[i]][j], there = graph->ndeg[1 - graph->where[i]][j];
      gain = AddWrap__(gain, graph->netwgt[j] * ((there > 0 && here == 1) - (there == 0)));
    }
    if (gain != graph->gain[i])
      return "gain: not the fall of the cut when the cell changes sides";
  }
  return nullptr;
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
  int top = -queue->gainspan;
  for (int gain = -queue->gainspan; gain <= queue->gainspan; gain++) {
    int prev = NOT_QUEUED;
    for (int item = queue->buckets[gain + queue->gainspan]; item != NOT_QUEUED;
         item = queue->nodes[item].next) {
      if (listed[static_cast<std::size_t>(item)] || queue->nodes[item].prev != prev)
        return "nodes: a bucket's list is not linked both ways";
      listed[static_cast<std::size_t>(item)] = true;
      prev = item;
      top = gain;
      n++;
    }
  }
  if (n != queue->nnodes)
    return "nnodes: not the number of queued items";
  return queue->topgain == top ? nullptr : "topgain: not the highest gain";
}
