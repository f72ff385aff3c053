// lib/refine/twoway/pqueue.h - the priority queue of cells by gain; private to this folder.
// SPDX-License-Identifier: MIT
//
// Buckets: one doubly linked list per gain; the item inserted or updated last comes out first. Used when the
// range of gains is small compared with the number of cells. Heap: a binary max-heap with the position of
// each item; an equal parent or left child goes first. The order in which equal gains come out is part of the
// results.
#pragma once

#include "core/hgraph.h"

namespace kapris::engine::KAPRIS_ENGINE
{

enum { PQ_BUCKETS = 1, PQ_HEAP = 2 };
// Where a side has so little room to give, looking for a cell that fits costs more than it brings.
constexpr int SMALL_ROOM = 1000;
enum { NOT_QUEUED = -1 }; // the position of an item outside the heap

// What the passes know of a cell, together: a changed gain touches one cache line of the cell that it concerns. Queues
// use prev and next; gain and links belong to the passes.
struct CellNode {
  int prev, next; // items of the same bucket; the node past the last item before the first and after the last
  Weight gain;
  unsigned links; // see FMState
};

struct HeapEntry {
  Weight key; // gain
  int value;  // item
};

struct PQueue {
  int type;
  int nnodes;      // items queued
  int maxnodes;    // items are 0 .. maxnodes-1
  Weight topgain;  // buckets: no item has a higher gain
  Weight gainspan; // buckets: gains lie in -gainspan .. gainspan
  CellNode *nodes; // [maxnodes + 1], the caller's; queues whose items are disjoint share it
  int *buckets;    // [2 gainspan + 1] first item of each gain, maxnodes when there is none ...
  int *zero;       // ... and the bucket of gain 0
  HeapEntry *heap;
  int *locator; // [maxnodes] position in heap
};

// maxgain bounds the magnitude of the gains; beyond it the buckets grow.
void PQueueInit__(PQueue *queue, CellNode *nodes, int maxnodes, Weight maxgain);
void PQueueReset__(PQueue *queue);
void PQueueFree__(PQueue *queue);

// Of a heap; a bucket that is out of range.
void HeapInsert(PQueue *queue, int item, Weight gain);
void HeapDelete(PQueue *queue, int item);
void HeapUpdate(PQueue *queue, int item, Weight oldgain, Weight newgain);
void GrowBuckets(PQueue *queue, Weight gain);

// An item of positive gain whose weight is at most maxwgt, or the top item when there is none; -1 when empty.
// Weights are ignored for maxwgt <= SMALL_ROOM.
int PQueueSeeConstraintMax(PQueue *queue, Weight maxwgt, const Weight *cellwgt);

inline int *Bucket(const PQueue *queue, Weight gain)
{
  return queue->zero + gain;
}

// Both without a branch that depends on the lists: where an item lies in them cannot be foretold. gain is in range.
inline void BucketLink(PQueue *queue, int item, Weight gain)
{
  CellNode *nodes = queue->nodes;
  int *head = Bucket(queue, gain);
  const int next = *head;

  nodes[item].prev = queue->maxnodes;
  nodes[item].next = next;
  nodes[next].prev = item;
  *head = item;
}

inline void BucketUnlink(PQueue *queue, int item, Weight gain)
{
  CellNode *nodes = queue->nodes;
  const int prev = nodes[item].prev, next = nodes[item].next;
  int *head = Bucket(queue, gain);

  nodes[next].prev = prev;
  nodes[prev].next = next;
  *head = *head == item ? next : *head;
}

// Makes room for an item of this gain, which may be the highest one.
inline void BucketReach(PQueue *queue, Weight gain)
{
  if (gain > queue->topgain) {
    if (gain > queue->gainspan)
      GrowBuckets(queue, gain);
    queue->topgain = gain;
  }
}

// The same for one that is not.
inline void BucketReachDown(PQueue *queue, Weight gain)
{
  if (gain < -queue->gainspan)
    GrowBuckets(queue, gain);
}

inline int PQueueInsert__(PQueue *queue, int item, Weight gain)
{
  CHECK_LIGHT(item >= 0 && item < queue->maxnodes);
  CHECK_LIGHT(queue->type != PQ_HEAP || queue->locator[item] == NOT_QUEUED);
  if (queue->type == PQ_HEAP) {
    HeapInsert(queue, item, gain);
  } else {
    BucketReach(queue, gain);
    BucketReachDown(queue, gain);
    BucketLink(queue, item, gain);
    queue->nnodes++;
  }
  return 0;
}

inline int PQueueDelete(PQueue *queue, int item, Weight gain)
{
  CHECK_LIGHT(item >= 0 && item < queue->maxnodes && queue->nnodes > 0);
  CHECK_LIGHT(queue->type != PQ_HEAP || queue->heap[queue->locator[item]].key == gain);
  if (queue->type == PQ_HEAP) {
    HeapDelete(queue, item);
  } else {
    BucketUnlink(queue, item, gain);
    queue->nnodes--;
  }
  return 0;
}

// An item goes from one list to the front of another, which may be the same; its gain is that of the list.
inline void Relink(CellNode *nodes, int none, int item, Weight newgain, int *from, int *to)
{
  CellNode *node = &nodes[item];
  const int prev = node->prev, next = node->next;

  nodes[next].prev = prev;
  nodes[prev].next = next;
  *from = *from == item ? next : *from;
  const int head = *to;
  node->prev = none;
  node->next = head;
  node->gain = newgain;
  nodes[head].prev = item;
  *to = item;
}

// Of buckets: an item changes its list.
inline void BucketMove(PQueue *queue, int item, Weight oldgain, Weight newgain)
{
  BucketReach(queue, newgain);
  BucketReachDown(queue, newgain);
  Relink(queue->nodes, queue->maxnodes, item, newgain, Bucket(queue, oldgain), Bucket(queue, newgain));
}

inline int PQueueUpdate__(PQueue *queue, int item, Weight oldgain, Weight newgain)
{
  if (newgain == oldgain)
    return 0;
  if (queue->type == PQ_HEAP)
    HeapUpdate(queue, item, oldgain, newgain);
  else
    BucketMove(queue, item, oldgain, newgain);
  return 0;
}

// The item of the highest gain, -1 when the queue is empty.
inline int PQueueSeeMax__(PQueue *queue)
{
  if (queue->nnodes == 0)
    return -1;
  if (queue->type == PQ_HEAP)
    return queue->heap[0].value;
  while (*Bucket(queue, queue->topgain) == queue->maxnodes)
    queue->topgain--;
  return *Bucket(queue, queue->topgain);
}

// Removes and returns it.
inline int PQueueGetMax__(PQueue *queue)
{
  const int item = PQueueSeeMax__(queue);

  if (item != -1)
    PQueueDelete(queue, item, queue->type == PQ_HEAP ? queue->heap[0].key : queue->topgain);
  return item;
}

// The first broken invariant, or NULL.
const char *CheckQueue(const PQueue *queue);

} // namespace kapris::engine::KAPRIS_ENGINE
