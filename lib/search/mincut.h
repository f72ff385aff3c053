// lib/search/mincut.h - minimum cuts of a hypergraph between two sides that keep limits; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "goal.h"

#include "base/array.h"
#include "core/level.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// What lies around the border of two sides, 0 and 1. The first two cells stand for all that stays: cell 0 for what
// stays on side 0, cell 1 for side 1.
struct Network {
  Array<int> netptr, netind;
  Array<Weight> netwgts;  // > 0
  Array<Weight> cellwgts; // [ncells]
  Array<char> sides;      // [ncells] where the cells are
  Array<int> distances;   // [ncells] from the border of the sides
  Weight limits[2];       // the largest weights of the sides
  Weight minimums[2];     // the smallest ones
};

// Moves cells to the other side, so that the sides keep their limits and the nets between them weigh least, as far as
// that can be found; what must weigh less than bound. Returns whether there is such a cut; else sides stay as they are.
bool FindMinimumCut(const Control *ctrl, Network *network, Weight bound);

} // namespace kapris::engine::KAPRIS_ENGINE
