// lib/recursive/recursive.h - partitioning by recursive bisection.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/core.h"

// Partitions graph into ctrl->nparts parts; returns the cut. With ctrl->fixed, part holds on entry -1 or the
// part that a cell must go to. Leaves the polished run's imbalance in ctrl->ubfactor.
int MultilevelPartition__(Control *ctrl, HGraph *graph, int *part);

// The same for a bisection that is there: improves part, that of the context's call, within the context's limits.
int ImproveTwoParts__(Control *ctrl, HGraph *graph, int *part);

// The recursion alone on a graph whose first nfixed cells are anchors; returns the sum of the cuts.
int PartitionByBisection__(Control *ctrl, HGraph *graph, int nfixed, int *part);

// Bisects graph into sides of shares ctrl->part0frac and the rest by ctrl->nruns multilevel trials; returns
// the cut of the bisection in part. Builds the incidence of graph.
int Hypergraph_Bisection__(Control *ctrl, HGraph *graph, int *part);

// Improves the bisection part by ctrl->nruns rounds of refinement and V-cycles; returns the cut of what it leaves in
// part.
int ImproveBisection__(Control *ctrl, HGraph *graph, int *part);

// Fills two fresh records with the sides of the bisection where of graph. Nets that are cut are dropped, or
// with ctrl->reconst their pieces of two pins and more stay.
void SplitGraphPart__(const Control *ctrl, const HGraph *graph, const int *where, HGraph *lgraph,
                      HGraph *rgraph);
