// lib/search/ladder.cpp - coarsening for a search, by stars of cells that do not cross a given labelling.
// SPDX-License-Identifier: MIT

#include "ladder.h"

#include "coarsen/coarsen.h"
#include "core/constants.h"

namespace kapris::engine::KAPRIS_ENGINE
{

Ladder::~Ladder()
{
  for (HGraph *graph : own)
    FreeHGraph__(graph);
}

static Array<int> CarryLabels(const Array<int> &map, int ncoarse, const Array<int> &labels)
{
  Array<int> carried(At(ncoarse));

  for (std::size_t i = 0; i < map.size(); i++)
    carried[At(map[i])] = labels[i];
  return carried;
}

void Coarsen(const Control *call, const HGraph *graph, const int *labels, int coarsento, Weight maxwgt,
             Ladder *ladder)
{
  const std::size_t n = At(graph->ncells);
  Array<int> carried = labels != nullptr ? Array<int>(labels, labels + n) : Array<int>(n, 0);
  Control ctrl = *call;

  ctrl.maxcellwgt = maxwgt;
  ctrl.maxnetsize = MAX_NET_SIZE;
  ladder->graphs.push_back(graph);
  while (graph->ncells > coarsento) {
    EnterPhase(&ctrl, PHASE_COARSEN, graph->ncells);
    Grouping groups = GroupStars(&ctrl, graph, carried.data());
    Array<int> map(groups.cellmap, groups.cellmap + graph->ncells);
    HGraph *coarser = CreateCoarseHGraph__(&ctrl, graph, &groups);
    ladder->own.push_back(coarser);
    QVfree__(&groups.cellmap, &groups.mptr, &groups.mind);
    if (static_cast<double>(coarser->ncells) > SLOW_STARS * graph->ncells)
      return;
    carried = CarryLabels(map, coarser->ncells, carried);
    ladder->graphs.push_back(coarser);
    ladder->maps.push_back(std::move(map));
    graph = coarser;
  }
}

} // namespace kapris::engine::KAPRIS_ENGINE
