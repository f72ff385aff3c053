// lib/core/check.cpp - validators of the hypergraph and of its levels, written from the definitions.
// SPDX-License-Identifier: MIT

#include "level.h"

#include <vector>

namespace kapris::engine::KAPRIS_ENGINE
{

const char *CheckHGraph(const HGraph *graph)
{
  if (graph->ncells < 0 || graph->nnets < 0 || graph->nislands < 0)
    return "hypergraph: a count is negative";
  if (graph->netptr[0] != 0)
    return "netptr: does not start at 0";
  for (int j = 0; j < graph->nnets; j++) {
    if (graph->netptr[j + 1] < graph->netptr[j])
      return "netptr: decreases";
    if (graph->netwgt[j] < 0)
      return "netwgt: a net weight is negative";
  }
  for (int k = 0; k < graph->netptr[graph->nnets]; k++)
    if (graph->netind[k] < 0 || graph->netind[k] >= graph->ncells)
      return "netind: a pin is no cell";
  for (int i = 0; i < graph->ncells + graph->nislands; i++)
    if (graph->cellwgt[i] < 0)
      return "cellwgt: a cell weight is negative";
  return nullptr;
}

const char *CheckIncidence(const HGraph *graph)
{
  // Nets by cell, in the order in which the pins name them.
  std::vector<std::vector<int>> nets(static_cast<std::size_t>(graph->ncells));

  for (int j = 0; j < graph->nnets; j++)
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      nets[static_cast<std::size_t>(graph->netind[k])].push_back(j);

  for (int i = 0; i < graph->ncells; i++) {
    const std::vector<int> &expected = nets[static_cast<std::size_t>(i)];
    const int first = graph->incptr[i];
    Weight adjwgt = 0;

    if (graph->incptr[i + 1] - first != static_cast<int>(expected.size()))
      return "incptr: a cell's list has another length than its pins";
    for (std::size_t k = 0; k < expected.size(); k++) {
      if (graph->incind[first + static_cast<int>(k)] != expected[k])
        return "incind: a cell's nets are not those that name it, in increasing order";
      adjwgt = AddWrap(adjwgt, graph->netwgt[expected[k]]);
    }
    if (adjwgt != graph->adjwgt[i])
      return "adjwgt: not the sum of the incident net weights";
  }
  return nullptr;
}

bool HasPlainNets(const HGraph *graph)
{
  std::vector<int> seen(static_cast<std::size_t>(graph->ncells), -1);
  int *lastnet = seen.data();

  for (int j = 0; j < graph->nnets; j++) {
    if (NetSize(graph, j) == 1)
      return false;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      if (lastnet[graph->netind[k]] == j)
        return false;
      lastnet[graph->netind[k]] = j;
    }
  }
  return true;
}

const char *CheckLevel(const Level *level)
{
  if (level->coarser != nullptr && level->coarser->finer != level)
    return "coarser: its finer level is another record";
  return CheckHGraph(level->graph);
}

const char *CheckBisection(const Level *level)
{
  const HGraph *graph = level->graph;
  const Partition *part = &level->part;
  Weight wgts[2] = {0, 0};

  for (int i = 0; i < graph->ncells; i++) {
    if (part->where[i] != 0 && part->where[i] != 1)
      return "where: a cell is on no side";
    wgts[part->where[i]] = AddWrap(wgts[part->where[i]], graph->cellwgt[i]);
  }
  if (wgts[0] != part->pwgts[0] || wgts[1] != part->pwgts[1])
    return "pwgts: not the sums of the sides";
  // Moving the pin of a single-pin net, or a cell that a net lists twice, miscounts the running cut.
  if (HasPlainNets(graph) && ComputeActualCut__(graph, part->where) != part->mincut)
    return "mincut: not the cut of where";
  return nullptr;
}

} // namespace kapris::engine::KAPRIS_ENGINE
