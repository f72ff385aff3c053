// lib/search/ladder.h - the levels of a search; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "goal.h"

#include "base/array.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// A chain of levels, finest first. maps[l] gives the cell of level l + 1 for each cell of level l. The finest
// hypergraph belongs to someone else.
struct Ladder {
  std::vector<const HGraph *> graphs;
  std::vector<HGraph *> own;
  std::vector<Array<int>> maps;

  Ladder() = default;
  ~Ladder();
  Ladder(const Ladder &) = delete;
  Ladder &operator=(const Ladder &) = delete;
};

// Coarsens graph until a level has at most coarsento cells or shrinks too little. Cells are grouped up to the weight
// maxwgt, and only with cells of the same label, [ncells]; without labels, NULL, with any. Anchors stay alone.
void Coarsen(const Control *ctrl, const HGraph *graph, const int *labels, int coarsento, Weight maxwgt,
             Ladder *ladder);

} // namespace kapris::engine::KAPRIS_ENGINE
