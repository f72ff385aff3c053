// cli/verbs/partition.cpp - kapris partition: a .hgr file in, a part file and a summary out.
// SPDX-License-Identifier: MIT
//
//   check    the output can be written, the sums fit   CheckOutput, CheckSums
//   run      the library                               RunLibrary
//   write    the part file, then the summary           WriteFile, Summary

#include "failure.h"
#include "kapris.h"

#include "io/files.h"
#include "io/input.h"
#include "io/parts.h"
#include "measure/bounds.h"
#include "measure/measures.h"
#include "measure/report.h"
#include "verbs/verbs.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace kapris_cli
{

struct PartitionRequest {
  Input input;
  std::string fixed; // empty: no cell is fixed
  std::string out;
  int nparts = 2;
  int imbalance = 5;
  int runs = 10;
  int seed = -1;
};

struct Outcome {
  std::vector<int> part;
  double seconds = 0.0;
};

// The library ends the process, with status 0, on errors. All of them but exhausted memory have been
// excluded, and scripts must see that one too: while this is set, the end of the process has status 5.
static bool in_library = false;

static void GuardExit()
{
  if (!in_library)
    return;
  std::fputs("kapris: out of memory\n", stderr);
  std::fflush(stderr);
  _exit(EXIT_OUT_OF_MEMORY);
}

// What the library has to say, such as a cut that it miscounted, is no result: it must not end up in a part file
// on standard output.
static int SendOutputToError()
{
  std::fflush(stdout);
  const int saved = dup(STDOUT_FILENO);
  if (saved != -1)
    dup2(STDERR_FILENO, STDOUT_FILENO);
  return saved;
}

static void RestoreOutput(int saved)
{
  std::fflush(stdout);
  if (saved != -1) {
    dup2(saved, STDOUT_FILENO);
    close(saved);
  }
}

// fixed is empty or holds the pre-assigned part of each cell.
static Outcome RunLibrary(const PartitionRequest &request, const Hgr &hgr, const std::vector<int> &fixed)
{
  const int options[9] = {1, request.runs, 1, 1, 1, 0, fixed.empty() ? 0 : 1, request.seed, 0};
  Outcome outcome;
  // Counted again from the parts for the summary: nets of one pin and repeated pins make the library's inexact.
  int cut = 0;

  outcome.part = fixed;
  outcome.part.resize(static_cast<size_t>(hgr.ncells));
  if (std::atexit(GuardExit) != 0)
    throw Failure{EXIT_OUT_OF_MEMORY, "out of memory"};

  const auto start = std::chrono::steady_clock::now();
  const int output = SendOutputToError();
  in_library = true;
  KAPRIS_PartRecursive(hgr.ncells, hgr.nnets, hgr.cellwgts.empty() ? nullptr : hgr.cellwgts.data(),
                       hgr.netptr.data(), hgr.netind.data(),
                       hgr.netwgts.empty() ? nullptr : hgr.netwgts.data(), request.nparts, request.imbalance,
                       options, outcome.part.data(), &cut);
  in_library = false;
  RestoreOutput(output);
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  for (const int p : outcome.part)
    if (p < 0 || p >= request.nparts)
      throw Failure{EXIT_INTERNAL, fmt::format("internal failure: the library gave a cell the part {}", p)};
  return outcome;
}

// FILE.part.N in the working directory, whichever directory FILE is in.
static std::string DefaultOutput(const PartitionRequest &request)
{
  const std::string name = NameOf(request.input);

  return fmt::format("{}.part.{}", name.substr(name.rfind('/') + 1), request.nparts);
}

static std::string Summary(const PartitionRequest &request, const Hgr &hgr, const Outcome &outcome,
                           const Measures &measures)
{
  return FormatSizes(NameOf(request.input), hgr) + Line("parts", request.nparts) +
         Line("imbalance", fmt::format("{}%", request.imbalance)) + Line("runs", request.runs) +
         Line("seed", fmt::format("{}{}", request.seed, request.seed < 0 ? " (clock)" : "")) +
         Line("cut", measures.cut) + FormatWeights(measures, request.nparts, request.imbalance) +
         Line("seconds", fmt::format("{:.3f}", outcome.seconds)) +
         Line("written", request.out == "-" ? "standard output" : request.out);
}

static ExitStatus Partition(PartitionRequest request)
{
  if (request.input.path == "-" && request.fixed == "-")
    throw Failure{EXIT_USAGE, "only one of FILE and FIXED can be standard input"};
  if (request.out.empty())
    request.out = DefaultOutput(request);
  CheckOutput(request.out, request.input.path);

  const Hgr hgr = ReadHypergraph(request.input);
  CheckSums(NameOf(request.input), hgr, request.nparts);
  std::vector<int> fixed;
  if (!request.fixed.empty())
    fixed = ReadFixed(InputName(request.fixed), ReadFile(request.fixed), hgr.ncells, request.nparts);
  const Outcome outcome = RunLibrary(request, hgr, fixed);
  const Measures measures = Measure(hgr, outcome.part);

  WriteFile(request.out, FormatParts(outcome.part));
  std::fputs(Summary(request, hgr, outcome, measures).c_str(), request.out == "-" ? stderr : stdout);
  return CountOver(measures, request.nparts, request.imbalance) > 0 ? EXIT_OVER_LIMIT : EXIT_DONE;
}

void AddPartition(CLI::App *app, Run *run)
{
  CLI::App *verb = app->add_subcommand("partition", "Partition a hypergraph");
  auto request = std::make_shared<PartitionRequest>();

  verb->footer(
      "Limits: n parts are bisected into n div 2 parts and the rest. A side gets at least its share less P\n"
      "percent of the weight to be bisected, rounded down; the other side may get what is left, and so on\n"
      "down to the parts. For 3 to 64 parts the largest of these limits holds for every part. A part above\n"
      "its limit is reported as over, and the exit status is 4.\n\n"
      "FILE counts pins from 1, the part file counts parts from 0.");
  AddInput(verb, &request->input);
  verb->add_option("-k,--parts", request->nparts, "Number of parts, at least 2")
      ->required()
      ->type_name("N")
      ->check(CLI::Range(2, INT_MAX).description(""));
  verb->add_option("--imbalance", request->imbalance, "Allowance of each bisection in percent, 1 to 49")
      ->type_name("P")
      ->capture_default_str()
      ->check(CLI::Range(1, 49).description(""));
  verb->add_option("--runs", request->runs, "Independent trials, of which the best counts")
      ->type_name("R")
      ->capture_default_str()
      ->check(CLI::Range(1, INT_MAX).description(""));
  verb->add_option("--seed", request->seed, "Fixes the random sequence; negative: from the clock")
      ->type_name("S")
      ->capture_default_str();
  verb->add_option(
          "--fixed", request->fixed,
          "File with the part that each cell must go to, or -1 for a free cell; - for standard input")
      ->type_name("FIXED");
  verb->add_option("-o,--output", request->out,
                   "Part file, - for standard output; default: FILE.part.N in the working directory")
      ->type_name("OUT");
  verb->callback([request, run] { *run = [request] { return Partition(*request); }; });
}

} // namespace kapris_cli
