// lib/refine/kway/kway.h - refinement of a partition into any number of parts on one level.
// SPDX-License-Identifier: MIT
//
// All of it works on the partition of a level: where, and derived from it kpwgts, mincut, soed and objval.
#pragma once

#include "refine/refiner.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// The refiner of an objective.
const Refiner *KwayRefiner(KwayObjective objective);

// Allocates where and kpwgts, uninitialised; the level must not hold them.
void AllocateKwayRefinementMemory__(const Control *ctrl, Level *level);

// Passes that move cells to better parts within the weight limits, at most npasses; set objval.
void RefineCutKway_Random__(const Control *ctrl, Level *level, int npasses);
void RefineSOEDKway_Random__(const Control *ctrl, Level *level, int npasses);
// The one that minimises ctrl->objective.
void RefineObjectiveKway(const Control *ctrl, Level *level, int npasses);

// Puts the islands into the lightest part, one by one.
void PartitionIslandsKway__(const Control *ctrl, Level *level);

} // namespace kapris::engine::KAPRIS_ENGINE
