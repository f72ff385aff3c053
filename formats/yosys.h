// formats/yosys.h - the reader of netlists in the JSON text of yosys.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "formats/names.h"
#include "formats/types.h"

#include <climits>
#include <string>
#include <string_view>

namespace kapris_formats
{

struct YosysRules {
  std::string module;                   // the top; empty: as the file marks it
  int depth = INT_MAX;                  // levels of modules that are dissolved into their cells
  const TypeWeights *weights = nullptr; // of cells; without them every cell weighs 1
};

// Behaves as ReadHgr. Cells are the instances in the top module, in those that are dissolved the cells inside; what is
// not dissolved weighs what is in it. Nets are what bits of wires connect; constants are none. details: gets the names.
Hgr ReadYosys(const std::string &name, std::string_view text, const YosysRules &rules,
              Problems *problems = nullptr, Details *details = nullptr);

} // namespace kapris_formats
