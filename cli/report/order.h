// cli/report/order.h - the order of cells and nets that a partition gives.
// SPDX-License-Identifier: MIT
//
// The nets of one part stand beside their cells, part after part, and the cut nets below them: of a matrix whose
// columns are cells, the form with diagonal blocks and a border.
#pragma once

#include "formats/hgr.h"
#include "report/library.h"

#include <vector>

namespace kapris_report
{

struct Order {
  std::vector<int> cells, nets; // new places: of a cell its column, of a net its row
  std::vector<int> cellends;    // [nparts] columns up to the end of each part
  std::vector<int> netends;     // [nparts + 1] rows up to the end of each part, and of the cut nets
};

// Cells and nets of a part keep their order; cut nets are ordered by the first and then the last of their parts. Nets
// without pins belong to the last part. part[cell] < nparts, nparts >= 1.
Order OrderByPart(const Hgr &hgr, const std::vector<int> &part, int nparts);

} // namespace kapris_report
