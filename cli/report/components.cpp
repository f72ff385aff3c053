// cli/report/components.cpp - whether the parts are connected.
// SPDX-License-Identifier: MIT

#include "measure/components.h"

#include "report/escape.h"
#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

// Those with most cells outside first.
static Table ComponentTable(std::vector<PartComponents> parts)
{
  constexpr size_t most_rows = 200;
  Table table = {"components-numbers", {"part", "components", "cells outside the largest"}, {}, ""};

  std::stable_sort(parts.begin(), parts.end(),
                   [](const auto &a, const auto &b) { return a.outside > b.outside; });
  if (parts.size() > most_rows) {
    table.note = fmt::format("The first {} of {} parts.", most_rows, parts.size());
    parts.resize(most_rows);
  }
  for (const PartComponents &part : parts)
    table.rows.push_back(
        {fmt::format("{}", part.part), fmt::format("{}", part.count), fmt::format("{}", part.outside)});
  return table;
}

std::string ComponentsHtml(const Hgr &hgr, const std::vector<int> &part)
{
  const std::vector<PartComponents> parts = ComponentsOfParts(hgr, Place(part));
  const std::string sentence = parts.empty() ? "There are no cells" : DescribeComponents(parts);

  return fmt::format(
      "<section class=\"card\" id=\"components\"><h2>Are the parts connected?</h2>\n"
      "<p>{}: components by the nets that cells of a part share, cut ones too.</p>\n{}</section>\n",
      EscapeHtml(sentence), FoldedTable("Components as numbers", ComponentTable(parts)));
}

} // namespace kapris_report
