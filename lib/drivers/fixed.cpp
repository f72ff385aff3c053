// lib/drivers/fixed.cpp - partitions around pre-assigned cells.
// SPDX-License-Identifier: MIT

#include "drivers.h"

#include "coarsen/coarsen.h"

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// Takes partitions of the compressed hypergraph and hands those of the full one on.
struct Projector {
  const Control *ctrl;
  int ncells;
  const Cell *cellmap;
  int *part;
};

} // namespace

static void TakeCompressed(void *taker, const int *cpart)
{
  const Projector *projector = static_cast<Projector *>(taker);

  ProjectFixedCells__(projector->ctrl, projector->ncells, projector->cellmap, projector->part, cpart);
  Announce(projector->ctrl, projector->part);
}

// A partition of the call as one of the compressed hypergraph.
static int *CompressPartition(const Control *ctrl, int ncells, const Cell *cellmap, const int *part,
                              int *cpart)
{
  for (int i = 0; i < ncells; i++)
    cpart[cellmap[i]] = part[i];
  for (int p = 0; p < ctrl->nparts; p++)
    cpart[p] = p;
  return cpart;
}

// Nobody announces anything between two combinations, so that the same array serves.
static bool AskForCompressed(void *taker, int *cpart)
{
  const Projector *projector = static_cast<Projector *>(taker);

  if (!AskForVisitor(projector->ctrl, projector->part))
    return false;
  CompressPartition(projector->ctrl, projector->ncells, projector->cellmap, projector->part, cpart);
  return true;
}

static Weight
PartitionCompressed(const Control *ctrl, HGraph *graph, int *part,
                    const std::function<Weight(const Control *, HGraph *, int *part)> &partition)
{
  Cell *cellmap;
  int *orgpart = imalloc__(graph->ncells, "orgpart");

  icopy__(graph->ncells, part, orgpart);
  // The cells of a coarse cell list its nets in the order of the incidence.
  CreateIncidentHGraph__(graph);
  HGraph *compressed = CompressFixedCells__(ctrl, graph, part, &cellmap);
  QVfree__(&graph->incptr, &graph->incind, &graph->adjwgt, &graph->edgewgt);
  int *fpart = imalloc__(compressed->ncells, "MultilevelPartition: fpart");

  Projector projector = {ctrl, graph->ncells, cellmap, part};
  Hooks hooks = *ctrl->hooks;
  Control inner = *ctrl;
  hooks.taker = &projector;
  if (hooks.incumbent != nullptr)
    hooks.incumbent = TakeCompressed;
  if (hooks.visitor != nullptr)
    hooks.visitor = AskForCompressed;
  inner.hooks = &hooks;
  if (ctrl->initial != nullptr)
    CompressPartition(ctrl, graph->ncells, cellmap, ctrl->initial, fpart);
  const int **others = QVarray<const int *>(ctrl->nothers, "MultilevelPartition: others");
  int *othersroom =
      imalloc__(std::int64_t{compressed->ncells} * ctrl->nothers, "MultilevelPartition: others");
  for (int i = 0; i < ctrl->nothers; i++)
    others[i] = CompressPartition(ctrl, graph->ncells, cellmap, ctrl->others[i],
                                  othersroom + std::int64_t{compressed->ncells} * i);
  inner.others = others;

  const Weight value = partition(&inner, compressed, fpart);

  ProjectFixedCells__(ctrl, graph->ncells, cellmap, part, fpart);
  for (int i = 0; i < graph->ncells; i++)
    if (orgpart[i] != -1 && orgpart[i] != part[i])
      Trace("Fixing failed: %d %d %d\n", i, orgpart[i], part[i]);
  QVfree__(&othersroom, &others, &fpart, &orgpart, &cellmap);
  FreeHGraph__(compressed);
  return value;
}

Weight PartitionAroundFixed(const Control *ctrl, HGraph *graph, int *part,
                            const std::function<Weight(const Control *, HGraph *, int *part)> &partition)
{
  return ctrl->fixed ? PartitionCompressed(ctrl, graph, part, partition) : partition(ctrl, graph, part);
}

} // namespace kapris::engine::KAPRIS_ENGINE
