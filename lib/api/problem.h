// lib/api/problem.h - the problem as the engine gets it, and the measures of a partition; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "kapris_api.h"

#include "core/core.h"

// The caller's hypergraph without what changes no objective: nets of one pin or none, and repeated pins. Shared
// read-only by all starts.
struct CleanProblem {
  int ncells, nnets;
  const int *cellwgt; // [ncells]
  int *netwgt;        // [nnets]
  int *netptr;        // [nnets+1]
  int *netind;
  int nparts;
  double *shares;       // [nparts], sum 1
  std::int64_t *limits; // [nparts] largest part weights
  int *intlimits;       // [nparts] the same, at most INT_MAX, for the engine
  const int *fixed;     // the caller's, or NULL
  std::int64_t total;   // cell weight
};

// The caller's problem with its weights in 32 bits.
struct NarrowProblem : kapris_problem {
  const int *cell_weights, *net_weights;
};

// These refuse through errexit__, naming the argument, the index and the value.
void CheckOptions__(const kapris_options *options);
void CheckProblem__(const NarrowProblem *problem);
// The partition to improve.
void CheckGiven__(const NarrowProblem *problem, const int *part);

CleanProblem MakeCleanProblem__(const NarrowProblem *problem, const kapris_options *options);

struct Measures {
  std::int64_t cut, soed;
  double imbalance; // largest part weight over its share of the total, less 1
  int balanced;     // all parts within their limits
};

// weights, when given, receives the weight of each part.
Measures Measure__(const CleanProblem *problem, const int *part, std::int64_t *weights);

// A partition in linear time, with little regard for the nets: fixed cells in their parts, the others in order of
// their numbers, part after part up to its share.
void FillPartsInOrder__(const CleanProblem *problem, int *part);
