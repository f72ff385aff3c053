// cli/measure/components.h - groups of cells that nets connect, in the hypergraph or inside its parts.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "measure/measures.h"
#include "report/library.h"

#include <string>
#include <vector>

namespace kapris_report
{

// The sizes of the components, largest first. A cell on no net is a component.
std::vector<int> ComponentSizes(const Hgr &hgr);

// How a part hangs together by what its cells share of nets, cut ones too.
struct PartComponents {
  int part;
  int count;   // of components
  int outside; // cells that are not in the largest
};

// Of each part in use, by number. In time near linear.
std::vector<PartComponents> ComponentsOfParts(const Hgr &hgr, const Placement &place);

// "all 4 parts are connected", or what is not.
std::string DescribeComponents(const std::vector<PartComponents> &parts);

} // namespace kapris_report
