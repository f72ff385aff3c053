// lib/refine/kway/passes.cpp - greedy k-way passes for the cut and for the sum of external degrees.
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

#include "state.h"

#include "base/random.h"

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// The weights between which a part must stay.
struct Limits {
  Weight *upper, *lower; // [nparts]
};

} // namespace

static Limits AllocLimits(const Control *ctrl, const Partition *part)
{
  const Limits limits = {wmalloc(ctrl->nparts, "RefineKway_Random: upper"),
                         wmalloc(ctrl->nparts, "RefineKway_Random: lower")};

  PartBounds(&ctrl->bounds, ctrl->nparts, iasum__(ctrl->nparts, part->kpwgts), limits.upper, limits.lower);
  return limits;
}

static void FreeLimits(Limits *limits)
{
  QVfree__(&limits->upper, &limits->lower);
}

// A gain before another as the refiners see it: positive, zero or negative.
template <KwayObjective objective>
static Weight LeadingGain(const RInfo *cell, const KDegree *target)
{
  return objective == MINIMISE_CUT ? SubWrap(target->ed, cell->id) : target->kgain;
}

template <KwayObjective objective>
static Weight SecondGain(const RInfo *cell, const KDegree *target)
{
  return objective == MINIMISE_CUT ? target->kgain : SubWrap(target->ed, cell->id);
}

static bool MayMove(KwayState *state, const Limits *limits, int v)
{
  const HGraph *graph = state->graph;
  const Partition *part = state->part;

  if (v < graph->nfixed)
    return false;
  const RInfo *cell = CellRecord(state, v);

  return cell->soloed >= cell->id &&
         part->kpwgts[part->where[v]] - graph->cellwgt[v] >= limits->lower[part->where[v]];
}

template <KwayObjective objective>
static bool IsBetterTarget(const Partition *part, const RInfo *cell, const KDegree *target,
                           const KDegree *best)
{
  const Weight lead = LeadingGain<objective>(cell, target), bestlead = LeadingGain<objective>(cell, best);
  const Weight second = SecondGain<objective>(cell, target), bestsecond = SecondGain<objective>(cell, best);

  if (lead != bestlead)
    return lead > bestlead;
  if (second != bestsecond)
    return second > bestsecond;
  if (target->pref != best->pref)
    return target->pref > best->pref;
  return part->kpwgts[target->pid] <= part->kpwgts[best->pid];
}

template <KwayObjective objective>
static const KDegree *ChooseTarget(const KwayState *state, const Limits *limits, int v)
{
  const Partition *part = state->part;
  const Weight w = state->graph->cellwgt[v];
  const RInfo *cell = &state->crinfo[v];
  const KDegree *best = nullptr;

  for (int d = 0; d < cell->ndegrees; d++) {
    const KDegree *target = &cell->degrees[d];
    if (AddWrap(part->kpwgts[target->pid], w) > limits->upper[target->pid])
      continue;
    if (best == nullptr ? LeadingGain<objective>(cell, target) >= 0
                        : IsBetterTarget<objective>(part, cell, target, best))
      best = target;
  }
  return best;
}

template <KwayObjective objective>
static bool IsWorthMoving(const KwayState *state, int v, const KDegree *target)
{
  const Partition *part = state->part;
  const RInfo *cell = &state->crinfo[v];
  const Weight lead = LeadingGain<objective>(cell, target), second = SecondGain<objective>(cell, target);

  if (lead != 0)
    return lead > 0;
  if (second != 0)
    return second > 0;
  if (target->pref != 0)
    return target->pref > 0;
  return part->kpwgts[target->pid] + state->graph->cellwgt[v] < part->kpwgts[part->where[v]];
}

static void MoveCell(const Control *ctrl, KwayState *state, int v, KDegree target)
{
  const HGraph *graph = state->graph;
  Partition *part = state->part;
  const int a = part->where[v], b = target.pid;
  const Weight id = state->crinfo[v].id;

  part->mincut = SubWrap(part->mincut, SubWrap(target.ed, id));
  part->soed = SubWrap(part->soed, SubWrap(AddWrap(target.ed, target.kgain), id));
  part->kpwgts[b] += graph->cellwgt[v];
  part->kpwgts[a] -= graph->cellwgt[v];
  part->where[v] = b;
  if (ctrl->dbglvl & DBG_MOVES)
    Trace("\tMoving %6d[%3d] (%3d -> %3d) [%4lld %4lld %4lld %4d] %5lld %5lld\n", v,
          graph->incptr[v + 1] - graph->incptr[v], a, b, Shown(id), Shown(target.ed), Shown(target.kgain),
          target.pref, Shown(part->mincut), Shown(part->soed));
  KwayUpdateGainInfo__(state, v, a, b);
}

