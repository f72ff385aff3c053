// cli/report/report.h - the page that shows a result.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/input.h"
#include "report/data.h"
#include "report/library.h"

#include <string>
#include <vector>

namespace kapris_report
{

// The hypergraph and the partition that a result speaks of; some pictures need them.
struct ReportInput {
  Hgr hgr;
  std::vector<int> part;
  Details details; // names
};

// Reads them as the run did that gave the result, unless the options of the input say how. Throws Failure if they are
// not those of the result, whose name is for messages.
ReportInput LoadReportInput(const std::string &name, const ReportData &data, Input file,
                            const std::string &part);

// One page of HTML that needs nothing else. Without the input, all NULL, it says what would need it.
std::string ReportPage(const ReportData &data, const Hgr *hgr, const std::vector<int> *part,
                       const Details *details);

} // namespace kapris_report
