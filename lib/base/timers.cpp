// lib/base/timers.cpp - the CPU clock and the timing report.
// SPDX-License-Identifier: MIT

#include "timers.h"

#include "output.h"

#include <sys/resource.h>

namespace kapris::engine::base
{

double seconds__()
{
  struct rusage usage;

  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

void InitTimers__(Timers *timers)
{
  *timers = Timers{};
}

void PrintTimers__(const Timers *timers, int full)
{
  Trace("\nTiming Information ---------------------------------------------------------");
  Trace("\n Multilevel: \t\t %7.3f", timers->MultilevelTmr);
  Trace("\n     Coarsening: \t\t %7.3f", timers->CoarsenTmr);
  Trace("\n     Initial Partition: \t %7.3f", timers->InitPartTmr);
  Trace("\n     Uncoarsening: \t\t %7.3f", timers->UncoarsenTmr);
  Trace("\n             Aux1: \t\t %7.3f", timers->AuxTmr1);
  Trace("\n             Aux2: \t\t %7.3f", timers->AuxTmr2);
  Trace("\n             Aux3: \t\t %7.3f", timers->AuxTmr3);
  Trace("\n             Aux4: \t\t %7.3f", timers->AuxTmr4);
  if (full) {
    Trace("\n        Refinement: \t\t\t %7.3f", timers->RefTmr);
    Trace("\n            Initialize: \t\t\t %7.3f", timers->InitTmr);
    Trace("\n            Iterate: \t\t\t\t %7.3f", timers->IterTmr);
    Trace("\n            Wrap Up: \t\t\t\t %7.3f", timers->WrapUpTmr);
  }
  Trace("\n Total: \t\t %7.3f", timers->TotalTmr);
  Trace("\n----------------------------------------------------------------------------");
}

} // namespace kapris::engine::base
