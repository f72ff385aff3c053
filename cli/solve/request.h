// cli/solve/request.h - what the verbs that call the library are asked for, and the options that say it.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/input.h"

#include <cstdint>
#include <kapris.hpp>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace kapris_cli
{

enum class Preset { FAST, DEFAULT, QUALITY };

// The values of the options as they were given; what was not given is decided by Resolve.
struct Request {
  Input input;
  std::vector<std::string>
      parts; // files with the partitions to combine, or the one to refine; partition: none
  std::string fixed;
  std::string groups;    // file with cells that stay together; empty: none
  std::string terminals; // fields that fix terminals, as in 2x1; empty: free
  std::string target_weights;
  std::string out;
  std::string start_range;
  std::string journal; // empty: none
  std::string json;    // empty: none, "-": standard output
  std::string report;  // the same
  bool records = false;
  std::string names; // file for the names of cells with their parts; empty: none
  bool json_names = false;
  int nparts = 2;
  Preset preset = Preset::DEFAULT;
  std::optional<kapris_scheme> scheme;
  std::optional<kapris_objective> objective;
  std::optional<kapris_coarsening> coarsening;
  std::optional<kapris_refinement> refinement;
  std::optional<kapris_vcycle> vcycle;
  std::optional<int> runs, members, combinations;
  bool reconst = false;
  std::optional<double> epsilon;
  std::optional<int> ubfactor;
  std::optional<double> min_epsilon;
  bool allow_empty = false;
  int seed = 0;
  std::optional<int> starts;
  int threads = 1; // 0: as many as the machine has
  std::optional<double> time_limit;
  std::uint64_t memory_limit = 0; // bytes, 0: none
  bool quiet = false;
  int verbosity = 0;
  bool dry_run = false;
};

// What a request comes to.
struct Plan {
  std::string command; // the verb
  int nranks;          // that share the work, 0: one process alone
  kapris::Options options;
  std::vector<double> shares; // empty: all equal
  std::string out;
};

void AddPartitionOptions(CLI::App *verb, Request *request);
void AddRefineOptions(CLI::App *verb, Request *request);
void AddCombineOptions(CLI::App *verb, Request *request);

// Throws Failure for values that do not go together. nranks: as in Plan.
Plan Resolve(const std::string &command, const Request &request, int nranks = 0);

const char *NameOfScheme(kapris_scheme scheme);
const char *NameOfObjective(kapris_objective objective);
const char *NameOfCoarsening(kapris_coarsening coarsening);
const char *NameOfRefinement(kapris_refinement refinement);
const char *NameOfVCycle(kapris_vcycle vcycle);

} // namespace kapris_cli
