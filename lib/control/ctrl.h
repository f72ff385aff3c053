// lib/control/ctrl.h - the Control record that every function of the library receives, the trace bits and the
// CPU timers.
// SPDX-License-Identifier: MIT
//
// One record per call of an entry point, on its stack. It holds the options after defaulting, values derived
// from the call, and a few values that the drivers set while they run; there is no other option state.
#pragma once

#include <cstdint>

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

// What a run is doing, for reports of its progress.
enum Phase {
  PHASE_OTHER,
  PHASE_COARSEN,
  PHASE_INITIAL,
  PHASE_REFINE,
  PHASE_BALANCE,
  NPHASES,
  PHASE_END = NPHASES // the thread goes on with something else
};

// What the records of a run say of its levels and trials.
enum StepKind {
  STEP_TRIAL,  // a trial begins, or the V-cycles that it gets after the last trial
  STEP_POLISH, // the polish of all parts begins
  STEP_CYCLE,  // a V-cycle begins
  STEP_LEVEL,  // a level: coarsened, or partitioned, or refined
  STEP_END     // a trial, or its V-cycles, ended
};

struct Step {
  StepKind kind;
  int trial;         // STEP_TRIAL, STEP_END: its number
  Phase phase;       // STEP_LEVEL: what has been done with it
  int ncells, nnets; // STEP_LEVEL, islands counted
  int npins;         // the same
  int value;         // the objective; -1 while there is no partition
  double imbalance;  // as that of a result, of the level's cells
  bool taken;        // STEP_END: its partition is the best so far
  const int *kept;   // STEP_END: [nkept] trials that can still get V-cycles; -1 in an empty slot
  int nkept;
};

// Whose trials and levels are recorded: those of the first bisection, of a k-way run, of the polish.
enum RecordScope { RECORD_NOTHING, RECORD_SIDES, RECORD_PARTS };

// What the safe interface adds to a run. The classic entry points have none, and behave accordingly: halves of
// the total per bisection, one limit for all parts, no stop before the end, one thread.
struct RunContext {
  void *owner;                  // first argument of the functions
  bool (*proceed)(void *owner); // asked every few milliseconds; false ends the run
  // Receives complete partitions, each the best of its run so far; or NULL.
  void (*incumbent)(void *taker, const int *part);
  void *taker;
  // Told when a phase begins on the calling thread, for a level of ncells cells; or NULL.
  void (*enter)(void *owner, Phase phase, int ncells);
  // Told what part of the trials of one bisection or k-way partitioning of ncells cells has ended; or NULL.
  void (*worked)(void *owner, double part, int ncells);
  // Told of the steps of the trials; or NULL.
  void (*record)(void *owner, const Step *step);
  // Runs work(argument) on another thread if one is free, or later inside join; join waits and throws what it threw.
  void *(*fork)(void *owner, void (*work)(void *argument), void *argument);
  void (*join)(void *owner, void *task);
  const double *shares; // [nparts] of the total weight, sum 1
  const int *limits;    // [nparts] largest part weights
  const int *initial;   // [ncells] the partition to improve; or NULL: partition anew
  int total;            // cell weight
};

// Thrown when RunContext::proceed ends a run.
struct StopRun {
};

struct Control {
  int coarsento;  // coarsening goes on while a level has more cells than this
  int ctype;      // matching scheme 1..5; 0 and 1 inside a V-cycle
  int rtype;      // refinement scheme 1..3, or the k-way objective: 1 cut, 2 SOED
  int nruns;      // independent trials
  int maxnetsize; // nets with more pins are pruned before coarsening; caps the degree key of matching
  float ubfactor; // recursive: fraction that a side may be away from its share; k-way: factor above average
  int fixed;      // 1 = the part vector holds pre-assigned parts
  std::int64_t seed; // negative = from the clock
  int dbglvl;        // DebugBits
  int reconst;       // 1 = the pieces of a cut net stay in the recursion
  int vcycle;        // 0..3: which trials get V-cycles
  int nparts;
  int heavycells;  // 1 = some cells are heavier than the first coarse-cell cap
  int kwayrefine;  // 1 = polish a recursive bisection into more than two parts
  float part0frac; // share of the total weight that the current bisection aims to put into part 0
  int maxcellwgt;  // largest weight of a coarse cell

  // The safe interface.
  const RunContext *context; // NULL in the classic entry points
  int polishtype;            // k-way objective of the polish: 1 cut, 2 SOED
  int nanchors0;             // with a context: the first so many anchors belong to side 0
  RecordScope recorded;      // with a context that has record: what where holds in the trials that run now
  int complete; // with a context: 1 = the trials that run now partition the hypergraph of the call

  // CPU seconds, charged only under DBG_TIME.
  double TotalTmr, CoarsenTmr, RefTmr, InitTmr, IterTmr, WrapUpTmr, MultilevelTmr, InitPartTmr, ProjectTmr,
      SpareTmr, UncoarsenTmr, AuxTmr1, AuxTmr2, AuxTmr3, AuxTmr4;
};

// CPU time of the process so far, user plus system, in seconds.
double seconds__();

void InitTimers__(Control *ctrl);

// Prints the timing report on the trace; full adds the parts of refinement.
void PrintTimers__(const Control *ctrl, int full);

// A point at which the run can end.
inline void Checkpoint__(const Control *ctrl)
{
  if (ctrl->context != nullptr && !ctrl->context->proceed(ctrl->context->owner))
    throw StopRun{};
}

// The same where a phase begins, or goes on with another level.
inline void EnterPhase__(const Control *ctrl, Phase phase, int ncells)
{
  if (ctrl->context != nullptr && ctrl->context->enter != nullptr)
    ctrl->context->enter(ctrl->context->owner, phase, ncells);
  Checkpoint__(ctrl);
}

// The same as Checkpoint__ inside a long loop: looks up only now and then.
inline void CheckpointAt__(const Control *ctrl, int step)
{
  if (step % 4096 == 0)
    Checkpoint__(ctrl);
}

inline void StartTimer__(const Control *ctrl, double *timer)
{
  if (ctrl->dbglvl & DBG_TIME)
    *timer -= seconds__();
}

inline void StopTimer__(const Control *ctrl, double *timer)
{
  if (ctrl->dbglvl & DBG_TIME)
    *timer += seconds__();
}
