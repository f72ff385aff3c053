// lib/refine/twoway/fm.cpp - Fiduccia-Mattheyses refinement of one two-way level.
// SPDX-License-Identifier: MIT
//
// A pass moves free cells, best gain first, and keeps the best balanced prefix of its moves:
//   start     gains, bounds, one queue per side          FM_StartPass
//   choose    the side that gives the next cell          FM_PickSide
//   remember  the best point so far                      FM_NotePoint
//   move      gains of the cells around                  FM_UpdateFree, FM_UpdateMove
//   undo      the moves after that point                 FM_Rollback
// The passes end after one that does not lower the cut. The variants, bits of a template argument:
//             FM_PLAIN                   FM_HEAVY                     FM_EXACT
//   gains     recomputed every pass      -                            once per call, exact through roll-back
//   choose    the top of each queue, by  candidates that fit the      by the weights before the move; equal
//             the weight left after it   room of their side           gains go on with the last side
//   remember  ties by weight difference  -                            no ties; a run of worse moves ends the pass
// FM_HEAVY | FM_EXACT chooses as FM_HEAVY does.
// Cost of a pass: one queue operation per pin whose gain changes. Method: C. M. Fiduccia, R. M. Mattheyses,
// "A linear-time heuristic for improving network partitions", DAC 1982.

#include "moves.h"

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

enum FMVariant { FM_PLAIN = 0, FM_HEAVY = 1, FM_EXACT = 2 };

enum FMVerdict { FM_GO_ON, FM_STOP };

} // namespace

template <int variant>
static void FM_TraceStart(const Control *ctrl, const Level *level, const FMState *fm, int pass)
{
  if (!(ctrl->dbglvl & DBG_PASSES) || pass != 0)
    return;
  Trace("Partitions%s: [%6d,%8lld]  [%6d,%8lld], Initial Cut: %8lld [%lld] [%lld",
        variant == FM_HEAVY ? "2" : "", fm->queue[0].nnodes, Shown(fm->pwgts[0]), fm->queue[1].nnodes,
        Shown(fm->pwgts[1]), Shown(fm->initcut), Shown(ComputeActualCut__(level->graph, level->part.where)),
        Shown(fm->minpwgt[0]));
  if (variant & FM_EXACT)
    Trace("]\n");
  else
    Trace(" %lld]\n", Shown(fm->minpwgt[1]));
}

template <int variant>
static void FM_TraceMove(const Control *ctrl, const FMState *fm, int c, int from)
{
  if (!(ctrl->dbglvl & DBG_MOVES))
    return;
  Trace("Gains from moving %8d from %2d: %4lld, \tNewcut: %lld", c, from, Shown(fm->nodes[c].gain),
        Shown(fm->newcut));
  if (variant == FM_HEAVY)
    Trace(" [%6lld %6lld %6lld]\n", Shown(fm->cellwgt[c]), Shown(fm->pwgts[0]), Shown(fm->pwgts[1]));
  else if (variant == FM_PLAIN)
    Trace(" [%6lld %6lld]\n", Shown(fm->pwgts[0]), Shown(fm->pwgts[1]));
  else
    Trace("\n");
}

template <int variant>
static void FM_TraceEnd(const Control *ctrl, const Level *level, const FMState *fm)
{
  if (!(ctrl->dbglvl & DBG_PASSES))
    return;
  if (variant & FM_EXACT)
    Trace("\tMinimum Cut: %8lld [%8lld] at %5d [%6lld %6lld]\n", Shown(fm->bestcut),
          Shown(ComputeActualCut__(level->graph, level->part.where)), fm->best, Shown(fm->pwgts[0]),
          Shown(fm->pwgts[1]));
  else
    Trace("\tMinimum Cut: %8lld at %5d [%6lld %6lld]\n", Shown(fm->bestcut), fm->best, Shown(fm->pwgts[0]),
          Shown(fm->pwgts[1]));
}

template <int variant>
static void FM_StartPass(const Control *ctrl, const Level *level, FMState *fm, int pass)
{
  const Stopwatch stopwatch(ctrl, &Timers::InitTmr);
  const HGraph *graph = level->graph;
  Weight cut = level->part.mincut;

  if constexpr (!(variant & FM_EXACT))
    cut = FM_ComputeGains(graph, fm, pass == 0 ? FROM_PINS : FROM_PASS);
  FM_SetBounds(ctrl, fm);
  FM_FillQueues(graph, fm, BOTH_SIDES);
  if constexpr (!(variant & FM_EXACT))
    FM_LockAnchors(graph, fm);
  FM_StartLog(fm, cut);
  FM_TraceStart<variant>(ctrl, level, fm, pass);
}

// The side that gives the next cell, and in cand the candidate of each side; -1 when no cell is left.
template <int variant>
static int FM_PickSide(FMState *fm, int lastside, int cand[2])
{
  Weight room[2];

  for (int s = 0; s < 2; s++) {
    room[s] = SubWrap(fm->pwgts[s], fm->minpwgt[s]);
    cand[s] = (variant & FM_HEAVY) ? PQueueSeeConstraintMax(&fm->queue[s], room[s], fm->cellwgt)
                                   : PQueueSeeMax__(&fm->queue[s]);
  }
  if (cand[0] == -1)
    return cand[1] == -1 ? -1 : 1;
  if (cand[1] == -1)
    return 0;

  const Weight gain0 = fm->nodes[cand[0]].gain, gain1 = fm->nodes[cand[1]].gain;
  if constexpr (variant == FM_EXACT) {
    const bool low0 = room[0] < 0, low1 = room[1] < 0;
    if (gain0 > gain1)
      return low0 ? 1 : 0;
    if (gain0 < gain1)
      return low1 ? 0 : 1;
    return low0 ? 1 : low1 ? 0 : lastside;
  }
  if (gain0 > gain1)
    return fm->pwgts[0] - fm->cellwgt[cand[0]] < fm->minpwgt[0] ? 1 : 0;
  if (gain0 < gain1)
    return fm->pwgts[1] - fm->cellwgt[cand[1]] >= fm->minpwgt[1] ? 1 : 0;
  return room[0] < room[1] ? 1 : 0;
}

