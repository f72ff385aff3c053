// lib/bisect/fm.cpp - Fiduccia-Mattheyses refinement of one two-way level.
// SPDX-License-Identifier: MIT
//
// A pass moves free cells, best gain first, and keeps the best balanced prefix of its moves:
//   start     gains, bounds, one queue per side          FM_StartPass__
//   choose    the side that gives the next cell          FM_PickSide__
//   remember  the best point so far                      FM_NotePoint__
//   move      gains of the cells around                  FM_UpdateFree__, FM_UpdateMove__
//   undo      the moves after that point                 FM_Rollback__
// The passes end after one that does not lower the cut. The variants, bits of a template argument:
//             FM_PLAIN                   FM_HEAVY                     FM_EXACT
//   gains     recomputed every pass      -                            once per call, exact through roll-back
//   choose    the top of each queue, by  candidates that fit the      by the weights before the move; equal
//             the weight left after it   room of their side           gains go on with the last side
//   remember  ties by weight difference  -                            no ties; a run of worse moves ends the pass
// FM_HEAVY | FM_EXACT chooses as FM_HEAVY does.
// Cost of a pass: one queue operation per pin whose gain changes. Method: C. M. Fiduccia, R. M. Mattheyses,
// "A linear-time heuristic for improving network partitions", DAC 1982.

#include "fm.h"

#include "control/ctrl.h"

namespace
{

enum FMVariant { FM_PLAIN = 0, FM_HEAVY = 1, FM_EXACT = 2 };

enum FMVerdict { FM_GO_ON, FM_STOP };

} // namespace

template <int variant>
static void FM_TraceStart__(const Control *ctrl, const HGraph *graph, const FMState *fm, int pass)
{
  if (!(ctrl->dbglvl & DBG_PASSES) || pass != 0)
    return;
  Trace__("Partitions%s: [%6d,%8d]  [%6d,%8d], Initial Cut: %8d [%d] [%d", variant == FM_HEAVY ? "2" : "",
          fm->queue[0].nnodes, fm->pwgts[0], fm->queue[1].nnodes, fm->pwgts[1], fm->initcut,
          ComputeActualCut__(graph, graph->where), fm->minpwgt[0]);
  if (variant & FM_EXACT)
    Trace__("]\n");
  else
    Trace__(" %d]\n", fm->minpwgt[1]);
}

template <int variant>
static void FM_TraceMove__(const Control *ctrl, const FMState *fm, int c, int from)
{
  if (!(ctrl->dbglvl & DBG_MOVES))
    return;
  Trace__("Gains from moving %8d from %2d: %4d, \tNewcut: %d", c, from, fm->nodes[c].gain, fm->newcut);
  if (variant == FM_HEAVY)
    Trace__(" [%6d %6d %6d]\n", fm->cellwgt[c], fm->pwgts[0], fm->pwgts[1]);
  else if (variant == FM_PLAIN)
    Trace__(" [%6d %6d]\n", fm->pwgts[0], fm->pwgts[1]);
  else
    Trace__("\n");
}

template <int variant>
static void FM_TraceEnd__(const Control *ctrl, const HGraph *graph, const FMState *fm)
{
  if (!(ctrl->dbglvl & DBG_PASSES))
    return;
  if (variant & FM_EXACT)
    Trace__("\tMinimum Cut: %8d [%8d] at %5d [%6d %6d]\n", fm->bestcut,
            ComputeActualCut__(graph, graph->where), fm->best, fm->pwgts[0], fm->pwgts[1]);
  else
    Trace__("\tMinimum Cut: %8d at %5d [%6d %6d]\n", fm->bestcut, fm->best, fm->pwgts[0], fm->pwgts[1]);
}

template <int variant>
static void FM_StartPass__(Control *ctrl, const HGraph *graph, FMState *fm, int pass, int cut)
{
  StartTimer__(ctrl, &ctrl->InitTmr);
  if constexpr (!(variant & FM_EXACT))
    cut = FM_ComputeGains__(graph, fm, pass == 0 ? FROM_PINS : FROM_PASS);
  FM_SetBounds__(ctrl, fm);
  FM_FillQueues__(graph, fm, BOTH_SIDES);
  if constexpr (!(variant & FM_EXACT))
    FM_LockAnchors__(graph, fm);
  FM_StartLog__(fm, cut);
  FM_TraceStart__<variant>(ctrl, graph, fm, pass);
  StopTimer__(ctrl, &ctrl->InitTmr);
}

