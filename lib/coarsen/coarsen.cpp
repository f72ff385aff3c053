// lib/coarsen/coarsen.cpp - the level loop of coarsening, free (Coarsen__) and within a partition
// (CCoarsen__).
// SPDX-License-Identifier: MIT
//
// Per level:
//   islands   set aside                                         SeparateIslands__
//   match     by the scheme of ctype                            Match... , CMatch...
//   contract  the groups                                        CreateCoarseHGraph__
//   carry     the partition (restricted only)                   CarryPartition
//   progress  a level must shrink below 0.8 of the one before   IsSlow
// The free form forgives the first slow level and asks for 0.86 from then on; the restricted form does not.

#include "match.h"

#include "core/constants.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

static MatchWork AllocMatchWork(const HGraph *graph)
{
  const std::int64_t n = std::max(graph->ncells, graph->nnets);
  MatchWork work = {};

  work.scores = fmalloc__(graph->ncells, "Coarsen: scores");
  std::fill_n(work.scores, graph->ncells, NO_SCORE);
  work.perm = imalloc__(n, "Coarsen: perm");
  work.vpairs = QVarray<KeyVal>(n, "Coarsen: vpairs");
  work.keys = reinterpret_cast<int *>(work.vpairs);
  work.order = work.keys + graph->ncells;
  work.cand = imalloc__(graph->ncells, "Coarsen: cand");
  return work;
}

static void FreeMatchWork(MatchWork *work)
{
  QVfree__(&work->scores, &work->perm, &work->vpairs, &work->cand);
}

// Puts cells on no net, each a group of its own so far, into groups of up to ctrl->maxcellwgt, and numbers all anew.
static void JoinIslands(const Control *ctrl, const HGraph *graph, const int *labels, Grouping *groups)
{
  int label = -1, group = -1, njoined = 0;
  Weight wgt = 0;

  for (int v = graph->nfixed; v < graph->ncells; v++) {
    if (graph->incptr[v] < graph->incptr[v + 1])
      continue;
    if (labels[v] == label && graph->cellwgt[v] <= ctrl->maxcellwgt - wgt) {
      groups->cellmap[v] = group;
      wgt += graph->cellwgt[v];
      njoined++;
    } else {
      label = labels[v];
      group = groups->cellmap[v];
      wgt = graph->cellwgt[v];
    }
  }
  if (njoined == 0)
    return;
  int *numbers = ismalloc__(groups->ngroups, -1, "GroupStars: numbers");
  for (int v = 0; v < graph->ncells; v++)
    numbers[groups->cellmap[v]] = 0;
  int ngroups = 0;
  for (int g = 0; g < groups->ngroups; g++)
    if (numbers[g] == 0)
      numbers[g] = ngroups++;
  for (int v = 0; v < graph->ncells; v++)
    groups->cellmap[v] = numbers[groups->cellmap[v]];
  groups->ngroups = ngroups;
  ListMembers(graph->ncells, groups);
  QVfree__(&numbers);
}

Grouping GroupStars(const Control *ctrl, const HGraph *graph, const int *labels)
{
  MatchWork work = AllocMatchWork(graph);
  Grouping groups = CMatch_EdgesStars__(ctrl, graph, labels, &work);

  FreeMatchWork(&work);
  JoinIslands(ctrl, graph, labels, &groups);
  CHECK_VALID(CheckMatching(ctrl, graph, &groups));
  return groups;
}

static void TraceLevel(const Control *ctrl, const HGraph *graph)
{
  if (!(ctrl->dbglvl & DBG_COARSEN))
    return;

  const double ncells = graph->ncells, nnets = graph->nnets;
  const Weight netwgt = iasum__(graph->nnets, graph->netwgt);
  Trace("[%6d %6d %6.2f %6.2f %6.2f %6.2f, %6lld %6lld %6lld %6.2f]\n", graph->ncells, graph->nnets,
        graph->incptr[graph->ncells] / ncells, graph->netptr[graph->nnets] / nnets, nnets / ncells,
        NumOfLargeNets__(graph->nnets, graph->netptr) / ncells, Shown(netwgt), Shown(graph->dropwgt),
        Shown(AddWrap(netwgt, graph->dropwgt)), static_cast<double>(netwgt) / ncells);
}

static void TraceText(const Control *ctrl, const char *text)
{
  if (ctrl->dbglvl & DBG_COARSEN)
    Trace("%s", text);
}

