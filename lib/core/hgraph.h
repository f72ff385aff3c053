// lib/core/hgraph.h - the hypergraph: structure and weights. What a trial makes of it stands elsewhere (level.h).
// SPDX-License-Identifier: MIT
#pragma once

#include "control.h"

#include "base/check.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// One hypergraph: the caller's, its pruned copy, a coarser level, or a side of the recursion. Constant once it is
// built, so that any number of trials can work on it at once. The record owns its arrays.
struct HGraph {
  int ncells;
  int nislands; // cells on no net that have been set aside: they stand behind the ncells others in the arrays of cells
  int nnets;
  Weight dropwgt; // weight of the nets that shrank to one pin on the way to this level
  int nfixed;     // the first nfixed cells are anchors of pre-assigned cells: never merged, never moved

  Pin *incptr;  // [ncells+1] start of each cell's nets in incind
  Net *incind;  // [pins] incident nets of all cells
  Pin *netptr;  // [nnets+1] start of each net's pins in netind
  Cell *netind; // [pins]

  Weight *cellwgt; // [ncells+nislands]
  Weight *netwgt;  // [nnets]
  Weight *adjwgt;  // [ncells+nislands] sum of the weights of the incident nets
  float *edgewgt;  // [nnets] net weight / (pins - 1); 0 for nets of fewer than two pins
};

HGraph *CreateHGraph__();
void InitHGraph__(HGraph *graph);
// A record with copies of the given arrays; weights that are NULL are all 1. nfixed is 0.
HGraph *CopyHGraph(int ncells, int nnets, const Weight *cellwgts, const Pin *netptr, const Cell *netind,
                   const Weight *netwgts);
// Releases the record and its arrays.
void FreeHGraph__(HGraph *graph);
// Builds incptr, incind, adjwgt and edgewgt; once per record.
void CreateIncidentHGraph__(HGraph *graph);

inline int NetSize(const HGraph *graph, Net net)
{
  return graph->netptr[net + 1] - graph->netptr[net];
}

// The weight that each pair of pins of a net receives in matching.
inline float EdgeWeight(Weight netwgt, int npins)
{
  return static_cast<float>(static_cast<double>(netwgt) / (npins - 1));
}

// ----------------------------------------------------------------------------------------------------------
// Measures (measures.cpp)

Weight ComputeActualCut__(const HGraph *graph, const int *part);  // any number of parts
Weight ComputeActualSOED__(const HGraph *graph, const int *part); // any number of parts
// Weight of the lighter side over the total, 0.5 at best; NaN without weight.
float ComputeBalance__(const HGraph *graph, const int *part);
// Weight of the heaviest of nparts parts over the average; NaN without weight.
float ComputeBalanceKway__(const HGraph *graph, int nparts, const int *part);

// ----------------------------------------------------------------------------------------------------------
// Pruning (prune.cpp)

// A copy with every cell and only the nets of at most ctrl->maxnetsize pins, its incidence built; NULL if that is all
// of graph, whose incidence must be built.
HGraph *PruneHGraph__(const Control *ctrl, const HGraph *graph);
// Sets ctrl->maxcellwgt, the largest weight of a coarse cell, and ctrl->heavycells.
void ComputeMaxCellWgt__(Control *ctrl, int n, const Weight *cellwgt);
int NumOfLargeNets__(int nnets, const Pin *netptr); // nets of four or more pins

// ----------------------------------------------------------------------------------------------------------
// Validators (check.cpp): the first broken invariant, or NULL.

const char *CheckHGraph(const HGraph *graph);    // structure and weights
const char *CheckIncidence(const HGraph *graph); // incptr, incind, adjwgt against the pins
// Whether every maintained cut must equal a recount: no net of one pin, no pin listed twice.
bool HasPlainNets(const HGraph *graph);

} // namespace kapris::engine::KAPRIS_ENGINE
