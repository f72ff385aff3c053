// lib/kway/krefine.cpp - greedy k-way passes for the cut and for the sum of external degrees.
// SPDX-License-Identifier: MIT
//
// A pass visits the cells in random order. A cell moves to the best part that its nets touch when that does
// not raise the objective and both parts stay within their weight limits:
//   filter   anchors, cells that would lose anyway, parts without weight to spare   MayMove
//   choose   among the parts that can take the cell                                 ChooseTarget
//   decide   a gain, or a tie that a later criterion breaks                         IsWorthMoving
//   move     bookkeeping                                                            MoveCell
// The passes end after one that changes neither objective. The two refiners rank targets by
//   CUT    ed, kgain, pref, lighter part      SOED   kgain, ed, pref, lighter part
// where ed - id is the gain in the cut and kgain that in the sum over nets of (parts touched - 1) x weight.

#include "kgain.h"

#include "control/ctrl.h"

#include <algorithm>
#include <cmath>

namespace
{

enum Objective { CUT, SOED };

// The smallest factor between the share of a part and the weight below which it may not sink.
constexpr double LEAST_FACTOR = 1.05;

// The weights between which a part must stay.
struct Limits {
  int *upper, *lower; // [nparts]
};

} // namespace

static Limits AllocLimits(const Control *ctrl, const HGraph *graph)
{
  // Single precision on purpose: it decides the last unit of the limits.
  const int total = iasum__(ctrl->nparts, graph->kpwgts);
  const float wgt = static_cast<float>(total), nparts = static_cast<float>(ctrl->nparts);
  const Limits limits = {imalloc__(ctrl->nparts, "RefineKway_Random: upper"),
                         imalloc__(ctrl->nparts, "RefineKway_Random: lower")};

  if (ctrl->context == nullptr) {
    iset__(ctrl->nparts, Truncate__((ctrl->ubfactor * wgt) / nparts), limits.upper);
    iset__(ctrl->nparts, Truncate__(wgt / (nparts * ctrl->ubfactor)), limits.lower);
  } else {
    // Of the level's weight, which lacks the islands.
    const double ratio = ctrl->context->total > 0 ? total / static_cast<double>(ctrl->context->total) : 1.0;
    for (int p = 0; p < ctrl->nparts; p++) {
      limits.upper[p] = Truncate__(std::ceil(ctrl->context->limits[p] * ratio));
      // As far below its share as it may be above, but not so near that nothing can move: no part runs empty.
      const double share = ctrl->context->shares[p] * total;
      const double lower = std::min(share / LEAST_FACTOR, share * share / std::max(1, limits.upper[p]));
      limits.lower[p] = std::max(1, Truncate__(lower));
    }
  }
  return limits;
}

static void FreeLimits(Limits *limits)
{
  QVfree__(&limits->upper, &limits->lower);
}

// A gain before another as the refiners see it: positive, zero or negative.
template <Objective objective>
static int LeadingGain(const RInfo *cell, const KDegree *target)
{
  return objective == CUT ? SubWrap__(target->ed, cell->id) : target->kgain;
}

template <Objective objective>
static int SecondGain(const RInfo *cell, const KDegree *target)
{
  return objective == CUT ? target->kgain : SubWrap__(target->ed, cell->id);
}

static bool MayMove(const Control *ctrl, HGraph *graph, const Limits *limits, int v)
{
  if (v < graph->nfixed)
    return false;
  const RInfo *cell = CellRecord__(ctrl, graph, v);

  return cell->soloed >= cell->id &&
         graph->kpwgts[graph->where[v]] - graph->cellwgt[v] >= limits->lower[graph->where[v]];
}

template <Objective objective>
static bool IsBetterTarget(const HGraph *graph, const RInfo *cell, const KDegree *target, const KDegree *best)
{
  const int lead = LeadingGain<objective>(cell, target), bestlead = LeadingGain<objective>(cell, best);
  const int second = SecondGain<objective>(cell, target), bestsecond = SecondGain<objective>(cell, best);

  if (lead != bestlead)
    return lead > bestlead;
  if (second != bestsecond)
    return second > bestsecond;
  if (target->pref != best->pref)
    return target->pref > best->pref;
  return graph->kpwgts[target->pid] <= graph->kpwgts[best->pid];
}

template <Objective objective>
static const KDegree *ChooseTarget(const HGraph *graph, const Limits *limits, int v)
{
  const RInfo *cell = &graph->crinfo[v];
  const KDegree *best = nullptr;

  for (int d = 0; d < cell->ndegrees; d++) {
    const KDegree *target = &cell->degrees[d];
    if (AddWrap__(graph->kpwgts[target->pid], graph->cellwgt[v]) > limits->upper[target->pid])
      continue;
    if (best == nullptr ? LeadingGain<objective>(cell, target) >= 0
                        : IsBetterTarget<objective>(graph, cell, target, best))
      best = target;
  }
  return best;
}

template <Objective objective>
static bool IsWorthMoving(const HGraph *graph, int v, const KDegree *target)
{
  const RInfo *cell = &graph->crinfo[v];
  const int lead = LeadingGain<objective>(cell, target), second = SecondGain<objective>(cell, target);

  if (lead != 0)
    return lead > 0;
  if (second != 0)
    return second > 0;
  if (target->pref != 0)
    return target->pref > 0;
  return graph->kpwgts[target->pid] + graph->cellwgt[v] < graph->kpwgts[graph->where[v]];
}

