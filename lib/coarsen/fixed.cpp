// lib/coarsen/fixed.cpp - pre-assigned cells: one anchor per part stands for all cells that must go there.
// SPDX-License-Identifier: MIT

#include "match.h"

void CompressFixedCells__(Control *ctrl, HGraph *graph, const int *part)
{
  const int n = graph->ncells;
  int next = ctrl->nparts;

  graph->cellmap = imalloc__(n, "CompressFixedCells: graph->cellmap");
  for (int i = 0; i < n; i++)
    graph->cellmap[i] = part[i] != -1 ? part[i] : next++;
  graph->mptr = imalloc__(static_cast<std::int64_t>(next) + 1, "CompressFixedCells: graph->mptr");
  graph->mind = imalloc__(n, "CompressFixedCells: graph->mind");
  ListMembers__(n, next, graph->cellmap, graph->mptr, graph->mind);

  CreateIncidentHGraph__(graph);
  CreateCoarseHGraph__(ctrl, graph, next);

  // Bisection builds the incidence of what it works on.
  HGraph *coarser = graph->coarser;
  QVfree__(&graph->incptr, &graph->incind, &graph->adjwgt, &graph->edgewgt);
  QVfree__(&coarser->incptr, &coarser->incind, &coarser->adjwgt, &coarser->edgewgt);
}

void ProjectFixedCells__(const Control *ctrl, const HGraph *graph, int *part, const int *cpart)
{
  // -1 stays for a part without an anchor; the caller reports the cells concerned.
  int *imap = ismalloc__(ctrl->nparts, -1, "ProjectFixedCells: imap");

  for (int p = 0; p < ctrl->nparts; p++)
    imap[cpart[p]] = p;
  for (int i = 0; i < graph->ncells; i++)
    part[i] = imap[cpart[graph->cellmap[i]]];
  QVfree__(&imap);
}

namespace
{

// Takes partitions of the compressed hypergraph and hands those of the full one on.
struct Projector {
  const Control *ctrl;
  const HGraph *graph;
  const RunContext *outer;
  int *part;
};

} // namespace

static void TakeCompressed(void *taker, const int *cpart)
{
  const Projector *projector = static_cast<Projector *>(taker);

  ProjectFixedCells__(projector->ctrl, projector->graph, projector->part, cpart);
  projector->outer->incumbent(projector->outer->taker, projector->part);
}

// The partition of the call as one of the compressed hypergraph.
static void CompressPartition(const Control *ctrl, const HGraph *graph, int *cpart)
{
  for (int i = 0; i < graph->ncells; i++)
    cpart[graph->cellmap[i]] = ctrl->context->initial[i];
  for (int p = 0; p < ctrl->nparts; p++)
    cpart[p] = p;
}

int PartitionAroundFixed__(Control *ctrl, HGraph *graph, int *part,
                           int (*partition)(Control *, HGraph *, int nfixed, int *part))
{
  int *orgpart = imalloc__(graph->ncells, "orgpart");

  icopy__(graph->ncells, part, orgpart);
  CompressFixedCells__(ctrl, graph, part);
  HGraph *compressed = graph->coarser;
  graph->coarser = nullptr;
  compressed->finer = nullptr;
  int *fpart = imalloc__(compressed->ncells, "MultilevelPartition: fpart");

  const RunContext *outer = ctrl->context;
  RunContext context = outer != nullptr ? *outer : RunContext{};
  Projector projector = {ctrl, graph, outer, part};
  if (outer != nullptr) {
    ctrl->context = &context;
    context.taker = &projector;
    if (outer->incumbent != nullptr)
      context.incumbent = TakeCompressed;
    if (outer->initial != nullptr)
      CompressPartition(ctrl, graph, fpart);
  }

  const int value = partition(ctrl, compressed, ctrl->nparts, fpart);
  ctrl->context = outer;

  ProjectFixedCells__(ctrl, graph, part, fpart);
  for (int i = 0; i < graph->ncells; i++)
    if (orgpart[i] != -1 && orgpart[i] != part[i])
      Trace__("Fixing failed: %d %d %d\n", i, orgpart[i], part[i]);
  QVfree__(&fpart, &orgpart);
  FreeHGraph__(compressed);
  return value;
}
