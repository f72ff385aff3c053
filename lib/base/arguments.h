// lib/base/arguments.h - refuses arrays of a caller that do not describe a hypergraph; for both interfaces.
// SPDX-License-Identifier: MIT
//
// Each ends the call through errexit__ at the first entry that is out of range, naming the array, the index and the
// value.
#pragma once

#include "output.h"

namespace kapris::engine::base
{

// What the caller knows the arrays as.
struct ArgNames {
  const char *cellwgts, *netptr, *netind, *netwgts, *part;
};

// pointer is NULL where data is needed.
inline void CheckPointer(const void *pointer, bool needed, const char *name)
{
  if (needed && pointer == nullptr)
    errexit__("%s is null.\n", name);
}

// The counts, the offsets and the pins.
void CheckNets(int ncells, int nnets, const int *netptr, const int *netind, const ArgNames *names);
// part[i] in lowest .. nparts-1.
void CheckParts(int ncells, const int *part, int lowest, int nparts, const char *name);

// weights, of either width, are not negative; NULL stands for ones.
template <class T>
void CheckWeights(int n, const T *weights, const char *name)
{
  if (weights == nullptr)
    return;
  for (int i = 0; i < n; i++)
    if (weights[i] < 0)
      errexit__("%s[%d] is %lld, but it should be at least 0.\n", name, i,
                static_cast<long long>(weights[i]));
}

} // namespace kapris::engine::base
