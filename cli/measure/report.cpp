// cli/measure/report.cpp - the lines "name  value" that the verbs print.
// SPDX-License-Identifier: MIT

#include "measure/report.h"

#include "measure/bounds.h"

#include <algorithm>

namespace kapris_cli
{

std::string FormatSizes(const std::string &name, const Hgr &hgr)
{
  return Line("file", name) + Line("cells", hgr.ncells) + Line("nets", hgr.nnets) +
         Line("pins", hgr.netind.size());
}

static std::string FormatAllWeights(const Measures &measures, int nparts, int percent)
{
  std::string text;
  size_t next = 0;

  for (int p = 0; p < nparts; p++) {
    const bool used = next < measures.used.size() && measures.used[next].number == p;
    const long long weight = used ? measures.used[next++].weight : 0;
    std::string value = fmt::format("{}", weight);
    if (percent > 0) {
      const long long limit = PartLimit(measures.total, nparts, percent, p);
      value += fmt::format(" of at most {}{}", limit, weight > limit ? ", over" : "");
    }
    text += Line(fmt::format("part {}", p), value);
  }
  return text;
}

static std::string FormatExtremeWeights(const Measures &measures, long long nparts, int percent)
{
  const bool all_used = static_cast<long long>(measures.used.size()) == nparts;
  long long lightest = all_used ? measures.total : 0, heaviest = 0;
  long long lowest = measures.total, highest = 0;

  for (const UsedPart &used : measures.used) {
    lightest = std::min(lightest, used.weight);
    heaviest = std::max(heaviest, used.weight);
    if (percent > 0) {
      const long long limit = PartLimit(measures.total, static_cast<int>(nparts), percent, used.number);
      lowest = std::min(lowest, limit);
      highest = std::max(highest, limit);
    }
  }
  std::string text = Line("part weights", fmt::format("min {}, max {}", lightest, heaviest));
  if (percent > 0)
    text += Line("part limits", fmt::format("min {}, max {}", lowest, highest));
  return text;
}

std::string FormatWeights(const Measures &measures, long long nparts, int percent)
{
  constexpr int most_listed = 16;
  std::string text = nparts <= most_listed ? FormatAllWeights(measures, static_cast<int>(nparts), percent)
                                           : FormatExtremeWeights(measures, nparts, percent);

  if (percent > 0) {
    const int nover = CountOver(measures, static_cast<int>(nparts), percent);
    if (nover > 0)
      text += Line("parts over", nover);
  }
  return text;
}

} // namespace kapris_cli
