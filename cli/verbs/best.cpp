// cli/verbs/best.cpp - kapris best: the best of the results of several runs, as if one run had made all their starts.
// SPDX-License-Identifier: MIT
//
//   read     the JSON results                                        ReadResult
//   compare  that they are of one input, one program, one request    CheckSame
//   choose   by the order in which starts are compared               IsBetter
//   merge    the lists of starts; what is missing is said            MergeStarts
//   deliver  the part file of the best, checked against its result   CopyPart

#include "libraries.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/hash.h"
#include "formats/output.h"
#include "formats/parts.h"
#include "formats/text.h"
#include "json/json.h"
#include "measure/report.h"
#include "options/json.h"
#include "options/options.h"
#include "verbs/verbs.h"

#include <climits>
#include <cstdio>
#include <fmt/core.h>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <tuple>

namespace kapris_cli
{

namespace
{

struct BestRequest {
  std::vector<std::string> files;
  std::string out, json;
};

// A JSON result and the file that it came from.
struct SavedResult {
  std::string path;
  Json json;
};

using StartsByNumber = std::map<std::int64_t, Json>;

} // namespace

static Json At(const Json &json, const char *key)
{
  return json.is_object() ? json.value(key, Json()) : Json();
}

static bool IsWhole(const Json &json, std::int64_t low, std::int64_t high)
{
  return json.is_number_integer() && (!json.is_number_unsigned() || json.get<std::uint64_t>() <= INT64_MAX) &&
         json.get<std::int64_t>() >= low && json.get<std::int64_t>() <= high;
}

static bool HasFigures(const Json &json)
{
  for (const char *key : {"cut", "soed", "connectivity", "excess"})
    if (!IsWhole(At(json, key), 0, INT64_MAX))
      return false;
  return At(json, "imbalance").is_number() && At(json, "balanced").is_boolean();
}

// Everything that is read below, so that a file with anything else in its place is refused here.
static bool IsResult(const Json &json)
{
  const Json options = At(json, "options"), best = At(json, "best"), objective = At(options, "objective");
  const Json start = At(best, "start"), starts = At(json, "starts");

  if (At(json, "schema") != "kapris-result-1" || !IsWhole(At(json, "cells"), 0, INT_MAX) ||
      !IsWhole(At(options, "parts"), 1, INT_MAX) ||
      (objective != "cut" && objective != "connectivity" && objective != "soed") || !HasFigures(best) ||
      !IsWhole(At(best, "empty_parts"), 0, INT_MAX) || !starts.is_array())
    return false;
  for (const Json &one : starts)
    if (!HasFigures(one) || !IsWhole(At(one, "number"), 0, INT_MAX) || !At(one, "completed").is_boolean())
      return false;
  return start.is_null() || IsWhole(start, 0, INT_MAX);
}

static SavedResult ReadResult(const std::string &path)
{
  SavedResult result = {path, ReadJson(path)};

  if (!IsResult(result.json))
    throw Failure{EXIT_MALFORMED,
                  fmt::format("{}:1:1: not a result of 'kapris partition --json' or 'kapris refine --json'",
                              InputName(path))};
  return result;
}

static void CheckSame(const SavedResult &first, const SavedResult &other)
{
  const auto check = [&](const std::string &what, const Json &a, const Json &b) {
    if (a != b)
      throw Failure{EXIT_USAGE,
                    fmt::format("{} and {} do not belong together: {} is {} in one and {} in the other",
                                Shown(first.path), Shown(other.path), what, a.dump(), b.dump())};
  };

  for (const char *key : {"version", "command", "cells", "nets", "pins", "hash"})
    check(key, At(first.json, key), At(other.json, key));
  for (const auto &[key, value] : first.json["options"].items())
    check(key, value, At(other.json["options"], key.c_str()));
  check("terminals", At(first.json, "terminals"), At(other.json, "terminals"));
  const Json x = At(first.json, "combined"), y = At(other.json, "combined");
  check("the number of partitions to combine", x.size(), y.size());
  for (size_t i = 0; x.is_array() && y.is_array() && i < x.size(); i++)
    check(fmt::format("the hash of partition {} to combine", i + 1), At(x[i], "hash"), At(y[i], "hash"));
  for (const char *key : {"given", "fixed", "groups"})
    check(fmt::format("the hash of {}", key), At(At(first.json, key), "hash"),
          At(At(other.json, key), "hash"));
}

// The order of starts; a partition that no start made is the given one, which comes first, or a simple one that only
// stands in for those that keep to the limits less well.
static bool IsBetter(const SavedResult &a, const SavedResult &b)
{
  const Json &options = a.json["options"];
  const bool mayempty = At(options, "allow_empty") == true;
  const std::string first = options["objective"].get<std::string>(), second = first == "cut" ? "soed" : "cut";
  const bool given = At(a.json, "command") != "partition";
  const auto key = [&](const Json &best) {
    return std::make_tuple(
        best["excess"].get<std::int64_t>(), mayempty ? 0 : best["empty_parts"].get<std::int64_t>(),
        best[first].get<std::int64_t>(), best[second].get<std::int64_t>(), best["imbalance"].get<double>(),
        best["start"].is_null() ? -1 : best["start"].get<std::int64_t>());
  };
  const Json &x = a.json["best"], &y = b.json["best"];
  const bool simplex = !given && x["start"].is_null(), simpley = !given && y["start"].is_null();

  if (simplex || simpley)
    return x["excess"] != y["excess"] ? x["excess"] < y["excess"] : !simplex && simpley;
  return key(x) < key(y);
}

static StartsByNumber MergeStarts(const std::vector<SavedResult> &results)
{
  StartsByNumber merged;

  for (const SavedResult &result : results)
    for (const Json &start : result.json["starts"]) {
      const auto [at, isnew] = merged.emplace(start["number"].get<std::int64_t>(), start);
      const Json &before = at->second;
      // Of a start that was cut short here and completed there, the completed one counts.
      if (!isnew && !before["completed"].get<bool>())
        at->second = start;
      else if (!isnew && start["completed"].get<bool>() &&
               (before["cut"] != start["cut"] || before["soed"] != start["soed"]))
        throw Failure{EXIT_USAGE,
                      fmt::format("start {} has the cut {} in {}, but another result says {}", at->first,
                                  start["cut"].dump(), Shown(result.path), before["cut"].dump())};
    }
  return merged;
}

// The numbers up to the largest that no result has, or only cut short.
static std::vector<std::int64_t> MissingStarts(const StartsByNumber &starts)
{
  constexpr size_t most = 20;
  std::vector<std::int64_t> missing;
  std::int64_t next = 0;

  for (const auto &[number, start] : starts) {
    for (; next < number && missing.size() < most; next++)
      missing.push_back(next);
    if (!start["completed"].get<bool>() && missing.size() < most)
      missing.push_back(number);
    next = number + 1;
  }
  return missing;
}

// The name stands in the result as it was given to the run; the files may have been moved together since.
static void CopyPart(const SavedResult &best, const std::string &out)
{
  const Json path = At(At(best.json, "output"), "path"), hash = At(At(best.json, "output"), "hash");
  const int ncells = best.json["cells"].get<int>(), nparts = best.json["options"]["parts"].get<int>();

  if (!path.is_string() || path == "-")
    throw Failure{EXIT_USAGE, fmt::format("the run of {} left no part file", Shown(best.path))};
  const std::string name = path.get<std::string>();
  const std::string beside = best.path.substr(0, best.path.rfind('/') + 1) + name.substr(name.rfind('/') + 1);
  for (const std::string &candidate : {beside, name}) {
    if (!IsRegularFile(candidate))
      continue;
    const std::vector<int> part = LoadParts(candidate, ncells, nparts);
    if (HashOf(part) == hash) {
      WriteFile(out, FormatParts(part));
      return;
    }
  }
  if (!IsRegularFile(beside) && !IsRegularFile(name))
    throw Failure{EXIT_FILES,
                  fmt::format("cannot find {}, the part file of {}", Shown(name), Shown(best.path))};
  throw Failure{EXIT_MALFORMED,
                fmt::format("{}:1:1: not the partition that {} speaks of", Shown(name), Shown(best.path))};
}

static std::string Summary(const SavedResult &best, const BestRequest &request, const StartsByNumber &starts)
{
  const Json &figures = best.json["best"];
  const Json made = At(At(best.json, "output"), "path");
  const Json path = request.out.empty() ? made : Json(request.out);

  return Line("results", request.files.size()) + Line("starts", starts.size()) +
         Line("best start", figures["start"].dump()) + Line("of", Shown(best.path)) +
         Line("objective", best.json["options"]["objective"].get<std::string>()) +
         Line("cut", figures["cut"].dump()) + Line("soed", figures["soed"].dump()) +
         Line("connectivity", figures["connectivity"].dump()) +
         Line("imbalance", fmt::format("{:.4f}", figures["imbalance"].get<double>())) +
         Line("balanced", figures["balanced"].get<bool>() ? "yes" : "no") +
         Line(request.out.empty() ? "part file" : "written",
              path.is_string() ? Shown(path.get<std::string>()) : "none");
}

static ExitStatus Best(const BestRequest &request)
{
  std::vector<SavedResult> results;
  size_t best = 0;

  CheckFiles(request.files, {request.out, request.json});
  for (const std::string &path : request.files) {
    results.push_back(ReadResult(path));
    CheckSame(results[0], results.back());
    if (IsBetter(results.back(), results[best]))
      best = results.size() - 1;
  }
  const StartsByNumber starts = MergeStarts(results);
  const std::vector<std::int64_t> missing = MissingStarts(starts);
  if (!missing.empty())
    fmt::print(stderr,
               "kapris: note: no completed start {}: one run with all starts may give another partition\n",
               Join(missing, ", "));

  if (!request.out.empty())
    CopyPart(results[best], request.out);
  if (!request.json.empty()) {
    Json merged = results[best].json;
    merged["starts"] = Json::array();
    for (const auto &[number, start] : starts)
      merged["starts"].push_back(start);
    if (!request.out.empty())
      merged["output"]["path"] = request.out;
    WriteJson(merged, request.json);
  }
  std::fputs(Summary(results[best], request, starts).c_str(),
             request.json == "-" || request.out == "-" ? stderr : stdout);
  return results[best].json["best"]["balanced"].get<bool>() ? EXIT_DONE : EXIT_OVER_LIMIT;
}

void AddBest(CLI::App *app, Run *run)
{
  auto request = std::make_shared<BestRequest>();
  CLI::App *verb = AddVerb(
      app, "best", "Choose the best of the results of several runs",
      "Examples:\n"
      "  kapris partition circuit.hgr -k 8 --start-range 0:9 --json=a.json -o a.part     (one machine)\n"
      "  kapris partition circuit.hgr -k 8 --start-range 10:19 --json=b.json -o b.part   (another)\n"
      "  kapris best a.json b.json -o best.part\n\n"
      "Results are put together only if they come from the same version, the same hypergraph, fixed cells\n"
      "and given partition, and the same options. With the starts 0 to N-1 all there and complete, the\n"
      "partition is that of one run with --starts N.",
      [request, run] { *run = [request] { return Best(*request); }; });

  Require(AddArguments(verb, "RESULT", &request->files, "Files written with --json=FILE"));
  AddText(verb, "-o,--output", &request->out, "FILE",
          "Copy the part file of the best here, - for standard output");
  AddJson(verb, &request->json, "kapris-result-1");
}

} // namespace kapris_cli
