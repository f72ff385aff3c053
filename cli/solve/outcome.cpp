// cli/solve/outcome.cpp - what a run of the library gave, as JSON and as lines to read.
// SPDX-License-Identifier: MIT

#include "solve/outcome.h"

#include "kapris.h"

#include "measure/bounds.h"
#include "measure/hash.h"
#include "measure/report.h"

#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kapris_cli
{

// ----------------------------------------------------------------------------------------------------------
// JSON

static Json PartFileJson(const std::string &path, const std::vector<int> &part)
{
  if (path.empty())
    return nullptr;
  return {{"path", path}, {"hash", HashOf(part)}};
}

// What the result depends on: the verb best puts only runs together that agree in all of this.
static Json OptionsJson(const Outcome &outcome)
{
  const kapris::Options &options = outcome.plan.options;

  return {{"parts", outcome.request->nparts},
          {"scheme", NameOfScheme(options.scheme)},
          {"objective", NameOfObjective(options.objective)},
          {"coarsening", NameOfCoarsening(options.coarsening)},
          {"refinement", NameOfRefinement(options.refinement)},
          {"vcycle", NameOfVCycle(options.vcycle)},
          {"runs", options.runs},
          {"reconst", options.reconst},
          {"epsilon", options.imbalance},
          {"target_weights", outcome.plan.shares.empty() ? Json(nullptr) : Json(outcome.plan.shares)},
          {"seed", outcome.result.seed}};
}

static Json LimitsJson(const kapris::Options &options)
{
  return {{"threads", options.threads},
          {"seconds", options.time_limit ? Json(options.time_limit->count()) : Json(nullptr)},
          {"bytes", options.memory_limit ? Json(*options.memory_limit) : Json(nullptr)}};
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
          {"unit_weights", input.unit_weights}};
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

static Json TrialsJson(const kapris::Result &result)
{
  Json trials = Json::array();

  for (const kapris::Trial &trial : result.trials)
    trials.push_back({{"start", result.starts[static_cast<size_t>(trial.start)].number},
                      {"trial", trial.number},
                      {"value", trial.value},
                      {"cycled", trial.cycled < 0 ? Json(nullptr) : Json(trial.cycled)},
                      {"imbalance", trial.imbalance},
                      {"best", trial.best != 0}});
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

static Json RecordsJson(const Outcome &outcome)
{
  return {{"input", InputJson(outcome.request->input)},
          {"fixed_weights", FixedWeightsJson(outcome)},
          {"trials", TrialsJson(outcome.result)},
          {"levels", LevelsJson(outcome.result)}};
}

Json ResultJson(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  Json json = StartJson("kapris-result-1", NameOf(outcome.request->input), outcome.hgr);

  json["hash"] = HashOf(outcome.hgr);
  json["version"] = fmt::format("{}.{}.{}", KAPRIS_VERSION_MAJOR, KAPRIS_VERSION_MINOR, KAPRIS_VERSION_PATCH);
  json["command"] = outcome.plan.command;
  json["given"] = PartFileJson(outcome.request->part, outcome.given);
  json["fixed"] = PartFileJson(outcome.request->fixed, outcome.fixed);
  json["options"] = OptionsJson(outcome);
  json["limits"] = LimitsJson(outcome.plan.options);
  json["status"] = kapris::StatusName(result.status);
  json["message"] = result.message;
  json["best"] = BestJson(result);
  json["starts"] = StartsJson(result);
  json["part_weights"] = result.part_weights;
  json["part_limits"] = result.part_limits;
  json["output"] = PartFileJson(outcome.plan.out, result.part);
  json["seconds"] = SecondsJson(outcome);
  json["peak_bytes"] = result.peak_bytes;
  if (outcome.plan.options.records)
    json["records"] = RecordsJson(outcome);
  return json;
}

// ----------------------------------------------------------------------------------------------------------
// Lines

static std::string StartsLine(const kapris::Options &options)
{
  if (options.first_start == 0 && options.starts == 1)
    return "1";
  return fmt::format("{}, numbers {} to {}", options.starts, options.first_start,
                     options.first_start + options.starts - 1);
}

static std::string PlanLines(const Outcome &outcome)
{
  const kapris::Options &options = outcome.plan.options;

  return FormatSizes(NameOf(outcome.request->input), outcome.hgr) + Line("parts", outcome.request->nparts) +
         Line("scheme", NameOfScheme(options.scheme)) +
         Line("objective", NameOfObjective(options.objective)) +
         Line("epsilon", fmt::format("{:.6g}", options.imbalance)) + Line("runs", options.runs) +
         Line("starts", StartsLine(options)) + Line("threads", options.threads);
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
  for (int p = 0; p < std::min(nparts, 16); p++)
    lines +=
        Line(fmt::format("part {}", p),
             fmt::format("about {:.1f}, at most {:.1f} rounded up", share(p) * static_cast<double>(total),
                         (1.0 + options.imbalance) * share(p) * static_cast<double>(total)));
  return lines + Line("would write", outcome.plan.out == "-" ? "standard output" : outcome.plan.out);
}

std::string Summary(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  Measures measures;
  std::string best;

  for (size_t p = 0; p < result.part_weights.size(); p++) {
    measures.total += result.part_weights[p];
    measures.used.push_back({static_cast<int>(p), result.part_weights[p]});
  }
  if (result.best_start >= 0)
    best = fmt::format("start {}", result.starts[static_cast<size_t>(result.best_start)].number);
  else if (outcome.given.empty())
    best = "made before the first start";
  else
    best = outcome.given == result.part ? "the given partition" : "the given partition, repaired";
  return PlanLines(outcome) + Line("seed", result.seed) + Line("best", best) + Line("cut", result.cut) +
         Line("soed", result.soed) + Line("connectivity-1", result.connectivity) +
         Line("imbalance", fmt::format("{:.4f}", result.imbalance)) +
         FormatWeights(measures, outcome.request->nparts,
                       [&](int p) { return result.part_limits[static_cast<size_t>(p)]; }) +
         Line("seconds", fmt::format("{:.3f}", result.seconds)) +
         Line("memory", fmt::format("{:.1f} MB", static_cast<double>(result.peak_bytes) / 1e6)) +
         Line("status", result.message.empty() ? kapris::StatusName(result.status) : result.message.c_str()) +
         Line("written", outcome.plan.out == "-" ? "standard output" : outcome.plan.out);
}

} // namespace kapris_cli
