// bench/phases/problem.cpp - generated hypergraphs and what the phases start from.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "coarsen/coarsen.h"
#include "generate/generate.h"
#include "io/formats.h"
#include "recursive/recursive.h"

#include <cmath>

using kapris_cli::Hgr;

Control ControlFor(const HGraph *graph, int nparts)
{
  Control ctrl = {};

  ctrl.coarsento = 100;
  ctrl.maxnetsize = 50;
  ctrl.part0frac = 0.5f;
  ctrl.ubfactor = nparts == 2 ? 0.05f : 1.05f;
  ctrl.nruns = ctrl.rtype = ctrl.polishtype = 1;
  ctrl.ctype = 2;
  ctrl.seed = 1;
  ctrl.nparts = nparts;
  ctrl.maxcellwgt = ComputeMaxCellWgt__(&ctrl, graph->ncells, graph->cellwgt);
  return ctrl;
}

HGraph *ContractOnce(const Problem &problem)
{
  Control ctrl = ControlFor(problem.graph, 2);

  ctrl.coarsento = problem.graph->ncells - 1;
  InitRandom__(1);
  return Coarsen__(&ctrl, problem.graph);
}

void FreeLevels(const Problem &problem, HGraph *coarsest)
{
  while (coarsest != nullptr && coarsest != problem.graph) {
    HGraph *finer = coarsest->finer;
    FreeHGraph__(coarsest);
    coarsest = finer;
  }
  FreeCycleState(problem.graph);
  problem.graph->coarser = nullptr;
}

void SetWhere(HGraph *graph, const std::vector<int> &part)
{
  if (graph->where == nullptr)
    graph->where = imalloc__(graph->ncells, "bench: where");
  icopy__(graph->ncells, part.data(), graph->where);
}

static Hgr GenerateHgr(const std::string &kind, int ncells)
{
  kapris_cli::Recipe recipe;

  if (kind == "circuit") {
    recipe.cells = ncells;
  } else {
    recipe.kind = kapris_cli::Kind::GRID;
    recipe.rows = recipe.cols = static_cast<int>(std::lround(std::sqrt(ncells)));
  }
  return kapris_cli::Generate(recipe).hgr;
}

static HGraph *CopyOf(const Hgr &hgr)
{
  return CopyHGraph(hgr.ncells, hgr.nnets, nullptr, hgr.netptr.data(), hgr.netind.data(), nullptr);
}

static std::vector<int> ProjectedPartition(const HGraph *graph, const HGraph *coarser, int nparts)
{
  Control ctrl = ControlFor(coarser, nparts);
  HGraph *copy = CopyHGraph(coarser->ncells, coarser->nnets, coarser->cellwgt, coarser->netptr,
                            coarser->netind, coarser->netwgt);
  std::vector<int> cpart(static_cast<std::size_t>(coarser->ncells)), part;

  ctrl.ubfactor = nparts == 2 ? 0.05f : 0.01f; // of each bisection
  PartitionByBisection(&ctrl, copy, 0, cpart.data());
  FreeHGraph__(copy);
  for (int i = 0; i < graph->ncells; i++)
    part.push_back(cpart[static_cast<std::size_t>(graph->cellmap[i])]);
  return part;
}

const Problem &ProblemOf(const std::string &kind, int ncells)
{
  static Problem problem = {};
  const std::string name = kind + "/" + std::to_string(ncells);

  if (problem.name == name)
    return problem;
  if (problem.graph != nullptr)
    FreeHGraph__(problem.graph);

  const Hgr hgr = GenerateHgr(kind, ncells);
  HGraph *full = CopyOf(hgr);
  const Control ctrl = ControlFor(full, 2);
  CreateIncidentHGraph__(full);
  HGraph *graph = PruneHGraph__(&ctrl, full);
  if (graph != full)
    FreeHGraph__(full);
  problem = {name, kapris_cli::FormatHgr(hgr), graph, 0, {}, {}};
  problem.npins = graph->netptr[graph->nnets];
  HGraph *coarser = ContractOnce(problem);
  if (graph->nislands != 0)
    errexit__("%s has cells without nets: its numbers would change from timing to timing", name.c_str());
  problem.halves = ProjectedPartition(graph, coarser, 2);
  problem.kparts = ProjectedPartition(graph, coarser, KWAY_PARTS);
  FreeLevels(problem, coarser);
  return problem;
}
