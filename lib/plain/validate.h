// lib/plain/validate.h - refuses invalid arguments of the entry points; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/control.h"

namespace kapris::engine::narrow
{

// The arguments of an entry point as the caller gave them.
struct EntryArgs {
  int ncells, nnets;
  const int *cellwgts, *netptr, *netind, *netwgts;
  int nparts, UBfactor;
  const int *options;
  int *part, *cut;
};

// Each ends the call through errexit__ at the first argument that is out of range.

// NULL where data is needed.
void CheckPointers(const EntryArgs *args);
// The option sets of the two families, in a fixed order; args->nparts and UBfactor come first.
void CheckRecursiveOptions(const Control *ctrl, const EntryArgs *args);
void CheckKwayOptions(const Control *ctrl, const EntryArgs *args);
// Only what the refine entries read.
void CheckTwoWayRefineOptions(const Control *ctrl, const EntryArgs *args);
void CheckKwayRefineOptions(const Control *ctrl, const EntryArgs *args);
// The structure, the weights, and the sums that the run must hold in 32 bits; kway tells whether it ends in
// k-way refinement.
void CheckInputHGraph(const EntryArgs *args, bool kway);
// part[i] in lowest .. nparts-1.
void CheckPartArgument(const EntryArgs *args, int lowest);

} // namespace kapris::engine::narrow
