// cli/report/pictures.h - the pieces of the page, one file each; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/names.h"
#include "measure/measures.h"
#include "report/data.h"
#include "report/frame.h"
#include "report/library.h"

namespace kapris_report
{

// Left and right end of most drawings.
inline constexpr double plot_left = 56.0, plot_right = svg_width - 12.0;

// Consecutive parts that share a mark where there are more parts than a drawing has room for.
struct Groups {
  size_t nparts, ngroups;
};
Groups GroupParts(size_t nparts, size_t most);
size_t GroupOf(const Groups &groups, size_t part);
size_t FirstOf(const Groups &groups, size_t group); // of ngroups: nparts
// Every how many groups a number fits under an axis.
size_t LabelStride(const Groups &groups);
std::string NameOfGroup(const Groups &groups, size_t group); // "7", or "14-20"

std::string SummaryHtml(const ReportData &data);    // heading, verdict, figures, the run, how to repeat it
std::string WeightsHtml(const ReportData &data);    // part weights, targets, limits
std::string StartsHtml(const ReportData &data);     // what each start gave, and what more would give
std::string TrialsHtml(const ReportData &data);     // the same of trials
std::string LevelsHtml(const ReportData &data);     // down and up through the levels
std::string BisectionsHtml(const ReportData &data); // their tree; nothing where there is none

// Pictures that need the hypergraph and the partition.
std::string CutMatrixHtml(const ReportData &data, const std::vector<CutNet> &nets, const Hgr &hgr);
std::string SpansHtml(const ReportData &data, const std::vector<CutNet> &nets, const Hgr &hgr);
std::string ComponentsHtml(const Hgr &hgr, const std::vector<int> &part); // whether parts are connected
// The heaviest cut nets and the cells on them.
std::string BorderHtml(std::vector<CutNet> nets, const Hgr &hgr, const std::vector<int> &part,
                       const Details &details);
std::string SpyHtml(const ReportData &data, const Hgr &hgr, const std::vector<int> &part);

} // namespace kapris_report
