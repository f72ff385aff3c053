// lib/base/arguments.cpp - refuses arrays of a caller that do not describe a hypergraph.
// SPDX-License-Identifier: MIT

#include "arguments.h"

namespace kapris::engine::base
{

void CheckNets(int ncells, int nnets, const int *netptr, const int *netind, const ArgNames *names)
{
  if (ncells < 0)
    errexit__("ncells is %d, but it should be at least 0.\n", ncells);
  if (nnets < 0)
    errexit__("nnets is %d, but it should be at least 0.\n", nnets);
  if (nnets == 0)
    return;
  CheckPointer(netptr, true, names->netptr);
  if (netptr[0] != 0)
    errexit__("%s[0] is %d, but it should be 0.\n", names->netptr, netptr[0]);
  for (int j = 0; j < nnets; j++)
    if (netptr[j + 1] < netptr[j])
      errexit__("%s[%d] is %d, but it should be at least %s[%d], which is %d.\n", names->netptr, j + 1,
                netptr[j + 1], names->netptr, j, netptr[j]);
  CheckPointer(netind, netptr[nnets] > 0, names->netind);
  for (int j = 0; j < nnets; j++)
    for (int k = netptr[j]; k < netptr[j + 1]; k++)
      if (netind[k] < 0 || netind[k] >= ncells)
        errexit__("%s[%d] is %d, but a pin should be at least 0 and below ncells, which is %d (net %d).\n",
                  names->netind, k, netind[k], ncells, j);
}

void CheckParts(int ncells, const int *part, int lowest, int nparts, const char *name)
{
  for (int i = 0; i < ncells; i++)
    if (part[i] < lowest || part[i] >= nparts)
      errexit__("%s[%d] is %d, but it should be between %d and %d.\n", name, i, part[i], lowest, nparts - 1);
}

} // namespace kapris::engine::base
