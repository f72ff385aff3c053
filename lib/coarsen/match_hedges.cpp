// lib/coarsen/match_hedges.cpp - matching by whole nets.
// SPDX-License-Identifier: MIT
//
//   order    nets, heaviest first, among equal weights the smaller   OrderNets
//   whole    nets whose pins are all unmatched                       GroupNets<true>
//   partial  nets of which more than half are unmatched              GroupNets<false>
//   pairs    of what is left                                         PairUp
// Cost: one sort of the nets, two sweeps over the pins, and the pair searches.

#include "match.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

// The key decides results: it wraps around, and the order of equal keys is that of the sort. In the wide form weights
// leave no room for a size beside them, and nothing depends on either.
static void OrderNets(const HGraph *graph, MatchWork *work)
{
  RandomPermute__(work->perm, graph->nnets, 1);
  if constexpr (IS_WIDE) {
    std::stable_sort(work->perm, work->perm + graph->nnets, [graph](Net a, Net b) {
      return graph->netwgt[a] != graph->netwgt[b] ? graph->netwgt[a] > graph->netwgt[b]
                                                  : NetSize(graph, a) < NetSize(graph, b);
    });
  } else {
    for (int i = 0; i < graph->nnets; i++) {
      const int e = work->perm[i];
      work->vpairs[i].key =
          static_cast<int>(SubWrap(MulWrap(graph->netwgt[e], graph->ncells), NetSize(graph, e)));
      work->vpairs[i].val = e;
    }
    dkeysort__(graph->nnets, work->vpairs);
    for (int i = 0; i < graph->nnets; i++)
      work->perm[i] = work->vpairs[i].val;
  }
}

// Makes a group of the unmatched pins of each net that has enough of them and not too much weight. Pins are
// counted as often as the net lists them; a group holds each cell once.
template <bool whole>
static void GroupNets(const Control *ctrl, const HGraph *graph, const int *nets, Grouping *groups)
{
  for (int i = 0; i < graph->nnets; i++) {
    const int first = graph->netptr[nets[i]], end = graph->netptr[nets[i] + 1];
    std::int64_t wgt = 0;
    int nfree = 0;

    for (int k = first; k < end; k++) {
      if (groups->cellmap[graph->netind[k]] == UNMATCHED) {
        nfree++;
        wgt += graph->cellwgt[graph->netind[k]];
      }
    }
    if (nfree == 0 || wgt > ctrl->maxcellwgt)
      continue;
    if (whole ? nfree < end - first : !(nfree > 0.5 * (end - first)))
      continue;

    for (int k = first; k < end; k++)
      if (groups->cellmap[graph->netind[k]] == UNMATCHED)
        AddMember(groups, graph->netind[k]);
    CloseGroup(groups);
  }
}

Grouping Match_Hedges_PHedges_Edges__(const Control *ctrl, const HGraph *graph, MatchWork *work)
{
  Grouping groups = StartGrouping(graph, "HGraphMatch: graph->cellmap", "HGraphMatch: graph->mptr",
                                  "HGraphMatch: graph->mind");
  const MatchView view = {graph, groups.cellmap, nullptr};

  OrderNets(graph, work);
  GroupNets<true>(ctrl, graph, work->perm, &groups);
  GroupNets<false>(ctrl, graph, work->perm, &groups);

  OrderByDegree(ctrl, graph, work->keys, work->order, work->perm);
  PairUp(ctrl, graph, work, &groups, [&](int v) { return FindCell__(ctrl, &view, work, v); });
  return groups;
}

} // namespace kapris::engine::KAPRIS_ENGINE
