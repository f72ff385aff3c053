// lib/bisect/pqueue.h - the priority queue of cells by gain; private to this folder.
// SPDX-License-Identifier: MIT
//
// Buckets: one doubly linked list per gain; the item inserted or updated last comes out first. Used when the
// range of gains is small compared with the number of cells. Heap: a binary max-heap with the position of
// each item; an equal parent or left child goes first. The order in which equal gains come out is part of the
// results.
#pragma once

#include "core/core.h"

enum { PQ_BUCKETS = 1, PQ_HEAP = 2 };
enum { NOT_QUEUED = -1 }; // an empty link, an empty bucket, and the position of an item outside the heap

struct ListNode {
  int prev, next; // items of the same bucket
};

struct HeapEntry {
  int key, value; // gain, item
};

struct PQueue {
  int type;
  int nnodes;   // items queued
  int maxnodes; // items are 0 .. maxnodes-1
  int topgain;  // buckets: no item has a higher gain; -gainspan when the queue is empty
  int gainspan; // buckets: gains lie in -gainspan .. gainspan
  ListNode *nodes;
  int *buckets; // [2 gainspan + 1] first item of gain g at g + gainspan
  HeapEntry *heap;
  int *locator; // [maxnodes] position in heap
};

// maxgain bounds the magnitude of the gains; beyond it the buckets grow.
void PQueueInit__(PQueue *queue, int maxnodes, int maxgain);
void PQueueReset__(PQueue *queue);
void PQueueFree__(PQueue *queue);

int PQueueInsert__(PQueue *queue, int item, int gain);
int PQueueDelete(PQueue *queue, int item, int gain);
int PQueueUpdate__(PQueue *queue, int item, int oldgain, int newgain);
int PQueueGetMax__(PQueue *queue);       // removes and returns the item of the highest gain, -1 when empty
int PQueueSeeMax__(const PQueue *queue); // returns it without removing it
// An item of positive gain whose weight is at most maxwgt, or the top item when there is none; -1 when empty.
// Weights are ignored for maxwgt <= 1000.
int PQueueSeeConstraintMax(const PQueue *queue, int maxwgt, const int *cellwgt);

// The first broken invariant, or NULL.
const char *CheckQueue__(const PQueue *queue);
