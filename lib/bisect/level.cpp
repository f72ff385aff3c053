// lib/bisect/level.cpp - a level laid out for moves, with its gains; the storage of the two-way passes.
// SPDX-License-Identifier: MIT

#include "fm.h"

#include "control/ctrl.h"

#include <algorithm>

// Units of a net's record and its pins.
static unsigned Units(int size)
{
  const unsigned perunit = sizeof(FMNet) / sizeof(int);

  return 1 + (static_cast<unsigned>(size) + perunit - 1) / perunit;
}

// In place of the index of a record: a net of two pins, and one that changes no gain.
enum { PAIR = -1, UNLINKED = -2 };

// Adds the records of the nets of more than two pins.
static void AddNets(const HGraph *graph, FMState *fm, int *unitof)
{
  unsigned nunits = 0;
  int largest = 0;

  for (int j = 0; j < graph->nnets; j++) {
    const int size = NetSize__(graph, j);
    if (size < 2 || graph->netwgt[j] == 0) {
      unitof[j] = UNLINKED;
    } else if (size == 2) {
      unitof[j] = PAIR;
    } else {
      unitof[j] = static_cast<int>(nunits);
      nunits += Units(size);
    }
    largest = std::max(largest, size);
  }
  fm->nets = QVarray__<FMNet>(nunits, "FM_Refine: nets");
  fm->hits = imalloc__(largest, "FM_Refine: hits");
  for (int j = 0; j < graph->nnets; j++) {
    if (unitof[j] < 0)
      continue;
    FMNet *net = &fm->nets[unitof[j]];
    int *pins = reinterpret_cast<int *>(net + 1);
    *net = {{0, 0}, {0, 0}, graph->netwgt[j], NetSize__(graph, j)};
    for (int k = 0; k < net->size; k++) {
      pins[k] = graph->netind[graph->netptr[j] + k];
      net->pins[0] ^= pins[k];
    }
  }
}

static void LinkCells(const HGraph *graph, FMState *fm, const int *unitof)
{
  constexpr int LOOKAHEAD = 16; // nets lie anywhere: ask for them early
  const int npins = graph->incptr[graph->ncells];
  std::int64_t nlinks = static_cast<std::int64_t>(graph->ncells) + npins;

  for (int j = 0; j < graph->nnets; j++)
    nlinks += unitof[j] == PAIR ? 2 : 0;
  fm->links = imalloc__(nlinks, "FM_Refine: links");

  int *link = fm->links;
  for (int c = 0; c < graph->ncells; c++) {
    int *length = link++;
    for (int k = graph->incptr[c]; k < graph->incptr[c + 1]; k++) {
      const int j = graph->incind[k];
      if (k + LOOKAHEAD < npins)
        __builtin_prefetch(&unitof[graph->incind[k + LOOKAHEAD]]);
      if (unitof[j] >= 0)
        *link++ = unitof[j];
      if (unitof[j] != PAIR)
        continue;
      const int *pins = graph->netind + graph->netptr[j];
      *link++ = ~(pins[0] == c ? pins[1] : pins[0]);
      *link++ = graph->netwgt[j];
    }
    *length = static_cast<int>(link - length - 1);
    fm->nodes[c].links = static_cast<unsigned>(length - fm->links);
  }
}

void FM_Alloc__(const HGraph *graph, FMState *fm)
{
  const int n = graph->ncells;
  // The weight of a cell's nets bounds its gain.
  const int maxgain = n > 0 ? graph->adjwgt[iamax__(n, graph->adjwgt)] : 0;

  *fm = FMState{};
  fm->nodes = QVarray__<CellNode>(static_cast<std::int64_t>(n) + 1, "FM_Refine: nodes");
  int *unitof = imalloc__(graph->nnets, "FM_Refine: unitof");
  AddNets(graph, fm, unitof);
  LinkCells(graph, fm, unitof);
  QVfree__(&unitof);

  fm->place = QVarray__<signed char>(n, "FM_Refine: place");
  for (int c = 0; c < n; c++)
    fm->place[c] = static_cast<signed char>(graph->where[c]);
  fm->cellwgt = graph->cellwgt;
  PQueueInit__(&fm->queue[0], fm->nodes, n, maxgain);
  PQueueInit__(&fm->queue[1], fm->nodes, n, maxgain);
  fm->swaps = imalloc__(n, "FM_Refine: swaps");
  fm->perm = imalloc__(n, "FM_Refine: perm");
}