// The side that gives the next cell, and in cand the candidate of each side; -1 when no cell is left.
template <int variant>
static int FM_PickSide__(FMState *fm, int lastside, int cand[2])
{
  int room[2];

  for (int s = 0; s < 2; s++) {
    room[s] = SubWrap__(fm->pwgts[s], fm->minpwgt[s]);
    cand[s] = (variant & FM_HEAVY) ? PQueueSeeConstraintMax(&fm->queue[s], room[s], fm->cellwgt)
                                   : PQueueSeeMax__(&fm->queue[s]);
  }
  if (cand[0] == -1)
    return cand[1] == -1 ? -1 : 1;
  if (cand[1] == -1)
    return 0;

  const int gain0 = fm->nodes[cand[0]].gain, gain1 = fm->nodes[cand[1]].gain;
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
static FMVerdict FM_NotePoint__(FMState *fm, int n, int limit)
{
  if constexpr (variant & FM_EXACT) {
    if (fm->newcut < fm->bestcut && FM_IsBalanced__(fm)) {
      fm->bestcut = fm->newcut;
      fm->best = n;
    } else if (fm->newcut > fm->bestcut && n - fm->best > limit) {
      return FM_STOP;
    }
  } else {
    FM_NoteBest__(fm, n);
  }
  return FM_GO_ON;
}

template <int variant>
static void FM_MakeMoves__(Control *ctrl, const HGraph *graph, FMState *fm, int limit)
{
  int from = 0, cand[2];

  StartTimer__(ctrl, &ctrl->IterTmr);
  for (int n = 0; n < graph->ncells; n++) {
    CheckpointAt__(ctrl, n);
    from = FM_PickSide__<variant>(fm, from, cand);
    if (from == -1)
      break;
    const int to = 1 - from;
    const int c = cand[from];
    PQueueDelete(&fm->queue[from], c, fm->nodes[c].gain);
    const int next = PQueueSeeMax__(&fm->queue[from]); // likely to be next
    if (next != -1)
      __builtin_prefetch(fm->links + fm->nodes[next].links);

    fm->newcut = SubWrap__(fm->newcut, fm->nodes[c].gain);
    FM_Lock__(fm, c);
    FM_Shift__(fm, c, from, to);
    if (FM_NotePoint__<variant>(fm, n, limit) == FM_STOP) {
      FM_Shift__(fm, c, to, from);
      break;
    }
    fm->swaps[fm->nmoves++] = c;
    FM_TraceMove__<variant>(ctrl, fm, c, from);
    if constexpr (variant & FM_EXACT) {
      fm->nodes[c].gain = SubWrap__(0, fm->nodes[c].gain);
      FM_UpdateMove__<UPDATE_QUEUE>(fm, c, from, to);
    } else {
      FM_UpdateFree__(fm, c, from, to);
    }
    CHECK_VALID(CheckMove__(graph, fm, (variant & FM_EXACT) ? ALL_EXACT : FREE_EXACT, n));
  }
  StopTimer__(ctrl, &ctrl->IterTmr);
}

template <int variant>
static void FM_Rollback__(Control *ctrl, HGraph *graph, FMState *fm)
{
  StartTimer__(ctrl, &ctrl->WrapUpTmr);
  // Backwards: exact gains are those of the state in which the move was made.
  for (int n = fm->nmoves - 1; n > fm->best; n--) {
    const int c = fm->swaps[n];
    if constexpr (variant & FM_EXACT)
      FM_Undo__(fm, c);
    else
      FM_Shift__(fm, c, FM_Side__(fm, c), 1 - FM_Side__(fm, c));
  }
  FM_Store__(graph, fm);
  FM_TraceEnd__<variant>(ctrl, graph, fm);
  graph->mincut = fm->bestcut;
  StopTimer__(ctrl, &ctrl->WrapUpTmr);

  CHECK_VALID(CheckBisection__(graph));
  if (variant & FM_EXACT)
    CHECK_VALID(CheckGains__(graph, fm, ALL_EXACT));
}

template <int variant>
static void FM_Run__(Control *ctrl, HGraph *graph, int npasses, float fraction)
{
  const int limit = Truncate__(static_cast<float>(graph->ncells) * fraction);
  FMState fm;

  FM_Alloc__(graph, &fm);
  if constexpr (variant & FM_EXACT) {
    StartTimer__(ctrl, &ctrl->InitTmr);
    graph->mincut = FM_ComputeGains__(graph, &fm, FROM_PINS);
    StopTimer__(ctrl, &ctrl->InitTmr);
  }
  for (int pass = 0; pass < npasses; pass++) {
    FM_StartPass__<variant>(ctrl, graph, &fm, pass, graph->mincut);
    FM_MakeMoves__<variant>(ctrl, graph, &fm, limit);
    FM_Rollback__<variant>(ctrl, graph, &fm);
    if (fm.bestcut == fm.initcut)
      break;
  }
  FM_Free__(&fm);
}

void Refine_FM__(Control *ctrl, HGraph *graph, int npasses)
{
  FM_Run__<FM_PLAIN>(ctrl, graph, npasses, 0.0f);
}

void Refine_FM2__(Control *ctrl, HGraph *graph, int npasses)
{
  FM_Run__<FM_HEAVY>(ctrl, graph, npasses, 0.0f);
}

void Refine_EEFM__(Control *ctrl, HGraph *graph, int npasses, float fraction)
{
  FM_Run__<FM_EXACT>(ctrl, graph, npasses, fraction);
}

void Refine_EEFM2__(Control *ctrl, HGraph *graph, int npasses, float fraction)
{
  FM_Run__<FM_EXACT | FM_HEAVY>(ctrl, graph, npasses, fraction);
}

void RefineFull__(Control *ctrl, HGraph *graph, int npasses)
{
  if (ctrl->heavycells)
    Refine_FM2__(ctrl, graph, npasses);
  else
    Refine_FM__(ctrl, graph, npasses);
}
