// lib/refine/kway/kgain.cpp - the k-way records of nets and cells: from scratch and after a move.
// SPDX-License-Identifier: MIT
//
// A net lists the parts that it touches with its pins there, a cell the parts other than its own that its
// nets touch with the gains of a move. Lists are searched from the front: they are short. Entries stand in
// the order in which they were first met and the last entry fills a hole; both decide ties of refinement.
//
// At the start id and soloed of all cells are summed up net by net, which makes the records of most of them. A move
// makes the records of the cells around it stale; a record is computed when it is looked at. Cells that would lose by
// any move have no list.
//
// What a stale record will say is fixed when it becomes stale: results depend on it, for pref counts every net of a
// cell but is not brought up to date by every move. A net that keeps at least two pins in the part left and had two
// in the part reached changes no id, soloed, ed or kgain of its other pins, so their records stay as they are, pref
// included. But a stale record among them has not been computed yet and would see the new counts; so it is computed
// before the net changes. For example v moves from part 0 to part 1, and net {u, v, w, x, y, z} has three pins in
// each. Moving v leaves two and four. u, in part 0, then has fewer fellow pins there than in part 1, which would
// raise its pref for part 1 by one. If u is up to date, it keeps the old pref, and so must it if it is stale because
// of another net.
//
// A net of one pin can never be cut: it counts neither as internal weight nor as a loss.

#include "state.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

KwayState OpenKway(int nparts, Level *level)
{
  const HGraph *graph = level->graph;
  KwayState state = {graph, &level->part, nparts, nullptr, nullptr, nullptr, nullptr};

  state.nrinfo = QVarray<NetInfo>(graph->nnets, "AllocateKwayRefinementMemory: nrinfo");
  state.crinfo = QVarray<RInfo>(graph->ncells, "AllocateKwayRefinementMemory: crinfo");
  state.nrdata = QVarray<NetDegree>(graph->netptr[graph->nnets], "AllocateKwayRefinementMemory: nrdata");
  for (int j = 0; j < graph->nnets; j++)
    state.nrinfo[j] = {0, NetSize(graph, j) == 1 ? 0 : graph->netwgt[j], state.nrdata + graph->netptr[j]};
  for (int i = 0; i < graph->ncells; i++)
    state.crinfo[i] = {0, true, 0, 0, nullptr};
  return state;
}

void CloseKway(KwayState *state)
{
  while (state->crdata != nullptr) {
    KDegreeBlock *block = state->crdata;
    state->crdata = block->next;
    QVfree__(&block);
  }
  QVfree__(&state->nrinfo, &state->crinfo, &state->nrdata);
}

// Room for the entries of cell i: it can be connected to so many parts other than its own.
static KDegree *TakeRoom(KwayState *state, int i)
{
  const HGraph *graph = state->graph;
  const std::int64_t SMALLEST = 256, LARGEST = 65536;
  KDegreeBlock *block = state->crdata;
  std::int64_t room = 0;

  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++)
    room += NetSize(graph, graph->incind[k]) - 1;
  room = std::min<std::int64_t>(room, state->nparts - 1);

  if (block == nullptr || block->size - block->used < room) {
    const std::int64_t size =
        std::max(room, block == nullptr ? SMALLEST : std::min(2 * block->size, LARGEST));
    const std::size_t nbytes = sizeof(KDegreeBlock) + static_cast<std::size_t>(size) * sizeof(KDegree);
    block = static_cast<KDegreeBlock *>(QVmalloc__(nbytes, "AllocateKwayRefinementMemory: crdata"));
    *block = {state->crdata, size, 0};
    state->crdata = block;
  }
  KDegree *degrees = reinterpret_cast<KDegree *>(block + 1) + block->used;
  block->used += room;
  return degrees;
}

// The net's entry for part p; at its end when there is none.
static inline NetDegree *FindPart(const NetInfo *net, int p)
{
  NetDegree *entry = net->degrees, *end = net->degrees + net->ndegrees;

  while (entry < end && entry->pid != p)
    entry++;
  return entry;
}

static inline int AddPin(NetInfo *net, int p)
{
  NetDegree *entry = FindPart(net, p);

  if (entry == net->degrees + net->ndegrees) {
    *entry = {p, 0};
    net->ndegrees++;
  }
  return ++entry->npins;
}

static inline int RemovePin(NetInfo *net, int p)
{
  NetDegree *entry = FindPart(net, p);

  CHECK_NORMAL(entry < net->degrees + net->ndegrees);
  const int left = --entry->npins;
  if (left == 0)
    *entry = net->degrees[--net->ndegrees];
  return left;
}

