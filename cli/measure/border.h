// cli/measure/border.h - where a partition cuts: the heaviest cut nets, and the cells on them.
// SPDX-License-Identifier: MIT
#pragma once

#include "measure/measures.h"

#include <cstdint>
#include <vector>

namespace kapris_report
{

// The heaviest first, by number among equals.
void SortCutNets(const Hgr &hgr, std::vector<CutNet> *nets);

struct BorderCell {
  int cell;
  int nnets;           // cut nets that it is on
  std::int64_t weight; // of these
};

// The cells on cut nets, those with the most weight first, by number among equals.
std::vector<BorderCell> BorderCells(const Hgr &hgr, const std::vector<CutNet> &nets);

} // namespace kapris_report
