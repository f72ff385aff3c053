// cli/measure/report.cpp - the lines "name  value" that the verbs print.
// SPDX-License-Identifier: MIT

#include "measure/report.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_cli
{

std::string Line(const std::string &name, const std::string &value)
{
  return fmt::format("{:<15}{}\n", name, value);
}

std::string FormatSizes(const std::string &name, const Hgr &hgr)
{
  return Line("file", name) + Line("cells", hgr.ncells) + Line("nets", hgr.nnets) +
         Line("pins", hgr.netind.size());
}

static std::string FormatPart(int part, std::int64_t weight, const Limits &limits)
{
  std::string value = std::to_string(weight);

  if (limits)
    value += fmt::format(" of at most {}{}", limits(part), weight > limits(part) ? ", over" : "");
  return Line(fmt::format("part {}", part), value);
}

// Parts that a report lists one by one.
static constexpr int most_listed = 16;

static std::string FormatAllWeights(const Measures &measures, int nparts, const Limits &limits)
{
  std::string text;
  size_t next = 0;

  for (int p = 0; p < nparts; p++) {
    const bool used = next < measures.used.size() && measures.used[next].number == p;
    text += FormatPart(p, used ? measures.used[next++].weight : 0, limits);
  }
  return text;
}

static std::string FormatExtremeWeights(const Measures &measures, long long nparts, const Limits &limits)
{
  const bool all_used = static_cast<long long>(measures.used.size()) == nparts;
  std::int64_t lightest = all_used ? measures.total : 0, heaviest = 0;
  std::int64_t lowest = measures.used.empty() ? 0 : INT64_MAX, highest = 0;
  std::string over;
  int nover = 0;

  for (const UsedPart &used : measures.used) {
    lightest = std::min(lightest, used.weight);
    heaviest = std::max(heaviest, used.weight);
    if (limits) {
      const std::int64_t limit = limits(used.number);
      lowest = std::min(lowest, limit);
      highest = std::max(highest, limit);
      if (used.weight > limit && nover++ < most_listed)
        over += FormatPart(used.number, used.weight, limits);
    }
  }
  std::string text = Line("part weights", fmt::format("min {}, max {}", lightest, heaviest));
  if (limits)
    text += Line("part limits", fmt::format("min {}, max {}", lowest, highest));
  return text + over;
}

std::string FormatWeights(const Measures &measures, long long nparts, const Limits &limits)
{
  const int nover = CountOver(measures, limits);
  const std::string text = nparts <= most_listed
                               ? FormatAllWeights(measures, static_cast<int>(nparts), limits)
                               : FormatExtremeWeights(measures, nparts, limits);

  return nover > 0 ? text + Line("parts over", nover) : text;
}

} // namespace kapris_cli
