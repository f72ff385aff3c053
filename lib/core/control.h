// lib/core/control.h - the Control record that every function of the engine receives, and the trace bits.
// SPDX-License-Identifier: MIT
//
// It holds the options of a call and what follows from them for the step that goes on, and nobody changes it: a step
// that needs other values makes a copy for its part of the work.
#pragma once

#include "bounds.h"

#include "base/hooks.h"
#include "base/timers.h"

namespace kapris::engine::KAPRIS_ENGINE
{

enum DebugBits {
  DBG_COARSEN = 1,  // per-level coarsening statistics
  DBG_INITPART = 2, // trials of the initial partition
  DBG_PASSES = 4,   // first and last line of the refinement passes
  DBG_RUNS = 8,     // header and summary of each bisection or k-way run
  DBG_TRIALS = 16,  // one short line per trial
  DBG_TIME = 32,    // CPU timers and their report
  DBG_LONG = 128,   // long trial lines and V-cycles
  DBG_MOVES = 256   // one line per move
};

// The enumerations have the values of the option vector.

// How cells are grouped.
enum Matching : int {
  MATCH_ALTERNATE = 1, // from trial to trial: stars, strong ones on the first levels, and stars by degree
  MATCH_DEGREE = 2,    // stars; cells of few nets first
  MATCH_STRONG = 3,    // stars; strongly connected cells first
  MATCH_NETS = 4,      // whole nets
  MATCH_PAIRS = 5
};

enum TwoWayScheme : int { REFINE_FM = 1, REFINE_ONE_WAY = 2, REFINE_EARLY_EXIT = 3 };

enum KwayObjective : int { MINIMISE_CUT = 1, MINIMISE_SOED = 2 };

// Which trials get V-cycles.
enum CyclePolicy : int { CYCLE_NONE = 0, CYCLE_BEST = 1, CYCLE_IMPROVING = 2, CYCLE_CLOSE = 3 };

// Whose trials and levels are recorded: those of the first bisection, of a k-way run, of the polish.
enum RecordScope { RECORD_NOTHING, RECORD_SIDES, RECORD_PARTS };

struct Control {
  // The options.
  int nparts;
  int nruns; // independent trials of each bisection or k-way partitioning
  Matching ctype;
  TwoWayScheme rtype;      // of bisections
  KwayObjective objective; // of k-way refinement
  CyclePolicy vcycle;
  bool reconst;    // the pieces of a cut net stay in the recursion
  bool fixed;      // the part vector holds pre-assigned parts on entry
  bool kwayrefine; // polish a recursive bisection into more than two parts
  bool
      nestedclock; // first partitions into all parts are seeded from the clock, not from the sequence of the run
  std::int64_t seed;  // negative = from the clock
  int dbglvl;         // DebugBits
  int coarsento;      // coarsening goes on while a level has more cells than this
  int maxnetsize;     // nets with more pins are pruned before coarsening; caps the degree key of matching
  const int *initial; // [ncells] the partition to improve, or NULL: partition anew
  const int *const
      *others; // [nothers] with an initial one, further partitions that a search combines with it
  int nothers;

  // The step that goes on.
  Bounds bounds;
  Weight maxcellwgt;    // largest weight of a coarse cell
  bool heavycells;      // some cells are heavier than the first coarse-cell cap
  RecordScope recorded; // what where holds in the trials that run now
  bool complete;        // the trials that run now partition the hypergraph of the call

  const Hooks *hooks; // never NULL
  Timers *timers;     // charged only under DBG_TIME
};

// A point at which the run can end.
inline void Checkpoint(const Control *ctrl)
{
  if (ctrl->hooks->proceed != nullptr && !ctrl->hooks->proceed(ctrl->hooks->owner))
    throw StopRun{};
}

// The same where a phase begins, or goes on with another level.
inline void EnterPhase(const Control *ctrl, Phase phase, int ncells)
{
  if (ctrl->hooks->enter != nullptr)
    ctrl->hooks->enter(ctrl->hooks->owner, phase, ncells);
  Checkpoint(ctrl);
}

// The same as Checkpoint inside a long loop: looks up only now and then.
inline void CheckpointAt(const Control *ctrl, int step)
{
  if (step % 4096 == 0)
    Checkpoint(ctrl);
}

// Hands a complete partition to the caller.
inline void Announce(const Control *ctrl, const int *part)
{
  if (ctrl->hooks->incumbent != nullptr)
    ctrl->hooks->incumbent(ctrl->hooks->taker, part);
}

// Whether there is a partition from elsewhere, which is then in part.
inline bool AskForVisitor(const Control *ctrl, int *part)
{
  return ctrl->hooks->visitor != nullptr && ctrl->hooks->visitor(ctrl->hooks->taker, part);
}

// Charges one of the timers, or none, from here to the end of the block.
struct Stopwatch {
  double *timer; // NULL = none

  Stopwatch(const Control *ctrl, double Timers::*which)
      : timer((ctrl->dbglvl & DBG_TIME) && which != nullptr ? &(ctrl->timers->*which) : nullptr)
  {
    if (timer != nullptr)
      *timer -= seconds__();
  }

  ~Stopwatch()
  {
    if (timer != nullptr)
      *timer += seconds__();
  }

  Stopwatch(const Stopwatch &) = delete;
  Stopwatch &operator=(const Stopwatch &) = delete;
};

} // namespace kapris::engine::KAPRIS_ENGINE
