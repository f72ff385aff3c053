// cli/report/kapris_report.cpp - the C interface of the report library.
// SPDX-License-Identifier: MIT

#include "report/kapris_report.h"

#include "formats/hash.h"
#include "formats/output.h"
#include "formats/records.h"
#include "json/json.h"
#include "report/order.h"
#include "report/report.h"

#include <algorithm>
#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace kapris_report
{

static std::vector<int> PartsOf(const kapris_file &file, const int *part, int nparts)
{
  for (int cell = 0; cell < file.ncells; cell++)
    if (part[cell] < 0 || part[cell] >= nparts)
      Refuse(fmt::format("part[{}] is {}, but it should be between 0 and {}", cell, part[cell], nparts - 1));
  return {part, part + file.ncells};
}

// From new places to what stands there, and from the ends of blocks to their beginnings.
static void ShowOrder(const std::vector<int> &places, const std::vector<int> &ends, int *numbers, int *blocks)
{
  for (size_t i = 0; i < places.size(); i++)
    numbers[places[i]] = static_cast<int>(i);
  blocks[0] = 0;
  std::copy(ends.begin(), ends.end(), blocks + 1);
}

static void WriteReport(const char *path, const char *text, const kapris_file &file, const int *part)
{
  const Json json = ParseJson(text);

  if (json.is_discarded())
    throw Failure{EXIT_MALFORMED, "the result is no JSON object of ours"};
  const ReportData data = ReadReportData("the result", json);
  const Hgr hgr = HgrOf(file);
  const std::vector<int> parts = PartsOf(file, part, data.parts);
  const Details details = DetailsOf(file);
  if (HashOf(hgr) != data.hash || HashOf(parts) != data.output.hash)
    Refuse("the hypergraph and the partition are not those of the result");
  CheckFiles({}, {path});
  WriteFile(path, ReportPage(data, &hgr, &parts, &details));
}

} // namespace kapris_report

kapris_file_status kapris_order(const kapris_file *file, const int *part, int parts, int *nets, int *cells,
                                int *net_blocks, int *cell_blocks, char *message, size_t room)
{
  using namespace kapris_report;

  return Guard(message, room, [&] {
    if (file == nullptr || net_blocks == nullptr || cell_blocks == nullptr ||
        (file->ncells > 0 && (part == nullptr || cells == nullptr)) || (file->nnets > 0 && nets == nullptr))
      Refuse("file, part, nets, cells and blocks must not be NULL");
    if (parts < 1)
      Refuse(fmt::format("parts is {}, but it should be at least 1", parts));
    const Hgr hgr = HgrOf(*file);
    const Order order = OrderByPart(hgr, PartsOf(*file, part, parts), parts);
    ShowOrder(order.nets, order.netends, nets, net_blocks);
    ShowOrder(order.cells, order.cellends, cells, cell_blocks);
  });
}

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
