// cli/measure/border.cpp - where a partition cuts.
// SPDX-License-Identifier: MIT

#include "measure/border.h"

#include <algorithm>

namespace kapris_report
{

void SortCutNets(const Hgr &hgr, std::vector<CutNet> *nets)
{
  std::sort(nets->begin(), nets->end(), [&hgr](const CutNet &a, const CutNet &b) {
    const std::int64_t first = NetWeight(hgr, a.net), second = NetWeight(hgr, b.net);
    return first != second ? first > second : a.net < b.net;
  });
}

std::vector<BorderCell> BorderCells(const Hgr &hgr, const std::vector<CutNet> &nets)
{
  std::vector<BorderCell> cells;
  std::vector<int> slot(static_cast<size_t>(hgr.ncells), -1), last_net(slot);

  for (const CutNet &cut : nets) {
    const size_t net = static_cast<size_t>(cut.net);
    for (int i = hgr.netptr[net]; i < hgr.netptr[net + 1]; i++) {
      const int cell = hgr.netind[static_cast<size_t>(i)];
      const size_t c = static_cast<size_t>(cell);
      // A net may name a cell twice.
      if (last_net[c] == cut.net)
        continue;
      last_net[c] = cut.net;
      if (slot[c] < 0) {
        slot[c] = static_cast<int>(cells.size());
        cells.push_back({cell, 0, 0});
      }
      cells[static_cast<size_t>(slot[c])].nnets++;
      cells[static_cast<size_t>(slot[c])].weight += NetWeight(hgr, cut.net);
    }
  }
  std::sort(cells.begin(), cells.end(), [](const BorderCell &a, const BorderCell &b) {
    return a.weight != b.weight ? a.weight > b.weight : a.cell < b.cell;
  });
  return cells;
}

} // namespace kapris_report
