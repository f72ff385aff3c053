// cli/solve/estimate.h - what a partition will cost, before it is made.
// SPDX-License-Identifier: MIT
#pragma once

#include "solve/request.h"

namespace kapris_cli
{

struct Cost {
  double seconds, bytes; // of the library
};

Cost EstimateCost(const Request &request, const Plan &plan, const Hgr &hgr);

// As in "about 0.4 s, 12 MB".
std::string FormatCost(const Cost &cost);

} // namespace kapris_cli
