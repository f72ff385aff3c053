// lib/starts/problem.h - the problem as the engine gets it, and the measures of a partition; for this folder and the
// safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "kapris_api.h"

#include "base/memory.h"
#include "base/output.h"

namespace kapris::engine::safe
{

using namespace base;

// Totals of weights are exact up to here.
constexpr std::int64_t MAX_TOTAL = std::int64_t{1} << 61;

// The caller's hypergraph without what changes no objective: nets of one pin or none, and repeated pins. Shared
// read-only by all starts.
struct CleanProblem {
  int ncells, nnets;
  const std::int64_t *cellwgt; // [ncells]
  std::int64_t *netwgt;        // [nnets]
  int *netptr;                 // [nnets+1]
  int *netind;
  int nparts;
  double *shares;         // [nparts], sum 1
  std::int64_t *limits;   // [nparts] largest part weights
  std::int64_t *minimums; // [nparts] smallest part weights
  std::int64_t
      *aims; // [nparts] limits, or less where the minimums of the other parts leave less: for the engine
  bool allowempty;    // parts may be empty while there are cells that they can have
  const int *fixed;   // the caller's, or NULL
  std::int64_t total; // cell weight
  bool isnarrow;      // all sums fit the engine for weights of 32 bits
};

// These refuse through errexit__, naming the argument, the index and the value.
void CheckOptions(const kapris_options *options);
void CheckProblem(const kapris_problem *problem);
// A partition that the caller gives, which the message calls name.
void CheckGiven(const kapris_problem *problem, const int *part, const char *name);

CleanProblem MakeCleanProblem(const kapris_problem *problem, const kapris_options *options);

struct Measures {
  std::int64_t cut, soed;
  double imbalance;    // largest part weight over its share of the total, less 1
  std::int64_t excess; // weight above the limits and lacking to the minimums, over the parts
  int nempty;          // parts that have no cell though there are enough, unless they may be empty
};

// weights, when given, receives the weight of each part.
Measures Measure(const CleanProblem *problem, const int *part, std::int64_t *weights);

// A partition in linear time, with little regard for the nets: fixed cells in their parts, the others in order of
// their numbers, part after part up to its share.
void FillPartsInOrder(const CleanProblem *problem, int *part);

} // namespace kapris::engine::safe
