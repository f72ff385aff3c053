// tests/plain/entry.h - the five entry points under one type.
// SPDX-License-Identifier: MIT
#pragma once

#include "kapris.h"

#include "support/build.h"

typedef decltype(&KAPRIS_PartRecursive) EntryPoint;

inline void TwoWayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                         const int *netwgts, int, int UBfactor, const int *options, int *part, int *cut)
{
  KAPRIS_2WayRefine(ncells, nnets, cellwgts, netptr, netind, netwgts, UBfactor, options, part, cut);
}

const EntryPoint RECURSIVE = KAPRIS_PartRecursive, INTERNAL = KAPRIS_PartRecursiveInternal,
                 KWAY = KAPRIS_PartKway, REFINE2 = TwoWayRefine, REFINEK = KAPRIS_KWayRefine;
