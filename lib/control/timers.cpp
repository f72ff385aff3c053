// lib/control/timers.cpp - the CPU clock and the timing report.
// SPDX-License-Identifier: MIT

#include "ctrl.h"

#include "core/core.h"

#include <sys/resource.h>

double seconds__()
{
  struct rusage usage;

  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

void InitTimers__(Control *ctrl)
{
  ctrl->TotalTmr = ctrl->CoarsenTmr = ctrl->RefTmr = ctrl->InitTmr = ctrl->IterTmr = ctrl->WrapUpTmr = 0.0;
  ctrl->MultilevelTmr = ctrl->InitPartTmr = ctrl->ProjectTmr = ctrl->SpareTmr = ctrl->UncoarsenTmr = 0.0;
  ctrl->AuxTmr1 = ctrl->AuxTmr2 = ctrl->AuxTmr3 = ctrl->AuxTmr4 = 0.0;
}

void PrintTimers__(const Control *ctrl, int full)
{
  Trace__("\nTiming Information ---------------------------------------------------------");
  Trace__("\n Multilevel: \t\t %7.3f", ctrl->MultilevelTmr);
  Trace__("\n     Coarsening: \t\t %7.3f", ctrl->CoarsenTmr);
  Trace__("\n     Initial Partition: \t %7.3f", ctrl->InitPartTmr);
  Trace__("\n     Uncoarsening: \t\t %7.3f", ctrl->UncoarsenTmr);
  Trace__("\n             Aux1: \t\t %7.3f", ctrl->AuxTmr1);
  Trace__("\n             Aux2: \t\t %7.3f", ctrl->AuxTmr2);
  Trace__("\n             Aux3: \t\t %7.3f", ctrl->AuxTmr3);
  Trace__("\n             Aux4: \t\t %7.3f", ctrl->AuxTmr4);
  if (full) {
    Trace__("\n        Refinement: \t\t\t %7.3f", ctrl->RefTmr);
    Trace__("\n            Initialize: \t\t\t %7.3f", ctrl->InitTmr);
    Trace__("\n            Iterate: \t\t\t\t %7.3f", ctrl->IterTmr);
    Trace__("\n            Wrap Up: \t\t\t\t %7.3f", ctrl->WrapUpTmr);
  }
  Trace__("\n Total: \t\t %7.3f", ctrl->TotalTmr);
  Trace__("\n----------------------------------------------------------------------------");
}
