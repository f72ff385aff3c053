// cli/report/data.cpp - reads a JSON result, trusting nothing.
// SPDX-License-Identifier: MIT

#include "report/data.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/hgr.h"
#include "formats/text.h"
#include "report/library.h"

#include <algorithm>
#include <climits>
#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <numeric>

namespace kapris_report
{

namespace
{

// A value and the keys that lead to it: "starts[3].cut".
struct Place {
  const std::string *name;
  const Json *json;
  std::string path;
};

} // namespace

[[noreturn]] static void Fail(const Place &at, const std::string &what)
{
  constexpr size_t most_shown = 40;
  std::string shown = at.json->dump(-1, ' ', true, Json::error_handler_t::replace);

  if (shown.size() > most_shown)
    shown = shown.substr(0, most_shown) + "...";
  throw Failure{EXIT_MALFORMED,
                fmt::format("{}:1:1: {} is {}, which is not {}", *at.name, at.path, shown, what)};
}

static Place At(const Place &at, const char *key)
{
  if (!at.json->is_object())
    Fail(at, "an object");
  const auto found = at.json->find(key);
  const std::string path = at.path == "the result" ? key : at.path + "." + key;
  if (found == at.json->end())
    throw Failure{EXIT_MALFORMED, fmt::format("{}:1:1: the key {} is missing", *at.name, path)};
  return {at.name, &*found, path};
}

static std::int64_t Whole(const Place &at, std::int64_t low, std::int64_t high)
{
  const Json &json = *at.json;
  const bool fits = json.is_number_integer() &&
                    (!json.is_number_unsigned() || json.get<std::uint64_t>() <= INT64_MAX) &&
                    json.get<std::int64_t>() >= low && json.get<std::int64_t>() <= high;

  if (!fits)
    Fail(at, fmt::format("a whole number from {} to {}", low, high));
  return json.get<std::int64_t>();
}

static int Count(const Place &at, int low = 0)
{
  return static_cast<int>(Whole(at, low, INT_MAX));
}

static double Number(const Place &at, double low)
{
  constexpr double high = 1e15;

  if (!at.json->is_number() || !(at.json->get<double>() >= low) || !(at.json->get<double>() <= high))
    Fail(at, fmt::format("a number from {} to {}", low, high));
  return at.json->get<double>();
}

static bool Truth(const Place &at)
{
  if (!at.json->is_boolean())
    Fail(at, "true or false");
  return at.json->get<bool>();
}

static std::string Words(const Place &at)
{
  if (!at.json->is_string())
    Fail(at, "a text");
  return at.json->get<std::string>();
}

static std::string OneOf(const Place &at, const std::vector<std::string> &allowed)
{
  if (!at.json->is_string() || std::find(allowed.begin(), allowed.end(), *at.json) == allowed.end())
    Fail(at, fmt::format("one of {}", Join(allowed, ", ")));
  return at.json->get<std::string>();
}

// Calls read for each element; the list must have so many of them, unless any number will do.
template <typename Read>
static auto List(const Place &at, Read read, int expected = -1)
{
  std::vector<decltype(read(at))> list;

  if (!at.json->is_array())
    Fail(at, "a list");
  if (expected >= 0 && at.json->size() != static_cast<size_t>(expected))
    throw Failure{EXIT_MALFORMED, fmt::format("{}:1:1: {} has {} elements, but there are {} parts", *at.name,
                                              at.path, at.json->size(), expected)};
  for (size_t i = 0; i < at.json->size(); i++)
    list.push_back(read(Place{at.name, &(*at.json)[i], fmt::format("{}[{}]", at.path, i)}));
  return list;
}

// Nothing for null.
template <typename Read>
static auto Optional(const Place &at, Read read)
{
  return at.json->is_null() ? std::nullopt : std::optional(read(at));
}

static std::int64_t Weight(const Place &at)
{
  return Whole(at, 0, INT64_MAX);
}

// As heavy as hypergraphs can be, so that they add up.
static std::vector<std::int64_t> ReadWeights(const Place &at, int nparts)
{
  const std::vector<std::int64_t> weights = List(
      at, [](const Place &one) { return Whole(one, 0, most_weight); }, nparts);
  std::int64_t total = 0;

  for (const std::int64_t weight : weights) {
    total += weight;
    if (total > most_weight)
      throw Failure{EXIT_MALFORMED,
                    fmt::format("{}:1:1: {} add up to more than {}", *at.name, at.path, most_weight)};
  }
  return weights;
}

static ReportFigures ReadFigures(const Place &at)
{
  return {Weight(At(at, "cut")),          Weight(At(at, "soed")),
          Weight(At(at, "connectivity")), Number(At(at, "imbalance"), -1.0),
          Truth(At(at, "balanced")),      Weight(At(at, "excess"))};
}

static ReportStart ReadStart(const Place &at)
{
  return {Count(At(at, "number")), Weight(At(at, "seed")), ReadFigures(at), Truth(At(at, "completed")),
          Number(At(at, "seconds"), 0.0)};
}

static ReportFile ReadFile(const Place &at)
{
  return at.json->is_null() ? ReportFile{} : ReportFile{Words(At(at, "path")), Words(At(at, "hash"))};
}

// Members are born after their parents, so that a chain of parents ends.
static std::vector<int> ReadParents(const Place &at, int trial)
{
  const std::vector<int> parents = List(at, [](const Place &one) { return Count(one); });

  if ((!parents.empty() && parents.size() != 2) ||
      std::any_of(parents.begin(), parents.end(), [trial](int parent) { return parent >= trial; }))
    Fail(at, "a list of nothing or of two trials before this one");
  return parents;
}

static ReportTrial ReadTrial(const Place &at)
{
  ReportTrial trial = {Count(At(at, "start")),
                       Count(At(at, "trial")),
                       Weight(At(at, "value")),
                       Optional(At(at, "cycled"), Weight),
                       Number(At(at, "imbalance"), -1.0),
                       Truth(At(at, "best")),
                       {}};

  if (at.json->contains("parents")) // which older results do not have
    trial.parents = ReadParents(At(at, "parents"), trial.number);
  return trial;
}

static ReportLevel ReadLevel(const Place &at)
{
  const Place imbalance = At(at, "imbalance");

  return {OneOf(At(at, "phase"), {"coarsening", "initial partition", "refining"}),
          Count(At(at, "cycle")),
          Truth(At(at, "polish")),
          Count(At(at, "cells")),
          Count(At(at, "nets")),
          Count(At(at, "pins")),
          Optional(At(at, "value"), Weight),
          imbalance.json->is_null() ? 0.0 : Number(imbalance, -1.0)};
}

static ReportBisection ReadBisection(const Place &at, int nparts)
{
  const int parts = static_cast<int>(Whole(At(at, "parts"), 2, nparts));

  return {static_cast<int>(Whole(At(at, "first"), 0, nparts - parts)), parts, Weight(At(at, "cut")),
          List(At(at, "weights"), Weight, 2), Number(At(at, "seconds"), 0.0)};
}

// What is not asked for, or belongs to netlists only.
static void ReadNetlistInput(const Place &at, Input *input)
{
  input->module = Words(At(at, "module"));
  input->depth = Optional(At(at, "depth"), [](const Place &number) { return Count(number); });
  input->types = Words(At(at, "weights"));
  input->column = Words(At(at, "weight_by"));
  input->ignore_above =
      Optional(At(at, "ignore_nets_above"), [](const Place &number) { return Count(number); });
  input->ignore = List(At(at, "ignore_nets"), Words);
}

static ReportRecords ReadRecords(const Place &at, int nparts)
{
  const Place input = At(at, "input"), fixed = At(at, "fixed_weights");
  ReportRecords records;

  records.input.format = FormatNamed(Words(At(input, "format")));
  records.input.model = ModelNamed(Words(At(input, "model")));
  records.input.unit_weights = Truth(At(input, "unit_weights"));
  if (input.json->contains("module"))
    ReadNetlistInput(input, &records.input);
  if (!fixed.json->is_null())
    records.fixed_weights = List(fixed, Weight, nparts);
  records.trials = List(At(at, "trials"), ReadTrial);
  records.levels = List(At(at, "levels"), ReadLevel);
  if (at.json->contains("bisections"))
    records.bisections =
        List(At(at, "bisections"), [&](const Place &one) { return ReadBisection(one, nparts); });
  return records;
}

static void ReadOptions(const Place &result, ReportData *data)
{
  const Place options = At(result, "options"), limits = At(result, "limits");

  data->parts = Count(At(options, "parts"), 1);
  data->scheme = OneOf(At(options, "scheme"), {"recursive", "kway"});
  data->objective = OneOf(At(options, "objective"), {"cut", "connectivity", "soed"});
  data->coarsening = Words(At(options, "coarsening"));
  data->refinement = Words(At(options, "refinement"));
  data->vcycle = Words(At(options, "vcycle"));
  data->runs = Count(At(options, "runs"), 1);
  if (options.json->contains("members")) { // which older results do not have
    data->members = Count(At(options, "members"));
    data->combinations = Count(At(options, "combinations"));
  }
  data->reconst = Truth(At(options, "reconst"));
  data->epsilon = Number(At(options, "epsilon"), 0.0);
  data->min_epsilon = Number(At(options, "min_epsilon"), 0.0);
  data->allow_empty = Truth(At(options, "allow_empty"));
  data->seed = Whole(At(options, "seed"), 0, INT64_MAX);
  const Place shares = At(options, "target_weights");
  if (!shares.json->is_null())
    data->shares = List(
        shares, [](const Place &at) { return Number(at, 1e-12); }, data->parts);
  data->threads = Count(At(limits, "threads"), 1);
  data->limit_seconds = Optional(At(limits, "seconds"), [](const Place &at) { return Number(at, 0.0); });
  data->limit_bytes = Optional(At(limits, "bytes"), Weight);
}

static void ReadSeconds(const Place &at, ReportData *data)
{
  data->seconds = Number(At(at, "total"), 0.0);
  data->seconds_read = Number(At(at, "read"), 0.0);
  data->seconds_coarsening = Number(At(at, "coarsening"), 0.0);
  data->seconds_initial = Number(At(at, "initial"), 0.0);
  data->seconds_refining = Number(At(at, "refining"), 0.0);
  data->seconds_balancing = Number(At(at, "balancing"), 0.0);
}

ReportData ReadReportData(const std::string &name, const Json &json)
{
  const Place result = {&name, &json, "the result"};
  ReportData data;

  OneOf(At(result, "schema"), {"kapris-result-1"});
  data.file = Words(At(result, "file"));
  data.hash = Words(At(result, "hash"));
  data.version = Words(At(result, "version"));
  data.command = OneOf(At(result, "command"), {"partition", "refine", "combine"});
  data.status = Words(At(result, "status"));
  data.message = Words(At(result, "message"));
  data.cells = Count(At(result, "cells"));
  data.nets = Count(At(result, "nets"));
  data.pins = Count(At(result, "pins"));
  data.given = ReadFile(At(result, "given"));
  if (data.command == "combine")
    data.combined = List(At(result, "combined"), ReadFile);
  data.fixed = ReadFile(At(result, "fixed"));
  data.output = ReadFile(At(result, "output"));
  if (json.contains("groups"))
    data.groups = ReadFile(At(result, "groups"));
  if (json.contains("terminals"))
    data.terminals = Words(At(result, "terminals"));
  ReadOptions(result, &data);
  const Place best = At(result, "best");
  data.best_start = Optional(At(best, "start"), [](const Place &at) { return Count(at); });
  data.best = ReadFigures(best);
  data.nempty = Count(At(best, "empty_parts"));
  data.warnings = List(At(result, "warnings"), Words);
  data.starts = List(At(result, "starts"), ReadStart);
  data.weights = ReadWeights(At(result, "part_weights"), data.parts);
  data.limits = List(At(result, "part_limits"), Weight, data.parts);
  data.minimums = List(At(result, "part_minimums"), Weight, data.parts);
  ReadSeconds(At(result, "seconds"), &data);
  data.peak_bytes = Weight(At(result, "peak_bytes"));
  if (json.contains("records"))
    data.records = ReadRecords(At(result, "records"), data.parts);
  return data;
}

ReportData LoadReportData(const std::string &path)
{
  return ReadReportData(InputName(path), ReadJson(path));
}

std::int64_t TotalWeight(const ReportData &data)
{
  return std::accumulate(data.weights.begin(), data.weights.end(), std::int64_t{0});
}

} // namespace kapris_report
