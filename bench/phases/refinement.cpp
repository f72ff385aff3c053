// bench/phases/refinement.cpp - initial bisection, balancing, one pass of each two-way and k-way refinement.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "bisect/bisect.h"
#include "coarsen/coarsen.h"
#include "kway/kway.h"

static void TimeInitial(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);
  InitRandom__(1);
  HGraph *coarsest = Coarsen__(&ctrl, problem.graph);
  const int npins = coarsest->netptr[coarsest->nnets];

  Time(
      state, problem, NoSetup, [&] { InitPartition__(&ctrl, coarsest); },
      [&] {
        QVfree__(&coarsest->where);
        return coarsest->mincut;
      });
  state.SetItemsProcessed(state.iterations() * npins); // those of the coarsest level
  FreeLevels(problem, coarsest);
}

// The state that a two-way routine needs beside where.
static void SetBisection(HGraph *graph, const std::vector<int> &part)
{
  SetWhere(graph, part);
  graph->pwgts[0] = graph->pwgts[1] = 0;
  for (int i = 0; i < graph->ncells; i++)
    graph->pwgts[graph->where[i]] += graph->cellwgt[i];
  graph->mincut = ComputeActualCut__(graph, graph->where);
}

static void TimeTwoWay(benchmark::State &state, const Problem &problem, const std::vector<int> &start,
                       void (*refine)(Control *ctrl, HGraph *graph))
{
  Control ctrl = ControlFor(problem.graph, 2);
  HGraph *graph = problem.graph;

  Time(
      state, problem, [&] { SetBisection(graph, start); }, [&] { refine(&ctrl, graph); },
      [&] { return graph->mincut; });
  QVfree__(&graph->where);
}

template <auto refine>
static void TimePass(benchmark::State &state, const Problem &problem)
{
  TimeTwoWay(state, problem, problem.halves, [](Control *ctrl, HGraph *graph) { refine(ctrl, graph, 1); });
}

static void TimeEarlyExit(benchmark::State &state, const Problem &problem)
{
  TimeTwoWay(state, problem, problem.halves,
             [](Control *ctrl, HGraph *graph) { Refine_EEFM__(ctrl, graph, 1, 0.1f); });
}

// From a bisection in which every fifth cell of side 1 has gone to side 0: about 60:40.
static void TimeBalance(benchmark::State &state, const Problem &problem)
{
  std::vector<int> start = problem.halves;
  int n = 0;

  for (int &side : start)
    if (side == 1 && n++ % 5 == 0)
      side = 0;
  TimeTwoWay(state, problem, start, Balance__);
}

static void TimeKway(benchmark::State &state, const Problem &problem, int rtype,
                     void (*refine)(Control *ctrl, HGraph *graph))
{
  Control ctrl = ControlFor(problem.graph, KWAY_PARTS);
  HGraph *graph = problem.graph;

  ctrl.rtype = rtype;
  AllocateKwayRefinementMemory__(&ctrl, graph);
  Time(
      state, problem, [&] { SetWhere(graph, problem.kparts); }, [&] { refine(&ctrl, graph); },
      [&] { return rtype == 1 ? graph->mincut : graph->soed; });
  FreeRootHGraph__(graph);
}

static void TimeKwayRecords(benchmark::State &state, const Problem &problem)
{
  TimeKway(state, problem, 1, [](Control *ctrl, HGraph *graph) { ComputeInitKwayGains__(ctrl, graph); });
}

// A pass computes the records first.
template <int rtype>
static void TimeKwayPass(benchmark::State &state, const Problem &problem)
{
  TimeKway(state, problem, rtype, [](Control *ctrl, HGraph *graph) { RefineObjectiveKway(ctrl, graph, 1); });
}

const std::vector<PhaseTiming> refinement_phases = {
    {"initial_bisection", TimeInitial},  {"balance", TimeBalance},
    {"pass_fm", TimePass<Refine_FM__>},  {"pass_fm_heavy", TimePass<Refine_FM2__>},
    {"pass_early_exit", TimeEarlyExit},  {"pass_one_way", TimePass<Refine_OneWayFM__>},
    {"kway_records", TimeKwayRecords},   {"kway_pass_cut", TimeKwayPass<1>},
    {"kway_pass_soed", TimeKwayPass<2>},
};
