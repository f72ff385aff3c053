// cli/json/objects.cpp - the objects that --json gives.
// SPDX-License-Identifier: MIT

#include "json/objects.h"

#include "kapris.h"
#include "libraries.h"

#include "formats/hash.h"
#include "formats/output.h"
#include "json/json.h"
#include "report/data.h"
#include "report/report.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <set>

namespace kapris_cli
{

// What all objects start with.
static Json StartJson(const std::string &schema, const std::string &name, const Hgr &hgr)
{
  return {{"schema", schema},
          {"file", name},
          {"cells", hgr.ncells},
          {"nets", hgr.nnets},
          {"pins", hgr.netind.size()}};
}

// ----------------------------------------------------------------------------------------------------------
// partition and refine; the verbs best and report read this

static Json PartFileJson(const std::string &path, const std::vector<int> &part)
{
  if (path.empty())
    return nullptr;
  return {{"path", path}, {"hash", HashOf(part)}};
}

static std::string Version()
{
  return fmt::format("{}.{}.{}", KAPRIS_VERSION_MAJOR, KAPRIS_VERSION_MINOR, KAPRIS_VERSION_PATCH);
}

// What the result depends on: the verb best puts only runs together that agree in all of this.
static Json OptionsJson(const Outcome &outcome, std::int64_t seed)
{
  const kapris::Options &options = outcome.plan.options;

  return {{"parts", outcome.request->nparts},
          {"scheme", NameOfScheme(options.scheme)},
          {"objective", NameOfObjective(options.objective)},
          {"coarsening", NameOfCoarsening(options.coarsening)},
          {"refinement", NameOfRefinement(options.refinement)},
          {"vcycle", NameOfVCycle(options.vcycle)},
          {"runs", options.runs},
          {"members", options.members},
          {"combinations", options.combinations},
          {"reconst", options.reconst},
          {"epsilon", options.epsilon},
          {"min_epsilon", options.min_epsilon},
          {"allow_empty", options.allow_empty},
          {"target_weights", outcome.plan.shares.empty() ? Json(nullptr) : Json(outcome.plan.shares)},
          {"seed", seed}};
}

static Json LimitsJson(const Plan &plan)
{
  const kapris::Options &options = plan.options;
  Json json = {{"threads", options.threads},
               {"seconds", options.time_limit ? Json(options.time_limit->count()) : Json(nullptr)},
               {"bytes", options.memory_limit ? Json(*options.memory_limit) : Json(nullptr)}};

  if (plan.nranks > 0)
    json["ranks"] = plan.nranks;
  return json;
}

static Json StartsJson(const kapris::Result &result)
{
  Json starts = Json::array();

  for (const kapris::Start &start : result.starts)
    starts.push_back({{"number", start.number},
                      {"seed", start.seed},
                      {"cut", start.cut},
                      {"soed", start.soed},
                      {"connectivity", start.soed - start.cut},
                      {"imbalance", start.imbalance},
                      {"excess", start.excess},
                      {"balanced", start.balanced != 0},
                      {"completed", start.completed != 0},
                      {"seconds", start.seconds}});
  return starts;
}

static Json BestJson(const kapris::Result &result)
{
  const bool made = result.best_start >= 0;

  return {
      {"start", made ? Json(result.starts[static_cast<size_t>(result.best_start)].number) : Json(nullptr)},
      {"cut", result.cut},
      {"soed", result.soed},
      {"connectivity", result.connectivity},
      {"imbalance", result.imbalance},
      {"excess", result.excess},
      {"empty_parts",
       result.part_weights.size() - std::set<int>(result.part.begin(), result.part.end()).size()},
      {"balanced", result.balanced}};
}

static Json SecondsJson(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  const auto &phase = result.seconds_phase;

  return {{"total", outcome.seconds_read + result.seconds},
          {"read", outcome.seconds_read},
          {"prepare", result.seconds_prepare},
          {"starts", result.seconds_starts},
          {"coarsening", phase[KAPRIS_COARSENING]},
          {"initial", phase[KAPRIS_INITIAL]},
          {"refining", phase[KAPRIS_REFINING]},
          {"balancing", phase[KAPRIS_BALANCING]}};
}

// What the page of a report needs beyond the result itself.
static Json InputJson(const Input &input)
{
  return {{"format", NameOfFormat(input.format)},
          {"model", NameOfModel(input.model)},
          {"unit_weights", input.unit_weights},
          {"module", input.module},
          {"depth", input.depth ? Json(*input.depth) : Json(nullptr)},
          {"weights", input.types},
          {"weight_by", input.column},
          {"ignore_nets_above", input.ignore_above ? Json(*input.ignore_above) : Json(nullptr)},
          {"ignore_nets", input.ignore}};
}

static Json FixedWeightsJson(const Outcome &outcome)
{
  std::vector<std::int64_t> weights(static_cast<size_t>(outcome.request->nparts));

  if (outcome.fixed.empty())
    return nullptr;
  for (size_t cell = 0; cell < outcome.fixed.size(); cell++)
    if (outcome.fixed[cell] >= 0)
      weights[static_cast<size_t>(outcome.fixed[cell])] += CellWeight(outcome.hgr, static_cast<int>(cell));
  return weights;
}

static Json ParentsJson(const kapris::Trial &trial)
{
  return trial.parents[0] < 0 ? Json::array() : Json{trial.parents[0], trial.parents[1]};
}

static Json TrialsJson(const kapris::Result &result)
{
  Json trials = Json::array();

  for (const kapris::Trial &trial : result.trials)
    trials.push_back({{"start", result.starts[static_cast<size_t>(trial.start)].number},
                      {"trial", trial.number},
                      {"value", trial.value},
                      {"cycled", trial.cycled < 0 ? Json(nullptr) : Json(trial.cycled)},
                      {"imbalance", trial.imbalance},
                      {"best", trial.best != 0},
                      {"parents", ParentsJson(trial)}});
  return trials;
}

static Json LevelsJson(const kapris::Result &result)
{
  Json levels = Json::array();

  for (const kapris::Level &level : result.levels)
    levels.push_back({{"phase", kapris::PhaseName(level.phase)},
                      {"cycle", level.cycle},
                      {"polish", level.polish != 0},
                      {"cells", level.cells},
                      {"nets", level.nets},
                      {"pins", level.pins},
                      {"value", level.value < 0 ? Json(nullptr) : Json(level.value)},
                      {"imbalance", level.value < 0 ? Json(nullptr) : Json(level.imbalance)}});
  return levels;
}

static Json BisectionsJson(const kapris::Result &result)
{
  Json bisections = Json::array();

  for (const kapris::Bisection &bisection : result.bisections)
    bisections.push_back({{"first", bisection.first},
                          {"parts", bisection.parts},
                          {"cut", bisection.cut},
                          {"weights", {bisection.weights[0], bisection.weights[1]}},
                          {"seconds", bisection.seconds}});
  return bisections;
}

static Json RecordsJson(const Outcome &outcome)
{
  return {{"input", InputJson(outcome.request->input)},
          {"fixed_weights", FixedWeightsJson(outcome)},
          {"trials", TrialsJson(outcome.result)},
          {"levels", LevelsJson(outcome.result)},
          {"bisections", BisectionsJson(outcome.result)}};
}

// In the order of the cells; as a names file has them, so that names that are no UTF-8 are not lost.
static Json NamesJson(const Outcome &outcome)
{
  Json names = Json::array();

  for (int cell = 0; cell < outcome.hgr.ncells; cell++)
    names.push_back({{"name", CellName(outcome.details, cell)},
                     {"part", outcome.result.part[static_cast<size_t>(cell)]}});
  return names;
}

std::string Fingerprint(const Outcome &outcome)
{
  Json json = {{"schema", "kapris-journal-1"},
               {"command", outcome.plan.command},
               {"version", Version()},
               {"cells", outcome.hgr.ncells},
               {"nets", outcome.hgr.nnets},
               {"hash", HashOf(outcome.hgr)},
               {"fixed", nullptr},
               {"groups", nullptr}};

  if (!outcome.fixed.empty())
    json["fixed"] = HashOf(outcome.fixed);
  if (outcome.groups)
    json["groups"] = HashOf(outcome.groups->merged);
  json["options"] = OptionsJson(outcome, outcome.plan.options.seed.value_or(-1));
  return json.dump();
}

static Json ResultJson(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  Json json = StartJson("kapris-result-1", PlainNameOf(outcome.request->input), outcome.hgr);

  json["hash"] = HashOf(outcome.hgr);
  json["version"] = Version();
  json["command"] = outcome.plan.command;
  const bool refines = outcome.plan.command == "refine", combines = outcome.plan.command == "combine";
  json["given"] = refines ? PartFileJson(outcome.request->parts[0], outcome.given[0]) : Json(nullptr);
  for (size_t i = 0; combines && i < outcome.given.size(); i++)
    json["combined"].push_back(PartFileJson(outcome.request->parts[i], outcome.given[i]));
  json["fixed"] = PartFileJson(outcome.request->fixed, outcome.fixed);
  if (outcome.groups)
    json["groups"] = PartFileJson(outcome.request->groups, outcome.groups->merged);
  if (!outcome.request->terminals.empty())
    json["terminals"] = outcome.request->terminals;
  json["options"] = OptionsJson(outcome, outcome.result.seed);
  json["limits"] = LimitsJson(outcome.plan);
  json["status"] = kapris::StatusName(result.status);
  json["message"] = result.message;
  json["warnings"] = outcome.warnings;
  json["best"] = BestJson(result);
  json["starts"] = StartsJson(result);
  json["part_weights"] = result.part_weights;
  json["part_limits"] = result.part_limits;
  json["part_minimums"] = result.part_minimums;
  json["output"] = PartFileJson(outcome.plan.out, result.part);
  json["seconds"] = SecondsJson(outcome);
  json["peak_bytes"] = result.peak_bytes;
  if (outcome.request->json_names)
    json["names"] = NamesJson(outcome);
  if (outcome.plan.options.records)
    json["records"] = RecordsJson(outcome);
  return json;
}

void WriteResult(const Outcome &outcome)
{
  const Request &request = *outcome.request;

  if (request.json.empty() && request.report.empty())
    return;
  const Json json = ResultJson(outcome);
  // Files first: whoever reads standard output may go away.
  for (const bool tostdout : {false, true}) {
    if (!request.json.empty() && (request.json == "-") == tostdout)
      WriteJson(json, request.json);
    if (!request.report.empty() && (request.report == "-") == tostdout)
      WriteFile(request.report, ReportPage(ReadReportData("the result", json), &outcome.hgr,
                                           &outcome.result.part, &outcome.details));
  }
}

// ----------------------------------------------------------------------------------------------------------
// eval

static Json PartWeightsJson(const Evaluation &eval)
{
  Json weights = Json::array();

  for (const UsedPart &used : eval.measures.used) {
    weights.push_back({{"part", used.number}, {"weight", used.weight}});
    if (eval.limits.most)
      weights.back()["over"] = used.weight > eval.limits.most(used.number);
    if (eval.limits.least)
      weights.back()["under"] = used.weight < eval.limits.least(used.number);
    const PartComponents &components =
        eval.components[static_cast<size_t>(&used - eval.measures.used.data())];
    weights.back()["components"] = components.count;
    weights.back()["cells_outside"] = components.outside;
  }
  return weights;
}

static Json FixedCellsJson(const Evaluation &eval)
{
  Json misplaced = Json::array();

  for (const int cell : eval.misplaced)
    misplaced.push_back({{"cell", cell + 1},
                         {"fixed", eval.fixed[static_cast<size_t>(cell)]},
                         {"part", eval.part[static_cast<size_t>(cell)]}});
  return {{"cells", eval.nfixed}, {"elsewhere", misplaced}};
}

static Json CutNetsJson(const EvalRequest &request, const Evaluation &eval)
{
  Json nets = Json::array();

  for (const CutNet &cut : eval.nets) {
    nets.push_back({{"net", cut.net + 1}, {"weight", NetWeight(eval.hgr, cut.net)}, {"parts", cut.parts}});
    if (request.json_names)
      nets.back()["name"] = NetName(eval.details, cut.net);
  }
  return nets;
}

static Json BorderCellsJson(const EvalRequest &request, const Evaluation &eval)
{
  Json cells = Json::array();

  for (const BorderCell &border : eval.border) {
    cells.push_back({{"cell", border.cell + 1},
                     {"weight", border.weight},
                     {"nets", border.nnets},
                     {"part", eval.part[static_cast<size_t>(border.cell)]}});
    if (request.json_names)
      cells.back()["name"] = CellName(eval.details, border.cell);
  }
  return cells;
}

static Json BoundsJson(const PartBound &bound, long long nparts)
{
  Json bounds = Json::array();

  for (int p = 0; p < nparts; p++)
    bounds.push_back(bound(p));
  return bounds;
}

static Json EvaluationJson(const EvalRequest &request, const Evaluation &eval)
{
  Json json = StartJson("kapris-eval-1", PlainNameOf(request.input), eval.hgr);

  json["parts"] = eval.nparts;
  json["cut"] = eval.measures.cut;
  json["soed"] = eval.measures.soed;
  json["connectivity"] = eval.measures.connectivity;
  json["imbalance"] = Imbalance(eval.measures, eval.nparts, eval.shares);
  json["part_weights"] = PartWeightsJson(eval);
  json["target_weights"] = eval.shares.empty() ? Json(nullptr) : Json(eval.shares);
  if (eval.limits.most) {
    if (eval.shares.empty())
      json["limit"] = eval.limits.most(0);
    else
      json["part_limits"] = BoundsJson(eval.limits.most, eval.nparts);
    json["parts_over"] = CountOver(eval.measures, eval.limits);
  }
  if (eval.limits.least) {
    if (eval.shares.empty())
      json["minimum"] = eval.limits.least(0);
    else
      json["part_minimums"] = BoundsJson(eval.limits.least, eval.nparts);
    json["parts_under"] = CountUnder(eval.measures, eval.nparts, eval.limits);
  }
  if (!request.fixed.empty())
    json["fixed"] = FixedCellsJson(eval);
  if (request.matrix)
    json["matrix"] = eval.matrix;
  if (request.nets) {
    json["cut_nets"] = CutNetsJson(request, eval);
    json["border_cells"] = BorderCellsJson(request, eval);
  }
  return json;
}

void WriteEvaluation(const EvalRequest &request, const Evaluation &eval)
{
  WriteJson(EvaluationJson(request, eval), request.json);
}

// ----------------------------------------------------------------------------------------------------------
// stats

// A whole number where a double would not be exact.
static Json MedianJson(std::int64_t twice)
{
  constexpr std::int64_t most_exact = std::int64_t{1} << 53;

  return twice > most_exact && twice % 2 == 0 ? Json(twice / 2) : Json(static_cast<double>(twice) / 2);
}

static Json DistributionJson(const Distribution &distribution)
{
  Json json = {{"total", distribution.total}}, histogram = Json::array();

  for (const Bin &bin : distribution.histogram)
    histogram.push_back({{"from", bin.low}, {"to", bin.high}, {"count", bin.count}});
  if (!histogram.empty()) {
    json["min"] = distribution.min;
    json["max"] = distribution.max;
    json["average"] = distribution.average;
    json["median"] = MedianJson(distribution.median_twice);
  }
  json["histogram"] = histogram;
  return json;
}

void WriteStats(const std::string &name, const Hgr &hgr, const Stats &stats, const std::string &path)
{
  Json json = StartJson("kapris-stats-1", name, hgr);

  for (const auto &[key, count] : stats.counts)
    json[key] = count;
  for (const auto &[key, distribution] : stats.distributions)
    json[key] = DistributionJson(distribution);
  json["largest_components"] = stats.largest_components;
  WriteJson(json, path);
}

} // namespace kapris_cli
