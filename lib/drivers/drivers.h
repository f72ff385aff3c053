// lib/drivers/drivers.h - partitioning by recursive bisection and directly into all parts.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/level.h"

#include <functional>

namespace kapris::engine::KAPRIS_ENGINE
{

// Partitions graph into ctrl->nparts parts by recursive bisection; returns the cut. With ctrl->fixed, part holds on
// entry -1 or the part that a cell must go to. Builds the incidence of graph.
Weight MultilevelPartition__(const Control *ctrl, HGraph *graph, int *part);

// Partitions graph into ctrl->nparts parts by multilevel k-way trials; returns the value of ctrl->objective. The rest
// as above.
Weight MultilevelKwayPartition__(const Control *ctrl, HGraph *graph, int *part);

// Both improve part, that of ctrl->initial, by ctrl->nruns rounds of refinement and V-cycles; return the value of what
// they leave in part, which is never larger than before. The first is for two parts.
Weight ImproveTwoParts(const Control *ctrl, HGraph *graph, int *part);
Weight ImproveKwayPartition(const Control *ctrl, HGraph *graph, int *part);

// Cut refinement of the partition part of graph, whose incidence must be built, then V-cycles; returns the cut.
Weight RefineKwayPartition(const Control *ctrl, const HGraph *graph, int *part);

// ----------------------------------------------------------------------------------------------------------
// What the drivers share

// Bisects the coarsest level by random trials, each balanced and refined; leaves the best in where and mincut.
void InitPartition__(const Control *ctrl, Level *level);

// Aims the bounds of ctrl at the bisection of graph that splits the parts first .. first + nparts - 1.
void AimBisection(Control *ctrl, const HGraph *graph, int nparts, int first);

// A bisection and the largest weight of a coarse cell that its levels had.
struct BisectionOutcome {
  Weight cut, maxcellwgt;
};
// Bisects graph within the bounds of ctrl by ctrl->nruns multilevel trials. Builds the incidence of graph.
BisectionOutcome Hypergraph_Bisection__(const Control *ctrl, HGraph *graph, int *part);
// Improves the bisection part by ctrl->nruns rounds of refinement and V-cycles; returns the cut of what it leaves in
// part. Builds the incidence of graph.
Weight ImproveBisection(const Control *ctrl, HGraph *graph, int *part);

// Recursive bisection alone, of a graph whose first nfixed cells are anchors; the sum of the cuts of all bisections,
// and the cap of the last one. Builds the incidence of graph.
BisectionOutcome PartitionByBisection(const Control *ctrl, HGraph *graph, int *part);

// Fills two fresh records with the sides of the bisection where of graph. Nets that are cut are dropped, or with
// ctrl->reconst their pieces of two pins and more stay. labels: the number of each of their cells in graph.
void SplitGraphPart__(const Control *ctrl, const HGraph *graph, const int *where, HGraph *sides[2],
                      Cell *labels[2]);

// Partitions by the given function; with ctrl->fixed, the hypergraph in which one anchor stands for all cells of a
// part, carrying the result over. part holds the pre-assigned parts on entry. Reports a cell that did not end in its
// part.
Weight PartitionAroundFixed(const Control *ctrl, HGraph *graph, int *part,
                            const std::function<Weight(const Control *, HGraph *, int *part)> &partition);

} // namespace kapris::engine::KAPRIS_ENGINE
