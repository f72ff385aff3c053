// cli/measure/report.cpp - the lines "name  value" that the verbs print.
// SPDX-License-Identifier: MIT

#include "measure/report.h"

#include <algorithm>
#include <fmt/core.h>
#include <iterator>

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

std::string FormatLimits(int part, const Limits &limits)
{
  const std::int64_t least = limits.least ? limits.least(part) : 0;

  if (!limits.most)
    return limits.least ? fmt::format(" at least {}", least) : "";
  return least > 0 ? fmt::format(" {} to {}", least, limits.most(part))
                   : fmt::format(" at most {}", limits.most(part));
}

static std::string FormatPart(int part, std::int64_t weight, const Limits &limits)
{
  std::string value = std::to_string(weight);

  if (limits.most || limits.least)
    value += " of" + FormatLimits(part, limits);
  if (limits.most && weight > limits.most(part))
    value += ", over";
  if (limits.least && weight < limits.least(part))
    value += ", under";
  return Line(fmt::format("part {}", part), value);
}

// Parts that a report lists one by one.
static constexpr int most_listed = 16;

// Calls visit(part, weight) for all parts, the empty ones too.
template <typename Visit>
static void VisitParts(const Measures &measures, long long nparts, Visit visit)
{
  size_t next = 0;

  for (int p = 0; p < nparts; p++) {
    const bool used = next < measures.used.size() && measures.used[next].number == p;
    visit(p, used ? measures.used[next++].weight : 0);
  }
}

namespace
{

struct Extremes {
  std::int64_t low = INT64_MAX, high = 0;

  void Add(std::int64_t value)
  {
    low = std::min(low, value);
    high = std::max(high, value);
  }

  std::string Text() const
  {
    return fmt::format("min {}, max {}", std::min(low, high), high);
  }
};

} // namespace

static std::string FormatExtremeWeights(const Measures &measures, long long nparts, const Limits &limits)
{
  Extremes weights, most, least;
  std::string out;
  int nout = 0;

  // The numbers of used parts can be far apart.
  if (static_cast<long long>(measures.used.size()) < nparts)
    weights.Add(0);
  for (const UsedPart &used : measures.used) {
    const bool over = limits.most && used.weight > limits.most(used.number);
    const bool under = limits.least && used.weight < limits.least(used.number);
    weights.Add(used.weight);
    if (limits.most)
      most.Add(limits.most(used.number));
    if (limits.least)
      least.Add(limits.least(used.number));
    if ((over || under) && nout++ < most_listed)
      out += FormatPart(used.number, used.weight, limits);
  }
  return Line("part weights", weights.Text()) + (limits.most ? Line("part limits", most.Text()) : "") +
         (limits.least ? Line("part minimums", least.Text()) : "") + out;
}

std::string FormatWeights(const Measures &measures, long long nparts, const Limits &limits)
{
  const int nover = CountOver(measures, limits);
  const long long nunder = CountUnder(measures, nparts, limits), nempty = nparts - std::ssize(measures.used);
  std::string text;

  if (nparts <= most_listed)
    VisitParts(measures, nparts, [&](int p, std::int64_t weight) { text += FormatPart(p, weight, limits); });
  else
    text = FormatExtremeWeights(measures, nparts, limits);
  return text + (nempty > 0 ? Line("empty parts", nempty) : "") +
         (nover > 0 ? Line("parts over", nover) : "") + (nunder > 0 ? Line("parts under", nunder) : "");
}

} // namespace kapris_cli
