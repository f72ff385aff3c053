// lib/base/timers.h - the CPU clock and the accumulators of the timing report.
// SPDX-License-Identifier: MIT
#pragma once

namespace kapris::engine::base
{

// CPU time of the process so far, user plus system, in seconds.
double seconds__();

// CPU seconds by what they were spent on; they overlap.
struct Timers {
  double TotalTmr, CoarsenTmr, RefTmr, InitTmr, IterTmr, WrapUpTmr, MultilevelTmr, InitPartTmr, ProjectTmr,
      SpareTmr, UncoarsenTmr, AuxTmr1, AuxTmr2, AuxTmr3, AuxTmr4;
};

void InitTimers__(Timers *timers);

// Prints the timing report on the trace; full adds the parts of refinement.
void PrintTimers__(const Timers *timers, int full);

} // namespace kapris::engine::base
