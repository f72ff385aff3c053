// cli/solve/solve.cpp - the run behind the verbs partition and refine.
// SPDX-License-Identifier: MIT
//
//   plan    what the options come to; that all outputs can be written   Resolve
//   read    hypergraph, fixed cells, given partition                    ReadInputs
//   run     the library, with progress, traces and Ctrl-C               RunLibrary
//   write   the part file, read again and measured anew                 WriteParts
//   report  summary, JSON, page                                         Report

#include "solve/solve.h"

#include "io/files.h"
#include "io/output.h"
#include "io/parts.h"
#include "json/objects.h"
#include "measure/bounds.h"
#include "measure/measures.h"
#include "measure/report.h"
#include "solve/interrupt.h"
#include "solve/outcome.h"
#include "solve/progress.h"

#include <chrono>
#include <cstdio>
#include <fmt/core.h>
#include <string_view>

namespace kapris_cli
{

namespace
{

// Bits of the library's traces.
enum { TRACE_RUNS = 8 | 16, TRACE_LEVELS = 1 | 2 | 4 | 128 };

} // namespace

static void CheckStreams(const Request &request)
{
  const int nstdin = (request.input.path == "-") + (request.part == "-") + (request.fixed == "-") +
                     (request.target_weights == "@-");

  if (nstdin > 1)
    throw Failure{EXIT_USAGE, "only one of the inputs can be standard input"};
}

static void CheckInputsAndOutputs(const Request &request, const Plan &plan)
{
  const bool file = request.target_weights.starts_with('@');

  CheckFiles({request.input.path, request.part, request.fixed, file ? request.target_weights.substr(1) : ""},
             {plan.out, request.json, request.report});
}

static void ReadInputs(const Request &request, Outcome *outcome)
{
  const auto start = std::chrono::steady_clock::now();
  const std::string name = NameOf(request.input);

  outcome->hgr = ReadHypergraph(request.input);
  CheckSums(name, outcome->hgr, request.nparts);
  if (!request.fixed.empty())
    outcome->fixed = LoadFixed(request.fixed, outcome->hgr.ncells, request.nparts);
  if (!request.part.empty())
    outcome->given = LoadParts(request.part, outcome->hgr.ncells, request.nparts);
  for (size_t i = 0; !outcome->given.empty() && i < outcome->fixed.size(); i++)
    if (outcome->fixed[i] != -1 && outcome->fixed[i] != outcome->given[i])
      throw Failure{EXIT_MALFORMED,
                    fmt::format("{}:{}:1: part {}, but {} fixes the cell to part {}", InputName(request.part),
                                i + 1, outcome->given[i], InputName(request.fixed), outcome->fixed[i])};
  outcome->seconds_read = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

static Failure FailureOf(const Request &request, const kapris::Error &error)
{
  switch (error.status()) {
  case KAPRIS_MEMORY_LIMIT:
    return {EXIT_OUT_OF_MEMORY,
            fmt::format("--memory-limit of {} bytes is too low: {}", request.memory_limit, error.what())};
  case KAPRIS_OUT_OF_MEMORY:
    return {EXIT_OUT_OF_MEMORY, "out of memory"};
  case KAPRIS_INVALID_ARGUMENT:
    return {EXIT_MALFORMED, fmt::format("{}: {}", NameOf(request.input), error.what())};
  default:
    return {EXIT_INTERNAL, fmt::format("internal failure: {}", error.what())};
  }
}

static void RunLibrary(const Request &request, Outcome *outcome)
{
  kapris::Options &options = outcome->plan.options;
  const Hgr &hgr = outcome->hgr;
  const kapris::Hypergraph hypergraph = {hgr.ncells, hgr.netptr, hgr.netind, hgr.cellwgts, hgr.netwgts};
  const kapris::Targets targets = {request.nparts, outcome->plan.shares, outcome->fixed};

  options.cancel = CatchInterrupts();
  if (request.verbosity > 0) {
    options.log_level = request.verbosity > 1 ? TRACE_RUNS | TRACE_LEVELS : TRACE_RUNS;
    options.log = [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); };
  } else if (!request.quiet) {
    options.progress = ProgressLine(options);
  }
  try {
    outcome->result = outcome->plan.command == "refine"
                          ? kapris::Refine(hypergraph, targets, outcome->given, options)
                          : kapris::Partition(hypergraph, targets, options);
  } catch (const kapris::Error &error) {
    ClearProgressLine();
    throw FailureOf(request, error);
  }
  if (options.progress)
    ClearProgressLine();
}

// What has reached the disk is measured, by other code than the library's. Pipes and devices cannot be read again.
static void WriteParts(const Outcome &outcome)
{
  const kapris::Result &result = outcome.result;
  const std::string &out = outcome.plan.out;

  WriteFile(out, FormatParts(result.part));
  const std::vector<int> part = out != "-" && IsRegularFile(out)
                                    ? LoadParts(out, outcome.hgr.ncells, outcome.request->nparts)
                                    : result.part;
  const Measures measures = Measure(NameOf(outcome.request->input), outcome.hgr, part);
  if (part != result.part)
    throw Failure{EXIT_FILES, fmt::format("{} does not hold what was written to it", out)};
  if (measures.cut != result.cut || measures.soed != result.soed)
    throw Failure{EXIT_INTERNAL, fmt::format("internal failure: the cut is {}, not {}; the SOED {}, not {}",
                                             measures.cut, result.cut, measures.soed, result.soed)};
}

static void Report(const Outcome &outcome)
{
  const Request &request = *outcome.request;
  // Whatever is a result of its own there keeps standard output to itself.
  std::FILE *stream =
      outcome.plan.out == "-" || request.json == "-" || request.report == "-" ? stderr : stdout;

  WriteResult(outcome);
  if (request.quiet) {
    if (stream == stdout)
      fmt::print("{}\n", outcome.plan.out);
    return;
  }
  std::fputs(Summary(outcome).c_str(), stream);
  if (!request.json.empty() && request.json != "-")
    std::fputs(Line("json", request.json).c_str(), stream);
  if (!request.report.empty() && request.report != "-")
    std::fputs(Line("report", request.report).c_str(), stream);
}

static ExitStatus StatusOf(const kapris::Result &result)
{
  switch (result.status) {
  case KAPRIS_CANCELLED:
    return EXIT_INTERRUPTED;
  case KAPRIS_TIME_LIMIT:
    return EXIT_TIME_LIMIT;
  default:
    return result.balanced ? EXIT_DONE : EXIT_OVER_LIMIT;
  }
}

ExitStatus Solve(const std::string &command, const Request &request)
{
  Outcome outcome = {&request, Resolve(command, request), {}, {}, {}, 0.0, {}};

  CheckStreams(request);
  CheckInputsAndOutputs(request, outcome.plan);
  ReadInputs(request, &outcome);
  if (request.dry_run) {
    std::fputs(PlanSummary(outcome).c_str(), stdout);
    return EXIT_DONE;
  }
  RunLibrary(request, &outcome);
  WriteParts(outcome);
  try {
    Report(outcome);
  } catch (Failure &failure) {
    if (outcome.plan.out != "-")
      failure.text += fmt::format("\nthe partition is in {}", outcome.plan.out);
    throw;
  }
  return StatusOf(outcome.result);
}

} // namespace kapris_cli
