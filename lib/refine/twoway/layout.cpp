// lib/refine/twoway/layout.cpp - a level laid out for moves, with its gains; the storage of the two-way passes.
// SPDX-License-Identifier: MIT

#include "fm.h"

#include "base/random.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// What links a cell to a net: a net with a record has weight 0 here; one of two pins has the complement of their
// exclusive or; one that changes no gain has neither.
struct NetLink {
  int target;
  Weight weight;
};

constexpr NetLink UNLINKED = {-1, 0};

} // namespace

// Adds the records of the nets of more than two pins; returns the size of the largest.
static int AddNets(const HGraph *graph, FMState *fm, NetLink *linkof)
{
  unsigned nunits = 0;
  int largest = 0;

  fm->nrecords = 0;
  for (int j = 0; j < graph->nnets; j++) {
    const int size = NetSize(graph, j), *pins = graph->netind + graph->netptr[j];
    if (size < 2 || graph->netwgt[j] == 0) {
      linkof[j] = UNLINKED;
    } else if (size == 2) {
      linkof[j] = {~(pins[0] ^ pins[1]), graph->netwgt[j]};
    } else {
      linkof[j] = {static_cast<int>(nunits), 0};
      nunits += FM_Units(size);
      fm->nrecords++;
      largest = std::max(largest, size);
    }
  }
  fm->nets = QVarray<FMNet>(nunits, "FM_Refine: nets");
  for (int j = 0; j < graph->nnets; j++) {
    if (linkof[j].target < 0)
      continue;
    FMNet *net = &fm->nets[linkof[j].target];
    const int *listed = graph->netind + graph->netptr[j], size = NetSize(graph, j);
    int *pins = reinterpret_cast<int *>(net + 1), all = 0;
    for (int k = 0; k < size; k++) {
      pins[k] = listed[k];
      all ^= listed[k];
    }
    for (int k = size; k % FM_UNIT != 0; k++)
      pins[k] = graph->ncells;
    *net = {{0, 0}, {all, 0}, graph->netwgt[j], size};
  }
  return largest;
}

// Returns the longest length. A net of two pins is linked by the other pin, which the exclusive or of both and the cell
// gives. Each link is written, and stays as far as it is one: a branch on the kind of net could not
// be foretold.
static int LinkCells(const HGraph *graph, FMState *fm, const NetLink *linkof)
{
  constexpr int LOOKAHEAD = 16; // nets lie anywhere: ask for them early
  const int npins = graph->incptr[graph->ncells];
  std::int64_t nlinks = static_cast<std::int64_t>(graph->ncells) + npins + 1 + LINK_INTS;

  for (int j = 0; j < graph->nnets; j++)
    nlinks += linkof[j].weight != 0 ? 2 * LINK_INTS : 0;
  fm->links = imalloc__(nlinks, "FM_Refine: links");

  int *link = fm->links, longest = 0;
  for (int c = 0; c < graph->ncells; c++) {
    int *length = link++;
    for (int k = graph->incptr[c]; k < graph->incptr[c + 1]; k++) {
      const NetLink net = linkof[graph->incind[k]];
      const int ispair = net.weight != 0;
      if (k + LOOKAHEAD < npins)
        __builtin_prefetch(&linkof[graph->incind[k + LOOKAHEAD]]);
      link[0] = net.target ^ (c & -ispair);
      FM_LinkWeight(link + 1, net.weight);
      link += (net.target >= 0) + (1 + LINK_INTS) * ispair;
    }
    *length = static_cast<int>(link - length - 1);
    longest = std::max(longest, *length);
    fm->nodes[c].links = static_cast<unsigned>(length - fm->links);
  }
  return longest;
}

void FM_Alloc(const HGraph *graph, const int *where, FMState *fm)
{
  const int n = graph->ncells;
  // The weight of a cell's nets bounds its gain.
  const Weight maxgain = n > 0 ? graph->adjwgt[iamax__(n, graph->adjwgt)] : 0;

  *fm = FMState{};
  fm->nodes = QVarray<CellNode>(static_cast<std::int64_t>(n) + 1, "FM_Refine: nodes");
  NetLink *linkof = QVarray<NetLink>(graph->nnets, "FM_Refine: linkof");
  const int largest = AddNets(graph, fm, linkof);
  // Two for each link, before and after those of the pins of a net, which come in whole units.
  const std::int64_t ofnets = 2 * static_cast<std::int64_t>(LinkCells(graph, fm, linkof));
  fm->changes = QVarray<FMChange>(2 * ofnets + largest + FM_UNIT, "FM_Refine: changes");
  fm->lastchange = fm->changes + ofnets;
  QVfree__(&linkof);

  fm->starts = QVarray<FMNetStart>(fm->nrecords, "FM_Refine: starts");
  fm->place = QVarray<signed char>(static_cast<std::int64_t>(n) + 1, "FM_Refine: place");
  for (int c = 0; c < n; c++)
    fm->place[c] = static_cast<signed char>(where[c]);
  fm->place[n] = LOCKED;
  fm->cellwgt = graph->cellwgt;
  PQueueInit__(&fm->queue[0], fm->nodes, n, maxgain);
  PQueueInit__(&fm->queue[1], fm->nodes, n, maxgain);
  fm->swaps = imalloc__(n, "FM_Refine: swaps");
  fm->perm = imalloc__(n, "FM_Refine: perm");
}