// The entries of a record, whose id and soloed are computed.
static void ListParts(KwayState *state, int i)
{
  const HGraph *graph = state->graph;
  const int m = state->part->where[i];
  RInfo *cell = &state->crinfo[i];
  Weight lossbound = graph->adjwgt[i]; // weight of the nets that can be cut

  if (cell->degrees == nullptr)
    cell->degrees = TakeRoom(state, i);
  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const int j = graph->incind[k];
    const NetInfo *net = &state->nrinfo[j];

    if (net->ndegrees == 1) {
      if (NetSize(graph, j) == 1)
        lossbound = SubWrap(lossbound, graph->netwgt[j]);
      continue;
    }
    const Weight w = net->weight;
    const int here = FindPart(net, m)->npins;
    for (int d = 0; d < net->ndegrees; d++) {
      const int q = net->degrees[d].pid, there = net->degrees[d].npins;
      if (q == m)
        continue;

      KDegree *entry = cell->degrees, *end = cell->degrees + cell->ndegrees;
      while (entry < end && entry->pid != q)
        entry++;
      if (entry == end) {
        *entry = {q, 0, 0, 0};
        cell->ndegrees++;
      }
      entry->kgain = AddWrap(entry->kgain, w);
      entry->pref += (there > here) - (there < here);
      if (here == 1 && net->ndegrees == 2)
        entry->ed = AddWrap(entry->ed, w);
    }
  }
  for (int d = 0; d < cell->ndegrees; d++)
    cell->degrees[d].kgain = AddWrap(cell->degrees[d].kgain, SubWrap(cell->soloed, lossbound));
}

static void ComputeCellRecord(KwayState *state, int i)
{
  const HGraph *graph = state->graph;
  const int m = state->part->where[i];
  Weight id = 0, soloed = 0;

  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const NetInfo *net = &state->nrinfo[graph->incind[k]];
    if (net->ndegrees == 1)
      id = AddWrap(id, net->weight);
    else if (FindPart(net, m)->npins == 1)
      soloed = AddWrap(soloed, net->weight);
  }
  RInfo *cell = &state->crinfo[i];
  *cell = {0, false, id, soloed, cell->degrees};
  if (soloed >= id)
    ListParts(state, i);
}

const RInfo *CellRecord(KwayState *state, int i)
{
  if (state->crinfo[i].stale)
    ComputeCellRecord(state, i);
  return &state->crinfo[i];
}

// Net j is cut, or can never be: it does not count as internal to its pins, but as soloed to those alone in their part.
static void TakeFromInside(KwayState *state, int j)
{
  const HGraph *graph = state->graph;
  const NetInfo *net = &state->nrinfo[j];
  const bool solo = std::any_of(net->degrees, net->degrees + net->ndegrees,
                                [](const NetDegree &entry) { return entry.npins == 1; });

  for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
    const int c = graph->netind[k];
    RInfo *cell = &state->crinfo[c];
    cell->id = SubWrap(cell->id, graph->netwgt[j]);
    if (solo && FindPart(net, state->part->where[c])->npins == 1)
      cell->soloed = AddWrap(cell->soloed, net->weight);
  }
}

void ComputeInitKwayGains__(const Control *ctrl, KwayState *state)
{
  const HGraph *graph = state->graph;
  Partition *part = state->part;

  iset__(state->nparts, 0, part->kpwgts);
  part->mincut = part->soed = 0;
  for (int i = 0; i < graph->ncells; i++)
    state->crinfo[i] = {0, false, graph->adjwgt[i], 0, state->crinfo[i].degrees};

  for (int j = 0; j < graph->nnets; j++) {
    CheckpointAt(ctrl, j);
    NetInfo *net = &state->nrinfo[j];
    net->ndegrees = 0;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      AddPin(net, state->part->where[graph->netind[k]]);
    if (net->ndegrees > 1) {
      part->mincut = AddWrap(part->mincut, graph->netwgt[j]);
      part->soed = AddWrap(part->soed, MulWrap(net->ndegrees, graph->netwgt[j]));
    }
    if (net->ndegrees > 1 || NetSize(graph, j) == 1)
      TakeFromInside(state, j);
  }

  // Most cells would lose by any move: their records are done.
  for (int i = 0; i < graph->ncells; i++) {
    Weight *pwgt = &part->kpwgts[state->part->where[i]];
    *pwgt = AddWrap(*pwgt, graph->cellwgt[i]);
    state->crinfo[i].stale = state->crinfo[i].soloed >= state->crinfo[i].id;
  }
}

// Whether the records of the pins of a net stay as they are when one of its pins moves from part a to part b.
static bool KeepsRecords(const NetInfo *net, int a, int b)
{
  const NetDegree *arrival = FindPart(net, b);

  return FindPart(net, a)->npins > 2 && arrival < net->degrees + net->ndegrees && arrival->npins >= 2;
}

void KwayUpdateGainInfo__(KwayState *state, int v, int a, int b)
{
  const HGraph *graph = state->graph;

  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int j = graph->incind[i];
    if (!KeepsRecords(&state->nrinfo[j], a, b))
      continue;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      if (graph->netind[k] != v)
        CellRecord(state, graph->netind[k]);
  }
  state->crinfo[v].stale = true;
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int j = graph->incind[i];
    const int left = RemovePin(&state->nrinfo[j], a);
    const int arrived = AddPin(&state->nrinfo[j], b);
    if (left > 1 && arrived > 2)
      continue;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      state->crinfo[graph->netind[k]].stale = true;
  }
}

} // namespace kapris::engine::KAPRIS_ENGINE
