// lib/coarsen/check.cpp - validators of matching groups and of a contraction.
// SPDX-License-Identifier: MIT

#include "coarsen.h"

#include "control/ctrl.h"

#include <algorithm>
#include <set>
#include <vector>

const char *CheckMatching__(const Control *ctrl, const HGraph *graph, int ngroups)
{
  std::vector<bool> listed(static_cast<std::size_t>(graph->ncells), false);

  if (graph->mptr[0] != 0 || graph->mptr[ngroups] != graph->ncells)
    return "mptr: the groups do not hold every cell";
  for (int g = 0; g < ngroups; g++) {
    std::int64_t wgt = 0;

    if (graph->mptr[g + 1] <= graph->mptr[g])
      return "mptr: a group is empty";
    for (int k = graph->mptr[g]; k < graph->mptr[g + 1]; k++) {
      const int v = graph->mind[k];
      if (v < 0 || v >= graph->ncells || listed[static_cast<std::size_t>(v)])
        return "mind: an entry is no cell or listed twice";
      listed[static_cast<std::size_t>(v)] = true;
      if (graph->cellmap[v] != g)
        return "cellmap: disagrees with the groups";
      wgt += graph->cellwgt[v];
    }
    if (g < graph->nfixed ? graph->mptr[g + 1] != g + 1 || graph->mind[g] != g
                          : graph->mptr[g + 1] - graph->mptr[g] > 1 && wgt > ctrl->maxcellwgt)
      return "groups: an anchor is not alone, or a group is too heavy";
  }
  return nullptr;
}

const char *CheckContraction__(const HGraph *graph)
{
  const HGraph *coarser = graph->coarser;
  std::vector<std::int64_t> wgt(static_cast<std::size_t>(coarser->ncells), 0);
  std::vector<int> netwgt(static_cast<std::size_t>(coarser->nnets), 0);
  int dropwgt = graph->dropwgt;

  for (int i = 0; i < graph->ncells; i++)
    wgt[static_cast<std::size_t>(graph->cellmap[i])] += graph->cellwgt[i];
  for (int c = 0; c < coarser->ncells; c++)
    if (wgt[static_cast<std::size_t>(c)] != coarser->cellwgt[c])
      return "cellwgt: a coarse cell does not weigh what its members weigh";

  for (int i = 0; i < graph->nnets; i++) {
    std::set<int> pins;
    for (int k = graph->netptr[i]; k < graph->netptr[i + 1]; k++)
      pins.insert(graph->cellmap[graph->netind[k]]);
    const int m = graph->netmap[i];
    if ((m == -1) != (pins.size() == 1))
      return "netmap: a net was dropped that spans two coarse cells, or kept within one";
    if (m == -1) {
      dropwgt = AddWrap__(dropwgt, graph->netwgt[i]);
      continue;
    }
    if (!std::equal(pins.begin(), pins.end(), coarser->netind + coarser->netptr[m],
                    coarser->netind + coarser->netptr[m + 1]))
      return "netmap: a coarse net has other pins than its fine net";
    int &sum = netwgt[static_cast<std::size_t>(m)];
    sum = AddWrap__(sum, graph->netwgt[i]);
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
