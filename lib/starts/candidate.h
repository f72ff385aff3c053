// lib/starts/candidate.h - partitions that can become the result of a call, and their order; for this folder and the
// safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "problem.h"

#include "rebalance/rebalance.h"

namespace kapris::engine::safe
{

// Candidates that no start has made.
enum { NO_CANDIDATE = -3, SIMPLE_PARTITION = -2, GIVEN_PARTITION = -1 };

// A partition that can become the result.
struct Candidate {
  int *part;
  Measures measures;
  int start; // that made it, or one of the above
};

Goal GoalOf(const kapris_options *options);

// Whether a comes before b.
bool IsBetter(const kapris_options *options, const Candidate *a, const Candidate *b);

} // namespace kapris::engine::safe
