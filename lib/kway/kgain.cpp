// lib/kway/kgain.cpp - the k-way records of nets and cells: from scratch, after a move, and across levels.
// SPDX-License-Identifier: MIT
//
// A net lists the parts that it touches with its pins there, a cell the parts other than its own that its
// nets touch with the gains of a move. Lists are searched from the front: they are short. Entries stand in
// the order in which they were first met and the last entry fills a hole; both decide ties of refinement.
//
// At the start id and soloed of all cells are summed up net by net, which makes the records of most of them. A move makes
// the records of the cells around it stale; a record is computed when it is looked at. Its pref is that
// of the time when it became stale: nets that do not make their cells stale change it no more, but then a stale record
// must be computed before such a net changes. Cells that would lose by any move have no list.
//
// A net of one pin can never be cut: it counts neither as internal weight nor as a loss.

#include "kgain.h"

#include "coarsen/uncoarsen.h"
#include "control/ctrl.h"

#include <algorithm>

void AllocateKwayRefinementMemory__(const Control *ctrl, HGraph *graph)
{
  const int n = graph->ncells;

  graph->where = imalloc__(static_cast<std::int64_t>(n) + graph->nislands, "AllocateRefinementMemory: where");
  graph->kpwgts = imalloc__(ctrl->nparts, "AllocateKwayRefinementMemory: kpwgts");
  graph->nrinfo = QVarray__<NetInfo>(graph->nnets, "AllocateKwayRefinementMemory: nrinfo");
  graph->crinfo = QVarray__<RInfo>(n, "AllocateKwayRefinementMemory: crinfo");
  graph->nrdata = QVarray__<NetDegree>(graph->netptr[graph->nnets], "AllocateKwayRefinementMemory: nrdata");
  for (int j = 0; j < graph->nnets; j++)
    graph->nrinfo[j] = {0, NetSize__(graph, j) == 1 ? 0 : graph->netwgt[j], graph->nrdata + graph->netptr[j]};
  for (int i = 0; i < n; i++)
    graph->crinfo[i] = {0, 0, 0, 1, nullptr};
}

// Room for the entries of cell i: it can be connected to so many parts other than its own.
static KDegree *TakeRoom(const Control *ctrl, HGraph *graph, int i)
{
  const std::int64_t SMALLEST = 256, LARGEST = 65536;
  KDegreeBlock *block = graph->crdata;
  std::int64_t room = 0;

  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++)
    room += NetSize__(graph, graph->incind[k]) - 1;
  room = std::min<std::int64_t>(room, ctrl->nparts - 1);

  if (block == nullptr || block->size - block->used < room) {
    const std::int64_t size =
        std::max(room, block == nullptr ? SMALLEST : std::min(2 * block->size, LARGEST));
    const std::size_t nbytes = sizeof(KDegreeBlock) + static_cast<std::size_t>(size) * sizeof(KDegree);
    block = static_cast<KDegreeBlock *>(QVmalloc__(nbytes, "AllocateKwayRefinementMemory: crdata"));
    *block = {graph->crdata, size, 0};
    graph->crdata = block;
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
static void ListParts(const Control *ctrl, HGraph *graph, int i)
{
  const int m = graph->where[i];
  RInfo *cell = &graph->crinfo[i];
  int lossbound = graph->adjwgt[i]; // weight of the nets that can be cut

  if (cell->degrees == nullptr)
    cell->degrees = TakeRoom(ctrl, graph, i);
  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const int j = graph->incind[k];
    const NetInfo *net = &graph->nrinfo[j];

    if (net->ndegrees == 1) {
      if (NetSize__(graph, j) == 1)
        lossbound = SubWrap__(lossbound, graph->netwgt[j]);
      continue;
    }
    const int w = net->weight, here = FindPart(net, m)->npins;
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
      entry->kgain = AddWrap__(entry->kgain, w);
      entry->pref += (there > here) - (there < here);
      if (here == 1 && net->ndegrees == 2)
        entry->ed = AddWrap__(entry->ed, w);
    }
  }
  for (int d = 0; d < cell->ndegrees; d++)
    cell->degrees[d].kgain = AddWrap__(cell->degrees[d].kgain, SubWrap__(cell->soloed, lossbound));
}

