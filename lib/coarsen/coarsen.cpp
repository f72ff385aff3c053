// lib/coarsen/coarsen.cpp - the level loop of coarsening, free (Coarsen__) and within a partition
// (CCoarsen__).
// SPDX-License-Identifier: MIT
//
// Per level:
//   islands   set aside                                         SeparateIslands__
//   match     by the scheme of ctype; contracts as well         Match... , CMatch...
//   carry     the partition (restricted only)                   CarryPartition
//   progress  a level must shrink below 0.8 of the one before   IsSlow
// The free form forgives the first slow level and asks for 0.86 from then on; the restricted form does not.

#include "match.h"

#include "control/ctrl.h"

#include <algorithm>

static MatchWork AllocMatchWork(const HGraph *graph)
{
  const std::int64_t n = std::max(graph->ncells, graph->nnets);
  MatchWork work = {};

  work.scores = fmalloc__(graph->ncells, "Coarsen: scores");
  std::fill_n(work.scores, graph->ncells, NO_SCORE);
  work.perm = imalloc__(n, "Coarsen: perm");
  work.vpairs = QVarray__<KeyVal>(n, "Coarsen: vpairs");
  work.keys = reinterpret_cast<int *>(work.vpairs);
  work.order = work.keys + graph->ncells;
  work.cand = imalloc__(graph->ncells, "Coarsen: cand");
  return work;
}

static void FreeMatchWork(MatchWork *work)
{
  QVfree__(&work->scores, &work->perm, &work->vpairs, &work->cand);
}

static void TraceLevel(const Control *ctrl, const HGraph *graph)
{
  if (!(ctrl->dbglvl & DBG_COARSEN))
    return;

  const double ncells = graph->ncells, nnets = graph->nnets;
  const int netwgt = iasum__(graph->nnets, graph->netwgt);
  Trace__("[%6d %6d %6.2f %6.2f %6.2f %6.2f, %6d %6d %6d %6.2f]\n", graph->ncells, graph->nnets,
          graph->incptr[graph->ncells] / ncells, graph->netptr[graph->nnets] / nnets, nnets / ncells,
          NumOfLargeNets__(graph->nnets, graph->netptr) / ncells, netwgt, graph->dropwgt,
          AddWrap__(netwgt, graph->dropwgt), netwgt / ncells);
}

static void TraceText(const Control *ctrl, const char *text)
{
  if (ctrl->dbglvl & DBG_COARSEN)
    Trace__("%s", text);
}

// slow = a level has already shrunk too little; depth = contractions so far.
static void Match(Control *ctrl, HGraph *graph, MatchWork *work, int depth, bool slow)
{
  switch (ctrl->ctype) {
  case 1:
    Match_EdgesStars__(ctrl, graph, work, depth < 4);
    break;
  case 2:
    Match_EdgesStars__(ctrl, graph, work, 0);
    break;
  case 3:
    Match_EdgesStars__(ctrl, graph, work, 1);
    break;
  case 4:
    if (slow)
      Match_Edges__(ctrl, graph, work);
    else
      Match_Hedges_PHedges_Edges__(ctrl, graph, work);
    break;
  case 5:
    Match_Edges__(ctrl, graph, work);
    break;
  default:
    errexit__("Unknown matching type! %d\n", ctrl->ctype);
  }
}

static void MatchRestricted(Control *ctrl, HGraph *graph, MatchWork *work)
{
  switch (ctrl->ctype) {
  case 0:
    CMatch_EdgesStars__(ctrl, graph, work);
    break;
  case 1:
    CMatch_Edges__(ctrl, graph, work);
    break;
  default:
    errexit__("Unknown matching type! %d\n", ctrl->ctype);
  }
}

// Moves the part vector to the coarser level: no group spans two parts.
static void CarryPartition(HGraph *graph)
{
  int *cwhere = imalloc__(graph->coarser->ncells, "CCoarsen: cwhere");

  for (int i = 0; i < graph->ncells; i++)
    cwhere[graph->cellmap[i]] = graph->where[i];
  QVfree__(&graph->where);
  graph->coarser->where = cwhere;
}

// What only matching and contraction need. The finest level is matched again by the next trial, and keeps its weights.
static void DropMatching(HGraph *graph)
{
  QVfree__(&graph->mptr, &graph->mind, &graph->netmap);
  if (graph->finer != nullptr)
    QVfree__(&graph->edgewgt);
}

// Single precision on purpose: the product decides whether coarsening goes on.
static bool IsSlow(const HGraph *coarser, float ratio)
{
  const int ncells = coarser->ncells, nfiner = coarser->finer->ncells;

  return static_cast<float>(ncells) > static_cast<float>(nfiner) * ratio || ncells == nfiner;
}

template <bool restricted>
static HGraph *RunCoarsening(Control *ctrl, HGraph *graph)
{
  StartTimer__(ctrl, &ctrl->CoarsenTmr);
  float ratio = 0.8f;
  bool slow = false;

  graph->level = 0;
  TraceText(ctrl, "----------------------------------------------------------\n");
  TraceLevel(ctrl, graph);
  RecordLevel__(ctrl, PHASE_COARSEN, graph, -1);

  while (ctrl->coarsento < graph->ncells) {
    EnterPhase__(ctrl, PHASE_COARSEN, graph->ncells);
    SeparateIslands__(graph);
    // Anew for each level: memory is at its peak when all levels are there, and the last ones need little.
    MatchWork work = AllocMatchWork(graph);
    if constexpr (restricted) {
      MatchRestricted(ctrl, graph, &work);
      CarryPartition(graph);
    } else {
      StartTimer__(ctrl, &ctrl->AuxTmr1);
      Match(ctrl, graph, &work, graph->level, slow);
      StopTimer__(ctrl, &ctrl->AuxTmr1);
    }
    FreeMatchWork(&work);
    DropMatching(graph);
    graph->coarser->level = graph->level + 1;
    graph = graph->coarser;
    TraceLevel(ctrl, graph);
    RecordLevel__(ctrl, PHASE_COARSEN, graph, -1);

    if (IsSlow(graph, ratio)) {
      if (restricted || slow || ctrl->ctype == 5) {
        if (ctrl->dbglvl & DBG_COARSEN)
          Trace__("\nSlow progress in coarsening. Aborted at %d nodes\n", graph->ncells);
        break;
      }
      TraceText(ctrl, "-----------------------------------\n");
      ratio = static_cast<float>(ratio * 1.075);
      slow = true;
    }
  }

  TraceText(ctrl, "\n");
  StopTimer__(ctrl, &ctrl->CoarsenTmr);
  return graph;
}

HGraph *Coarsen__(Control *ctrl, HGraph *graph)
{
  return RunCoarsening<false>(ctrl, graph);
}

HGraph *CCoarsen__(Control *ctrl, HGraph *graph)
{
  return RunCoarsening<true>(ctrl, graph);
}
