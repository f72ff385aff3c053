// lib/control/validate.cpp - refuses invalid arguments before any work.
// SPDX-License-Identifier: MIT

#include "validate.h"

#include "ctrl.h"

#include <algorithm>

static void CheckPointer(const void *pointer, bool needed, const char *name)
{
  if (needed && pointer == nullptr)
    errexit__("%s is null.\n", name);
}

static const ArgNames classicnames = {"cellwgts", "netptr", "netind", "netwgts", "part"};

static const ArgNames *NamesOf(const EntryArgs *args)
{
  return args->names != nullptr ? args->names : &classicnames;
}

void CheckPointers__(const EntryArgs *args)
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

static void CheckTrialOptions(const Control *ctrl, int maxrtype)
{
  CheckRange(ctrl->nruns >= 1, "Nruns should be at least 1.\n");
  CheckRange(ctrl->ctype >= 1 && ctrl->ctype <= 5, "Ctype should be between 1 and 5.\n");
  CheckRange(ctrl->rtype >= 1 && ctrl->rtype <= maxrtype,
             maxrtype == 3 ? "Rtype should be between 1 and 3.\n" : "Rtype should be between 1 and 2.\n");
  CheckRange(ctrl->vcycle >= 0 && ctrl->vcycle <= 3, "Vcycle should be between 0 and 3.\n");
}

void CheckRecursiveOptions__(const Control *ctrl, const EntryArgs *args)
{
  CheckRange(args->nparts >= 2, "Nparts should be at least 2.\n");
  CheckRange(args->UBfactor >= 1 && args->UBfactor <= 49, "UBfactor should be between 1 and 49.\n");
  CheckTrialOptions(ctrl, 3);
  CheckRange(ctrl->reconst == 0 || ctrl->reconst == 1, "Reconst should be between 0 and 1.\n");
  CheckRange(ctrl->fixed == 0 || ctrl->fixed == 1, "Fixed should be between 0 and 1.\n");
}

void CheckKwayOptions__(const Control *ctrl, const EntryArgs *args)
{
  CheckRange(args->nparts >= 2, "Nparts should be at least 2.\n");
  CheckRange(args->UBfactor >= 5, "UBfactor should be greater than 5.\n");
  CheckTrialOptions(ctrl, 2);
}

void CheckRefineOptions__(const Control *ctrl, const EntryArgs *args, int maxrtype)
{
  CheckRange(args->nparts >= 1, "Nparts should be at least 1.\n");
  CheckTrialOptions(ctrl, maxrtype);
}

// ----------------------------------------------------------------------------------------------------------
// The hypergraph

static int WeightOf(const int *weights, int i)
{
  return weights == nullptr ? 1 : weights[i];
}

static void CheckWeights(int n, const int *weights, const char *name)
{
  if (weights == nullptr)
    return;
  for (int i = 0; i < n; i++)
    if (weights[i] < 0)
      errexit__("%s[%d] is %d, but it should be at least 0.\n", name, i, weights[i]);
}

static void CheckNets(const EntryArgs *args)
{
  const ArgNames *names = NamesOf(args);
  const int *netptr = args->netptr;

  if (args->nnets == 0)
    return;
  CheckPointer(netptr, true, names->netptr);
  if (netptr[0] != 0)
    errexit__("%s[0] is %d, but it should be 0.\n", names->netptr, netptr[0]);
  for (int j = 0; j < args->nnets; j++)
    if (netptr[j + 1] < netptr[j])
      errexit__("%s[%d] is %d, but it should be at least %s[%d], which is %d.\n", names->netptr, j + 1,
                netptr[j + 1], names->netptr, j, netptr[j]);
  CheckPointer(args->netind, netptr[args->nnets] > 0, names->netind);
  for (int j = 0; j < args->nnets; j++)
    for (int k = netptr[j]; k < netptr[j + 1]; k++)
      if (args->netind[k] < 0 || args->netind[k] >= args->ncells)
        errexit__("%s[%d] is %d, but a pin should be at least 0 and below ncells, which is %d (net %d).\n",
                  names->netind, k, args->netind[k], args->ncells, j);
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
  const ArgNames *names = NamesOf(args);
  std::int64_t cellwgt = 0, netwgt = 0, pinwgt = 0, maxsoed = 0;

  for (int i = 0; i < args->ncells; i++) {
    cellwgt += WeightOf(args->cellwgts, i);
    CheckSum(2 * cellwgt, "twice the total cell weight", names->cellwgts, i, WeightOf(args->cellwgts, i));
  }
  for (int j = 0; j < args->nnets; j++) {
    const int wgt = WeightOf(args->netwgts, j), npins = args->netptr[j + 1] - args->netptr[j];
    netwgt += wgt;
    pinwgt += static_cast<std::int64_t>(wgt) * npins;
    CheckSum(netwgt + 1, "the total net weight + 1", names->netwgts, j, wgt);
    if (kway) {
      maxsoed += static_cast<std::int64_t>(wgt) * std::min(npins, args->nparts);
      CheckSum(10 * netwgt + 1, "10 x the total net weight + 1", names->netwgts, j, wgt);
      CheckSum(maxsoed, "the sum of net weight x min(pins, nparts)", names->netwgts, j, wgt);
    }
  }

  // The weight of one cell's nets can exceed the total only where nets list the cell more than once.
  if (pinwgt <= INT_MAX)
    return;
  std::int64_t *adjwgt = QVarray__<std::int64_t>(args->ncells, "KAPRIS: adjwgt");
  std::fill_n(adjwgt, args->ncells, 0);
  for (int j = 0; j < args->nnets; j++)
    for (int k = args->netptr[j]; k < args->netptr[j + 1]; k++) {
      const int c = args->netind[k];
      adjwgt[c] += WeightOf(args->netwgts, j);
      CheckSum(adjwgt[c], "the weight of its cell's nets, counted per pin,", names->netind, k, c);
    }
  QVfree__(&adjwgt);
}

void CheckInputHGraph__(const EntryArgs *args, bool kway)
{
  if (args->ncells < 0)
    errexit__("ncells is %d, but it should be at least 0.\n", args->ncells);
  if (args->nnets < 0)
    errexit__("nnets is %d, but it should be at least 0.\n", args->nnets);
  CheckNets(args);
  CheckWeights(args->ncells, args->cellwgts, NamesOf(args)->cellwgts);
  CheckWeights(args->nnets, args->netwgts, NamesOf(args)->netwgts);
  CheckSums(args, kway);
}

void CheckParts__(const EntryArgs *args, int lowest)
{
  for (int i = 0; i < args->ncells; i++)
    if (args->part[i] < lowest || args->part[i] >= args->nparts)
      errexit__("%s[%d] is %d, but it should be between %d and %d.\n", NamesOf(args)->part, i, args->part[i],
                lowest, args->nparts - 1);
}
