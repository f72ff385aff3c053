// lib/coarsen/match.h - the matching schemes and what they share; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "coarsen.h"

#include "base/random.h"
#include "base/sort.h"

namespace kapris::engine::KAPRIS_ENGINE
{

constexpr float NO_SCORE = -1.0f; // of a cell that a search has not met; scores are not negative

// The work arrays of one coarsening call, sized by its finest level and shared by all its matchings.
struct MatchWork {
  float *scores;  // [ncells] of the candidates of one search; all NO_SCORE between two searches
  int *perm;      // [max] visiting order of cells or nets
  KeyVal *vpairs; // [max] (key, net) pairs; the same block as keys and order
  int *keys;      // [max] sort keys of cells: the first half of vpairs
  int *order;     // [max] a permutation of the cells: the second half of vpairs
  int *cand;      // [ncells] the candidates of one search; a cell has fewer than ncells: none is ever dropped
};

// What a search looks at.
struct MatchView {
  const HGraph *graph;
  const Cell *cellmap;
  const int *where; // restricted searches: the part of each cell
};

// What tells the partner searches apart; bits of a template argument.
enum FinderRules {
  FIND_PAIR = 0,
  FIND_STAR = 1,      // a cell may join a group that exists
  FIND_RESTRICTED = 2 // only cells of the same part, and no large nets
};

// The best partner of the unmatched cell v, or -1: the cell that shares the most edge weight with v and keeps
// the group within ctrl->maxcellwgt. wgts (stars only) holds the weight of each group, one slot ahead: slot 0
// is that of an unmatched cell.
int FindCell__(const Control *ctrl, const MatchView *view, MatchWork *work, int v);
int FindCellStar__(const Control *ctrl, const MatchView *view, MatchWork *work, const Weight *wgts, int v);

// Writes a visiting key for every cell, small for a strong connection; returns one more than the largest.
int ComputeAllWeights__(const Control *ctrl, const HGraph *graph, MatchWork *work, int *keys);

// Each scheme groups all cells of graph.
Grouping Match_Edges__(const Control *ctrl, const HGraph *graph, MatchWork *work);
// connorder 1 visits strongly connected cells first, 0 cells of few nets first.
Grouping Match_EdgesStars__(const Control *ctrl, const HGraph *graph, MatchWork *work, int connorder);
Grouping CMatch_Edges__(const Control *ctrl, const HGraph *graph, const int *where, MatchWork *work);
Grouping CMatch_EdgesStars__(const Control *ctrl, const HGraph *graph, const int *where, MatchWork *work);
Grouping Match_Hedges_PHedges_Edges__(const Control *ctrl, const HGraph *graph, MatchWork *work);

// Asks for what a walk over all cells, in the order of cellat, will read after number i: the nets of a cell lie
// anywhere, and so do their pins. Each step needs what the one before it has asked for some cells earlier. Always
// inlined: a function without a visible effect would be dropped.
template <class CellAt>
__attribute__((always_inline)) inline void LookAhead(const HGraph *graph, int i, CellAt cellat)
{
  if (i + 16 >= graph->ncells)
    return;
  __builtin_prefetch(&graph->incptr[cellat(i + 16)]);
  __builtin_prefetch(&graph->incind[graph->incptr[cellat(i + 8)]]);
  for (int c = cellat(i + 4), k = graph->incptr[c]; k < graph->incptr[c + 1]; k++) {
    __builtin_prefetch(&graph->netptr[graph->incind[k]]);
    __builtin_prefetch(&graph->edgewgt[graph->incind[k]]);
  }
  for (int c = cellat(i + 2), k = graph->incptr[c]; k < graph->incptr[c + 1]; k++)
    __builtin_prefetch(&graph->netind[graph->netptr[graph->incind[k]]]);
}

// Allocates the arrays of a grouping of graph under the given labels; the anchors become groups of their own.
Grouping StartGrouping(const HGraph *graph, const char *maplabel, const char *ptrlabel, const char *indlabel);

inline void AddMember(Grouping *groups, int cell)
{
  groups->cellmap[cell] = groups->ngroups;
  groups->mind[groups->nmembers++] = cell;
}

inline void CloseGroup(Grouping *groups)
{
  groups->mptr[++groups->ngroups] = groups->nmembers;
}

// Fills mptr and mind from cellmap by counting; members appear in increasing cell number.
void ListMembers(int ncells, Grouping *groups);

// Fills out with the cells by increasing number of nets (capped), equal numbers in random order.
void OrderByDegree(const Control *ctrl, const HGraph *graph, int *keys, int *random, int *out);

// Groups the cells that are still unmatched, in the order of perm, with the partner that find names or alone.
template <class Find>
void PairUp(const Control *ctrl, const HGraph *graph, const MatchWork *work, Grouping *groups, Find find)
{
  for (int i = 0; i < graph->ncells; i++) {
    CheckpointAt(ctrl, i);
    const int v = work->perm[i];
    LookAhead(graph, i, [&](int k) { return work->perm[k]; });
    if (groups->cellmap[v] != UNMATCHED)
      continue;
    const int u = find(v);
    AddMember(groups, v);
    if (u != -1)
      AddMember(groups, u);
    CloseGroup(groups);
  }
}

} // namespace kapris::engine::KAPRIS_ENGINE
