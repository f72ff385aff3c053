// bench/phases/refinement.cpp - initial bisection, balancing, one pass of each two-way and k-way refinement.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "core/constants.h"
#include "drivers/drivers.h"
#include "refine/kway/state.h"
#include "refine/twoway/twoway.h"

static void TimeInitial(benchmark::State &state, const Problem &problem)
{
  const Control ctrl = ControlFor(problem.graph, 2);
  Level top = OpenLevel(problem.graph);

  InitRandom__(1);
  Level *coarsest = Coarsen__(&ctrl, &top);
  const int npins = coarsest->graph->netptr[coarsest->graph->nnets];
  Time(
      state, problem, NoSetup, [&] { InitPartition__(&ctrl, coarsest); },
      [&] {
        QVfree__(&coarsest->part.where);
        return coarsest->part.mincut;
      });
  state.SetItemsProcessed(state.iterations() * npins); // those of the coarsest level
  FreeLevels(&top, coarsest);
}

static void TimeTwoWay(benchmark::State &state, const Problem &problem, const std::vector<int> &start,
                       void (*refine)(const Control *ctrl, Level *level))
{
  const Control ctrl = ControlFor(problem.graph, 2);
  Level level = OpenLevel(problem.graph);

  AllocateRefinementMemory__(&level);
  Time(
      state, problem, [&] { SetWhere(&level, start); }, [&] { refine(&ctrl, &level); },
      [&] { return level.part.mincut; });
  CloseLevel(&level);
}

template <auto refine>
static void TimePass(benchmark::State &state, const Problem &problem)
{
  TimeTwoWay(state, problem, problem.halves,
             [](const Control *ctrl, Level *level) { refine(ctrl, level, 1); });
}

static void TimeEarlyExit(benchmark::State &state, const Problem &problem)
{
  TimeTwoWay(state, problem, problem.halves,
             [](const Control *ctrl, Level *level) { Refine_EEFM__(ctrl, level, 1, EARLY_EXIT); });
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

static void TimeKwayRecords(benchmark::State &state, const Problem &problem)
{
  const Control ctrl = ControlFor(problem.graph, KWAY_PARTS);
  Level level = OpenLevel(problem.graph);

  AllocateKwayRefinementMemory__(&ctrl, &level);
  SetWhere(&level, problem.kparts);
  KwayState records = OpenKway(KWAY_PARTS, &level);
  Time(
      state, problem, NoSetup, [&] { ComputeInitKwayGains__(&ctrl, &records); },
      [&] { return level.part.mincut; });
  CloseKway(&records);
  CloseLevel(&level);
}

// A pass computes the records first.
template <KwayObjective objective>
static void TimeKwayPass(benchmark::State &state, const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, KWAY_PARTS);
  Level level = OpenLevel(problem.graph);

  ctrl.objective = objective;
  AllocateKwayRefinementMemory__(&ctrl, &level);
  Time(
      state, problem, [&] { SetWhere(&level, problem.kparts); },
      [&] { RefineObjectiveKway(&ctrl, &level, 1); }, [&] { return level.part.objval; });
  CloseLevel(&level);
}

const std::vector<PhaseTiming> refinement_phases = {
    {"initial_bisection", TimeInitial},
    {"balance", TimeBalance},
    {"pass_fm", TimePass<Refine_FM__>},
    {"pass_fm_heavy", TimePass<Refine_FM2__>},
    {"pass_early_exit", TimeEarlyExit},
    {"pass_one_way", TimePass<Refine_OneWayFM__>},
    {"kway_records", TimeKwayRecords},
    {"kway_pass_cut", TimeKwayPass<MINIMISE_CUT>},
    {"kway_pass_soed", TimeKwayPass<MINIMISE_SOED>},
};