// slow = a level has already shrunk too little; depth = contractions so far.
static Grouping Match(const Control *ctrl, const HGraph *graph, MatchWork *work, int depth, bool slow)
{
  switch (ctrl->ctype) {
  case MATCH_ALTERNATE:
    return Match_EdgesStars__(ctrl, graph, work, depth < STRONG_LEVELS);
  case MATCH_DEGREE:
    return Match_EdgesStars__(ctrl, graph, work, 0);
  case MATCH_STRONG:
    return Match_EdgesStars__(ctrl, graph, work, 1);
  case MATCH_NETS:
    return slow ? Match_Edges__(ctrl, graph, work) : Match_Hedges_PHedges_Edges__(ctrl, graph, work);
  case MATCH_PAIRS:
    return Match_Edges__(ctrl, graph, work);
  }
  errexit__("Unknown matching type! %d\n", ctrl->ctype);
}

static Grouping MatchRestricted(const Control *ctrl, RestrictedMatching matching, const Level *level,
                                MatchWork *work)
{
  return matching == MATCH_PART_STARS ? CMatch_EdgesStars__(ctrl, level->graph, level->part.where, work)
                                      : CMatch_Edges__(ctrl, level->graph, level->part.where, work);
}

static void Contract(const Control *ctrl, Level *level, Grouping *groups)
{
  CHECK_VALID(CheckMatching(ctrl, level->graph, groups));
  level->cellmap = groups->cellmap;
  level->coarser = CreateLevel(level, CreateCoarseHGraph__(ctrl, level->graph, groups));
  QVfree__(&groups->mptr, &groups->mind);
  // What only matching needs. The finest level is matched again by the next trial.
  if (level->finer != nullptr)
    QVfree__(&level->own->edgewgt);
}

// Moves the part vector to the coarser level: no group spans two parts.
static void CarryPartition(Level *level)
{
  int *cwhere = imalloc__(level->coarser->graph->ncells, "CCoarsen: cwhere");

  for (int i = 0; i < level->graph->ncells; i++)
    cwhere[level->cellmap[i]] = level->part.where[i];
  QVfree__(&level->part.where);
  level->coarser->part.where = cwhere;
}

// Single precision on purpose: the product decides whether coarsening goes on.
static bool IsSlow(const Level *coarser, float ratio)
{
  const int ncells = coarser->graph->ncells, nfiner = coarser->finer->graph->ncells;

  return static_cast<float>(ncells) > static_cast<float>(nfiner) * ratio || ncells == nfiner;
}

// match(level, work, slow) groups the cells of a level.
template <bool restricted, class MatchLevel>
static Level *RunCoarsening(const Control *ctrl, int coarsento, Level *level, MatchLevel match)
{
  const Stopwatch stopwatch(ctrl, &Timers::CoarsenTmr);
  float ratio = SLOW_RATIO;
  bool slow = false;

  level->level = 0;
  TraceText(ctrl, "----------------------------------------------------------\n");
  TraceLevel(ctrl, level->graph);
  RecordLevel(ctrl, PHASE_COARSEN, level, -1);

  while (coarsento < level->graph->ncells) {
    EnterPhase(ctrl, PHASE_COARSEN, level->graph->ncells);
    SeparateIslands__(level);
    // Anew for each level: memory is at its peak when all levels are there, and the last ones need little.
    MatchWork work = AllocMatchWork(level->graph);
    {
      const Stopwatch ofmatching(ctrl, restricted ? nullptr : &Timers::AuxTmr1);
      Grouping groups = match(level, &work, slow);
      Contract(ctrl, level, &groups);
    }
    if (restricted)
      CarryPartition(level);
    FreeMatchWork(&work);
    level = level->coarser;
    TraceLevel(ctrl, level->graph);
    RecordLevel(ctrl, PHASE_COARSEN, level, -1);

    if (IsSlow(level, ratio)) {
      if (restricted || slow || ctrl->ctype == MATCH_PAIRS) {
        if (ctrl->dbglvl & DBG_COARSEN)
          Trace("\nSlow progress in coarsening. Aborted at %d nodes\n", level->graph->ncells);
        break;
      }
      TraceText(ctrl, "-----------------------------------\n");
      ratio = static_cast<float>(ratio * SLOW_GROWTH);
      slow = true;
    }
  }

  TraceText(ctrl, "\n");
  return level;
}

Level *Coarsen__(const Control *ctrl, Level *level)
{
  return RunCoarsening<false>(ctrl, ctrl->coarsento, level,
                              [ctrl](const Level *l, MatchWork *work, bool slow) {
                                return Match(ctrl, l->graph, work, l->level, slow);
                              });
}

Level *CCoarsen__(const Control *ctrl, RestrictedMatching matching, Level *level)
{
  return RunCoarsening<true>(ctrl, COARSEST_CYCLE, level, [&](const Level *l, MatchWork *work, bool) {
    return MatchRestricted(ctrl, matching, l, work);
  });
}

} // namespace kapris::engine::KAPRIS_ENGINE
