// cli/report/kapris_report.cpp - the C interface of the report library.
// SPDX-License-Identifier: MIT

#include "report/kapris_report.h"

#include "formats/hash.h"
#include "formats/output.h"
#include "formats/records.h"
#include "json/json.h"
#include "report/report.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace kapris_report
{

static void WriteReport(const char *path, const char *text, const kapris_file &file, const int *part)
{
  const Json json = ParseJson(text);

  if (json.is_discarded())
    throw Failure{EXIT_MALFORMED, "the result is no JSON object of ours"};
  const ReportData data = ReadReportData("the result", json);
  const Hgr hgr = HgrOf(file);
  const std::vector<int> parts(part, part + hgr.ncells);
  const Details details = DetailsOf(file);
  if (HashOf(hgr) != data.hash || HashOf(parts) != data.output.hash)
    Refuse("the hypergraph and the partition are not those of the result");
  for (int cell = 0; cell < hgr.ncells; cell++)
    if (part[cell] < 0 || part[cell] >= data.parts)
      Refuse(fmt::format("part[{}] is {}, but parts are numbered from 0 to {}", cell, part[cell],
                         data.parts - 1));
  CheckFiles({}, {path});
  WriteFile(path, ReportPage(data, &hgr, &parts, &details));
}

} // namespace kapris_report

kapris_file_status kapris_write_report(const char *path, const char *json, const kapris_file *file,
                                       const int *part, char *message, size_t room)
{
  using namespace kapris_report;

  return Guard(message, room, [&] {
    if (path == nullptr || json == nullptr || file == nullptr || (part == nullptr && file->ncells > 0))
      Refuse("path, json, file and part must not be NULL");
    WriteReport(path, json, *file, part);
  });
}
