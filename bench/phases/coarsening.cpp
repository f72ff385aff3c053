// bench/phases/coarsening.cpp - reading, incidence lists, one level of each matching, contraction, projection.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "coarsen/match.h"
#include "formats/hgr.h"
#include "multilevel/uncoarsen.h"
#include "refine/kway/kway.h"
#include "refine/twoway/twoway.h"

#include <algorithm>

static void TimeReading(benchmark::State &state, const Problem &problem)
{
  kapris_formats::Hgr hgr;

  Time(
      state, problem, [&] { hgr = {}; }, [&] { hgr = kapris_formats::ReadHgr(problem.name, problem.text); },
      [&] { return static_cast<int>(hgr.netind.size()); });
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(problem.text.size()));
}

static void TimeIncidence(benchmark::State &state, const Problem &problem)
{
  const HGraph *graph = problem.graph;
  HGraph *copy =
      CopyHGraph(graph->ncells, graph->nnets, graph->cellwgt, graph->netptr, graph->netind, graph->netwgt);

  Time(
      state, problem, NoSetup, [&] { CreateIncidentHGraph__(copy); },
      [&] {
        const int npins = copy->incptr[copy->ncells];
        QVfree__(&copy->incptr, &copy->incind, &copy->adjwgt, &copy->edgewgt);
        return npins;
      });
  FreeHGraph__(copy);
}

static int PinsOf(const HGraph *graph)
{
  return graph->netptr[graph->nnets];
}

// Coarsening to a number of cells.
static void TimeLevels(benchmark::State &state, const Problem &problem, Matching matching, int coarsento)
{
  Control ctrl = ControlFor(problem.graph, 2);
  Level top = OpenLevel(problem.graph), *coarsest = nullptr;

  ctrl.ctype = matching;
  ctrl.coarsento = coarsento;
  Time(
      state, problem, NoSetup, [&] { coarsest = Coarsen__(&ctrl, &top); },
      [&] {
        const int npins = PinsOf(coarsest->graph);
        FreeLevels(&top, coarsest);
        return npins;
      });
}

// One level: a matching with its contraction, and the work arrays that the level loop takes for it.
template <Matching matching>
static void TimeMatching(benchmark::State &state, const Problem &problem)
{
  TimeLevels(state, problem, matching, problem.graph->ncells - 1);
}

// All levels down to that of the initial partition.
static void TimeCoarsening(benchmark::State &state, const Problem &problem)
{
  TimeLevels(state, problem, MATCH_DEGREE, ControlFor(problem.graph, 2).coarsento);
}

// As TimeMatching, within the sides of a bisection; the level loop of V-cycles would not end after one level.
template <auto match>
static void TimeRestricted(benchmark::State &state, const Problem &problem)
{
  const Control ctrl = ControlFor(problem.graph, 2);
  const HGraph *graph = problem.graph;
  const std::int64_t n = std::max(graph->ncells, graph->nnets);
  Grouping groups = {};
  HGraph *coarser = nullptr;

  Time(
      state, problem, NoSetup,
      [&] {
        MatchWork work = {};
        work.scores = fmalloc__(graph->ncells, "bench: scores");
        std::fill_n(work.scores, graph->ncells, NO_SCORE);
        work.perm = imalloc__(n, "bench: perm");
        work.keys = imalloc__(n, "bench: keys");
        work.order = imalloc__(n, "bench: order");
        work.cand = imalloc__(graph->ncells, "bench: cand");
        groups = match(&ctrl, graph, problem.halves.data(), &work);
        coarser = CreateCoarseHGraph__(&ctrl, graph, &groups);
        QVfree__(&work.scores, &work.perm, &work.keys, &work.order, &work.cand);
      },
      [&] {
        const int npins = PinsOf(coarser);
        FreeHGraph__(coarser);
        QVfree__(&groups.cellmap, &groups.mptr, &groups.mind);
        return npins;
      });
}

static void TimeContraction(benchmark::State &state, const Problem &problem)
{
  const Control ctrl = ControlFor(problem.graph, 2);
  const HGraph *graph = problem.graph;
  Level top = OpenLevel(graph), *contracted = ContractOnce(&top);
  HGraph *coarser = nullptr;

  // Coarsening keeps only the map of the cells.
  Grouping groups = {};
  groups.cellmap = top.cellmap;
  groups.ngroups = contracted->graph->ncells;
  groups.mptr = imalloc__(std::int64_t{groups.ngroups} + 1, "bench: mptr");
  groups.mind = imalloc__(graph->ncells, "bench: mind");
  ListMembers(graph->ncells, &groups);
  Time(
      state, problem, NoSetup, [&] { coarser = CreateCoarseHGraph__(&ctrl, graph, &groups); },
      [&] {
        const int npins = PinsOf(coarser);
        FreeHGraph__(coarser);
        return npins;
      });
  QVfree__(&groups.mptr, &groups.mind);
  FreeLevels(&top, contracted);
}

static void RefineNothing(const Control *, Level *, int)
{
}

static void DealNothing(const Control *, Level *)
{
}

// The way up to the finest level without refinement: the room for its partition, the projection, the end of the level
// below.
static void TimeWayUp(benchmark::State &state, const Problem &problem, const std::vector<int> &part,
                      int nparts, void (*initialise)(const Control *ctrl, Level *level))
{
  const Control ctrl = ControlFor(problem.graph, nparts);
  const Refiner projecting = {"none", initialise, RefineNothing, DealNothing, &Partition::mincut, false};
  Level top = OpenLevel(problem.graph), *coarser = nullptr;

  Time(
      state, problem,
      [&] {
        coarser = ContractOnce(&top);
        initialise(&ctrl, coarser);
        for (int i = 0; i < top.graph->ncells; i++)
          coarser->part.where[top.cellmap[i]] = part[static_cast<std::size_t>(i)];
      },
      [&] { Uncoarsen(&ctrl, &projecting, &top, coarser); },
      [&] {
        const Weight cut = ComputeActualCut__(top.graph, top.part.where);
        FreeLevels(&top, &top);
        return cut;
      });
}

static void TimeProjection(benchmark::State &state, const Problem &problem)
{
  TimeWayUp(state, problem, problem.halves, 2, TwoWayRefiner(REFINE_FM)->initialise);
}

static void TimeKwayProjection(benchmark::State &state, const Problem &problem)
{
  TimeWayUp(state, problem, problem.kparts, KWAY_PARTS, KwayRefiner(MINIMISE_CUT)->initialise);
}

const std::vector<PhaseTiming> coarsening_phases = {
    {"read_hgr", TimeReading},
    {"incidence", TimeIncidence},
    {"match_pairs", TimeMatching<MATCH_PAIRS>},
    {"match_stars_degree", TimeMatching<MATCH_DEGREE>},
    {"match_stars_strong", TimeMatching<MATCH_STRONG>},
    {"match_nets", TimeMatching<MATCH_NETS>},
    {"match_pairs_restricted", TimeRestricted<CMatch_Edges__>},
    {"match_stars_restricted", TimeRestricted<CMatch_EdgesStars__>},
    {"contract", TimeContraction},
    {"coarsen", TimeCoarsening},
    {"project", TimeProjection},
    {"project_kway", TimeKwayProjection},
};
