// cli/solve/terminals.cpp - parts for terminals by where they lie.
// SPDX-License-Identifier: MIT

#include "solve/terminals.h"

#include "libraries.h"

#include "formats/failure.h"

#include <algorithm>
#include <charconv>
#include <fmt/core.h>

namespace kapris_cli
{

Fields FieldsNamed(const std::string &text, int nparts)
{
  const char *end = text.data() + text.size();
  Fields fields = {0, 0};
  const auto columns = std::from_chars(text.data(), end, fields.columns);
  const bool cross = columns.ec == std::errc() && columns.ptr != end && *columns.ptr == 'x';
  const auto rows = std::from_chars(cross ? columns.ptr + 1 : end, end, fields.rows);

  if (!cross || rows.ec != std::errc() || rows.ptr != end || fields.columns < 1 || fields.rows < 1)
    throw Failure{EXIT_USAGE, fmt::format("--terminals: '{}' is not COLUMNSxROWS, as in 2x1", text)};
  if (static_cast<long long>(fields.columns) * fields.rows != nparts)
    throw Failure{EXIT_USAGE, fmt::format("--terminals: {} columns of {} fields are not {} parts",
                                          fields.columns, fields.rows, nparts)};
  return fields;
}

// The field of 0 to count - 1 that a place between low and high is in.
static int FieldOf(double at, double low, double high, int count)
{
  const double share = high > low ? (at / 2 - low / 2) / (high / 2 - low / 2) : 0.0;

  return std::min(count - 1, static_cast<int>(share * count));
}

void FixTerminals(const std::string &name, const Details &details, const Fields &fields, int ncells,
                  std::vector<int> *fixed)
{
  const std::vector<Terminal> &all = details.terminals;

  if (all.empty())
    throw Failure{EXIT_USAGE, fmt::format("--terminals: {} tells no places of terminals", name)};
  const auto [left, right] = std::minmax_element(
      all.begin(), all.end(), [](const Terminal &a, const Terminal &b) { return a.x < b.x; });
  const auto [bottom, top] = std::minmax_element(
      all.begin(), all.end(), [](const Terminal &a, const Terminal &b) { return a.y < b.y; });
  fixed->resize(static_cast<size_t>(ncells), -1);
  for (const Terminal &terminal : all) {
    int &part = (*fixed)[static_cast<size_t>(terminal.cell)];
    if (part < 0)
      part = FieldOf(terminal.y, bottom->y, top->y, fields.rows) * fields.columns +
             FieldOf(terminal.x, left->x, right->x, fields.columns);
  }
}

} // namespace kapris_cli
