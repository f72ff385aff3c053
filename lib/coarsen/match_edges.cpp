// lib/coarsen/match_edges.cpp - matching by edge weight: pairs and stars, free or within the parts of a
// partition.
// SPDX-License-Identifier: MIT
//
// A net of weight w and p pins gives each pair of its pins the edge weight w/(p-1). Cells are visited in a
// chosen order; an unmatched cell joins the neighbour with the largest sum of edge weights:
//   collect  the neighbours with their scores   CollectCandidates
//   choose   the best one that qualifies        TakeBest
// What the searches differ in:
//                        qualifies (besides its weight)       equal scores
//   FindCell__           unmatched                            lighter, then first found
//   FindCellStar__       its group is light enough            first unmatched, else last matched
//   FIND_RESTRICTED      the same, and in the part of v       as above; nets above maxnetsize are skipped
//   ComputeAllWeights__  -                                    as FindCell__; weak nets are skipped
// Cost of a search: the pins of the nets of v.

#include "match.h"

#include "core/constants.h"

#include <bit>
#include <utility>

namespace kapris::engine::KAPRIS_ENGINE
{

// ----------------------------------------------------------------------------------------------------------
// Partner search

// Collects the other pins of the nets of v, in incidence order, with their scores; returns how many there are.
// Without a branch per pin: whether a pin was seen before cannot be foretold.
template <class SkipNet>
static inline int CollectCandidates(const HGraph *graph, MatchWork *work, int v, SkipNet skipnet)
{
  float *scores = work->scores;
  int *cand = work->cand, ncand = 0;

  static_assert(sizeof(float) == sizeof(unsigned) && NO_SCORE < 0.0f);
  scores[v] = 0.0f; // seen, and no candidate
  for (int i = graph->incptr[v], last = graph->incptr[v + 1]; i < last; i++) {
    const int e = graph->incind[i];
    if (skipnet(e))
      continue;
    const float wgt = graph->edgewgt[e];
    for (int k = graph->netptr[e], end = graph->netptr[e + 1]; k < end; k++) {
      const int u = graph->netind[k];
      const unsigned sum = std::bit_cast<unsigned>(scores[u]), unseen = sum >> 31; // the sign
      cand[ncand] = u;
      ncand += static_cast<int>(unseen);
      scores[u] = std::bit_cast<float>(sum & (unseen - 1)) + wgt; // to 0 if it was unseen
    }
  }
  scores[v] = NO_SCORE;
  return ncand;
}

// The best of ncand candidates that qualify, or -1; wins(cell, best) decides between equal scores. Clears the scores;
// *score is that of the best.
template <class Qualifies, class Wins>
static inline int TakeBest(const MatchWork *work, int ncand, float *score, Qualifies qualifies, Wins wins)
{
  int best = -1;

  for (int i = 0; i < ncand; i++) {
    const int u = work->cand[i];
    const float sum = work->scores[u];
    work->scores[u] = NO_SCORE;
    if (best != -1 && (sum < *score || (sum == *score && !wins(u, best))))
      continue;
    if (!qualifies(u))
      continue;
    best = u;
    *score = sum;
  }
  return best;
}

template <int rules>
static inline int FindPartner(const Control *ctrl, const MatchView *view, MatchWork *work, const Weight *wgts,
                              int v)
{
  const HGraph *graph = view->graph;
  const Cell *cellmap = view->cellmap;
  const int *where = view->where;
  const Weight *cellwgt = graph->cellwgt;
  const Weight limit = SubWrap(ctrl->maxcellwgt, cellwgt[v]);
  const int ncand = CollectCandidates(graph, work, v, [&](int e) {
    return (rules & FIND_RESTRICTED) && NetSize(graph, e) > ctrl->maxnetsize;
  });

  float score = 0.0f;
  return TakeBest(
      work, ncand, &score,
      [&](int u) {
        if (cellwgt[u] > limit || ((rules & FIND_RESTRICTED) && where[u] != where[v]))
          return false;
        return (rules & FIND_STAR) ? wgts[cellmap[u] + 1] <= limit : cellmap[u] == UNMATCHED;
      },
      [&](int u, int best) {
        return (rules & FIND_STAR) ? cellmap[best] != UNMATCHED : cellwgt[u] < cellwgt[best];
      });
}

int FindCell__(const Control *ctrl, const MatchView *view, MatchWork *work, int v)
{
  return FindPartner<FIND_PAIR>(ctrl, view, work, nullptr, v);
}

int FindCellStar__(const Control *ctrl, const MatchView *view, MatchWork *work, const Weight *wgts, int v)
{
  return FindPartner<FIND_STAR>(ctrl, view, work, wgts, v);
}

int ComputeAllWeights__(const Control *ctrl, const HGraph *graph, MatchWork *work, int *keys)
{
  const Weight *cellwgt = graph->cellwgt;
  int maxkey = 0;

  for (int v = 0; v < graph->ncells; v++) {
    CheckpointAt(ctrl, v);
    LookAhead(graph, v, [](int k) { return k; });
    const Weight limit = SubWrap(ctrl->maxcellwgt, cellwgt[v]);
    const int ncand = CollectCandidates(graph, work, v, [&](int e) { return graph->edgewgt[e] < WEAK_EDGE; });
    float score = 0.0f;
    const int best = TakeBest(
        work, ncand, &score, [&](int u) { return cellwgt[u] <= limit; },
        [&](int u, int other) { return cellwgt[u] < cellwgt[other]; });

    keys[v] = -1;
    if (best != -1) {
      keys[v] = Truncate(100.0 / score);
      if (keys[v] > maxkey)
        maxkey = keys[v];
    }
  }
  for (int v = 0; v < graph->ncells; v++)
    if (keys[v] < 0)
      keys[v] = maxkey + 1;
  return maxkey + 1;
}

// ----------------------------------------------------------------------------------------------------------
// Grouping

Grouping StartGrouping(const HGraph *graph, const char *maplabel, const char *ptrlabel, const char *indlabel)
{
  Grouping groups = {};

  groups.mptr = imalloc__(static_cast<std::int64_t>(graph->ncells) + 1, ptrlabel);
  groups.mind = imalloc__(graph->ncells, indlabel);
  groups.cellmap = ismalloc__(graph->ncells, UNMATCHED, maplabel);
  groups.mptr[0] = 0;
  for (int i = 0; i < graph->nfixed; i++) {
    AddMember(&groups, i);
    CloseGroup(&groups);
  }
  return groups;
}

static Grouping StartEdgeGrouping(const HGraph *graph)
{
  return StartGrouping(graph, "Match_Edges: graph->cellmap", "Match_Edges: graph->mptr",
                       "Match_Edges: graph->mind");
}

void ListMembers(int ncells, Grouping *groups)
{
  const int ngroups = groups->ngroups;
  const Cell *cellmap = groups->cellmap;
  int *mptr = groups->mptr;

  iset__(static_cast<std::int64_t>(ngroups) + 1, 0, mptr);
  for (int i = 0; i < ncells; i++)
    mptr[cellmap[i] + 1]++;
  for (int g = 0; g < ngroups; g++)
    mptr[g + 1] += mptr[g];
  for (int i = 0; i < ncells; i++)
    groups->mind[mptr[cellmap[i]]++] = i;
  // Every start has advanced to the next one's place.
  for (int g = ngroups; g > 0; g--)
    mptr[g] = mptr[g - 1];
  mptr[0] = 0;
}

static void DegreeKeys(const Control *ctrl, const HGraph *graph, int *keys)
{
  for (int i = 0; i < graph->ncells; i++) {
    const int degree = graph->incptr[i + 1] - graph->incptr[i];
    keys[i] = degree < ctrl->maxnetsize ? degree : ctrl->maxnetsize;
  }
}

void OrderByDegree(const Control *ctrl, const HGraph *graph, int *keys, int *random, int *out)
{
  RandomPermute__(random, graph->ncells, 1);
  DegreeKeys(ctrl, graph, keys);
  BucketSortKeysInc(graph->ncells, ctrl->maxnetsize + 1, keys, random, out);
}

// ----------------------------------------------------------------------------------------------------------
// Pairs

template <int rules>
static Grouping MatchPairs(const Control *ctrl, const HGraph *graph, const int *where, MatchWork *work)
{
  Grouping groups = StartEdgeGrouping(graph);
  const MatchView view = {graph, groups.cellmap, where};

  OrderByDegree(ctrl, graph, work->keys, work->order, work->perm);
  PairUp(ctrl, graph, work, &groups,
         [&](int v) { return FindPartner<rules>(ctrl, &view, work, nullptr, v); });
  return groups;
}

Grouping Match_Edges__(const Control *ctrl, const HGraph *graph, MatchWork *work)
{
  return MatchPairs<FIND_PAIR>(ctrl, graph, nullptr, work);
}

Grouping CMatch_Edges__(const Control *ctrl, const HGraph *graph, const int *where, MatchWork *work)
{
  return MatchPairs<FIND_PAIR | FIND_RESTRICTED>(ctrl, graph, where, work);
}

// ----------------------------------------------------------------------------------------------------------
// Stars

// Fills cellmap; returns the number of groups.
template <int rules>
static int JoinStars(const Control *ctrl, const HGraph *graph, const int *where, Cell *cellmap,
                     MatchWork *work)
{
  const MatchView view = {graph, cellmap, where};
  const Weight *cellwgt = graph->cellwgt;
  // One slot ahead, so that the group of an unmatched cell, -1, reads the leading 0.
  Weight *wgts = wsmalloc(static_cast<std::int64_t>(graph->ncells) + 1, 0, "Match_EdgesStars: wgts");
  Weight *groupwgt = wgts + 1;
  int ngroups = graph->nfixed, joins = 0;

  // No cell ever joins an anchor.
  for (int i = 0; i < graph->nfixed; i++)
    groupwgt[i] = MAX_WEIGHT;

  for (int i = 0; i < graph->ncells; i++) {
    CheckpointAt(ctrl, i);
    const int v = work->perm[i];
    LookAhead(graph, i, [&](int k) { return work->perm[k]; });
    if (cellmap[v] != UNMATCHED)
      continue;

    int u = -1;
    if (MAX_JOINED * graph->ncells > joins)
      u = FindPartner<rules>(ctrl, &view, work, wgts, v);
    if (u == -1) {
      cellmap[v] = ngroups;
      groupwgt[ngroups++] = cellwgt[v];
    } else {
      joins++;
      if (cellmap[u] == UNMATCHED) {
        cellmap[u] = ngroups;
        groupwgt[ngroups++] = cellwgt[u];
      }
      cellmap[v] = cellmap[u];
      groupwgt[cellmap[u]] += cellwgt[v];
    }
  }
  QVfree__(&wgts);
  return ngroups;
}

// The order in which cells look for a star to join, into perm.
static void OrderForStars(const Control *ctrl, const HGraph *graph, MatchWork *work, int connorder)
{
  if (connorder) {
    OrderByDegree(ctrl, graph, work->keys, work->perm, work->order);
    const int maxkey = ComputeAllWeights__(ctrl, graph, work, work->keys);
    BucketSortKeysInc(graph->ncells, maxkey + 1, work->keys, work->order, work->perm);
  } else {
    OrderByDegree(ctrl, graph, work->keys, work->order, work->perm);
  }
}

Grouping Match_EdgesStars__(const Control *ctrl, const HGraph *graph, MatchWork *work, int connorder)
{
  Grouping groups = StartEdgeGrouping(graph);

  {
    const Stopwatch stopwatch(ctrl, &Timers::AuxTmr3);
    OrderForStars(ctrl, graph, work, connorder);
  }
  {
    const Stopwatch stopwatch(ctrl, &Timers::AuxTmr4);
    groups.ngroups = JoinStars<FIND_STAR>(ctrl, graph, nullptr, groups.cellmap, work);
  }
  ListMembers(graph->ncells, &groups);
  return groups;
}

Grouping CMatch_EdgesStars__(const Control *ctrl, const HGraph *graph, const int *where, MatchWork *work)
{
  Grouping groups = StartEdgeGrouping(graph);

  OrderForStars(ctrl, graph, work, 0);
  groups.ngroups = JoinStars<FIND_STAR | FIND_RESTRICTED>(ctrl, graph, where, groups.cellmap, work);
  ListMembers(graph->ncells, &groups);
  return groups;
}

} // namespace kapris::engine::KAPRIS_ENGINE
