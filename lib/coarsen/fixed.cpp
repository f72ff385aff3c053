// lib/coarsen/fixed.cpp - pre-assigned cells: one anchor per part stands for all cells that must go there.
// SPDX-License-Identifier: MIT

#include "match.h"

namespace kapris::engine::KAPRIS_ENGINE
{

HGraph *CompressFixedCells__(const Control *ctrl, const HGraph *graph, const int *part, Cell **cellmap)
{
  const int n = graph->ncells;
  int next = ctrl->nparts;
  Grouping groups = {};

  groups.cellmap = *cellmap = imalloc__(n, "CompressFixedCells: graph->cellmap");
  for (int i = 0; i < n; i++)
    groups.cellmap[i] = part[i] != -1 ? part[i] : next++;
  groups.ngroups = next;
  groups.mptr = imalloc__(static_cast<std::int64_t>(next) + 1, "CompressFixedCells: graph->mptr");
  groups.mind = imalloc__(n, "CompressFixedCells: graph->mind");
  ListMembers(n, &groups);

  HGraph *compressed = CreateCoarseHGraph__(ctrl, graph, &groups);
  compressed->nfixed = ctrl->nparts;
  // Bisection builds the incidence of what it works on.
  QVfree__(&groups.mptr, &groups.mind, &compressed->incptr, &compressed->incind, &compressed->adjwgt,
           &compressed->edgewgt);
  return compressed;
}

void ProjectFixedCells__(const Control *ctrl, int ncells, const Cell *cellmap, int *part, const int *cpart)
{
  // -1 stays for a part without an anchor; the caller reports the cells concerned.
  int *imap = ismalloc__(ctrl->nparts, -1, "ProjectFixedCells: imap");

  for (int p = 0; p < ctrl->nparts; p++)
    imap[cpart[p]] = p;
  for (int i = 0; i < ncells; i++)
    part[i] = imap[cpart[cellmap[i]]];
  QVfree__(&imap);
}

} // namespace kapris::engine::KAPRIS_ENGINE
