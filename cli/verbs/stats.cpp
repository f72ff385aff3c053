// cli/verbs/stats.cpp - kapris stats: describes a hypergraph.
// SPDX-License-Identifier: MIT

#include "measure/stats.h"

#include "libraries.h"

#include "formats/output.h"
#include "formats/text.h"
#include "json/objects.h"
#include "measure/report.h"
#include "options/input.h"
#include "options/json.h"
#include "options/options.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>

namespace kapris_cli
{

namespace
{

struct StatsRequest {
  Input input;
  std::string json; // empty: none
};

} // namespace

static std::string FormatDistribution(const std::string &name, const Distribution &all)
{
  if (all.histogram.empty())
    return Line(name, "none");
  std::string text = Line(name, fmt::format("total {}, min {}, average {:.2f}, median {}{}, max {}",
                                            all.total, all.min, all.average, all.median_twice / 2,
                                            all.median_twice % 2 == 0 ? "" : ".5", all.max));
  for (const Bin &bin : all.histogram) {
    const std::string low = std::to_string(bin.low), high = std::to_string(bin.high);
    text += Line("", fmt::format("{:<10} {}", low == high ? low : low + "-" + high, bin.count));
  }
  return text;
}

static std::string FormatStats(const Stats &stats)
{
  std::string text;
  const auto spaced = [](std::string name) {
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
  };

  for (const auto &[name, count] : stats.counts)
    text += Line(spaced(name), count);
  if (stats.largest_components.size() > 1)
    text += Line("the largest", Join(stats.largest_components, " ") + " cells");
  for (const auto &[name, distribution] : stats.distributions)
    text += FormatDistribution(spaced(name), distribution);
  return text;
}

static ExitStatus PrintStats(const StatsRequest &request)
{
  CheckFiles({request.input.path, request.input.types}, {request.json});
  const Hgr hgr = ReadHypergraph(request.input);
  const Stats stats = CountStats(hgr);

  if (!request.json.empty())
    WriteStats(PlainNameOf(request.input), hgr, stats, request.json);
  if (request.json != "-")
    std::fputs((FormatSizes(NameOf(request.input), hgr) + FormatStats(stats)).c_str(), stdout);
  return EXIT_DONE;
}

void AddStatsVerb(CLI::App *app, Run *run)
{
  auto request = std::make_shared<StatsRequest>();
  CLI::App *verb =
      AddVerb(app, "stats", "Describe a hypergraph",
              "repeated pins    pins on a cell that their net has named already; nothing below counts them\n"
              "one cell nets    nets that no partition cuts, besides the empty ones\n"
              "identical nets   nets with the same cells as an earlier net, in any order\n"
              "islands          cells on no net\n"
              "components       groups of cells that nets connect; an island is a component. The largest "
              "ten, if there are several\n"
              "The lines below a size, degree or weight tell how many there are between powers of two.\n\n"
              "Example: kapris stats --json circuit.hgr",
              [request, run] { *run = [request] { return PrintStats(*request); }; });

  AddInput(verb, &request->input);
  AddJson(verb, &request->json, "kapris-stats-1");
}

} // namespace kapris_cli
