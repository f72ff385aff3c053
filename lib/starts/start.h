// lib/starts/start.h - one start: the engine with the context of the call; for this folder and the safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "records.h"
#include "run.h"

#include "base/hooks.h"

namespace kapris::engine::safe
{

struct Start {
  Run *run;
  int index;
  int *incumbent; // the best complete partition of this start so far
  bool hasincumbent;

  // What it is doing; several threads can be at it.
  std::atomic<int> phase, cells;
  std::atomic<double> done; // estimate of the work done
  std::atomic<double> seconds[NPHASES];

  Records records;
};

// Whether the call goes on; owner is a Start. Reports progress when it is due.
bool Proceed(void *owner);
// Notes that a phase begins on this thread, or with PHASE_END that none does; owner is a Start.
void Enter(void *owner, Phase phase, int ncells);

// The same as PHASE_END where the start is gone.
void LeavePhase();

// Partitions, or improves run->initial. Throws StopRun when the call is to end.
void RunEngine(Start *start, std::int64_t seed, int *part);

} // namespace kapris::engine::safe
