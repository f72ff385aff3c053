// lib/coarsen/contract.cpp - builds the next coarser level from matching groups.
// SPDX-License-Identifier: MIT
//
//   map     the nets to coarse cells; nets within one cell are dropped   MapNets
//   merge   identical nets, adding their weights                         MergeSameNets
//   build   the incidence lists and weights of the coarse cells          BuildCoarseCells
// Keeps: the total cell weight; total net weight + dropwgt; the cut of every partition of the coarse level
// projected to the fine one. Cost: O(pins) and a sort of the nets' keys.

#include "coarsen.h"

#include "base/sort.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

struct NetList {
  int nnets;
  Pin *netptr;
  Cell *netind;
  Weight *netwgt;
};

struct NetView {
  int nnets;
  const Pin *netptr;
  const Cell *netind;
  const Weight *netwgt;
};

struct MergeLabels {
  const char *netptr, *netind, *netwgt, *seen;
};

// The weight of a pin in a net's key: by position, counted from 1.
struct ProductKey { // contraction
  unsigned operator()(unsigned position, unsigned pin) const
  {
    return position * pin;
  }
};

struct SumKey { // splitting
  unsigned operator()(unsigned position, unsigned pin) const
  {
    return pin + 100 * position;
  }
};

} // namespace

static bool SamePins(const NetView *nets, int a, int b)
{
  const int *pins = nets->netind + nets->netptr[a];

  return std::equal(pins, nets->netind + nets->netptr[a + 1], nets->netind + nets->netptr[b]);
}

// Merges identical nets (their pins are sorted). netmap, when given, receives the merged net of every net.
// Only nets of equal key are compared, and for one net the comparison ends at the first unmerged candidate of
// another size; what lies behind it stays a net of its own.
template <class PinKey>
static NetList MergeSameNets(const NetView *nets, int *netmap, const MergeLabels *labels, PinKey pinkey)
{
  const int n = nets->nnets;
  const int *netptr = nets->netptr;
  KeyVal *cand = QVarray<KeyVal>(n, "CreateCoarseHGraph: cand");
  int *seen = ismalloc__(n, 0, labels->seen);
  NetList merged = {0, imalloc__(static_cast<std::int64_t>(n) + 1, labels->netptr),
                    imalloc__(netptr[n], labels->netind), wmalloc(n, labels->netwgt)};

  for (int j = 0; j < n; j++) {
    const unsigned size = static_cast<unsigned>(netptr[j + 1] - netptr[j]);
    unsigned key = 0;
    for (unsigned p = 0; p < size; p++)
      key += pinkey(p + 1, static_cast<unsigned>(nets->netind[netptr[j] + static_cast<int>(p)]));
    cand[j] = {static_cast<int>(size == 0 ? 0 : key * 100 + size), j};
  }
  ikeysort__(n, cand);

  merged.netptr[0] = 0;
  for (int i = 0; i < n; i++) {
    if (seen[i])
      continue;
    const int net = cand[i].val, size = netptr[net + 1] - netptr[net];
    const int m = merged.nnets++;

    icopy__(size, nets->netind + netptr[net], merged.netind + merged.netptr[m]);
    merged.netptr[m + 1] = merged.netptr[m] + size;
    merged.netwgt[m] = nets->netwgt[net];
    if (netmap != nullptr)
      netmap[net] = m;

    for (int j = i + 1; j < n; j++) {
      const int other = cand[j].val;
      if (seen[j])
        continue;
      if (cand[j].key != cand[i].key || netptr[other + 1] - netptr[other] != size)
        break;
      if (SamePins(nets, net, other)) {
        seen[j] = 1;
        merged.netwgt[m] = AddWrap(merged.netwgt[m], nets->netwgt[other]);
        if (netmap != nullptr)
          netmap[other] = m;
      }
    }
  }
  QVfree__(&cand, &seen);
  return merged;
}

// The nets as sets of coarse cells in increasing order, without those that fall into one coarse cell; their
// weight is added to *dropwgt and their netmap entry stays -1. htable is all -1 on entry.
static NetList MapNets(const HGraph *graph, const Cell *cellmap, Net *netmap, int *htable, Weight *dropwgt)
{
  NetList nets = {
      0, imalloc__(static_cast<std::int64_t>(graph->nnets) + 1, "CreateCoarseHGraph: coarser->netptr"),
      imalloc__(graph->netptr[graph->nnets], "CreateCoarseHGraph: coarser->netind"),
      wmalloc(graph->nnets, "CreateCoarseHGraph: coarser->netwgt")};

  nets.netptr[0] = 0;
  for (int i = 0; i < graph->nnets; i++) {
    int *pins = nets.netind + nets.netptr[nets.nnets];
    int npins = 0;

    for (int k = graph->netptr[i]; k < graph->netptr[i + 1]; k++) {
      const int c = cellmap[graph->netind[k]];
      pins[npins] = c;
      npins += htable[c] != i;
      htable[c] = i;
    }
    if (npins == 1) {
      *dropwgt = AddWrap(*dropwgt, graph->netwgt[i]);
      continue;
    }
    SortDistinct(npins, pins);
    netmap[i] = nets.nnets;
    nets.netwgt[nets.nnets++] = graph->netwgt[i];
    nets.netptr[nets.nnets] = nets.netptr[nets.nnets - 1] + npins;
  }
  return nets;
}

// Asks for what is read after member number k: members and their nets lie anywhere.
__attribute__((always_inline)) static inline void AskForNets(const HGraph *graph, const Cell *mind,
                                                             const Net *netmap, int k)
{
  if (k + 16 >= graph->ncells)
    return;
  __builtin_prefetch(&graph->incptr[mind[k + 16]]);
  __builtin_prefetch(&graph->incind[graph->incptr[mind[k + 8]]]);
  const int v = mind[k + 4];
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++)
    __builtin_prefetch(&netmap[graph->incind[i]]);
}

