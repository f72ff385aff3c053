// cli/solve/solve.cpp - the run behind the verbs partition and refine.
// SPDX-License-Identifier: MIT
//
//   plan    what the options come to; that all outputs can be written   Resolve
//   read    hypergraph, fixed cells, given partition                    ReadInputs
//   run     the library, with progress, traces and Ctrl-C               RunLibrary
//   write   the part file, read again and measured anew                 WriteParts
//   report  summary, JSON, page                                         Report

#include "solve/solve.h"

#include "formats/files.h"
#include "formats/names.h"
#include "formats/output.h"
#include "formats/parts.h"
#include "formats/text.h"
#include "json/objects.h"
#include "measure/bounds.h"
#include "measure/measures.h"
#include "measure/report.h"
#include "options/targets.h"
#include "solve/interrupt.h"
#include "solve/outcome.h"
#include "solve/progress.h"
#include "solve/terminals.h"

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
                     (TargetFile(request.target_weights) == "-") + (request.groups == "-") +
                     (request.input.types == "-");

  if (nstdin > 1)
    throw Failure{EXIT_USAGE, "only one of the inputs can be standard input"};
}

static void CheckInputsAndOutputs(const Request &request, const Plan &plan)
{
  CheckFiles({request.input.path, request.part, request.fixed, TargetFile(request.target_weights),
              request.groups, request.input.types},
             {plan.out, request.json, request.report, request.names});
}

static void ReadInputs(const Request &request, Outcome *outcome)
{
  const auto start = std::chrono::steady_clock::now();
  const std::string name = NameOf(request.input);

  outcome->hgr = ReadHypergraph(request.input, nullptr, &outcome->details);
  CheckSums(name, outcome->hgr, request.nparts);
  if (!request.fixed.empty())
    outcome->fixed = LoadNamedFixed(request.fixed, outcome->details, outcome->hgr.ncells, request.nparts);
  if (!request.terminals.empty())
    FixTerminals(name, outcome->details, FieldsNamed(request.terminals, request.nparts), outcome->hgr.ncells,
                 &outcome->fixed);
  if (!request.part.empty())
    outcome->given = LoadNamedParts(request.part, outcome->details, outcome->hgr.ncells, request.nparts);
  if (!request.groups.empty())
    outcome->groups = LoadGroups(request.groups, IndexCells(outcome->details, outcome->hgr.ncells));
  // Found out before the run, and without one.
  if (outcome->groups) {
    MergeParts(outcome->fixed, *outcome->groups, outcome->details, false);
    MergeParts(outcome->given, *outcome->groups, outcome->details, true);
  }
  for (size_t i = 0; !outcome->given.empty() && i < outcome->fixed.size(); i++)
    if (outcome->fixed[i] != -1 && outcome->fixed[i] != outcome->given[i])
      throw Failure{EXIT_MALFORMED,
                    fmt::format("{}:{}:1: part {}, but {} fixes the cell to part {}", InputName(request.part),
                                i + 1, outcome->given[i],
                                request.fixed.empty() ? "--terminals" : InputName(request.fixed),
                                outcome->fixed[i])};
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

static kapris::Result CallLibrary(const Request &request, const Outcome &outcome)
{
  const bool merging = outcome.groups.has_value();
  const Hgr merged = merging ? MergeCells(outcome.hgr, *outcome.groups) : Hgr();
  const Hgr &hgr = merging ? merged : outcome.hgr;
  const auto parts = [&](const std::vector<int> &part, bool whole) {
    return merging ? MergeParts(part, *outcome.groups, outcome.details, whole) : part;
  };
  const kapris::Hypergraph hypergraph = {hgr.ncells, hgr.netptr, hgr.netind, hgr.cellwgts, hgr.netwgts};
  const std::vector<int> fixed = parts(outcome.fixed, false), given = parts(outcome.given, true);
  const kapris::Targets targets = {request.nparts, outcome.plan.shares, fixed};
  const kapris::Options &options = outcome.plan.options;
  kapris::Result result = outcome.plan.command == "refine"
                              ? kapris::Refine(hypergraph, targets, given, options)
                              : kapris::Partition(hypergraph, targets, options);

  if (merging)
    result.part = UnfoldParts(result.part, *outcome.groups);
  return result;
}

static void RunLibrary(const Request &request, Outcome *outcome)
{
  kapris::Options &options = outcome->plan.options;

  options.cancel = CatchInterrupts();
  if (request.verbosity > 0) {
    options.log_level = request.verbosity > 1 ? TRACE_RUNS | TRACE_LEVELS : TRACE_RUNS;
    options.log = [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); };
  } else if (!request.quiet) {
    options.progress = ProgressLine(options);
  }
  try {
    outcome->result = CallLibrary(request, *outcome);
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
    throw Failure{EXIT_FILES, fmt::format("{} does not hold what was written to it", Shown(out))};
  if (measures.cut != result.cut || measures.soed != result.soed)
    throw Failure{EXIT_INTERNAL, fmt::format("internal failure: the cut is {}, not {}; the SOED {}, not {}",
                                             measures.cut, result.cut, measures.soed, result.soed)};
}

static void Report(const Outcome &outcome)
{
  const Request &request = *outcome.request;
  // Whatever is a result of its own there keeps standard output to itself.
  std::FILE *stream =
      outcome.plan.out == "-" || request.json == "-" || request.report == "-" || request.names == "-"
          ? stderr
          : stdout;

  if (!request.names.empty())
    WriteFile(request.names, FormatNames(outcome.details, outcome.result.part));
  WriteResult(outcome);
  if (request.quiet) {
    if (stream == stdout)
      fmt::print("{}\n", outcome.plan.out);
    return;
  }
  std::fputs(Summary(outcome).c_str(), stream);
  if (!request.names.empty() && request.names != "-")
    std::fputs(Line("names", Shown(request.names)).c_str(), stream);
  if (!request.json.empty() && request.json != "-")
    std::fputs(Line("json", Shown(request.json)).c_str(), stream);
  if (!request.report.empty() && request.report != "-")
    std::fputs(Line("report", Shown(request.report)).c_str(), stream);
}

// A time limit that was asked for has been kept: nothing to complain of.
static ExitStatus StatusOf(const kapris::Result &result)
{
  if (result.status == KAPRIS_CANCELLED)
    return EXIT_INTERRUPTED;
  return result.balanced ? EXIT_DONE : EXIT_OVER_LIMIT;
}

ExitStatus Solve(const std::string &command, const Request &request)
{
  Outcome outcome = {&request, Resolve(command, request), {}, {}, {}, 0.0, {}, {}, {}, {}};

  CheckStreams(request);
  CheckInputsAndOutputs(request, outcome.plan);
  ReadInputs(request, &outcome);
  outcome.warnings =
      LimitWarnings(outcome.hgr, {request.nparts, outcome.plan.shares}, outcome.plan.options.epsilon);
  PrintWarnings(outcome.warnings);
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
      failure.text += fmt::format("\nthe partition is in {}", Shown(outcome.plan.out));
    throw;
  }
  return StatusOf(outcome.result);
}

} // namespace kapris_cli
