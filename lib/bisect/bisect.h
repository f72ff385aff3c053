// lib/bisect/bisect.h - two-way partitioning: initial bisection, refinement of a level, uncoarsening,
// V-cycles.
// SPDX-License-Identifier: MIT
//
// The state of a bisection lives in the level's record: where, and derived from it pwgts and mincut. Cells that have been set aside as islands have an entry in where but take no part in anything else.
#pragma once

#include "core/core.h"

// Allocates where, uninitialised; the record must not hold it.
void AllocateRefinementMemory__(HGraph *graph);
// Gives coarse->finer its refinement memory and the partition of coarse, and frees coarse.
void ProjectPartition__(Control *ctrl, HGraph *coarse);

// Bisects the coarsest level by random trials, each balanced and refined; leaves the best in where and
// mincut.
void InitPartition__(Control *ctrl, HGraph *graph);

// FM passes, at most npasses; leave where, pwgts and mincut of the best bisection found. Refine_FM2__ prefers cells that fit into the room of their side, for levels with heavy
// cells.
void Refine_FM__(Control *ctrl, HGraph *graph, int npasses);
void Refine_FM2__(Control *ctrl, HGraph *graph, int npasses);
// Refine_FM2__ when the run has heavy cells, else Refine_FM__.
void RefineFull__(Control *ctrl, HGraph *graph, int npasses);
// The same with passes that end after fraction x ncells moves without a better cut.
void Refine_EEFM__(Control *ctrl, HGraph *graph, int npasses, float fraction);
void Refine_EEFM2__(Control *ctrl, HGraph *graph, int npasses, float fraction);
// Passes that move cells out of one side only, alternating.
void Refine_OneWayFM__(Control *ctrl, HGraph *graph, int npasses);
// Moves cells out of the heavy side until both sides reach their lower bounds, whatever it does to the cut.
void Balance__(Control *ctrl, HGraph *graph);

// Projects the bisection of coarsest level by level up to orggraph, refining each level; frees the levels
// below.
void Refine__(Control *ctrl, HGraph *orggraph, HGraph *coarsest);
// Improves the bisection of graph by at most ncycles cycles of restricted coarsening and refinement; returns
// the cut of the last one, which is the one that stays.
int VCycleRefinement__(Control *ctrl, HGraph *graph, int ncycles);

// Anchors that go to side 0. The initial bisection and the split of a bisected hypergraph must agree on it.
int AnchorsOfSide0__(const Control *ctrl, const HGraph *graph);

// Validators: the first broken invariant, or NULL.
const char *CheckBisection__(const HGraph *graph); // where, pwgts, mincut
