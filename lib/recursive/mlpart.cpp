// lib/recursive/mlpart.cpp - the recursion over bisections, with fixed cells and the k-way polish around it.
// SPDX-License-Identifier: MIT

#include "recursive.h"

#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "kway/kway.h"

#include <algorithm>
#include <cmath>
#include <utility>

// Sets the share of side 0 of a bisection into nparts parts from number first on. With a context also how far the sides
// may be away from their shares: what their parts may weigh together beyond what there is to bisect, spread evenly
// over the bisections still to come.
static void AimBisection(Control *ctrl, const HGraph *graph, int nparts, int first)
{
  const int nparts0 = nparts / 2; // side 0 is the smaller one of an odd number

  ctrl->part0frac = static_cast<float>(nparts0 / static_cast<double>(nparts));
  if (ctrl->context == nullptr)
    return;

  double shares[2] = {0.0, 0.0}, limits[2] = {0.0, 0.0};
  for (int p = 0; p < nparts; p++) {
    shares[p >= nparts0] += ctrl->context->shares[first + p];
    limits[p >= nparts0] += ctrl->context->limits[first + p];
  }
  const double share0 = shares[0] / (shares[0] + shares[1]), share1 = 1.0 - share0;
  const double total = iasum__(graph->ncells, graph->cellwgt);
  double slack = 1.0; // factor by which the tighter side may grow in all bisections together
  if (total > 0.0)
    slack = std::max(1.0, std::min(limits[0] / (share0 * total), limits[1] / (share1 * total)));
  const double growth = std::pow(slack, 1.0 / std::ceil(std::log2(nparts))) - 1.0;

  ctrl->part0frac = static_cast<float>(share0);
  ctrl->ubfactor = static_cast<float>(std::min(share0, share1) * growth);
  ctrl->nanchors0 = nparts0;
  ctrl->complete = ctrl->nparts == 2 && ctrl->context->incumbent != nullptr;
  ctrl->recorded = nparts == ctrl->nparts && ctrl->context->record != nullptr ? RECORD_SIDES : RECORD_NOTHING;
}

static int MLRB__(Control *ctrl, HGraph *graph, int *part, int nparts, int first);

namespace
{

// The left side of a bisection, which another thread can do: it shares nothing with the right side but part, where it
// writes other entries.
struct LeftSide {
  Control ctrl;
  HGraph *graph;
  int *part, nparts, first, cut;
};

} // namespace

static void BisectLeftSide(void *argument)
{
  LeftSide *left = static_cast<LeftSide *>(argument);

  left->cut = MLRB__(&left->ctrl, left->graph, left->part, left->nparts, left->first);
  EnterPhase__(&left->ctrl, PHASE_END, 0);
}

// Both sides, the right one last on this thread: the polish goes on from the random sequence and the cap that its last
// bisection leaves behind.
static int BisectSides(Control *ctrl, HGraph *lgraph, HGraph *rgraph, int *part, int nparts, int first)
{
  const RunContext *context = ctrl->context;
  const int nparts0 = nparts / 2;
  LeftSide left = {*ctrl, lgraph, part, nparts0, first, 0};
  int rightcut = 0;

  if (context == nullptr || context->fork == nullptr || ctrl->seed < 0) {
    const int leftcut = MLRB__(ctrl, lgraph, part, nparts0, first);
    return AddWrap__(leftcut, MLRB__(ctrl, rgraph, part, nparts - nparts0, first + nparts0));
  }
  void *task = context->fork(context->owner, BisectLeftSide, &left);
  try {
    rightcut = MLRB__(ctrl, rgraph, part, nparts - nparts0, first + nparts0);
  } catch (...) {
    // The record of the left side is on this stack: wait for whoever uses it.
    try {
      context->join(context->owner, task);
    } catch (...) {
    }
    throw;
  }
  context->join(context->owner, task);
  return AddWrap__(left.cut, rightcut);
}

