// lib/refine/kway/refiners.cpp - the ways to refine a k-way partition on the road through the levels.
// SPDX-License-Identifier: MIT

#include "kway.h"

#include "core/constants.h"

namespace kapris::engine::KAPRIS_ENGINE
{

void AllocateKwayRefinementMemory__(const Control *ctrl, Level *level)
{
  const HGraph *graph = level->graph;

  level->part.where = imalloc__(static_cast<std::int64_t>(graph->ncells) + graph->nislands,
                                "AllocateRefinementMemory: where");
  level->part.kpwgts = wmalloc(ctrl->nparts, "AllocateKwayRefinementMemory: kpwgts");
}

void PartitionIslandsKway__(const Control *ctrl, Level *level)
{
  const HGraph *graph = level->graph;
  Partition *part = &level->part;

  for (int i = graph->ncells; i < graph->ncells + graph->nislands; i++) {
    const int p = LightestPart(&ctrl->bounds, ctrl->nparts, part->kpwgts);
    part->where[i] = p;
    part->kpwgts[p] += graph->cellwgt[i];
  }
}

// A level without cells has nothing to refine: all figures are 0.
static bool HasCells(const Control *ctrl, Level *level)
{
  if (level->graph->ncells > 0)
    return true;
  level->part.mincut = level->part.soed = level->part.objval = 0;
  iset__(ctrl->nparts, 0, level->part.kpwgts);
  return false;
}

static void RefineCut(const Control *ctrl, Level *level, int)
{
  if (HasCells(ctrl, level))
    RefineCutKway_Random__(ctrl, level, MAX_PASSES);
}

static void RefineSOED(const Control *ctrl, Level *level, int)
{
  if (HasCells(ctrl, level))
    RefineSOEDKway_Random__(ctrl, level, MAX_PASSES);
}

const Refiner *KwayRefiner(KwayObjective objective)
{
  static constexpr Refiner refiners[] = {
      {"k-way for the cut", AllocateKwayRefinementMemory__, RefineCut, PartitionIslandsKway__,
       &Partition::objval, true},
      {"k-way for the SOED", AllocateKwayRefinementMemory__, RefineSOED, PartitionIslandsKway__,
       &Partition::objval, true},
  };

  if (objective != MINIMISE_CUT && objective != MINIMISE_SOED)
    errexit__("Unknown refinement type: %d\n", objective);
  return &refiners[objective - MINIMISE_CUT];
}

} // namespace kapris::engine::KAPRIS_ENGINE
