// lib/base/hooks.h - how a run talks to whoever has called the engine: what it tells and what it asks.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace kapris::engine::base
{

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
  STEP_END,    // a trial, or its V-cycles, ended
  STEP_MEMBER, // a population has a new member, or has refused one
  STEP_SPLIT   // a bisection of a recursion is done; from any thread, with no trial of its own around it
};

struct Step {
  StepKind kind;
  int trial;          // STEP_TRIAL, STEP_END, STEP_MEMBER: its number
  Phase phase;        // STEP_LEVEL: what has been done with it
  int ncells, nnets;  // STEP_LEVEL, islands counted
  int npins;          // the same
  std::int64_t value; // the objective; -1 while there is no partition; STEP_SPLIT: the cut
  double imbalance;   // as that of a result, of the level's cells
  bool taken;         // STEP_END, STEP_MEMBER: its partition is the best so far
  int parents[2];     // STEP_MEMBER: what it was made of, twice the same of a V-cycle; -1 = nothing
  const int *kept;    // STEP_END: [nkept] trials that can still get V-cycles; -1 in an empty slot
  int nkept;
  int first, nparts;       // STEP_SPLIT: the parts that its cells are for
  std::int64_t weights[2]; // STEP_SPLIT: of its sides
  double seconds;          // STEP_SPLIT: wall time
};

// The functions of a caller; each may be NULL. One record serves all threads of a run.
struct Hooks {
  void *owner;                  // first argument of the functions
  bool (*proceed)(void *owner); // asked every few milliseconds; false ends the run by StopRun
  // Receives complete partitions, each the best of its run so far.
  void (*incumbent)(void *taker, const int *part);
  // Asked between combinations for a complete partition from elsewhere; false if there is none.
  bool (*visitor)(void *taker, int *part);
  void *taker;
  // Told when a phase begins on the calling thread, for a level of ncells cells.
  void (*enter)(void *owner, Phase phase, int ncells);
  // Told what part of the trials of one bisection or k-way partitioning of ncells cells has ended.
  void (*worked)(void *owner, double part, int ncells);
  // Told of the steps of the trials.
  void (*record)(void *owner, const Step *step);
  // Runs work(argument) on another thread if one is free, or later inside join; join waits and throws what it threw.
  void *(*fork)(void *owner, void (*work)(void *argument), void *argument);
  void (*join)(void *owner, void *task);
};

// Of a caller who wants to know nothing and never ends a run: one thread.
inline constexpr Hooks NO_HOOKS = {};

// Thrown when Hooks::proceed ends a run.
struct StopRun {
};

} // namespace kapris::engine::base
