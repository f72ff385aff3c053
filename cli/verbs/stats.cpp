// cli/verbs/stats.cpp - kapris stats: describes a hypergraph.
// SPDX-License-Identifier: MIT

#include "measure/stats.h"

#include "io/input.h"
#include "io/output.h"
#include "measure/report.h"
#include "options/json.h"
#include "options/options.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
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

static std::string FormatMedian(const Json &median)
{
  return median.is_number_float() ? fmt::format("{}", median.get<double>()) : median.dump();
}

static std::string FormatDistribution(const std::string &name, const Json &json)
{
  if (!json.contains("min"))
    return Line(name, "none");
  std::string text =
      Line(name, fmt::format("total {}, min {}, average {:.2f}, median {}, max {}", json["total"].dump(),
                             json["min"].dump(), json["average"].get<double>(), FormatMedian(json["median"]),
                             json["max"].dump()));
  for (const Json &bin : json["histogram"]) {
    const std::string from = bin["from"].dump(), to = bin["to"].dump();
    text += Line("", fmt::format("{:<10} {}", from == to ? from : from + "-" + to, bin["count"].dump()));
  }
  return text;
}

// Names of lines are those of the object, with blanks.
static std::string FormatStats(const Json &json)
{
  std::string text;

  for (const auto &[key, value] : json.items()) {
    std::string name = key;
    std::replace(name.begin(), name.end(), '_', ' ');
    if (value.is_object())
      text += FormatDistribution(name, value);
    else if (name != "schema")
      text += Line(name, value.is_string() ? value.get<std::string>() : value.dump());
  }
  return text;
}

static ExitStatus PrintStats(const StatsRequest &request)
{
  CheckFiles({request.input.path}, {request.json});
  const Hgr hgr = ReadHypergraph(request.input);
  Json json = StartJson("kapris-stats-1", NameOf(request.input), hgr);

  AddStats(hgr, &json);
  if (!request.json.empty())
    WriteJson(json, request.json);
  if (request.json != "-")
    std::fputs(FormatStats(json).c_str(), stdout);
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
              "components       groups of cells that nets connect; an island is a component\n"
              "The lines below a size, degree or weight tell how many there are between powers of two.\n\n"
              "Example: kapris stats --json circuit.hgr",
              [request, run] { *run = [request] { return PrintStats(*request); }; });

  AddInput(verb, &request->input);
  AddJson(verb, &request->json, "kapris-stats-1");
}

} // namespace kapris_cli
