// formats/hgr.h - the hypergraph record of the tool and the reader of .hgr text.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/problems.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kapris_formats
{

// The largest weight, and the most that all cells, or all nets, may weigh together: up to here the library adds up
// exactly.
inline constexpr std::int64_t most_weight = std::int64_t{1} << 61;

// In the form that kapris_api.h takes. Without weights in the file, the vector of weights stays empty and every
// weight is 1; so does a cell count that the file cannot vouch for cost nothing here.
struct Hgr {
  int ncells = 0;
  int nnets = 0;
  std::vector<int> netptr;            // [nnets + 1]
  std::vector<int> netind;            // pins, from 0, as often and in the order in which the file names them
  std::vector<std::int64_t> cellwgts; // [ncells] or empty; their sum is at most most_weight
  std::vector<std::int64_t> netwgts;  // [nnets] or empty; the same

  bool operator==(const Hgr &) const = default;
};

// Reads the text of a .hgr file; the name is for messages. Throws Failure with the place of the first fault, or of the
// first that it cannot go on after if there is a list of problems for the others.
Hgr ReadHgr(const std::string &name, std::string_view text, Problems *problems = nullptr);

inline std::int64_t CellWeight(const Hgr &hgr, int cell)
{
  return hgr.cellwgts.empty() ? 1 : hgr.cellwgts[static_cast<size_t>(cell)];
}

inline std::int64_t NetWeight(const Hgr &hgr, int net)
{
  return hgr.netwgts.empty() ? 1 : hgr.netwgts[static_cast<size_t>(net)];
}

} // namespace kapris_formats
