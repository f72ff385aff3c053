// lib/coarsen/coarsen.h - from one hypergraph to a chain of coarser levels.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/core.h"

// Coarsens graph by ctrl->ctype until a level has at most ctrl->coarsento cells or shrinks too little;
// returns the coarsest level, which is graph itself when it is small enough. Needs the incidence arrays,
// nfixed and ctrl->maxcellwgt. The levels are linked by coarser and finer and belong to the caller.
HGraph *Coarsen__(Control *ctrl, HGraph *graph);

// The same, grouping only cells of one part of graph->where, which moves to the coarsest level: the part
// vector of every finer level is released. ctrl->ctype 0 selects stars, 1 pairs.
HGraph *CCoarsen__(Control *ctrl, HGraph *graph);

// Islands are cells on no net. They are set aside behind the other cells before a level is matched, and put
// into the lightest part after it has been refined.
void SeparateIslands__(HGraph *graph);
void PartitionIslands__(const Control *ctrl, HGraph *graph);     // two-way: by pwgts
void PartitionIslandsKway__(const Control *ctrl, HGraph *graph); // by kpwgts
// Gives the finest level its cell numbers back.
void CombineIslands__(HGraph *graph);

// Contracts the matching groups of graph (cellmap, mptr, mind) into graph->coarser, a level of ncoarse cells,
// and fills graph->netmap.
void CreateCoarseHGraph__(Control *ctrl, HGraph *graph, int ncoarse);

// Merges the identical nets of a net list into one with their weights added. Sorts the pins of every net in
// place; the caller owns the three new arrays.
void CollapseSameHEdges__(int nnets, const int *netptr, int *netind, const int *netwgt, int *outnnets,
                          int **outnetptr, int **outnetind, int **outnetwgt);

// Builds, as graph->coarser, the hypergraph in which cell p < nparts is the anchor of all cells with part[i]
// = p and the cells after the anchors are the free ones (part[i] = -1), in increasing order.
void CompressFixedCells__(Control *ctrl, HGraph *graph, const int *part);
// Carries the partition cpart of the compressed hypergraph to the cells, renaming the parts so that the
// anchor of part p lies in part p.
void ProjectFixedCells__(const Control *ctrl, const HGraph *graph, int *part, const int *cpart);

// Partitions the compressed hypergraph of graph with the given function and projects the result; returns its value.
// part holds the pre-assigned parts on entry. Reports a cell that did not end in its part.
int PartitionAroundFixed__(Control *ctrl, HGraph *graph, int *part,
                           int (*partition)(Control *, HGraph *, int nfixed, int *part));

// Validators: the first broken invariant, or NULL.
const char *CheckMatching__(const Control *ctrl, const HGraph *graph, int ngroups);
const char *CheckContraction__(const HGraph *graph);
