// lib/multilevel/trials.cpp - keeps the best of several trials and decides which get V-cycles.
// SPDX-License-Identifier: MIT

#include "trials.h"

#include "core/constants.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

void StartTrials(const Control *ctrl, Trials *trials, int ncells, Weight bound, int nkept)
{
  *trials = Trials{};
  trials->bound = trials->bestpruned = trials->best = bound;
  trials->ncells = ncells;
  if (ctrl->vcycle == CYCLE_BEST) {
    trials->nkept = std::min(nkept, ctrl->nruns);
    for (int i = 0; i < trials->nkept; i++) {
      trials->parts[i] = imalloc__(ncells, "Hypergraph_Bisection: parts[i]");
      trials->values[i] = bound;
      trials->trials[i] = -1;
    }
  }
}

bool NotePrunedValue(Trials *trials, Weight value)
{
  if (value >= trials->bestpruned)
    return false;
  trials->bestpruned = value;
  return true;
}

bool WantsVCycle(const Control *ctrl, const Trials *trials, Weight value, bool improved)
{
  switch (ctrl->vcycle) {
  case CYCLE_CLOSE:
    return CLOSE_FACTOR * static_cast<double>(trials->best) > static_cast<double>(value) ||
           SubWrap(value, trials->best) < CLOSE_DISTANCE;
  case CYCLE_IMPROVING:
    return value <= trials->best || improved;
  default:
    return false;
  }
}

bool NoteTrial(Trials *trials, int trial, Weight value, const int *where, int *part)
{
  trials->sum = AddWrap(trials->sum, value);
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

bool NoteCycled(Trials *trials, Weight value, const int *where, int *part)
{
  if (value >= trials->best)
    return false;
  icopy__(trials->ncells, where, part);
  trials->best = value;
  return true;
}

void FreeTrials(Trials *trials)
{
  for (int i = 0; i < trials->nkept; i++)
    QVfree__(&trials->parts[i]);
}

} // namespace kapris::engine::KAPRIS_ENGINE
