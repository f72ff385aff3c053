// lib/refine/twoway/refiners.cpp - the ways to refine a bisection on the road through the levels.
// SPDX-License-Identifier: MIT

#include "twoway.h"

#include "core/constants.h"

namespace kapris::engine::KAPRIS_ENGINE
{

void AllocateRefinementMemory__(Level *level)
{
  level->part.where = imalloc__(static_cast<std::int64_t>(level->graph->ncells) + level->graph->nislands,
                                "AllocateRefinementMemory: where");
}

void PartitionIslands__(const Control *ctrl, Level *level)
{
  const HGraph *graph = level->graph;
  Partition *part = &level->part;

  for (int i = graph->ncells; i < graph->ncells + graph->nislands; i++) {
    const int p = LighterSide(&ctrl->bounds, part->pwgts);
    part->where[i] = p;
    part->pwgts[p] += graph->cellwgt[i];
  }
}

static void Initialise(const Control *, Level *level)
{
  AllocateRefinementMemory__(level);
}

// Whether there is anything to refine; of a level without cells all figures are 0.
static bool HasCells(Level *level)
{
  if (level->graph->ncells > 0)
    return true;
  level->part.mincut = level->part.pwgts[0] = level->part.pwgts[1] = 0;
  return false;
}

static void RefineByFM(const Control *ctrl, Level *level, int)
{
  if (!HasCells(level))
    return;
  Balance__(ctrl, level);
  RefineFull(ctrl, level, MAX_PASSES);
}

static void RefineOneWay(const Control *ctrl, Level *level, int)
{
  if (!HasCells(level))
    return;
  Balance__(ctrl, level);
  Refine_OneWayFM__(ctrl, level, MAX_PASSES);
  RefineFull(ctrl, level, MAX_PASSES);
}

// Full passes where they are cheap, early exit on the larger levels.
static void RefineByEarlyExit(const Control *ctrl, Level *level, int coarsest)
{
  if (!HasCells(level))
    return;
  Balance__(ctrl, level);
  if (level->level >= coarsest - FULL_LEVELS)
    RefineFull(ctrl, level, MAX_PASSES);
  else if (ctrl->heavycells)
    Refine_EEFM2__(ctrl, level, EARLY_EXIT_PASSES, EARLY_EXIT);
  else
    Refine_EEFM__(ctrl, level, EARLY_EXIT_PASSES, EARLY_EXIT);
}

const Refiner *TwoWayRefiner(TwoWayScheme scheme)
{
  static constexpr Refiner refiners[] = {
      {"FM", Initialise, RefineByFM, PartitionIslands__, &Partition::mincut, false},
      {"one-way FM", Initialise, RefineOneWay, PartitionIslands__, &Partition::mincut, false},
      {"early-exit FM", Initialise, RefineByEarlyExit, PartitionIslands__, &Partition::mincut, false},
  };

  if (scheme < REFINE_FM || scheme > REFINE_EARLY_EXIT)
    errexit__("Unknown refinement type: %d\n", scheme);
  return &refiners[scheme - REFINE_FM];
}

} // namespace kapris::engine::KAPRIS_ENGINE
