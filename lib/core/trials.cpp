// lib/core/trials.cpp - keeps the best of several trials and decides which get V-cycles.
// SPDX-License-Identifier: MIT

#include "trials.h"

#include <algorithm>

void StartTrials__(const Control *ctrl, Trials *trials, int ncells, int bound, int nkept)
{
  *trials = Trials{};
  trials->bound = trials->bestpruned = trials->best = bound;
  trials->ncells = ncells;
  if (ctrl->vcycle == 1) {
    trials->nkept = std::min(nkept, ctrl->nruns);
    for (int i = 0; i < trials->nkept; i++) {
      trials->parts[i] = imalloc__(ncells, "Hypergraph_Bisection: parts[i]");
      trials->values[i] = bound;
      trials->trials[i] = -1;
    }
  }
}

bool NotePrunedValue__(Trials *trials, int value)
{
  if (value >= trials->bestpruned)
    return false;
  trials->bestpruned = value;
  return true;
}

bool WantsVCycle__(const Control *ctrl, const Trials *trials, int value, bool improved)
{
  switch (ctrl->vcycle) {
  case 3:
    return 1.2 * trials->best > value || SubWrap__(value, trials->best) < 20;
  case 2:
    return value <= trials->best || improved;
  default:
    return false;
  }
}

bool NoteTrial__(Trials *trials, int trial, int value, const int *where, int *part)
{
  trials->sum = AddWrap__(trials->sum, value);
  // The first trial always counts: a SOED can lie above the bound, and part must receive a partition.
  const bool best = trial == 0 || value < trials->best;
  if (best) {
    icopy__(trials->ncells, where, part);
    trials->best = value;
  }
  if (trials->nkept > 0) {
    int worst = iamax__(trials->nkept, trials->values);
    if (trials->values[worst] > value) {
      icopy__(trials->ncells, where, trials->parts[worst]);
      trials->values[worst] = value;
      trials->trials[worst] = trial;
    }
  }
  return best;
}

bool NoteCycled__(Trials *trials, int value, const int *where, int *part)
{
  if (value >= trials->best)
    return false;
  icopy__(trials->ncells, where, part);
  trials->best = value;
  return true;
}

void FreeTrials__(Trials *trials)
{
  for (int i = 0; i < trials->nkept; i++)
    QVfree__(&trials->parts[i]);
}
