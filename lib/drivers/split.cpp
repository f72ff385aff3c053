// lib/drivers/split.cpp - builds the two sub-hypergraphs of a bisected hypergraph.
// SPDX-License-Identifier: MIT

#include "drivers.h"

#include "coarsen/coarsen.h"

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// One side while it grows, sized for the whole parent.
struct SideNets {
  int ncells, nnets;
  Pin *netptr;
  Cell *netind;
  Weight *netwgt;
};

struct SideLabels {
  const char *netptr, *netind, *netwgt, *label, *cellwgt; // oversized net arrays, cell arrays
  const char *subptr, *subind, *subwgt;                   // exact copies
};

const SideLabels sidelabels[2] = {
    {"SplitGraphPart: snetptr[0]", "SplitGraphPart: snetind[0]", "SplitGraphPart: snetwgt[0]",
     "SplitGraphPart: slabel[0]", "SplitGraphPart: scellwgt[0]", "SplitGraphPart: lgraph->netptr",
     "SplitGraphPart: lgraph->netind", "SplitGraphPart: lgraph->netwgt"},
    {"SplitGraphPart: snetptr[1]", "SplitGraphPart: snetind[1]", "SplitGraphPart: snetwgt[1]",
     "SplitGraphPart: slabel[1]", "SplitGraphPart: scellwgt[1]", "SplitGraphPart: rgraph->netptr",
     "SplitGraphPart: rgraph->netind", "SplitGraphPart: rgraph->netwgt"}};

} // namespace

// Appends the pins of net j that lie on side s.
static void AppendNet(const HGraph *graph, int j, const int *where, const int *rename, int s, SideNets *side)
{
  int npins = side->netptr[side->nnets];

  for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
    const int c = graph->netind[k];
    if (where[c] == s)
      side->netind[npins++] = rename[c];
  }
  side->netwgt[side->nnets++] = graph->netwgt[j];
  side->netptr[side->nnets] = npins;
}

static void SplitNets(const Control *ctrl, const HGraph *graph, const int *where, const int *rename,
                      SideNets sides[2])
{
  for (int j = 0; j < graph->nnets; j++) {
    int npins[2] = {0, 0};

    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      npins[where[graph->netind[k]]]++;
    const bool iscut = npins[0] > 0 && npins[1] > 0;
    for (int s = 0; s < 2; s++)
      if (iscut ? ctrl->reconst && npins[s] > 1 : npins[s] > 0)
        AppendNet(graph, j, where, rename, s, &sides[s]);
  }
}

// The pieces of different nets can be identical.
static void MergePieces(SideNets *side)
{
  int nnets;
  Pin *netptr;
  Cell *netind;
  Weight *netwgt;

  CollapseSameHEdges__(side->nnets, side->netptr, side->netind, side->netwgt, &nnets, &netptr, &netind,
                       &netwgt);
  QVfree__(&side->netptr, &side->netind, &side->netwgt);
  side->nnets = nnets;
  side->netptr = netptr;
  side->netind = netind;
  side->netwgt = netwgt;
}

static void FillSubgraph(const HGraph *graph, const int *where, int s, const SideNets *side, HGraph *sub,
                         Cell **sublabels)
{
  const SideLabels *labels = &sidelabels[s];
  const int npins = side->netptr[side->nnets];
  Cell *label = *sublabels = imalloc__(side->ncells, labels->label);
  int n = 0;

  sub->cellwgt = wmalloc(side->ncells, labels->cellwgt);
  for (int i = 0; i < graph->ncells; i++) {
    if (where[i] == s) {
      label[n] = i;
      sub->cellwgt[n++] = graph->cellwgt[i];
    }
  }
  sub->netptr = imalloc__(static_cast<std::int64_t>(side->nnets) + 1, labels->subptr);
  sub->netind = imalloc__(npins, labels->subind);
  sub->netwgt = wmalloc(side->nnets, labels->subwgt);
  icopy__(static_cast<std::int64_t>(side->nnets) + 1, side->netptr, sub->netptr);
  icopy__(npins, side->netind, sub->netind);
  icopy__(side->nnets, side->netwgt, sub->netwgt);
  sub->ncells = side->ncells;
  sub->nnets = side->nnets;
}

void SplitGraphPart__(const Control *ctrl, const HGraph *graph, const int *where, HGraph *subs[2],
                      Cell *labels[2])
{
  SideNets sides[2] = {};
  int *rename = imalloc__(graph->ncells, "SplitGraphPart:rename");

  for (int i = 0; i < graph->ncells; i++)
    rename[i] = sides[where[i]].ncells++;
  for (int s = 0; s < 2; s++) {
    sides[s].netptr = imalloc__(static_cast<std::int64_t>(graph->nnets) + 1, sidelabels[s].netptr);
    sides[s].netind = imalloc__(graph->netptr[graph->nnets], sidelabels[s].netind);
    sides[s].netwgt = wmalloc(graph->nnets, sidelabels[s].netwgt);
    sides[s].netptr[0] = 0;
  }
  SplitNets(ctrl, graph, where, rename, sides);
  QVfree__(&rename);

  for (int s = 0; s < 2; s++) {
    if (ctrl->reconst)
      MergePieces(&sides[s]);
    subs[s] = CreateHGraph__();
    FillSubgraph(graph, where, s, &sides[s], subs[s], &labels[s]);
    QVfree__(&sides[s].netptr, &sides[s].netind, &sides[s].netwgt);
    CHECK_VALID(CheckHGraph(subs[s]));
  }
  // The anchors are the first cells of both sides: they never move, and the cells keep their order.
  subs[0]->nfixed = ctrl->bounds.nanchors0;
  subs[1]->nfixed = graph->nfixed - ctrl->bounds.nanchors0;
}

} // namespace kapris::engine::KAPRIS_ENGINE
