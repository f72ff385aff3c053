// cli/report/data.h - what a JSON result says, with its types checked.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/input.h"
#include "json/json.h"
#include "report/library.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kapris_report
{

struct ReportFigures {
  std::int64_t cut = 0, soed = 0, connectivity = 0;
  double imbalance = 0.0;
  bool balanced = false;
  std::int64_t excess = 0; // weight out of the limits
};

struct ReportStart {
  int number = 0;
  std::int64_t seed = 0;
  ReportFigures figures;
  bool completed = false;
  double seconds = 0.0;
};

struct ReportTrial {
  int start = 0, number = 0;
  std::int64_t value = 0;
  std::optional<std::int64_t> cycled;
  double imbalance = 0.0;
  bool best = false;
  std::vector<int> parents; // numbers of the trials that it combines, twice the same of a V-cycle; or empty
};

struct ReportLevel {
  std::string phase;
  int cycle = 0;
  bool polish = false;
  int cells = 0, nets = 0, pins = 0;
  std::optional<std::int64_t> value; // none without a partition
  double imbalance = 0.0;
};

struct ReportBisection {
  int first = 0, parts = 0; // its cells become the parts from first
  std::int64_t cut = 0;
  std::vector<std::int64_t> weights; // of its two sides
  double seconds = 0.0;
};

struct ReportFile {
  std::string path, hash; // both empty: none
};

// The key records, which only some results have.
struct ReportRecords {
  Input input;                             // how the hypergraph was read; without its path
  std::vector<std::int64_t> fixed_weights; // per part; empty: nothing is fixed
  std::vector<ReportTrial> trials;
  std::vector<ReportLevel> levels;
  std::vector<ReportBisection> bisections; // none in results of versions that did not have them
};

struct ReportData {
  std::string file, hash, version, command, status, message;
  int cells = 0, nets = 0, pins = 0;
  ReportFile given, fixed, groups, output;
  std::string terminals; // fields that fix them; empty: free
  // Options and limits.
  int parts = 0, runs = 0, members = 0, combinations = 0, threads = 0;
  std::string scheme, objective, coarsening, refinement, vcycle;
  bool reconst = false;
  double epsilon = 0.0, min_epsilon = 1.0;
  bool allow_empty = false;
  std::vector<double> shares; // sum 1; empty: all equal
  std::int64_t seed = 0;
  std::optional<double> limit_seconds;
  std::optional<std::int64_t> limit_bytes;
  // What came of it.
  std::optional<int> best_start;
  ReportFigures best;
  int nempty = 0; // parts
  std::vector<std::string> warnings;
  std::vector<ReportStart> starts;
  std::vector<std::int64_t> weights, limits, minimums; // per part
  double seconds = 0.0, seconds_read = 0.0, seconds_coarsening = 0.0, seconds_initial = 0.0,
         seconds_refining = 0.0, seconds_balancing = 0.0;
  std::int64_t peak_bytes = 0;
  std::optional<ReportRecords> records;
  std::vector<ReportFile> combined; // partitions; of the verb combine
};

// Throws Failure that names the file and the key of the first thing that is not as docs/json.md says.
ReportData ReadReportData(const std::string &name, const Json &json);
// The same of a file, which is named as it was given.
ReportData LoadReportData(const std::string &path);

// What the starts are compared by first.
inline std::int64_t ObjectiveOf(const ReportData &data, const ReportFigures &figures)
{
  if (data.objective == "connectivity")
    return figures.connectivity;
  return data.objective == "soed" ? figures.soed : figures.cut;
}

// What the values of the trials are that partition into all parts, and of their levels. Without members the engine
// compares such partitions by the SOED where the connectivity is the objective.
inline std::string TrialMeasure(const ReportData &data)
{
  return data.members == 0 && data.objective == "connectivity" ? "soed" : data.objective;
}

// The share of a part in the total weight.
inline double ShareOf(const ReportData &data, size_t p)
{
  return data.shares.empty() ? 1.0 / data.parts : data.shares[p];
}

std::int64_t TotalWeight(const ReportData &data);

// The words of a command line that gives the same result.
std::vector<std::string> RepeatCommand(const ReportData &data);

} // namespace kapris_report
