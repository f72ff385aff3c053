// bench/phases/problem.cpp - generated hypergraphs and what the phases start from.
// SPDX-License-Identifier: MIT

#include "problem.h"

#include "core/constants.h"
#include "drivers/drivers.h"
#include "formats/formats.h"
#include "generate/generate.h"

#include <cmath>

using kapris_formats::Hgr;

Control ControlFor(const HGraph *graph, int nparts)
{
  Control ctrl = {};

  ctrl.coarsento = COARSEST_BISECTION;
  ctrl.maxnetsize = MAX_NET_SIZE;
  ctrl.bounds.part0frac = 0.5f;
  ctrl.bounds.dealshare = 0.5;
  ctrl.bounds.ubfactor = nparts == 2 ? 0.05f : 1.05f;
  ctrl.nruns = 1;
  ctrl.ctype = MATCH_DEGREE;
  ctrl.rtype = REFINE_FM;
  ctrl.objective = MINIMISE_CUT;
  ctrl.seed = 1;
  ctrl.nparts = nparts;
  ctrl.hooks = &NO_HOOKS;
  ComputeMaxCellWgt__(&ctrl, graph->ncells, graph->cellwgt);
  return ctrl;
}

Level *ContractOnce(Level *top)
{
  Control ctrl = ControlFor(top->graph, 2);

  ctrl.coarsento = top->graph->ncells - 1;
  InitRandom__(1);
  return Coarsen__(&ctrl, top);
}

void FreeLevels(Level *top, Level *coarsest)
{
  while (coarsest != top) {
    Level *finer = coarsest->finer;
    FreeLevel(coarsest);
    coarsest = finer;
  }
  top->coarser = nullptr;
  CloseLevel(top);
}

void SetWhere(Level *level, const std::vector<int> &part)
{
  icopy__(level->graph->ncells, part.data(), level->part.where);
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

// The partition of a coarser level, as one of the finest.
static std::vector<int> ProjectedPartition(const Level *coarser, int nparts)
{
  const HGraph *graph = coarser->graph;
  Control ctrl = ControlFor(graph, nparts);
  HGraph *copy =
      CopyHGraph(graph->ncells, graph->nnets, graph->cellwgt, graph->netptr, graph->netind, graph->netwgt);
  std::vector<int> cpart(static_cast<std::size_t>(graph->ncells)), part;

  ctrl.bounds.ubfactor = nparts == 2 ? 0.05f : 0.01f; // of each bisection
  PartitionByBisection(&ctrl, copy, cpart.data());
  FreeHGraph__(copy);
  for (int i = 0; i < coarser->finer->graph->ncells; i++)
    part.push_back(cpart[static_cast<std::size_t>(coarser->finer->cellmap[i])]);
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
  HGraph *pruned = PruneHGraph__(&ctrl, full);
  if (pruned != nullptr)
    FreeHGraph__(full);
  HGraph *graph = pruned != nullptr ? pruned : full;
  problem = {name, kapris_formats::FormatHgr(hgr), graph, graph->netptr[graph->nnets], {}, {}};
  Level top = OpenLevel(graph);
  Level *coarser = ContractOnce(&top);
  if (top.graph != graph)
    errexit__("%s has cells without nets: they would be set aside and dealt", name.c_str());
  problem.halves = ProjectedPartition(coarser, 2);
  problem.kparts = ProjectedPartition(coarser, KWAY_PARTS);
  FreeLevels(&top, coarser);
  return problem;
}
