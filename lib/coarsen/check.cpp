// lib/coarsen/check.cpp - validators of matching groups and of a contraction.
// SPDX-License-Identifier: MIT

#include "coarsen.h"

#include <algorithm>
#include <set>
#include <vector>

namespace kapris::engine::KAPRIS_ENGINE
{

const char *CheckMatching(const Control *ctrl, const HGraph *graph, const Grouping *groups)
{
  const int ngroups = groups->ngroups;
  std::vector<bool> listed(static_cast<std::size_t>(graph->ncells), false);

  if (groups->mptr[0] != 0 || groups->mptr[ngroups] != graph->ncells)
    return "mptr: the groups do not hold every cell";
  for (int g = 0; g < ngroups; g++) {
    Weight wgt = 0;

    if (groups->mptr[g + 1] <= groups->mptr[g])
      return "mptr: a group is empty";
    for (int k = groups->mptr[g]; k < groups->mptr[g + 1]; k++) {
      const int v = groups->mind[k];
      if (v < 0 || v >= graph->ncells || listed[static_cast<std::size_t>(v)])
        return "mind: an entry is no cell or listed twice";
      listed[static_cast<std::size_t>(v)] = true;
      if (groups->cellmap[v] != g)
        return "cellmap: disagrees with the groups";
      wgt = AddWrap(wgt, graph->cellwgt[v]);
    }
    if (g < graph->nfixed ? groups->mptr[g + 1] != g + 1 || groups->mind[g] != g
                          : groups->mptr[g + 1] - groups->mptr[g] > 1 && wgt > ctrl->maxcellwgt)
      return "groups: an anchor is not alone, or a group is too heavy";
  }
  return nullptr;
}

const char *CheckContraction(const HGraph *graph, const HGraph *coarser, const Cell *cellmap,
                             const Net *netmap)
{
  std::vector<Weight> wgt(static_cast<std::size_t>(coarser->ncells), 0);
  std::vector<Weight> netwgt(static_cast<std::size_t>(coarser->nnets), 0);
  Weight dropwgt = graph->dropwgt;

  for (int i = 0; i < graph->ncells; i++)
    wgt[static_cast<std::size_t>(cellmap[i])] += graph->cellwgt[i];
  for (int c = 0; c < coarser->ncells; c++)
    if (wgt[static_cast<std::size_t>(c)] != coarser->cellwgt[c])
      return "cellwgt: a coarse cell does not weigh what its members weigh";

  for (int i = 0; i < graph->nnets; i++) {
    std::set<int> pins;
    for (int k = graph->netptr[i]; k < graph->netptr[i + 1]; k++)
      pins.insert(cellmap[graph->netind[k]]);
    const int m = netmap[i];
    if ((m == -1) != (pins.size() == 1))
      return "netmap: a net was dropped that spans two coarse cells, or kept within one";
    if (m == -1) {
      dropwgt = AddWrap(dropwgt, graph->netwgt[i]);
      continue;
    }
    if (!std::equal(pins.begin(), pins.end(), coarser->netind + coarser->netptr[m],
                    coarser->netind + coarser->netptr[m + 1]))
      return "netmap: a coarse net has other pins than its fine net";
    Weight &sum = netwgt[static_cast<std::size_t>(m)];
    sum = AddWrap(sum, graph->netwgt[i]);
  }
  if (dropwgt != coarser->dropwgt)
    return "dropwgt: not the weight of the dropped nets";
  for (int m = 0; m < coarser->nnets; m++)
    if (netwgt[static_cast<std::size_t>(m)] != coarser->netwgt[m])
      return "netwgt: a coarse net does not weigh what its fine nets weigh";

  // The lists of a coarse cell are in another order than the pins, so compare them as sets.
  std::vector<std::vector<int>> nets(static_cast<std::size_t>(coarser->ncells));
  for (int m = 0; m < coarser->nnets; m++)
    for (int k = coarser->netptr[m]; k < coarser->netptr[m + 1]; k++)
      nets[static_cast<std::size_t>(coarser->netind[k])].push_back(m);
  for (int c = 0; c < coarser->ncells; c++) {
    std::vector<int> listed(coarser->incind + coarser->incptr[c], coarser->incind + coarser->incptr[c + 1]);
    std::sort(listed.begin(), listed.end());
    if (listed != nets[static_cast<std::size_t>(c)])
      return "incind: a coarse cell's nets are not those that name it";
  }
  return nullptr;
}

} // namespace kapris::engine::KAPRIS_ENGINE
