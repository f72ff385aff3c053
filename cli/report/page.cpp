// cli/report/page.cpp - puts the page together.
// SPDX-License-Identifier: MIT

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/hash.h"
#include "formats/names.h"
#include "report/library.h"
#include "report/pictures.h"
#include "report/report.h"

#include <fmt/core.h>

namespace kapris_report
{

static std::string InputPictures(const ReportData &data, const Hgr *hgr, const std::vector<int> *part,
                                 const Details *details)
{
  if (hgr == nullptr) {
    const std::string reason =
        "This picture needs the hypergraph and the part file: kapris report RESULT FILE PART.";
    return MissingFigure("cut-matrix", "Cut between parts", reason) +
           MissingFigure("net-spans", "Parts that nets span", reason) +
           MissingFigure("components", "Are the parts connected?", reason) +
           MissingFigure("border", "What is cut", reason) +
           MissingFigure("spy-before", "Pins before and after ordering", reason);
  }
  const std::vector<CutNet> nets = CutNets(*hgr, *part);
  return CutMatrixHtml(data, nets, *hgr) + SpyHtml(data, *hgr, *part) + SpansHtml(data, nets, *hgr) +
         ComponentsHtml(*hgr, *part) + BorderHtml(nets, *hgr, *part, *details);
}

std::string ReportPage(const ReportData &data, const Hgr *hgr, const std::vector<int> *part,
                       const Details *details)
{
  const std::string body = SummaryHtml(data) + "<div class=\"cards\">\n" + WeightsHtml(data) +
                           InputPictures(data, hgr, part, details) + StartsHtml(data) + TrialsHtml(data) +
                           BisectionsHtml(data) + LevelsHtml(data) +
                           "</div>\n<footer>Made by kapris report.</footer>\n";

  return PageHtml(fmt::format("{} in {} parts - kapris", data.file, data.parts), body);
}

static void CheckHash(const std::string &file, const char *what, const std::string &name,
                      const std::string &hash, const std::string &expected)
{
  if (hash != expected)
    throw Failure{EXIT_MALFORMED, fmt::format("{}:1:1: not the {} that {} speaks of: its hash is {}, not {}",
                                              file, what, name, hash, expected)};
}

ReportInput LoadReportInput(const std::string &name, const ReportData &data, Input file,
                            const std::string &part)
{
  ReportInput input;

  if (data.records && SameReading(file, Input()))
    CopyReading(data.records->input, &file);
  input.hgr = ReadHypergraph(file, nullptr, &input.details);
  CheckHash(NameOf(file), "hypergraph", name, HashOf(input.hgr), data.hash);
  input.part = LoadNamedParts(part, input.details, input.hgr.ncells, data.parts);
  CheckHash(InputName(part), "partition", name, HashOf(input.part), data.output.hash);
  return input;
}

} // namespace kapris_report
