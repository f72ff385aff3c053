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

#include <bit>
#include <utility>

// ----------------------------------------------------------------------------------------------------------
// Partner search

// Collects the other pins of the nets of v, in incidence order, with their scores; returns how many there are. Without a
// branch per pin: whether a pin was seen before cannot be foretold.
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
static inline int FindPartner(const Control *ctrl, const HGraph *graph, MatchWork *work, const int *wgts,
                              int v)
{
  const int *cellmap = graph->cellmap, *cellwgt = graph->cellwgt, *where = graph->where;
  const int limit = SubWrap__(ctrl->maxcellwgt, cellwgt[v]);
  const int ncand = CollectCandidates(graph, work, v, [&](int e) {
    return (rules & FIND_RESTRICTED) && NetSize__(graph, e) > ctrl->maxnetsize;
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

int FindCell__(const Control *ctrl, const HGraph *graph, MatchWork *work, int v)
{
  return FindPartner<FIND_PAIR>(ctrl, graph, work, nullptr, v);
}

int FindCellStar__(const Control *ctrl, const HGraph *graph, MatchWork *work, const int *wgts, int v)
{
  return FindPartner<FIND_STAR>(ctrl, graph, work, wgts, v);
}

int ComputeAllWeights__(const Control *ctrl, const HGraph *graph, MatchWork *work, int *keys)
{
  const int *cellwgt = graph->cellwgt;
  int maxkey = 0;

  for (int v = 0; v < graph->ncells; v++) {
    CheckpointAt__(ctrl, v);
    LookAhead__(graph, v, [](int k) { return k; });
    const int limit = SubWrap__(ctrl->maxcellwgt, cellwgt[v]);
    const int ncand = CollectCandidates(graph, work, v, [&](int e) { return graph->edgewgt[e] < 0.1; });
    float score = 0.0f;
    const int best = TakeBest(
        work, ncand, &score, [&](int u) { return cellwgt[u] <= limit; },
        [&](int u, int other) { return cellwgt[u] < cellwgt[other]; });

    keys[v] = -1;
    if (best != -1) {
      keys[v] = Truncate__(100.0 / score);
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

Grouping StartGrouping__(HGraph *graph, const char *maplabel, const char *ptrlabel, const char *indlabel)
{
  graph->mptr = imalloc__(static_cast<std::int64_t>(graph->ncells) + 1, ptrlabel);
  graph->mind = imalloc__(graph->ncells, indlabel);
  graph->cellmap = ismalloc__(graph->ncells, UNMATCHED, maplabel);

  Grouping groups = {graph->cellmap, graph->mptr, graph->mind, 0, 0};
  groups.mptr[0] = 0;
  for (int i = 0; i < graph->nfixed; i++) {
    AddMember__(&groups, i);
    CloseGroup__(&groups);
  }
  return groups;
}

static Grouping StartEdgeGrouping(HGraph *graph)
{
  return StartGrouping__(graph, "Match_Edges: graph->cellmap", "Match_Edges: graph->mptr",
                         "Match_Edges: graph->mind");
}

void ListMembers__(int ncells, int ngroups, const int *cellmap, int *mptr, int *mind)
{
  iset__(static_cast<std::int64_t>(ngroups) + 1, 0, mptr);
  for (int i = 0; i < ncells; i++)
    mptr[cellmap[i] + 1]++;
  for (int g = 0; g < ngroups; g++)
    mptr[g + 1] += mptr[g];
  for (int i = 0; i < ncells; i++)
    mind[mptr[cellmap[i]]++] = i;
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

void OrderByDegree__(const Control *ctrl, const HGraph *graph, int *keys, int *random, int *out)
{
  RandomPermute__(random, graph->ncells, 1);
  DegreeKeys(ctrl, graph, keys);
  BucketSortKeysInc(graph->ncells, ctrl->maxnetsize + 1, keys, random, out);
}

// ----------------------------------------------------------------------------------------------------------
// Pairs

template <int rules>
static void MatchPairs(Control *ctrl, HGraph *graph, MatchWork *work)
{
  Grouping groups = StartEdgeGrouping(graph);

  OrderByDegree__(ctrl, graph, work->keys, work->order, work->perm);
  PairUp__(ctrl, graph, work, &groups,
           [&](int v) { return FindPartner<rules>(ctrl, graph, work, nullptr, v); });
  CHECK_VALID(CheckMatching__(ctrl, graph, groups.ngroups));
  CreateCoarseHGraph__(ctrl, graph, groups.ngroups);
}

void Match_Edges__(Control *ctrl, HGraph *graph, MatchWork *work)
{
  MatchPairs<FIND_PAIR>(ctrl, graph, work);
}

void CMatch_Edges__(Control *ctrl, HGraph *graph, MatchWork *work)
{
  MatchPairs<FIND_PAIR | FIND_RESTRICTED>(ctrl, graph, work);
}

// ----------------------------------------------------------------------------------------------------------
// Stars

// Fills cellmap; returns the number of groups.
template <int rules>
static int JoinStars(const Control *ctrl, HGraph *graph, MatchWork *work)
{
  int *cellmap = graph->cellmap;
  const int *cellwgt = graph->cellwgt;
  // One slot ahead, so that the group of an unmatched cell, -1, reads the leading 0.
  int *wgts = ismalloc__(static_cast<std::int64_t>(graph->ncells) + 1, 0, "Match_EdgesStars: wgts");
  int *groupwgt = wgts + 1;
  int ngroups = graph->nfixed, joins = 0;

  // No cell ever joins an anchor.
  for (int i = 0; i < graph->nfixed; i++)
    groupwgt[i] = INT_MAX;

  for (int i = 0; i < graph->ncells; i++) {
    CheckpointAt__(ctrl, i);
    const int v = work->perm[i];
    LookAhead__(graph, i, [&](int k) { return work->perm[k]; });
    if (cellmap[v] != UNMATCHED)
      continue;

    int u = -1;
    if (0.4 * graph->ncells > joins)
      u = FindPartner<rules>(ctrl, graph, work, wgts, v);
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

template <int rules>
static void MatchStars(Control *ctrl, HGraph *graph, MatchWork *work, int connorder)
{
  constexpr bool timed = !(rules & FIND_RESTRICTED);

  StartEdgeGrouping(graph);

  if (timed)
    StartTimer__(ctrl, &ctrl->AuxTmr3);
  if (connorder) {
    OrderByDegree__(ctrl, graph, work->keys, work->perm, work->order);
    const int maxkey = ComputeAllWeights__(ctrl, graph, work, work->keys);
    BucketSortKeysInc(graph->ncells, maxkey + 1, work->keys, work->order, work->perm);
  } else {
    OrderByDegree__(ctrl, graph, work->keys, work->order, work->perm);
  }
  if (timed)
    StopTimer__(ctrl, &ctrl->AuxTmr3);

  if (timed)
    StartTimer__(ctrl, &ctrl->AuxTmr4);
  const int ngroups = JoinStars<rules>(ctrl, graph, work);
  if (timed)
    StopTimer__(ctrl, &ctrl->AuxTmr4);

  ListMembers__(graph->ncells, ngroups, graph->cellmap, graph->mptr, graph->mind);
  CHECK_VALID(CheckMatching__(ctrl, graph, ngroups));
  CreateCoarseHGraph__(ctrl, graph, ngroups);
}

void Match_EdgesStars__(Control *ctrl, HGraph *graph, MatchWork *work, int connorder)
{
  MatchStars<FIND_STAR>(ctrl, graph, work, connorder);
}

void CMatch_EdgesStars__(Control *ctrl, HGraph *graph, MatchWork *work)
{
  MatchStars<FIND_STAR | FIND_RESTRICTED>(ctrl, graph, work, 0);
}
