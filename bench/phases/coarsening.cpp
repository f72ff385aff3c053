// bench/phases/coarsening.cpp - reading, incidence lists, one level of each matching, contraction, projection.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "bisect/bisect.h"
#include "coarsen/match.h"
#include "io/hgr.h"
#include "kway/kgain.h"

static void TimeReading(benchmark::State &state, const Problem &problem)
{
  kapris_cli::Hgr hgr;

  Time(
      state, problem, [&] { hgr = {}; }, [&] { hgr = kapris_cli::ReadHgr(problem.name, problem.text); },
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

static int FinishLevel(const Problem &problem, HGraph *coarser)
{
  const int npins = coarser->netptr[coarser->nnets];

  FreeLevels(problem, coarser);
  return npins;
}

// One level: a matching with its contraction, and the work arrays that the level loop takes once for all its levels.
template <int ctype>
static void TimeMatching(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);
  HGraph *coarser = nullptr;

  ctrl.ctype = ctype;
  ctrl.coarsento = problem.graph->ncells - 1;
  Time(
      state, problem, NoSetup, [&] { coarser = Coarsen__(&ctrl, problem.graph); },
      [&] { return FinishLevel(problem, coarser); });
}

// The same within the sides of a bisection, which the level loop carries to the coarser level.
template <int ctype>
static void TimeRestricted(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);
  HGraph *coarser = nullptr;

  ctrl.ctype = ctype;
  ctrl.coarsento = problem.graph->ncells - 1;
  Time(
      state, problem, [&] { SetWhere(problem.graph, problem.halves); },
      [&] { coarser = CCoarsen__(&ctrl, problem.graph); }, [&] { return FinishLevel(problem, coarser); });
}

// All levels down to that of the initial partition.
static void TimeCoarsening(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);
  HGraph *coarsest = nullptr;

  Time(
      state, problem, NoSetup, [&] { coarsest = Coarsen__(&ctrl, problem.graph); },
      [&] { return FinishLevel(problem, coarsest); });
}

static void TimeContraction(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);
  HGraph *graph = problem.graph;
  const auto free_coarser = [&] {
    const int npins = graph->coarser->netptr[graph->coarser->nnets];
    FreeHGraph__(graph->coarser);
    QVfree__(&graph->netmap);
    return npins;
  };

  const int ncoarse = ContractOnce(problem)->ncells;
  free_coarser();
  // Coarsening keeps only the map of the cells.
  graph->mptr = imalloc__(std::int64_t{ncoarse} + 1, "bench: mptr");
  graph->mind = imalloc__(graph->ncells, "bench: mind");
  ListMembers(graph->ncells, ncoarse, graph->cellmap, graph->mptr, graph->mind);
  Time(
      state, problem, NoSetup, [&] { CreateCoarseHGraph__(&ctrl, graph, ncoarse); }, free_coarser);
  FreeLevels(problem, nullptr);
}

// The partition that projection brings back to the cells.
static void SetCoarseWhere(const HGraph *graph, const HGraph *coarser, const std::vector<int> &part)
{
  for (int i = 0; i < graph->ncells; i++)
    coarser->where[graph->cellmap[i]] = part[static_cast<std::size_t>(i)];
}

static int FinishProjection(const Problem &problem)
{
  const int cut = ComputeActualCut__(problem.graph, problem.graph->where);

  FreeLevels(problem, nullptr);
  QVfree__(&problem.graph->where);
  return cut;
}

static void TimeProjection(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);
  HGraph *coarser = nullptr;

  Time(
      state, problem,
      [&] {
        coarser = ContractOnce(problem);
        AllocateRefinementMemory__(coarser);
        SetCoarseWhere(problem.graph, coarser, problem.halves);
      },
      [&] { ProjectPartition__(&ctrl, coarser); }, [&] { return FinishProjection(problem); });
}

static void TimeKwayProjection(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, KWAY_PARTS);
  HGraph *coarser = nullptr;

  Time(
      state, problem,
      [&] {
        coarser = ContractOnce(problem);
        AllocateKwayRefinementMemory__(&ctrl, coarser);
        SetCoarseWhere(problem.graph, coarser, problem.kparts);
        ComputeInitKwayGains__(&ctrl, coarser);
      },
      [&] { ProjectKwayPartition__(&ctrl, coarser); }, [&] { return FinishProjection(problem); });
}

const std::vector<PhaseTiming> coarsening_phases = {
    {"read_hgr", TimeReading},
    {"incidence", TimeIncidence},
    {"match_pairs", TimeMatching<5>},
    {"match_stars_degree", TimeMatching<2>},
    {"match_stars_strong", TimeMatching<3>},
    {"match_nets", TimeMatching<4>},
    {"match_pairs_restricted", TimeRestricted<1>},
    {"match_stars_restricted", TimeRestricted<0>},
    {"contract", TimeContraction},
    {"coarsen", TimeCoarsening},
    {"project", TimeProjection},
    {"project_kway", TimeKwayProjection},
};
