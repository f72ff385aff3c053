// lib/coarsen/match_hedges.cpp - matching by whole nets.
// SPDX-License-Identifier: MIT
//
//   order    nets, heaviest first, among equal weights the smaller   OrderNets
//   whole    nets whose pins are all unmatched                       GroupNets<true>
//   partial  nets of which more than half are unmatched              GroupNets<false>
//   pairs    of what is left                                         PairUp__
// Cost: one sort of the nets, two sweeps over the pins, and the pair searches.

#include "match.h"

static void OrderNets(const HGraph *graph, MatchWork *work)
{
  RandomPermute__(work->perm, graph->nnets, 1);
  for (int i = 0; i < graph->nnets; i++) {
    const int e = work->perm[i];
    work->vpairs[i].key = SubWrap__(MulWrap__(graph->netwgt[e], graph->ncells), NetSize__(graph, e));
    work->vpairs[i].val = e;
  }
  dkeysort__(graph->nnets, work->vpairs);
  for (int i = 0; i < graph->nnets; i++)
    work->perm[i] = work->vpairs[i].val;
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
        AddMember__(groups, graph->netind[k]);
    CloseGroup__(groups);
  }
}

void Match_Hedges_PHedges_Edges__(Control *ctrl, HGraph *graph, MatchWork *work)
{
  Grouping groups = StartGrouping__(graph, "HGraphMatch: graph->cellmap", "HGraphMatch: graph->mptr",
                                    "HGraphMatch: graph->mind");

  OrderNets(graph, work);
  GroupNets<true>(ctrl, graph, work->perm, &groups);
  GroupNets<false>(ctrl, graph, work->perm, &groups);

  OrderByDegree__(ctrl, graph, work->keys, work->order, work->perm);
  PairUp__(ctrl, graph, work, &groups, [&](int v) { return FindCell__(ctrl, graph, work, v); });
  CHECK_VALID(CheckMatching__(ctrl, graph, groups.ngroups));
  CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}
