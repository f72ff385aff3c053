// cli/solve/outcome.h - what a run of the library gave, and its summary.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/hgr.h"
#include "formats/names.h"
#include "solve/groups.h"
#include "solve/request.h"

#include <optional>
#include <string>
#include <vector>

namespace kapris_cli
{

struct Outcome {
  const Request *request;
  Plan plan;
  Hgr hgr;
  std::vector<int> fixed;              // empty: no cell is fixed
  std::vector<std::vector<int>> given; // the partitions to improve or combine
  double seconds_read;
  std::vector<std::string> warnings; // of what was asked for
  kapris::Result result;
  Details details;                // names of the cells and nets, if the format has them
  std::optional<Grouping> groups; // cells that stay together; result, fixed and given are those of all cells
};

// The lines of a summary.
std::string Summary(const Outcome &outcome);
// Those of --dry-run, before there is a result.
std::string PlanSummary(const Outcome &outcome);

} // namespace kapris_cli