// The nets of a coarse cell appear in the order in which its members first name them. Each is written, and stays if it
// is new: a branch on that could not be foretold.
static void BuildCoarseCells(const HGraph *graph, const Grouping *groups, const Net *netmap, HGraph *coarser,
                             int *htable)
{
  const int *mptr = groups->mptr;
  const Cell *mind = groups->mind;
  int *seen = htable + 1; // the last cell that named a net; dropped nets, -1, count as named by all
  int nincs = 0;

  coarser->incptr[0] = 0;
  for (int c = 0; c < coarser->ncells; c++) {
    seen[-1] = c;
    for (int k = mptr[c]; k < mptr[c + 1]; k++) {
      const int v = mind[k];
      AskForNets(graph, mind, netmap, k);
      coarser->cellwgt[c] += graph->cellwgt[v];
      for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
        const int m = netmap[graph->incind[i]];
        coarser->incind[nincs] = m;
        nincs += seen[m] != c;
        seen[m] = c;
      }
    }
    coarser->incptr[c + 1] = nincs;
    for (int i = coarser->incptr[c]; i < nincs; i++)
      coarser->adjwgt[c] = AddWrap(coarser->adjwgt[c], coarser->netwgt[coarser->incind[i]]);
  }
}

HGraph *CreateCoarseHGraph__(const Control *ctrl, const HGraph *graph, const Grouping *groups)
{
  static const MergeLabels labels = {"CreateCoarseHGraph: dnetptr", "CreateCoarseHGraph: dnetind",
                                     "CreateCoarseHGraph: dnetwgt", "CreateCoarseHGraph: dseen"};
  const Stopwatch stopwatch(ctrl, &Timers::AuxTmr2);
  const int ncoarse = groups->ngroups;
  Net *netmap = ismalloc__(graph->nnets, -1, "CreateCoarseHGraph: graph->netmap");
  HGraph *coarser = CreateHGraph__();

  coarser->ncells = ncoarse;
  coarser->nfixed = graph->nfixed;
  coarser->dropwgt = graph->dropwgt;

  // Indexed by coarse cell, then by coarse net. Anchors without members can make more groups than there are
  // cells.
  const std::int64_t nentries =
      std::max<std::int64_t>({graph->ncells, static_cast<std::int64_t>(graph->nnets) + 1, ncoarse});
  int *htable = ismalloc__(nentries, -1, "CreateCoarseHGraph: htable");

  NetList mapped = MapNets(graph, groups->cellmap, netmap, htable, &coarser->dropwgt);
  Checkpoint(ctrl);
  int *dnetmap = imalloc__(mapped.nnets, "CreateCoarseHGraph: dnetmap");
  const NetView view = {mapped.nnets, mapped.netptr, mapped.netind, mapped.netwgt};
  const NetList merged = MergeSameNets(&view, dnetmap, &labels, ProductKey());
  for (int i = 0; i < graph->nnets; i++)
    if (netmap[i] != -1)
      netmap[i] = dnetmap[netmap[i]];
  QVfree__(&mapped.netptr, &mapped.netind, &mapped.netwgt, &dnetmap);

  Checkpoint(ctrl);
  coarser->nnets = merged.nnets;
  coarser->netptr = merged.netptr;
  coarser->netind = merged.netind;
  coarser->netwgt = merged.netwgt;
  coarser->edgewgt = fmalloc__(merged.nnets, "CreateCoarseHGraph: coarser->edgewgt");
  for (int j = 0; j < merged.nnets; j++)
    coarser->edgewgt[j] = EdgeWeight(merged.netwgt[j], NetSize(coarser, j));

  coarser->incptr = imalloc__(static_cast<std::int64_t>(ncoarse) + 1, "CreateCoarseHGraph: coarser->incptr");
  coarser->incind = imalloc__(static_cast<std::int64_t>(merged.netptr[merged.nnets]) + 1,
                              "CreateCoarseHGraph: coarser->incind");
  coarser->cellwgt = wsmalloc(ncoarse, 0, "CreateCoarseHGraph: coarser->cellwgt");
  coarser->adjwgt = wsmalloc(ncoarse, 0, "CreateCoarseHGraph: coarser->adjwgt");
  iset__(nentries, -1, htable);
  BuildCoarseCells(graph, groups, netmap, coarser, htable);

  Checkpoint(ctrl);
  CHECK_VALID(CheckHGraph(coarser));
  CHECK_VALID(CheckContraction(graph, coarser, groups->cellmap, netmap));
  QVfree__(&htable, &netmap);
  return coarser;
}

void CollapseSameHEdges__(int nnets, const Pin *netptr, Cell *netind, const Weight *netwgt, int *outnnets,
                          Pin **outnetptr, Cell **outnetind, Weight **outnetwgt)
{
  static const MergeLabels labels = {"CollapseSameHEdges: dnetptr", "CollapseSameHEdges: dnetind",
                                     "CollapseSameHEdges: dnetwgt", "CollapseSameHEdges: dseen"};

  for (int j = 0; j < nnets; j++)
    iintsort__(netptr[j + 1] - netptr[j], netind + netptr[j]);

  const NetView nets = {nnets, netptr, netind, netwgt};
  const NetList merged = MergeSameNets(&nets, nullptr, &labels, SumKey());
  *outnnets = merged.nnets;
  *outnetptr = merged.netptr;
  *outnetind = merged.netind;
  *outnetwgt = merged.netwgt;
}

} // namespace kapris::engine::KAPRIS_ENGINE
