// lib/search/goal.h - what partitions of a search are compared by.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/hgraph.h"

#include <compare>

namespace kapris::engine::KAPRIS_ENGINE
{

struct SearchGoal {
  int nparts;
  bool cut, connectivity; // what is added up to the objective; with both it is the SOED
  const Weight *limits;   // [nparts] largest weights of the parts
  const Weight *minimums; // [nparts] smallest ones: a move brings no part below its minimum
};

// What a move takes off the objective, and off the other figure, which breaks ties: the connectivity, or the cut where
// the connectivity is the objective.
struct Gain {
  Weight main, tie;
  auto operator<=>(const Gain &) const = default;
};

// The smaller the better.
struct Value {
  Weight excess; // what parts weigh above their limits
  Weight main, tie;
  auto operator<=>(const Value &) const = default;
};

// By the definition.
Value Evaluate(const SearchGoal *goal, const HGraph *graph, const int *part);

} // namespace kapris::engine::KAPRIS_ENGINE
