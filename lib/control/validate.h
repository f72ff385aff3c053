// lib/control/validate.h - refuses invalid arguments of the entry points; for this folder and the safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/core.h"

// What the caller knows the arrays as.
struct ArgNames {
  const char *cellwgts, *netptr, *netind, *netwgts, *part;
};

// The arguments of an entry point as the caller gave them.
struct EntryArgs {
  int ncells, nnets;
  const int *cellwgts, *netptr, *netind, *netwgts;
  int nparts, UBfactor;
  const int *options;
  int *part, *cut;
  const ArgNames *names; // NULL = those of kapris.h
};

// Each ends the call through errexit__ at the first argument that is out of range.

// NULL where data is needed.
void CheckPointers__(const EntryArgs *args);
// The option sets of the two families, in a fixed order; args->nparts and UBfactor come first.
void CheckRecursiveOptions__(const Control *ctrl, const EntryArgs *args);
void CheckKwayOptions__(const Control *ctrl, const EntryArgs *args);
// Only what the refine entries read; maxrtype is 3 or 2.
void CheckRefineOptions__(const Control *ctrl, const EntryArgs *args, int maxrtype);
// The structure, the weights, and the sums that the run must hold in 32 bits; kway tells whether it ends in
// k-way refinement.
void CheckInputHGraph__(const EntryArgs *args, bool kway);
// part[i] in lowest .. nparts-1.
void CheckParts__(const EntryArgs *args, int lowest);
