// cli/solve/outcome.h - what a run of the library gave, and its summary.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"
#include "solve/request.h"

#include <string>
#include <vector>

namespace kapris_cli
{

struct Outcome {
  const Request *request;
  Plan plan;
  Hgr hgr;
  std::vector<int> fixed; // empty: no cell is fixed
  std::vector<int> given; // the partition to improve; empty: none
  double seconds_read;
  kapris::Result result;
};

// The lines of a summary.
std::string Summary(const Outcome &outcome);
// Those of --dry-run, before there is a result.
std::string PlanSummary(const Outcome &outcome);

} // namespace kapris_cli