void FM_Free__(FMState *fm)
{
  PQueueFree__(&fm->queue[0]);
  PQueueFree__(&fm->queue[1]);
  QVfree__(&fm->links, &fm->nets, &fm->hits, &fm->nodes, &fm->place, &fm->swaps, &fm->perm);
}

int FM_ComputeGains__(const HGraph *graph, FMState *fm)
{
  CellNode *nodes = fm->nodes;
  FMNet *net = fm->nets;
  int cut = 0;

  // As if no net were cut: each cell loses by all of its nets.
  fm->pwgts[0] = fm->pwgts[1] = 0;
  for (int c = 0; c < graph->ncells; c++) {
    const int side = FM_Side__(fm, c);
    fm->pwgts[side] = AddWrap__(fm->pwgts[side], fm->cellwgt[c]);
    nodes[c].gain = SubWrap__(0, graph->adjwgt[c]);
  }
  for (int j = 0; j < graph->nnets; j++) {
    const int *pins = graph->netind + graph->netptr[j], size = NetSize__(graph, j);
    int npins[2] = {0, 0}, all[2] = {0, 0};

    if (graph->netwgt[j] == 0)
      continue;
    if (size == 2 && FM_Side__(fm, pins[0]) == FM_Side__(fm, pins[1]))
      continue;
    for (int k = 0; k < size; k++)
      npins[1] += FM_Side__(fm, pins[k]);
    npins[0] = size - npins[1];
    if (npins[0] != 0 && npins[1] != 0) {
      const int w = graph->netwgt[j];
      cut = AddWrap__(cut, w);
      for (int k = 0; k < size; k++) {
        const int side = FM_Side__(fm, pins[k]);
        int *gain = &nodes[pins[k]].gain;
        all[side] ^= pins[k];
        *gain = AddWrap__(*gain, MulWrap__(w, npins[side] == 1 ? 2 : 1));
      }
    } else if (size > 2) {
      all[npins[0] == 0] = net->pins[0] ^ net->pins[1]; // which moves do not change
    }
    if (size > 2) {
      net->npins[0] = npins[0];
      net->npins[1] = npins[1];
      net->pins[0] = all[0];
      net->pins[1] = all[1];
      net += Units(size);
    }
  }
  return cut;
}

void FM_LockAnchors__(const HGraph *graph, FMState *fm)
{
  for (int c = 0; c < graph->nfixed; c++) {
    auto [link, end] = FM_Links__(fm, c);
    for (; link < end; link++) {
      if (*link >= 0)
        fm->nets[*link].npins[FM_Side__(fm, c)] |= LOCKED_PIN;
      else
        link++;
    }
  }
}

void FM_Store__(HGraph *graph, const FMState *fm)
{
  for (int c = 0; c < graph->ncells; c++)
    graph->where[c] = FM_Side__(fm, c);
  graph->pwgts[0] = fm->pwgts[0];
  graph->pwgts[1] = fm->pwgts[1];
}

void FM_SetBounds__(const Control *ctrl, FMState *fm)
{
  const int total = AddWrap__(fm->pwgts[0], fm->pwgts[1]);

  // Single precision for side 0 and double for side 1, on purpose: the bounds of an even split differ by one.
  fm->minpwgt[0] = Truncate__((ctrl->part0frac - ctrl->ubfactor) * static_cast<float>(total));
  fm->minpwgt[1] = Truncate__((1.0 - ctrl->part0frac - ctrl->ubfactor) * total);
}

void FM_FillQueues__(const HGraph *graph, FMState *fm, int side)
{
  PQueueReset__(&fm->queue[0]);
  PQueueReset__(&fm->queue[1]);
  RandomPermute__(fm->perm, graph->ncells, 1);
  for (int i = 0; i < graph->ncells; i++) {
    const int c = fm->perm[i], where = FM_Side__(fm, c);
    fm->place[c] = static_cast<signed char>(where);
    if (c < graph->nfixed || (side != BOTH_SIDES && where != side))
      FM_Lock__(fm, c);
    else
      PQueueInsert__(&fm->queue[where], c, fm->nodes[c].gain);
  }
  CHECK_VALID(CheckQueue__(&fm->queue[0]));
  CHECK_VALID(CheckQueue__(&fm->queue[1]));
}

void FM_StartLog__(FMState *fm, int cut)
{
  fm->initcut = fm->newcut = fm->bestcut = cut;
  fm->best = -1;
  fm->mindiff = AbsDiff__(fm->pwgts[0], fm->pwgts[1]);
  fm->nmoves = 0;
}