// Partitions graph into nparts parts from number first on, writing part[label]; returns the sum of the cuts of all
// bisections. Frees label, and graph itself unless it is a root.
static int MLRB__(Control *ctrl, HGraph *graph, int *part, int nparts, int first)
{
  HGraph *lgraph = nullptr, *rgraph = nullptr;

  AimBisection(ctrl, graph, nparts, first);
  int *bisection = imalloc__(graph->ncells, "MLRB: bisection");
  const int cut = Hypergraph_Bisection__(ctrl, graph, bisection);
  for (int i = 0; i < graph->ncells; i++)
    part[graph->label[i]] = first + bisection[i];
  if (nparts > 2) {
    lgraph = CreateHGraph__();
    rgraph = CreateHGraph__();
    SplitGraphPart__(ctrl, graph, bisection, lgraph, rgraph);
  }
  QVfree__(&bisection, &graph->label);
  if (!graph->isroot)
    FreeHGraph__(graph);

  if (nparts == 2)
    return cut;
  if (nparts == 3) {
    QVfree__(&lgraph->label);
    FreeHGraph__(lgraph);
    return AddWrap__(cut, MLRB__(ctrl, rgraph, part, 2, first + 1));
  }
  return AddWrap__(cut, BisectSides(ctrl, lgraph, rgraph, part, nparts, first));
}

// k-way refinement of the partition part of graph under the imbalance that it already has; returns the cut.
static int PolishKway(Control *ctrl, HGraph *graph, int *part)
{
  const int rtype = std::exchange(ctrl->rtype, ctrl->polishtype);
  int *kpwgts = ismalloc__(ctrl->nparts, 0, "MultilevelPartition: kpwgts");

  for (int i = 0; i < graph->ncells; i++)
    kpwgts[part[i]] = AddWrap__(kpwgts[part[i]], graph->cellwgt[i]);
  ctrl->ubfactor = static_cast<float>(static_cast<double>(ctrl->nparts) *
                                      kpwgts[iamax__(ctrl->nparts, kpwgts)] / iasum__(ctrl->nparts, kpwgts));

  EnterPhase__(ctrl, PHASE_REFINE, graph->ncells);
  if (ctrl->context != nullptr && ctrl->context->record != nullptr)
    ctrl->recorded = RECORD_PARTS;
  RecordBegin__(ctrl, STEP_POLISH, 0);
  AllocateKwayRefinementMemory__(ctrl, graph);
  icopy__(graph->ncells, part, graph->where);
  const int cut = RefineKwayPartition__(ctrl, graph);
  icopy__(graph->ncells, graph->where, part);

  ctrl->rtype = rtype;
  QVfree__(&kpwgts);
  return cut;
}

int PartitionByBisection__(Control *ctrl, HGraph *graph, int nfixed, int *part)
{
  graph->isroot = 1;
  graph->nfixed = nfixed;
  graph->label = imalloc__(graph->ncells, "MultilevelPartition: label");
  for (int i = 0; i < graph->ncells; i++)
    graph->label[i] = i;

  return MLRB__(ctrl, graph, part, ctrl->nparts, 0);
}

static int PartitionRoot(Control *ctrl, HGraph *graph, int nfixed, int *part)
{
  const int cut = PartitionByBisection__(ctrl, graph, nfixed, part);

  if (ctrl->context != nullptr && ctrl->context->incumbent != nullptr)
    ctrl->context->incumbent(ctrl->context->taker, part);
  return ctrl->nparts > 2 && ctrl->kwayrefine ? PolishKway(ctrl, graph, part) : cut;
}

static int ImproveRoot(Control *ctrl, HGraph *graph, int nfixed, int *part)
{
  graph->nfixed = nfixed;
  AimBisection(ctrl, graph, 2, 0);
  return ImproveBisection__(ctrl, graph, part);
}

int ImproveTwoParts__(Control *ctrl, HGraph *graph, int *part)
{
  return ctrl->fixed ? PartitionAroundFixed__(ctrl, graph, part, ImproveRoot)
                     : ImproveRoot(ctrl, graph, 0, part);
}

int MultilevelPartition__(Control *ctrl, HGraph *graph, int *part)
{
  return ctrl->fixed ? PartitionAroundFixed__(ctrl, graph, part, PartitionRoot)
                     : PartitionRoot(ctrl, graph, 0, part);
}