// Takes the point after move n for the best one if it is; tells when the moves should end before this one.
template <int variant>
static FMVerdict FM_NotePoint(FMState *fm, int n, int limit)
{
  if constexpr (variant & FM_EXACT) {
    if (fm->newcut < fm->bestcut && FM_IsBalanced(fm)) {
      fm->bestcut = fm->newcut;
      fm->best = n;
    } else if (fm->newcut > fm->bestcut && n - fm->best > limit) {
      return FM_STOP;
    }
  } else {
    FM_NoteBest(fm, n);
  }
  return FM_GO_ON;
}

// Not inlined: what has to be done when an exception passes through the caller costs this loop a register.
template <int variant>
__attribute__((noinline)) static void FM_MakeMoves(const Control *ctrl, const HGraph *graph, FMState *fm,
                                                   int limit)
{
  int from = 0, cand[2];

  for (int n = 0; n < graph->ncells; n++) {
    CheckpointAt(ctrl, n);
    from = FM_PickSide<variant>(fm, from, cand);
    if (from == -1)
      break;
    const int to = 1 - from;
    const int c = cand[from];
    PQueueDelete(&fm->queue[from], c, fm->nodes[c].gain);
    const int next = PQueueSeeMax__(&fm->queue[from]); // likely to be next
    if (next != -1)
      __builtin_prefetch(fm->links + fm->nodes[next].links);

    fm->newcut = SubWrap(fm->newcut, fm->nodes[c].gain);
    FM_Lock(fm, c);
    FM_Shift(fm, c, from, to);
    if (FM_NotePoint<variant>(fm, n, limit) == FM_STOP) {
      FM_Shift(fm, c, to, from);
      break;
    }
    fm->swaps[fm->nmoves++] = c;
    FM_TraceMove<variant>(ctrl, fm, c, from);
    if constexpr (variant & FM_EXACT) {
      fm->nodes[c].gain = SubWrap(0, fm->nodes[c].gain);
      FM_UpdateMove<UPDATE_QUEUE>(fm, c, from, to);
    } else {
      FM_UpdateFree(fm, c, from, to);
    }
    CHECK_VALID(CheckMove(graph, fm, (variant & FM_EXACT) ? ALL_EXACT : FREE_EXACT, n));
  }
}

template <int variant>
static void FM_Rollback(const Control *ctrl, Level *level, FMState *fm)
{
  const Stopwatch stopwatch(ctrl, &Timers::WrapUpTmr);

  // Backwards: exact gains are those of the state in which the move was made.
  for (int n = fm->nmoves - 1; n > fm->best; n--) {
    const int c = fm->swaps[n];
    if constexpr (variant & FM_EXACT)
      FM_Undo(fm, c);
    else
      FM_Shift(fm, c, FM_Side(fm, c), 1 - FM_Side(fm, c));
  }
  FM_Store(level, fm);
  FM_TraceEnd<variant>(ctrl, level, fm);
  level->part.mincut = fm->bestcut;

  CHECK_VALID(CheckBisection(level));
  if (variant & FM_EXACT)
    CHECK_VALID(CheckGains(level->graph, fm, ALL_EXACT));
}

template <int variant>
static void FM_Run(const Control *ctrl, Level *level, int npasses, float fraction)
{
  const HGraph *graph = level->graph;
  const int limit = Truncate(static_cast<float>(graph->ncells) * fraction);
  FMState fm;

  FM_Alloc(graph, level->part.where, &fm);
  if constexpr (variant & FM_EXACT) {
    const Stopwatch stopwatch(ctrl, &Timers::InitTmr);
    level->part.mincut = FM_ComputeGains(graph, &fm, FROM_PINS);
  }
  for (int pass = 0; pass < npasses; pass++) {
    FM_StartPass<variant>(ctrl, level, &fm, pass);
    {
      const Stopwatch stopwatch(ctrl, &Timers::IterTmr);
      FM_MakeMoves<variant>(ctrl, graph, &fm, limit);
    }
    FM_Rollback<variant>(ctrl, level, &fm);
    if (fm.bestcut == fm.initcut)
      break;
  }
  FM_Free(&fm);
}

void Refine_FM__(const Control *ctrl, Level *level, int npasses)
{
  FM_Run<FM_PLAIN>(ctrl, level, npasses, 0.0f);
}

void Refine_FM2__(const Control *ctrl, Level *level, int npasses)
{
  FM_Run<FM_HEAVY>(ctrl, level, npasses, 0.0f);
}

void Refine_EEFM__(const Control *ctrl, Level *level, int npasses, float fraction)
{
  FM_Run<FM_EXACT>(ctrl, level, npasses, fraction);
}

void Refine_EEFM2__(const Control *ctrl, Level *level, int npasses, float fraction)
{
  FM_Run<FM_EXACT | FM_HEAVY>(ctrl, level, npasses, fraction);
}

void RefineFull(const Control *ctrl, Level *level, int npasses)
{
  if (ctrl->heavycells)
    Refine_FM2__(ctrl, level, npasses);
  else
    Refine_FM__(ctrl, level, npasses);
}

} // namespace kapris::engine::KAPRIS_ENGINE
