// lib/search/search.h - a population of complete partitions that are combined: the engine of the safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "goal.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// How much a search does.
struct SearchPlan {
  int members; // partitions that it makes on its own, >= 1
  // At most: of two of them, or of one and itself with parts made anew; of a single given partition that many V-cycles.
  int combinations;
  bool direct; // members are made directly, else by recursive bisection
  bool
      endless; // goes on from a quick first partition until StopRun or all hope is lost, whatever the numbers above
};

// Partitions graph into goal->nparts parts, or, with ctrl->initial, improves part, which is never worse afterwards, and
// combines it with ctrl->others.
// Leaves the best partition in part and announces each that is better than all before it. The first graph->nfixed cells
// are the anchors of the parts. The other options of ctrl say how the members are made. Builds the incidence of graph.
// Returns its objective.
Weight Search(const Control *ctrl, const SearchGoal *goal, const SearchPlan *plan, HGraph *graph, int *part);

} // namespace kapris::engine::KAPRIS_ENGINE