// Returns the number of moves.
template <KwayObjective objective>
static int RunPass(const Control *ctrl, KwayState *state, const Limits *limits, const int *perm)
{
  const int ncells = state->graph->ncells;
  int nmoves = 0;

  for (int i = 0; i < ncells; i++) {
    if (i % 256 == 0) // a record takes long where nets touch many parts
      Checkpoint(ctrl);
    const int v = perm[i];
    if (i + 16 < ncells)
      __builtin_prefetch(&state->crinfo[perm[i + 16]]);
    if (!MayMove(state, limits, v))
      continue;
    const KDegree *target = ChooseTarget<objective>(state, limits, v);
    if (target == nullptr || !IsWorthMoving<objective>(state, v, target))
      continue;
    MoveCell(ctrl, state, v, *target);
    CHECK_VALID(IsSample(nmoves, ncells) ? CheckKway(state) : nullptr);
    nmoves++;
    Checkpoint(ctrl); // a move takes long where nets are large and parts many
  }
  return nmoves;
}

static long long SmallestPart(const Control *ctrl, const Partition *part)
{
  return Shown(part->kpwgts[iamin__(ctrl->nparts, part->kpwgts)]);
}

static long long LargestPart(const Control *ctrl, const Partition *part)
{
  return Shown(part->kpwgts[iamax__(ctrl->nparts, part->kpwgts)]);
}

template <KwayObjective objective>
static void RunPasses(const Control *ctrl, KwayState *state, const Limits *limits, int *perm, int npasses)
{
  const Partition *part = state->part;

  for (int pass = 0; pass < npasses; pass++) {
    const Weight oldcut = part->mincut, oldsoed = part->soed;
    int nmoves;

    RandomPermute__(perm, state->graph->ncells, 0); // reshuffles the order of the pass before
    if ((ctrl->dbglvl & DBG_PASSES) && pass == 0)
      Trace("Partitions: [%5lld,%5lld], Balance: [%3.2f, %5lld,%5lld], Init Cut: %5lld, Init SOED: %5lld\n",
            SmallestPart(ctrl, part), LargestPart(ctrl, part), static_cast<double>(ctrl->bounds.ubfactor),
            Shown(limits->lower[0]), Shown(limits->upper[0]), Shown(oldcut), Shown(oldsoed));
    {
      const Stopwatch stopwatch(ctrl, &Timers::IterTmr);
      nmoves = RunPass<objective>(ctrl, state, limits, perm);
    }
    if (ctrl->dbglvl & DBG_PASSES)
      Trace("\tCut: %8lld, SOED: %8lld, Nmoves: %3d, Pwgts: [%6lld %6lld]\n", Shown(part->mincut),
            Shown(part->soed), nmoves, SmallestPart(ctrl, part), LargestPart(ctrl, part));
    CHECK_VALID(CheckKway(state));
    if (part->mincut == oldcut && part->soed == oldsoed)
      break;
  }
}

template <KwayObjective objective>
static void RefinePasses(const Control *ctrl, Level *level, int npasses)
{
  const int n = level->graph->ncells;
  KwayState state = OpenKway(ctrl->nparts, level);
  int *perm = imalloc__(n, "RefineKway_Random: perm");
  Limits limits;

  {
    const Stopwatch stopwatch(ctrl, &Timers::InitTmr);
    for (int i = 0; i < n; i++)
      perm[i] = i;
    ComputeInitKwayGains__(ctrl, &state);
    limits = AllocLimits(ctrl, &level->part);
  }
  RunPasses<objective>(ctrl, &state, &limits, perm, npasses);
  level->part.objval = objective == MINIMISE_CUT ? level->part.mincut : level->part.soed;
  FreeLimits(&limits);
  QVfree__(&perm);
  CloseKway(&state);
}

void RefineCutKway_Random__(const Control *ctrl, Level *level, int npasses)
{
  RefinePasses<MINIMISE_CUT>(ctrl, level, npasses);
}

void RefineSOEDKway_Random__(const Control *ctrl, Level *level, int npasses)
{
  RefinePasses<MINIMISE_SOED>(ctrl, level, npasses);
}

void RefineObjectiveKway(const Control *ctrl, Level *level, int npasses)
{
  if (ctrl->objective == MINIMISE_CUT)
    RefineCutKway_Random__(ctrl, level, npasses);
  else
    RefineSOEDKway_Random__(ctrl, level, npasses);
}

} // namespace kapris::engine::KAPRIS_ENGINE