static void MoveCell(const Control *ctrl, HGraph *graph, int v, KDegree target)
{
  const int a = graph->where[v], b = target.pid, id = graph->crinfo[v].id;

  graph->mincut = SubWrap__(graph->mincut, SubWrap__(target.ed, id));
  graph->soed = SubWrap__(graph->soed, SubWrap__(AddWrap__(target.ed, target.kgain), id));
  graph->kpwgts[b] += graph->cellwgt[v];
  graph->kpwgts[a] -= graph->cellwgt[v];
  graph->where[v] = b;
  if (ctrl->dbglvl & DBG_MOVES)
    Trace__("\tMoving %6d[%3d] (%3d -> %3d) [%4d %4d %4d %4d] %5d %5d\n", v,
            graph->incptr[v + 1] - graph->incptr[v], a, b, id, target.ed, target.kgain, target.pref,
            graph->mincut, graph->soed);
  KwayUpdateGainInfo__(ctrl, graph, v, a, b);
}

// Returns the number of moves.
template <Objective objective>
static int RunPass(const Control *ctrl, HGraph *graph, const Limits *limits, const int *perm)
{
  int nmoves = 0;

  for (int i = 0; i < graph->ncells; i++) {
    if (i % 256 == 0) // a record takes long where nets touch many parts
      Checkpoint__(ctrl);
    const int v = perm[i];
    if (i + 16 < graph->ncells)
      __builtin_prefetch(&graph->crinfo[perm[i + 16]]);
    if (!MayMove(ctrl, graph, limits, v))
      continue;
    const KDegree *target = ChooseTarget<objective>(graph, limits, v);
    if (target == nullptr || !IsWorthMoving<objective>(graph, v, target))
      continue;
    MoveCell(ctrl, graph, v, *target);
    CHECK_VALID(IsSample__(nmoves, graph->ncells) ? CheckKway__(ctrl, graph) : nullptr);
    nmoves++;
    Checkpoint__(ctrl); // a move takes long where nets are large and parts many
  }
  return nmoves;
}

static int SmallestPart(const Control *ctrl, const HGraph *graph)
{
  return graph->kpwgts[iamin__(ctrl->nparts, graph->kpwgts)];
}

static int LargestPart(const Control *ctrl, const HGraph *graph)
{
  return graph->kpwgts[iamax__(ctrl->nparts, graph->kpwgts)];
}

template <Objective objective>
static void RefinePasses(Control *ctrl, HGraph *graph, int npasses)
{
  const int n = graph->ncells;
  int *perm = imalloc__(n, "RefineKway_Random: perm");

  StartTimer__(ctrl, &ctrl->InitTmr);
  for (int i = 0; i < n; i++)
    perm[i] = i;
  ComputeInitKwayGains__(ctrl, graph);
  Limits limits = AllocLimits(ctrl, graph);
  StopTimer__(ctrl, &ctrl->InitTmr);

  for (int pass = 0; pass < npasses; pass++) {
    const int oldcut = graph->mincut, oldsoed = graph->soed;

    RandomPermute__(perm, n, 0); // reshuffles the order of the pass before
    if ((ctrl->dbglvl & DBG_PASSES) && pass == 0)
      Trace__("Partitions: [%5d,%5d], Balance: [%3.2f, %5d,%5d], Init Cut: %5d, Init SOED: %5d\n",
              SmallestPart(ctrl, graph), LargestPart(ctrl, graph), ctrl->ubfactor, limits.lower[0],
              limits.upper[0], oldcut, oldsoed);
    StartTimer__(ctrl, &ctrl->IterTmr);
    const int nmoves = RunPass<objective>(ctrl, graph, &limits, perm);
    StopTimer__(ctrl, &ctrl->IterTmr);
    if (ctrl->dbglvl & DBG_PASSES)
      Trace__("\tCut: %8d, SOED: %8d, Nmoves: %3d, Pwgts: [%6d %6d]\n", graph->mincut, graph->soed, nmoves,
              SmallestPart(ctrl, graph), LargestPart(ctrl, graph));
    CHECK_VALID(CheckKway__(ctrl, graph));
    if (graph->mincut == oldcut && graph->soed == oldsoed)
      break;
  }
  graph->objval = objective == CUT ? graph->mincut : graph->soed;
  FreeLimits(&limits);
  QVfree__(&perm);
}

void RefineCutKway_Random__(Control *ctrl, HGraph *graph, int npasses)
{
  RefinePasses<CUT>(ctrl, graph, npasses);
}

void RefineSOEDKway_Random__(Control *ctrl, HGraph *graph, int npasses)
{
  RefinePasses<SOED>(ctrl, graph, npasses);
}

void RefineObjectiveKway__(Control *ctrl, HGraph *graph, int npasses)
{
  if (ctrl->rtype == 1)
    RefineCutKway_Random__(ctrl, graph, npasses);
  else
    RefineSOEDKway_Random__(ctrl, graph, npasses);
}
