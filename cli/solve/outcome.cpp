// cli/solve/outcome.cpp - what a run of the library gave, as lines to read.
// SPDX-License-Identifier: MIT

#include "solve/outcome.h"

#include "libraries.h"

#include "formats/files.h"
#include "formats/text.h"
#include "measure/bounds.h"
#include "measure/report.h"
#include "solve/estimate.h"

#include <algorithm>
#include <fmt/core.h>
#include <set>

namespace kapris_cli
{

static std::string StartsLine(const kapris::Options &options)
{
  if (options.first_start == 0 && options.starts == 1)
    return "1";
  return fmt::format("{}, numbers {} to {}", options.starts, options.first_start,
                     options.first_start + options.starts - 1);
}

static std::string SearchLines(const kapris::Options &options)
{
  if (options.members == 0)
    return Line("members", 0);
  if (options.time_limit)
    return Line("members", "until the time limit");
  return Line("members", options.members) + Line("combinations", options.combinations);
}

static std::string PlanLines(const Outcome &outcome)
{
  const kapris::Options &options = outcome.plan.options;

  return FormatSizes(NameOf(outcome.request->input), outcome.hgr) + Line("parts", outcome.request->nparts) +
         Line("scheme", NameOfScheme(options.scheme)) +
         Line("objective", NameOfObjective(options.objective)) +
         Line("epsilon", fmt::format("{:.6g}", options.epsilon)) +
         (options.min_epsilon < 1.0 ? Line("min-epsilon", fmt::format("{:.6g}", options.min_epsilon)) : "") +
         Line("runs", options.runs) + SearchLines(options) + Line("starts", StartsLine(options)) +
         (outcome.plan.nranks > 0 ? Line("ranks", outcome.plan.nranks) : "") +
         Line("threads", options.threads);
}

std::string PlanSummary(const Outcome &outcome)
{
  const kapris::Options &options = outcome.plan.options;
  const int nparts = outcome.request->nparts;
  std::int64_t total = 0;
  std::string lines =
      PlanLines(outcome) +
      Line("seed", options.seed.value_or(-1) < 0 ? "clock" : fmt::format("{}", *options.seed));

  for (int cell = 0; cell < outcome.hgr.ncells; cell++)
    total += CellWeight(outcome.hgr, cell);
  const auto share = [&](int p) {
    return outcome.plan.shares.empty() ? 1.0 / nparts : outcome.plan.shares[static_cast<size_t>(p)];
  };
  const Limits limits = LimitsOf(total, {nparts, outcome.plan.shares}, options.epsilon, options.min_epsilon);
  for (int p = 0; p < std::min(nparts, 16); p++)
    lines +=
        Line(fmt::format("part {}", p),
             fmt::format("about {:.1f},{}", share(p) * static_cast<double>(total), FormatLimits(p, limits)));
  lines += Line("cost", FormatCost(EstimateCost(*outcome.request, outcome.plan, outcome.hgr)) +
                            ", see docs/performance.md");
  return lines + Line("would write", outcome.plan.out == "-" ? "standard output" : Shown(outcome.plan.out));
}

// Where the result comes from.
static std::string BestOf(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  const std::vector<std::vector<int>> &given = outcome.given;
  const auto same = std::find(given.begin(), given.end(), result.part);

  if (result.best_start >= 0)
    return fmt::format("start {}", result.starts[static_cast<size_t>(result.best_start)].number);
  if (given.empty())
    return "made before the first start";
  if (given.size() == 1)
    return same != given.end() ? "the given partition" : "the given partition, repaired";
  if (same == given.end())
    return "one of the given partitions, repaired";
  return "the partition of " + InputName(outcome.request->parts[static_cast<size_t>(same - given.begin())]);
}

std::string Summary(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  Limits limits = {[&](int p) { return result.part_limits[static_cast<size_t>(p)]; }, {}};
  Measures measures;

  if (outcome.plan.options.min_epsilon < 1.0)
    limits.least = [&](int p) { return result.part_minimums[static_cast<size_t>(p)]; };

  for (const int p : std::set<int>(result.part.begin(), result.part.end())) {
    measures.used.push_back({p, result.part_weights[static_cast<size_t>(p)]});
    measures.total += measures.used.back().weight;
  }
  return PlanLines(outcome) + Line("seed", result.seed) + Line("best", BestOf(outcome)) +
         Line("cut", result.cut) + Line("soed", result.soed) + Line("connectivity", result.connectivity) +
         Line("imbalance", fmt::format("{:.4f}", result.imbalance)) +
         FormatWeights(measures, outcome.request->nparts, limits) +
         Line("seconds", fmt::format("{:.3f}", result.seconds)) +
         Line("memory", fmt::format("{:.1f} MB", static_cast<double>(result.peak_bytes) / 1e6)) +
         Line("status", result.message.empty() ? kapris::StatusName(result.status) : result.message.c_str()) +
         Line("written", outcome.plan.out == "-" ? "standard output" : Shown(outcome.plan.out));
}

} // namespace kapris_cli