void FM_Free(FMState *fm)
{
  PQueueFree__(&fm->queue[0]);
  PQueueFree__(&fm->queue[1]);
  QVfree__(&fm->links, &fm->nets, &fm->starts, &fm->changes, &fm->nodes, &fm->place, &fm->swaps, &fm->perm);
}

// Brings the records back to the start of the pass, then up to its best point.
static void RewindNets(FMState *fm)
{
  FMNet *net = fm->nets;

  for (int r = 0; r < fm->nrecords; r++) {
    const FMNetStart start = fm->starts[r];
    const int all = net->pins[0] ^ net->pins[1]; // which moves do not change
    net->npins[0] = start.npins;
    net->npins[1] = FM_Size(net) - start.npins;
    net->pins[0] = start.pins;
    net->pins[1] = start.pins ^ all;
    net += FM_Units(FM_Size(net));
  }
  for (int n = 0; n <= fm->best; n++) {
    const int c = fm->swaps[n], to = FM_Side(fm, c);
    FM_ForEachLink(
        fm, c, [&](FMNet *moved) { FM_MovePin(moved, c, 1 - to, to); }, [](int, Weight) {});
  }
}

static void CountPins(const FMState *fm, FMNet *net)
{
  const int *pins = FM_Pins(net);
  int npins = 0, all = 0; // on side 1

  for (int k = 0; k < FM_Size(net); k++) {
    const int side = FM_Side(fm, pins[k]);
    npins += side;
    all ^= pins[k] & -side;
  }
  net->pins[0] ^= net->pins[1] ^ all;
  net->pins[1] = all;
  net->npins[0] = FM_Size(net) - npins;
  net->npins[1] = npins;
}

Weight FM_ComputeGains(const HGraph *graph, FMState *fm, FMCounts counts)
{
  CellNode *nodes = fm->nodes;
  FMNet *net = fm->nets;
  FMNetStart *start = fm->starts;
  Weight cut = 0;

  if (counts == FROM_PASS)
    RewindNets(fm);
  // As if no net were cut: each cell loses by all of its nets.
  fm->pwgts[0] = fm->pwgts[1] = 0;
  for (int c = 0; c < graph->ncells; c++) {
    const int side = FM_Side(fm, c);
    fm->pwgts[side] = AddWrap(fm->pwgts[side], fm->cellwgt[c]);
    nodes[c].gain = SubWrap(0, graph->adjwgt[c]);
  }
  for (int j = 0; j < graph->nnets; j++) {
    const int *pins = graph->netind + graph->netptr[j], size = NetSize(graph, j);
    const Weight w = graph->netwgt[j];

    if (w == 0)
      continue;
    if (size == 2) {
      if (FM_Side(fm, pins[0]) == FM_Side(fm, pins[1]))
        continue;
      cut = AddWrap(cut, w);
      for (int k = 0; k < 2; k++)
        nodes[pins[k]].gain = AddWrap(nodes[pins[k]].gain, MulWrap(w, 2));
    } else if (size > 2) {
      if (counts == FROM_PINS)
        CountPins(fm, net);
      *start++ = {net->npins[0], net->pins[0]};
      net->size = size;
      if (net->npins[0] == 0 || net->npins[1] == 0) {
        net->size |= UNCUT;
      } else {
        cut = AddWrap(cut, w);
        for (int k = 0; k < size; k++) {
          Weight *gain = &nodes[pins[k]].gain;
          *gain = AddWrap(*gain, MulWrap(w, net->npins[FM_Side(fm, pins[k])] == 1 ? 2 : 1));
        }
      }
      net += FM_Units(size);
    }
  }
  return cut;
}

void FM_LockAnchors(const HGraph *graph, FMState *fm)
{
  for (int c = 0; c < graph->nfixed; c++)
    FM_ForEachLink(
        fm, c, [&](FMNet *net) { FM_LockPin(net, FM_Side(fm, c)); }, [](int, Weight) {});
}

void FM_Store(Level *level, const FMState *fm)
{
  for (int c = 0; c < level->graph->ncells; c++)
    level->part.where[c] = FM_Side(fm, c);
  level->part.pwgts[0] = fm->pwgts[0];
  level->part.pwgts[1] = fm->pwgts[1];
}

void FM_FillQueues(const HGraph *graph, FMState *fm, int side)
{
  PQueueReset__(&fm->queue[0]);
  PQueueReset__(&fm->queue[1]);
  RandomPermute__(fm->perm, graph->ncells, 1);
  for (int i = 0; i < graph->ncells; i++) {
    const int c = fm->perm[i], where = FM_Side(fm, c);
    fm->place[c] = static_cast<signed char>(where);
    if (c < graph->nfixed || (side != BOTH_SIDES && where != side))
      FM_Lock(fm, c);
    else
      PQueueInsert__(&fm->queue[where], c, fm->nodes[c].gain);
  }
  CHECK_VALID(CheckQueue(&fm->queue[0]));
  CHECK_VALID(CheckQueue(&fm->queue[1]));
}

void FM_StartLog(FMState *fm, Weight cut)
{
  fm->initcut = fm->newcut = fm->bestcut = cut;
  fm->best = -1;
  fm->mindiff = AbsDiff(fm->pwgts[0], fm->pwgts[1]);
  fm->nmoves = 0;
}

} // namespace kapris::engine::KAPRIS_ENGINE
