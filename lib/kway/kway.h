// lib/kway/kway.h - direct k-way partitioning: driver, refinement of a level, uncoarsening, V-cycles.
// SPDX-License-Identifier: MIT
//
// The state of a k-way partition lives in the level's record: where, and derived from it kpwgts, the records
// of nets (nrinfo) and cells (crinfo), mincut, soed and objval.
#pragma once

#include "core/core.h"

// Partitions graph into ctrl->nparts parts by multilevel k-way trials; returns the objective: the cut for
// ctrl->rtype 1, else the SOED. Builds the incidence of graph.
int MultilevelKwayPartition__(Control *ctrl, HGraph *graph, int *part);

// Improves the partition part, that of the context's call, by ctrl->nruns rounds of refinement and V-cycles; returns
// the objective of what it leaves in part.
int ImproveKwayPartition__(Control *ctrl, HGraph *graph, int *part);

// Allocates where and the k-way records, uninitialised. Needs the incidence arrays.
void AllocateKwayRefinementMemory__(const Control *ctrl, HGraph *graph);
// Computes the k-way records, kpwgts, mincut and soed from where.
void ComputeInitKwayGains__(const Control *ctrl, HGraph *graph);

// Passes that move cells to better parts within the weight limits, at most npasses; set objval.
void RefineCutKway_Random__(Control *ctrl, HGraph *graph, int npasses);
void RefineSOEDKway_Random__(Control *ctrl, HGraph *graph, int npasses);
// The one that minimises the objective of ctrl->rtype.
void RefineObjectiveKway__(Control *ctrl, HGraph *graph, int npasses);

// Projects the partition of the coarsest level by level up to orggraph, refining each level; frees the levels
// below.
void RefineKway__(Control *ctrl, HGraph *orggraph, HGraph *coarsest);
// Improves the partition of graph by at most ncycles cycles of restricted coarsening and refinement; returns
// the objective of the last one, which is the one that stays.
int VCycleRefinementKway__(Control *ctrl, HGraph *graph, int ncycles);
// Cut refinement of graph, then V-cycles; graph has its k-way memory and a partition in where. Returns the
// cut.
int RefineKwayPartition__(Control *ctrl, HGraph *graph);

// Validator: the first broken invariant, or NULL.
const char *CheckKway__(const Control *ctrl, const HGraph *graph);
