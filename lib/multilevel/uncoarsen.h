// lib/multilevel/uncoarsen.h - the way back up through the levels, and V-cycles, with any refiner.
// SPDX-License-Identifier: MIT
//
// Per level: project the partition, refine it, deal the level's islands. At the top the islands get their old
// numbers back. A V-cycle coarsens within the parts of a finished partition, which the coarsest level therefore
// inherits unchanged, and refines on the way back up.
#pragma once

#include "refine/refiner.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Carries the partition of coarsest up to top, refining each level; frees the levels below. Does nothing when they are
// the same.
void Uncoarsen(const Control *ctrl, const Refiner *refiner, Level *top, Level *coarsest);

// Improves the partition of top by at most ncycles V-cycles; they end after IDLE_CYCLES in a row without a better
// value. Returns the value of the last one, whose partition stays.
Weight RunVCycles(const Control *ctrl, const Refiner *refiner, Level *top, int ncycles);

} // namespace kapris::engine::KAPRIS_ENGINE
