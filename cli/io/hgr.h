// cli/io/hgr.h - the hypergraph record of the tool and the reader of .hgr text.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/problems.h"

#include <string>
#include <string_view>
#include <vector>

namespace kapris_cli
{

// In the form that kapris.h takes. Without weights in the file, the vector of weights stays empty and every
// weight is 1; so does a cell count that the file cannot vouch for cost nothing here.
struct Hgr {
  int ncells = 0;
  int nnets = 0;
  std::vector<int> netptr;   // [nnets + 1]
  std::vector<int> netind;   // pins, from 0, as often and in the order in which the file names them
  std::vector<int> cellwgts; // [ncells] or empty
  std::vector<int> netwgts;  // [nnets] or empty

  bool operator==(const Hgr &) const = default;
};

// Reads the text of a .hgr file; the name is for messages. Throws Failure with the place of the first fault, or of the
// first that it cannot go on after if there is a list of problems for the others.
Hgr ReadHgr(const std::string &name, std::string_view text, Problems *problems = nullptr);

inline int CellWeight(const Hgr &hgr, int cell)
{
  return hgr.cellwgts.empty() ? 1 : hgr.cellwgts[static_cast<size_t>(cell)];
}

inline int NetWeight(const Hgr &hgr, int net)
{
  return hgr.netwgts.empty() ? 1 : hgr.netwgts[static_cast<size_t>(net)];
}

} // namespace kapris_cli
