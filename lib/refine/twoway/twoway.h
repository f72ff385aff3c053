// lib/refine/twoway/twoway.h - refinement of a bisection on one level.
// SPDX-License-Identifier: MIT
//
// All of it works on the partition of a level: where, and derived from it pwgts and mincut. Cells that have been set
// aside as islands have an entry in where but take no part until they are dealt.
#pragma once

#include "refine/refiner.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// The refiner of a scheme.
const Refiner *TwoWayRefiner(TwoWayScheme scheme);

// Allocates where, uninitialised; the level must not hold it.
void AllocateRefinementMemory__(Level *level);

// FM passes, at most npasses; leave where, pwgts and mincut of the best bisection found. Refine_FM2__ prefers cells
// that fit into the room of their side, for levels with heavy cells.
void Refine_FM__(const Control *ctrl, Level *level, int npasses);
void Refine_FM2__(const Control *ctrl, Level *level, int npasses);
// Refine_FM2__ when the run has heavy cells, else Refine_FM__.
void RefineFull(const Control *ctrl, Level *level, int npasses);
// The same with passes that end after fraction x ncells moves without a better cut.
void Refine_EEFM__(const Control *ctrl, Level *level, int npasses, float fraction);
void Refine_EEFM2__(const Control *ctrl, Level *level, int npasses, float fraction);
// Passes that move cells out of one side only, alternating.
void Refine_OneWayFM__(const Control *ctrl, Level *level, int npasses);
// Moves cells out of the heavy side until both sides reach their lower bounds, whatever it does to the cut.
void Balance__(const Control *ctrl, Level *level);

// Puts the islands on the lighter side, one by one.
void PartitionIslands__(const Control *ctrl, Level *level);

} // namespace kapris::engine::KAPRIS_ENGINE
