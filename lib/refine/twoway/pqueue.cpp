// lib/refine/twoway/pqueue.cpp - the priority queue of cells by gain, as buckets or as a heap.
// SPDX-License-Identifier: MIT

#include "pqueue.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

void PQueueInit__(PQueue *queue, CellNode *nodes, int maxnodes, Weight maxgain)
{
  *queue = PQueue{};
  queue->nodes = nodes;
  queue->maxnodes = maxnodes;
  if (3 * static_cast<std::int64_t>(maxnodes) < maxgain) {
    queue->type = PQ_HEAP;
    queue->heap = QVarray<HeapEntry>(maxnodes, "PQueueInit: queue->heap");
    queue->locator = ismalloc__(maxnodes, NOT_QUEUED, "PQueueInit: queue->locator");
  } else {
    queue->type = PQ_BUCKETS;
    queue->gainspan = maxgain;
    queue->topgain = -maxgain;
    queue->buckets =
        ismalloc__(2 * static_cast<std::int64_t>(maxgain) + 1, maxnodes, "PQueueInit: queue->buckets");
    queue->zero = queue->buckets + maxgain;
  }
}

void PQueueReset__(PQueue *queue)
{
  queue->nnodes = 0;
  if (queue->type == PQ_HEAP) {
    iset__(queue->maxnodes, NOT_QUEUED, queue->locator);
  } else {
    iset__(2 * static_cast<std::int64_t>(queue->gainspan) + 1, queue->maxnodes, queue->buckets);
    queue->topgain = -queue->gainspan;
  }
}

void PQueueFree__(PQueue *queue)
{
  QVfree__(&queue->buckets, &queue->heap, &queue->locator);
  queue->maxnodes = 0;
}

// ----------------------------------------------------------------------------------------------------------
// Buckets

// A cell with two pins on a net can leave the range that its incident weight bounds.
void GrowBuckets(PQueue *queue, Weight gain)
{
  const std::int64_t magnitude = gain < 0 ? -static_cast<std::int64_t>(gain) : gain;
  const std::int64_t span =
      std::min<std::int64_t>(std::max(2 * static_cast<std::int64_t>(queue->gainspan), magnitude), INT_MAX);
  int *buckets = ismalloc__(2 * span + 1, queue->maxnodes, "PQueueInit: queue->buckets");

  icopy__(2 * static_cast<std::int64_t>(queue->gainspan) + 1, queue->buckets,
          buckets + span - queue->gainspan);
  QVfree__(&queue->buckets);
  queue->buckets = buckets;
  queue->zero = buckets + span;
  queue->gainspan = static_cast<Weight>(span);
}

// ----------------------------------------------------------------------------------------------------------
// Heap

static void HeapPlace(PQueue *queue, int position, HeapEntry entry)
{
  queue->heap[position] = entry;
  queue->locator[entry.value] = position;
}

// Moves entry up from a free position; an equal parent stays above.
static void SiftUp(PQueue *queue, int i, HeapEntry entry)
{
  while (i > 0) {
    const int parent = (i - 1) / 2;
    if (queue->heap[parent].key >= entry.key)
      break;
    HeapPlace(queue, i, queue->heap[parent]);
    i = parent;
  }
  HeapPlace(queue, i, entry);
}

// Moves entry down from a free position; of equal children the left one rises.
static void SiftDown(PQueue *queue, int i, HeapEntry entry)
{
  for (;;) {
    std::int64_t child = 2 * static_cast<std::int64_t>(i) + 1;
    if (child >= queue->nnodes)
      break;
    if (child + 1 < queue->nnodes && queue->heap[child + 1].key > queue->heap[child].key)
      child++;
    if (queue->heap[child].key <= entry.key)
      break;
    HeapPlace(queue, i, queue->heap[child]);
    i = static_cast<int>(child);
  }
  HeapPlace(queue, i, entry);
}

void HeapInsert(PQueue *queue, int item, Weight gain)
{
  SiftUp(queue, queue->nnodes++, {gain, item});
}

void HeapDelete(PQueue *queue, int item)
{
  const int i = queue->locator[item];
  const Weight oldgain = queue->heap[i].key;

  queue->locator[item] = NOT_QUEUED;
  const HeapEntry last = queue->heap[--queue->nnodes];
  if (i == queue->nnodes)
    return;
  if (last.key <= oldgain)
    SiftDown(queue, i, last);
  else
    SiftUp(queue, i, last);
}

void HeapUpdate(PQueue *queue, int item, Weight oldgain, Weight newgain)
{
  const HeapEntry entry = {newgain, item};

  if (newgain < oldgain)
    SiftDown(queue, queue->locator[item], entry);
  else
    SiftUp(queue, queue->locator[item], entry);
}

// ----------------------------------------------------------------------------------------------------------
// Both

int PQueueSeeConstraintMax(PQueue *queue, Weight maxwgt, const Weight *cellwgt)
{
  if (queue->nnodes == 0 || maxwgt <= SMALL_ROOM)
    return PQueueSeeMax__(queue);

  if (queue->type == PQ_BUCKETS) {
    for (Weight gain = queue->topgain; gain > 0; gain--)
      for (int item = *Bucket(queue, gain); item != queue->maxnodes; item = queue->nodes[item].next)
        if (cellwgt[item] <= maxwgt)
          return item;
    return PQueueSeeMax__(queue);
  }

  // The walk is by array position, not by gain: below an entry without a positive gain there is none either.
  for (int i = 0; i < queue->nnodes; i++) {
    if (queue->heap[i].key > 0) {
      if (cellwgt[queue->heap[i].value] <= maxwgt)
        return queue->heap[i].value;
    } else if (queue->heap[i / 2].key <= 0) {
      break;
    }
  }
  return PQueueSeeMax__(queue);
}

} // namespace kapris::engine::KAPRIS_ENGINE
