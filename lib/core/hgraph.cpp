// lib/core/hgraph.cpp - creation and release of hypergraph records, and the incidence lists.
// SPDX-License-Identifier: MIT

#include "hgraph.h"

namespace kapris::engine::KAPRIS_ENGINE
{

HGraph *CreateHGraph__()
{
  HGraph *graph = QVarray<HGraph>(1, "CreateCoarseHGraph: graph");

  InitHGraph__(graph);
  return graph;
}

void InitHGraph__(HGraph *graph)
{
  *graph = HGraph{};
  graph->ncells = graph->nnets = -1;
  graph->nfixed = -1;
}

static void CopyOrOnes(int n, const Weight *weights, Weight *copy)
{
  if (weights == nullptr)
    iset__(n, 1, copy);
  else
    icopy__(n, weights, copy);
}

HGraph *CopyHGraph(int ncells, int nnets, const Weight *cellwgts, const Pin *netptr, const Cell *netind,
                   const Weight *netwgts)
{
  const int npins = nnets > 0 ? netptr[nnets] : 0;
  HGraph *graph = CreateHGraph__();

  graph->ncells = ncells;
  graph->nnets = nnets;
  graph->nfixed = 0;
  graph->cellwgt = wmalloc(ncells, "KAPRIS: graph->cellwgt");
  graph->netwgt = wmalloc(nnets, "KAPRIS: graph->netwgt");
  graph->netptr = ismalloc__(static_cast<std::int64_t>(nnets) + 1, 0, "KAPRIS: graph->netptr");
  graph->netind = imalloc__(npins, "KAPRIS: graph->netind");
  CopyOrOnes(ncells, cellwgts, graph->cellwgt);
  CopyOrOnes(nnets, netwgts, graph->netwgt);
  if (nnets > 0)
    icopy__(static_cast<std::int64_t>(nnets) + 1, netptr, graph->netptr);
  icopy__(npins, netind, graph->netind);
  CHECK_VALID(CheckHGraph(graph));
  return graph;
}

void FreeHGraph__(HGraph *graph)
{
  QVfree__(&graph->incptr, &graph->incind, &graph->netptr, &graph->netind, &graph->cellwgt, &graph->netwgt,
           &graph->adjwgt, &graph->edgewgt);
  QVfree__(&graph);
}

// Turns counts, or the ends of filled lists, into starts: one place to the right.
static void ShiftRight(int n, int *ptr)
{
  for (int i = n; i > 0; i--)
    ptr[i] = ptr[i - 1];
  ptr[0] = 0;
}

void CreateIncidentHGraph__(HGraph *graph)
{
  const int ncells = graph->ncells, nnets = graph->nnets;
  const int npins = graph->netptr[nnets];

  Pin *incptr = graph->incptr =
      ismalloc__(static_cast<std::int64_t>(ncells) + 1, 0, "CreateIncidentHGraph: incptr");
  Net *incind = graph->incind = imalloc__(npins, "CreateIncidentHGraph: graph->incind");
  Weight *adjwgt = graph->adjwgt = wsmalloc(ncells, 0, "CreateIncidentHGraph: adjwgt");
  graph->edgewgt = fmalloc__(nnets, "CreateIncidentHGraph: graph->edgewgt");

  for (int k = 0; k < npins; k++)
    incptr[graph->netind[k]]++;
  for (int i = 1; i < ncells; i++)
    incptr[i] += incptr[i - 1];
  ShiftRight(ncells, incptr);

  for (int j = 0; j < nnets; j++) {
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      int c = graph->netind[k];
      incind[incptr[c]++] = j;
      adjwgt[c] = AddWrap(adjwgt[c], graph->netwgt[j]);
    }
    // A net of one pin has no pair; 0 / 0 would be no number.
    graph->edgewgt[j] = NetSize(graph, j) > 1 ? EdgeWeight(graph->netwgt[j], NetSize(graph, j)) : 0.0f;
  }
  ShiftRight(ncells, incptr);

  CHECK_VALID(CheckIncidence(graph));
}

} // namespace kapris::engine::KAPRIS_ENGINE
