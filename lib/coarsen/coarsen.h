// lib/coarsen/coarsen.h - from one hypergraph to a chain of coarser levels.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/level.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Coarsens the hypergraph of level by ctrl->ctype until a level has at most ctrl->coarsento cells or shrinks too
// little; returns the coarsest level, which is level itself when it is small enough. Needs the incidence arrays, nfixed
// and ctrl->maxcellwgt. The levels are linked by coarser and finer and belong to the caller.
Level *Coarsen__(const Control *ctrl, Level *level);

// How cells of one part are grouped.
enum RestrictedMatching { MATCH_PART_STARS = 0, MATCH_PART_PAIRS = 1 };
// The same, grouping only cells of one part of the level's partition, which moves to the coarsest level: the part
// vector of every finer level is released.
Level *CCoarsen__(const Control *ctrl, RestrictedMatching matching, Level *level);

// Islands are cells on no net. They are set aside behind the other cells before a level is matched; whoever refines the
// level deals them. The finest level works on a hypergraph of its own while it has islands set aside.
void SeparateIslands__(Level *level);
// Gives the finest level its hypergraph back, and its partition the old cell numbers.
void CombineIslands__(Level *level);

// Groups of cells as they are formed: group g holds mind[mptr[g]] .. mind[mptr[g+1]-1].
struct Grouping {
  Cell *cellmap; // [ncells] group of each cell, UNMATCHED while it has none
  int *mptr;     // [groups+1]
  Cell *mind;    // [ncells]
  int ngroups, nmembers;
};

enum { UNMATCHED = -1 };

// Groups cells of equal labels, [ncells], into stars of at most ctrl->maxcellwgt; nets above ctrl->maxnetsize do not
// count. Cells on no net go together.
Grouping GroupStars(const Control *ctrl, const HGraph *graph, const int *labels);

// Contracts the groups of graph: a hypergraph whose cell g is group g.
HGraph *CreateCoarseHGraph__(const Control *ctrl, const HGraph *graph, const Grouping *groups);

// Merges the identical nets of a net list into one with their weights added. Sorts the pins of every net in
// place; the caller owns the three new arrays.
void CollapseSameHEdges__(int nnets, const Pin *netptr, Cell *netind, const Weight *netwgt, int *outnnets,
                          Pin **outnetptr, Cell **outnetind, Weight **outnetwgt);

// Makes the hypergraph in which cell p < nparts is the anchor of all cells with part[i] = p and the cells after the
// anchors are the free ones (part[i] = -1), in increasing order. *cellmap, [ncells], receives its cell for each cell of
// graph and belongs to the caller.
HGraph *CompressFixedCells__(const Control *ctrl, const HGraph *graph, const int *part, Cell **cellmap);
// Carries the partition cpart of the compressed hypergraph to the ncells cells, renaming the parts so that the anchor
// of part p lies in part p.
void ProjectFixedCells__(const Control *ctrl, int ncells, const Cell *cellmap, int *part, const int *cpart);

// Validators: the first broken invariant, or NULL.
const char *CheckMatching(const Control *ctrl, const HGraph *graph, const Grouping *groups);
const char *CheckContraction(const HGraph *graph, const HGraph *coarser, const Cell *cellmap,
                             const Net *netmap);

} // namespace kapris::engine::KAPRIS_ENGINE
