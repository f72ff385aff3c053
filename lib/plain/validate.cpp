// lib/plain/validate.cpp - refuses invalid arguments before any work.
// SPDX-License-Identifier: MIT

#include "validate.h"

#include "base/arguments.h"

#include <algorithm>

namespace kapris::engine::narrow
{

static constexpr ArgNames names = {"cellwgts", "netptr", "netind", "netwgts", "part"};

void CheckPointers(const EntryArgs *args)
{
  CheckPointer(args->options, true, "options");
  CheckPointer(args->cut, true, "cut");
  CheckPointer(args->part, args->ncells > 0, "part");
  CheckPointer(args->netptr, args->nnets > 0, "netptr");
}

static void CheckRange(bool valid, const char *message)
{
  if (!valid)
    errexit__("%s", message);
}

// The slots that all entries read, but for the third one, which means one of two things.
static void CheckTrialOptions(const Control *ctrl, bool validrtype, const char *rtypemessage)
{
  CheckRange(ctrl->nruns >= 1, "Nruns should be at least 1.\n");
  CheckRange(ctrl->ctype >= MATCH_ALTERNATE && ctrl->ctype <= MATCH_PAIRS,
             "Ctype should be between 1 and 5.\n");
  CheckRange(validrtype, rtypemessage);
  CheckRange(ctrl->vcycle >= CYCLE_NONE && ctrl->vcycle <= CYCLE_CLOSE,
             "Vcycle should be between 0 and 3.\n");
}

static void CheckTwoWayOptions(const Control *ctrl)
{
  CheckTrialOptions(ctrl, ctrl->rtype >= REFINE_FM && ctrl->rtype <= REFINE_EARLY_EXIT,
                    "Rtype should be between 1 and 3.\n");
}

static void CheckObjectiveOptions(const Control *ctrl)
{
  CheckTrialOptions(ctrl, ctrl->objective == MINIMISE_CUT || ctrl->objective == MINIMISE_SOED,
                    "Rtype should be between 1 and 2.\n");
}

void CheckRecursiveOptions(const Control *ctrl, const EntryArgs *args)
{
  CheckRange(args->nparts >= 2, "Nparts should be at least 2.\n");
  CheckRange(args->UBfactor >= 1 && args->UBfactor <= 49, "UBfactor should be between 1 and 49.\n");
  CheckTwoWayOptions(ctrl);
  // A flag of the record holds no more than whether the slot is 0.
  const bool given = args->options[0] != 0;
  CheckRange(!given || args->options[5] == 0 || args->options[5] == 1,
             "Reconst should be between 0 and 1.\n");
  CheckRange(!given || args->options[6] == 0 || args->options[6] == 1, "Fixed should be between 0 and 1.\n");
}

void CheckKwayOptions(const Control *ctrl, const EntryArgs *args)
{
  CheckRange(args->nparts >= 2, "Nparts should be at least 2.\n");
  CheckRange(args->UBfactor >= 5, "UBfactor should be greater than 5.\n");
  CheckObjectiveOptions(ctrl);
}

void CheckTwoWayRefineOptions(const Control *ctrl, const EntryArgs *args)
{
  CheckRange(args->nparts >= 1, "Nparts should be at least 1.\n");
  CheckTwoWayOptions(ctrl);
}

void CheckKwayRefineOptions(const Control *ctrl, const EntryArgs *args)
{
  CheckRange(args->nparts >= 1, "Nparts should be at least 1.\n");
  CheckObjectiveOptions(ctrl);
}

// ----------------------------------------------------------------------------------------------------------
// The hypergraph

static int WeightOf(const int *weights, int i)
{
  return weights == nullptr ? 1 : weights[i];
}

// Refuses at the element that takes a running sum beyond 32 bits.
static void CheckSum(std::int64_t sum, const char *what, const char *name, int index, int value)
{
  if (sum > INT_MAX)
    errexit__("%s[%d] is %d: %s is then %lld, but it should be at most %d.\n", name, index, value, what,
              static_cast<long long>(sum), INT_MAX);
}

static void CheckSums(const EntryArgs *args, bool kway)
{
  std::int64_t cellwgt = 0, netwgt = 0, pinwgt = 0, maxsoed = 0;

  for (int i = 0; i < args->ncells; i++) {
    cellwgt += WeightOf(args->cellwgts, i);
    CheckSum(2 * cellwgt, "twice the total cell weight", names.cellwgts, i, WeightOf(args->cellwgts, i));
  }
  for (int j = 0; j < args->nnets; j++) {
    const int wgt = WeightOf(args->netwgts, j), npins = args->netptr[j + 1] - args->netptr[j];
    netwgt += wgt;
    pinwgt += static_cast<std::int64_t>(wgt) * npins;
    CheckSum(netwgt + 1, "the total net weight + 1", names.netwgts, j, wgt);
    if (kway) {
      maxsoed += static_cast<std::int64_t>(wgt) * std::min(npins, args->nparts);
      CheckSum(10 * netwgt + 1, "10 x the total net weight + 1", names.netwgts, j, wgt);
      CheckSum(maxsoed, "the sum of net weight x min(pins, nparts)", names.netwgts, j, wgt);
    }
  }

  // The weight of one cell's nets can exceed the total only where nets list the cell more than once.
  if (pinwgt <= INT_MAX)
    return;
  std::int64_t *adjwgt = QVarray<std::int64_t>(args->ncells, "KAPRIS: adjwgt");
  std::fill_n(adjwgt, args->ncells, 0);
  for (int j = 0; j < args->nnets; j++)
    for (int k = args->netptr[j]; k < args->netptr[j + 1]; k++) {
      const int c = args->netind[k];
      adjwgt[c] += WeightOf(args->netwgts, j);
      CheckSum(adjwgt[c], "the weight of its cell's nets, counted per pin,", names.netind, k, c);
    }
  QVfree__(&adjwgt);
}

void CheckInputHGraph(const EntryArgs *args, bool kway)
{
  CheckNets(args->ncells, args->nnets, args->netptr, args->netind, &names);
  CheckWeights(args->ncells, args->cellwgts, names.cellwgts);
  CheckWeights(args->nnets, args->netwgts, names.netwgts);
  CheckSums(args, kway);
}

void CheckPartArgument(const EntryArgs *args, int lowest)
{
  CheckParts(args->ncells, args->part, lowest, args->nparts, names.part);
}

} // namespace kapris::engine::narrow
