// formats/types.cpp - a table of weights by the type of a cell.
// SPDX-License-Identifier: MIT

#include "formats/types.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/names.h"
#include "formats/nets.h"
#include "formats/scan.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_formats
{

// The number of the column, from 0, and the number of columns.
static std::pair<size_t, size_t> ReadHead(Scan *scan, const std::string &column)
{
  std::vector<std::string> names;

  while (NextInLine(scan)) {
    const char *place = scan->at;
    names.push_back(ReadName(scan));
    if (std::count(names.begin(), names.end(), names.back()) > 1)
      FailAt(*scan, place, fmt::format("two columns are called {}", ShortName(names.back())));
  }
  if (names.empty())
    FailAt(*scan, scan->at, "the columns are missing: type NAME...");
  const auto found = column.empty() ? names.begin() : std::find(names.begin(), names.end(), column);
  if (found == names.end())
    FailAt(*scan, scan->start, fmt::format("no column is called {}", ShortName(column)));
  EndLine(scan, "the columns");
  return {static_cast<size_t>(found - names.begin()), names.size()};
}

// The weight in that column; of the others only that they are weights matters.
static std::int64_t ReadColumns(Scan *scan, size_t column, size_t ncolumns)
{
  std::int64_t weight = 0;

  for (size_t c = 0; c < ncolumns; c++) {
    std::int64_t total = 0;
    if (!NextInLine(scan))
      FailAt(*scan, scan->at, fmt::format("weight {} of {} is missing", c + 1, ncolumns));
    const std::int64_t read = ReadWeight(scan, "weight", &total);
    if (c == column)
      weight = read;
  }
  EndLine(scan, "the weights");
  return weight;
}

TypeWeights ReadTypeWeights(const std::string &name, std::string_view text, const std::string &column)
{
  Scan scan = StartScan(name, text);
  std::pair<size_t, size_t> columns = {0, 1};
  std::vector<std::pair<std::string, long long>> lines;
  TypeWeights table = {name, {}, {}};
  bool first = true;

  for (; NextFilledLine(&scan); first = false) {
    const bool quoted = *scan.at == '"';
    const std::string type = ReadName(&scan);
    if (first && type == "type" && !quoted) {
      columns = ReadHead(&scan, column);
      continue;
    }
    if (first && !column.empty())
      FailAt(
          scan, scan.start,
          fmt::format("there is no line 'type NAME...', so that no column is called {}", ShortName(column)));
    lines.emplace_back(type, scan.line);
    const std::int64_t weight = ReadColumns(&scan, columns.first, columns.second);
    if (type == "*" && !quoted)
      table.others = weight;
    table.types.emplace_back(type, weight);
  }
  std::sort(lines.begin(), lines.end());
  for (size_t i = 1; i < lines.size(); i++)
    if (lines[i].first == lines[i - 1].first)
      throw Failure{EXIT_MALFORMED,
                    fmt::format("{}:{}:1: the type {} has its weights in line {} already", name,
                                lines[i].second, ShortName(lines[i].first), lines[i - 1].second)};
  std::sort(table.types.begin(), table.types.end());
  return table;
}

TypeWeights LoadTypeWeights(const std::string &path, const std::string &column)
{
  return ReadTypeWeights(InputName(path), OpenText(path).bytes, column);
}

std::optional<std::int64_t> WeightOfType(const TypeWeights &table, std::string_view type)
{
  const auto found =
      std::lower_bound(table.types.begin(), table.types.end(), type,
                       [](const auto &one, std::string_view word) { return one.first < word; });

  if (found == table.types.end() || found->first != type)
    return {};
  return found->second;
}

} // namespace kapris_formats
