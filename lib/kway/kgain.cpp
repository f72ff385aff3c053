// lib/kway/kgain.cpp - the k-way records of nets and cells: from scratch, after a move, and across levels.
// SPDX-License-Identifier: MIT
//
// A net lists the parts that it touches with its pins there, a cell the parts other than its own that its
// nets touch with the gains of a move. Lists are searched from the front: they are short. Entries stand in
// the order in which they were first met and the last entry fills a hole; both decide ties of refinement. For
// the same reason only the cells that KwayUpdateGainInfo__ marks are recomputed, although a skipped cell's
// pref can then be out of date.
//
// A net of one pin can never be cut: it counts neither as internal weight nor as a loss.

#include "kgain.h"

#include "coarsen/uncoarsen.h"
#include "control/ctrl.h"

#include <algorithm>

// How many parts other than its own a cell can be connected to.
static int MaxDegrees(const Control *ctrl, const HGraph *graph, int i)
{
  std::int64_t npins = 0;

  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++)
    npins += NetSize__(graph, graph->incind[k]) - 1;
  return static_cast<int>(std::min<std::int64_t>(npins, ctrl->nparts - 1));
}

void AllocateKwayRefinementMemory__(const Control *ctrl, HGraph *graph)
{
  const int n = graph->ncells;
  std::int64_t ndegrees = 0;

  graph->where = imalloc__(static_cast<std::int64_t>(n) + graph->nislands, "AllocateRefinementMemory: where");
  graph->kpwgts = imalloc__(ctrl->nparts, "AllocateKwayRefinementMemory: kpwgts");
  graph->nrinfo = QVarray__<NetInfo>(graph->nnets, "AllocateKwayRefinementMemory: nrinfo");
  graph->crinfo = QVarray__<RInfo>(n, "AllocateKwayRefinementMemory: crinfo");
  graph->nrdata = QVarray__<NetDegree>(graph->netptr[graph->nnets], "AllocateKwayRefinementMemory: nrdata");
  for (int i = 0; i < n; i++)
    ndegrees += MaxDegrees(ctrl, graph, i);
  graph->crdata = QVarray__<KDegree>(ndegrees, "AllocateKwayRefinementMemory: crdata");

  for (int j = 0; j < graph->nnets; j++)
    graph->nrinfo[j] = {0, graph->nrdata + graph->netptr[j]};
  ndegrees = 0;
  for (int i = 0; i < n; i++) {
    graph->crinfo[i] = {0, 0, 0, graph->crdata + ndegrees};
    ndegrees += MaxDegrees(ctrl, graph, i);
  }
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

static void ComputeCellRecord(HGraph *graph, int i)
{
  const int m = graph->where[i];
  RInfo *cell = &graph->crinfo[i];
  int lossbound = graph->adjwgt[i]; // weight of the nets that can be cut

  cell->ndegrees = cell->id = cell->soloed = 0;
  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const int j = graph->incind[k], w = graph->netwgt[j];
    const NetInfo *net = &graph->nrinfo[j];

    if (NetSize__(graph, j) == 1) {
      lossbound = SubWrap__(lossbound, w);
      continue;
    }
    if (net->ndegrees == 1) {
      cell->id = AddWrap__(cell->id, w);
      continue;
    }
    const int here = FindPart(net, m)->npins;
    if (here == 1)
      cell->soloed = AddWrap__(cell->soloed, w);
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

void ComputeInitKwayGains__(const Control *ctrl, HGraph *graph)
{
  iset__(ctrl->nparts, 0, graph->kpwgts);
  graph->mincut = graph->soed = 0;

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
  }
  for (int i = 0; i < graph->ncells; i++) {
    if (i % 256 == 0) // a record takes long where nets touch many parts
      Checkpoint__(ctrl);
    int *pwgt = &graph->kpwgts[graph->where[i]];
    *pwgt = AddWrap__(*pwgt, graph->cellwgt[i]);
    ComputeCellRecord(graph, i);
  }
}

void ComputeKwayGainsSet__(HGraph *graph, int n, const int *cells)
{
  for (int i = 0; i < n; i++)
    ComputeCellRecord(graph, cells[i]);
}

void KwayUpdateGainInfo__(HGraph *graph, int v, int a, int b, int *marker, int *updind)
{
  int n = 0;

  updind[n++] = v;
  marker[v] = v;
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int j = graph->incind[i];
    const int left = RemovePin(&graph->nrinfo[j], a);
    const int arrived = AddPin(&graph->nrinfo[j], b);
    if (left > 1 && arrived > 2)
      continue;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      const int u = graph->netind[k];
      if (marker[u] != v) {
        marker[u] = v;
        updind[n++] = u;
      }
    }
  }
  ComputeKwayGainsSet__(graph, n, updind);
}

void ProjectKwayPartition__(Control *ctrl, HGraph *coarse)
{
  StartTimer__(ctrl, &ctrl->ProjectTmr);
  AllocateKwayRefinementMemory__(ctrl, coarse->finer);
  ProjectWhere__(coarse);
  StopTimer__(ctrl, &ctrl->ProjectTmr);
}