static void ComputeCellRecord(const Control *ctrl, HGraph *graph, int i)
{
  const int m = graph->where[i];
  int id = 0, soloed = 0;

  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const NetInfo *net = &graph->nrinfo[graph->incind[k]];
    if (net->ndegrees == 1)
      id = AddWrap__(id, net->weight);
    else if (FindPart(net, m)->npins == 1)
      soloed = AddWrap__(soloed, net->weight);
  }
  RInfo *cell = &graph->crinfo[i];
  *cell = {0, id, soloed, 0, cell->degrees};
  if (soloed >= id)
    ListParts(ctrl, graph, i);
}

const RInfo *CellRecord__(const Control *ctrl, HGraph *graph, int i)
{
  if (graph->crinfo[i].stale)
    ComputeCellRecord(ctrl, graph, i);
  return &graph->crinfo[i];
}

// Net j is cut, or can never be: it does not count as internal to its pins, but as soloed to those alone in their part.
static void TakeFromInside(HGraph *graph, int j)
{
  const NetInfo *net = &graph->nrinfo[j];
  const bool solo = std::any_of(net->degrees, net->degrees + net->ndegrees,
                                [](const NetDegree &entry) { return entry.npins == 1; });

  for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
    const int c = graph->netind[k];
    RInfo *cell = &graph->crinfo[c];
    cell->id = SubWrap__(cell->id, graph->netwgt[j]);
    if (solo && FindPart(net, graph->where[c])->npins == 1)
      cell->soloed = AddWrap__(cell->soloed, net->weight);
  }
}

void ComputeInitKwayGains__(const Control *ctrl, HGraph *graph)
{
  iset__(ctrl->nparts, 0, graph->kpwgts);
  graph->mincut = graph->soed = 0;
  for (int i = 0; i < graph->ncells; i++)
    graph->crinfo[i] = {0, graph->adjwgt[i], 0, 0, graph->crinfo[i].degrees};

  for (int j = 0; j < graph->nnets; j++) {
    CheckpointAt__(ctrl, j);
    NetInfo *net = &graph->nrinfo[j];
    net->ndegrees = 0;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      AddPin(net, graph->where[graph->netind[k]]);
    if (net->ndegrees > 1) {
      graph->mincut = AddWrap__(graph->mincut, graph->netwgt[j]);
      graph->soed = AddWrap__(graph->soed, MulWrap__(net->ndegrees, graph->netwgt[j]));
    }
    if (net->ndegrees > 1 || NetSize__(graph, j) == 1)
      TakeFromInside(graph, j);
  }

  // Most cells would lose by any move: their records are done.
  for (int i = 0; i < graph->ncells; i++) {
    int *pwgt = &graph->kpwgts[graph->where[i]];
    *pwgt = AddWrap__(*pwgt, graph->cellwgt[i]);
    graph->crinfo[i].stale = graph->crinfo[i].soloed < graph->crinfo[i].id ? 0 : 1;
  }
}

// Whether the records of the pins of a net stay as they are when one of its pins moves from part a to part b.
static bool KeepsRecords(const NetInfo *net, int a, int b)
{
  const NetDegree *arrival = FindPart(net, b);

  return FindPart(net, a)->npins > 2 && arrival < net->degrees + net->ndegrees && arrival->npins >= 2;
}

void KwayUpdateGainInfo__(const Control *ctrl, HGraph *graph, int v, int a, int b)
{
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int j = graph->incind[i];
    if (!KeepsRecords(&graph->nrinfo[j], a, b))
      continue;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      if (graph->netind[k] != v)
        CellRecord__(ctrl, graph, graph->netind[k]);
  }
  graph->crinfo[v].stale = 1;
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int j = graph->incind[i];
    const int left = RemovePin(&graph->nrinfo[j], a);
    const int arrived = AddPin(&graph->nrinfo[j], b);
    if (left > 1 && arrived > 2)
      continue;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      graph->crinfo[graph->netind[k]].stale = 1;
  }
}

void ProjectKwayPartition__(Control *ctrl, HGraph *coarse)
{
  StartTimer__(ctrl, &ctrl->ProjectTmr);
  AllocateKwayRefinementMemory__(ctrl, coarse->finer);
  ProjectWhere__(coarse);
  StopTimer__(ctrl, &ctrl->ProjectTmr);
}
