// cli/solve/solve.cpp - the run behind the verbs partition, refine and combine.
// SPDX-License-Identifier: MIT
//
//   plan    what the options come to; that all outputs can be written   Resolve
//   read    hypergraph, fixed cells, given partitions                   ReadInputs
//   run     the library, with progress, traces and Ctrl-C               RunLibrary
//   write   the part file, read again and measured anew                 WriteParts
//   report  summary, JSON, page                                         Report

#include "solve/solve.h"

#include "libraries.h"

#include "formats/files.h"
#include "formats/names.h"
#include "formats/output.h"
#include "formats/packed.h"
#include "formats/parts.h"
#include "formats/rescue.h"
#include "formats/text.h"
#include "json/objects.h"
#include "measure/bounds.h"
#include "measure/measures.h"
#include "measure/report.h"
#include "options/targets.h"
#include "solve/interrupt.h"
#include "solve/journal.h"
#include "solve/outcome.h"
#include "solve/progress.h"
#include "solve/terminals.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fmt/core.h>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace kapris_cli
{

namespace
{

// Bits of the library's traces.
enum { TRACE_RUNS = 8 | 16, TRACE_LEVELS = 1 | 2 | 4 | 128 };

} // namespace

static void CheckStreams(const Request &request)
{
  const auto nstdin = (request.input.path == "-") + (request.fixed == "-") +
                      (TargetFile(request.target_weights) == "-") + (request.groups == "-") +
                      (request.input.types == "-") +
                      std::count(request.parts.begin(), request.parts.end(), "-");

  if (nstdin > 1)
    throw Failure{EXIT_USAGE, "only one of the inputs can be standard input"};
}

static void CheckInputsAndOutputs(const Request &request, const Plan &plan)
{
  std::vector<std::string> inputs = {request.input.path, request.fixed, TargetFile(request.target_weights),
                                     request.groups, request.input.types};

  inputs.insert(inputs.end(), request.parts.begin(), request.parts.end());
  CheckFiles(inputs, {plan.out, request.json, request.report, request.names, request.journal});
}

static void CheckFixed(const Request &request, const std::string &path, const std::vector<int> &given,
                       const std::vector<int> &fixed)
{
  for (size_t i = 0; i < fixed.size(); i++)
    if (fixed[i] != -1 && fixed[i] != given[i])
      throw Failure{EXIT_MALFORMED,
                    fmt::format("{}:{}:1: part {}, but {} fixes the cell to part {}", InputName(path), i + 1,
                                given[i], request.fixed.empty() ? "--terminals" : InputName(request.fixed),
                                fixed[i])};
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
  for (const std::string &path : request.parts)
    outcome->given.push_back(LoadNamedParts(path, outcome->details, outcome->hgr.ncells, request.nparts));
  if (!request.groups.empty())
    outcome->groups = LoadGroups(request.groups, IndexCells(outcome->details, outcome->hgr.ncells));
  // Found out before the run, and without one.
  if (outcome->groups) {
    MergeParts(outcome->fixed, *outcome->groups, outcome->details, false);
    for (const std::vector<int> &given : outcome->given)
      MergeParts(given, *outcome->groups, outcome->details, true);
  }
  for (size_t i = 0; i < outcome->given.size(); i++)
    CheckFixed(request, request.parts[i], outcome->given[i], outcome->fixed);
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

static kapris::Result RunHere(const LibraryCall &call)
{
  const auto &[command, hypergraph, targets, given, options, journal] = call;

  return command == "combine"  ? kapris::Combine(hypergraph, targets, given, options)
         : command == "refine" ? kapris::Refine(hypergraph, targets, given[0], options)
                               : kapris::Partition(hypergraph, targets, options);
}

Engine LocalEngine()
{
  return {RunHere, 0};
}

static kapris::Result CallLibrary(const Request &request, const Outcome &outcome, const Engine &engine,
                                  const Journal *journal)
{
  const bool merging = outcome.groups.has_value();
  const Hgr merged = merging ? MergeCells(outcome.hgr, *outcome.groups) : Hgr();
  const Hgr &hgr = merging ? merged : outcome.hgr;
  const auto parts = [&](const std::vector<int> &part, bool whole) {
    return merging ? MergeParts(part, *outcome.groups, outcome.details, whole) : part;
  };
  const kapris::Hypergraph hypergraph = {hgr.ncells, hgr.netptr, hgr.netind, hgr.cellwgts, hgr.netwgts};
  const std::vector<int> fixed = parts(outcome.fixed, false);
  const kapris::Targets targets = {request.nparts, outcome.plan.shares, fixed};
  std::vector<std::vector<int>> given;
  for (const std::vector<int> &part : outcome.given)
    given.push_back(parts(part, true));
  const std::vector<std::span<const int>> spans(given.begin(), given.end());
  kapris::Result result =
      engine.run({outcome.plan.command, hypergraph, targets, spans, outcome.plan.options, journal});

  if (merging)
    result.part = UnfoldParts(result.part, *outcome.groups);
  return result;
}

// Some starts had been made before, so that there is a result.
static bool RanOutOfMemory(const kapris::Result &result)
{
  return result.status == KAPRIS_MEMORY_LIMIT || result.status == KAPRIS_OUT_OF_MEMORY;
}

// Starts that the journal has are not run again.
static std::unique_ptr<Journal> UseJournal(const Request &request, Outcome *outcome)
{
  kapris::Options &options = outcome->plan.options;
  const int ncells = outcome->groups ? outcome->groups->count : outcome->hgr.ncells;

  if (request.journal.empty())
    return nullptr;
  std::unique_ptr<Journal> journal =
      OpenJournal(request.journal, Fingerprint(*outcome), ncells, request.nparts);
  options.completed = [used = journal.get()](const kapris::Start &start, std::span<const int> part) {
    NoteStart(used, start, part);
  };
  options.recall = [used = journal.get()](kapris::Start *start, std::span<int> part) {
    return RecallStart(used, start, part);
  };
  const auto first = journal->starts.lower_bound(options.first_start);
  const auto last = journal->starts.lower_bound(options.first_start + options.starts);
  if (first != last && !request.quiet)
    fmt::print(stderr, "kapris: note: {} of {} starts are in the journal\n", std::distance(first, last),
               options.starts);
  return journal;
}

static void RunLibrary(const Request &request, const Engine &engine, Outcome *outcome)
{
  kapris::Options &options = outcome->plan.options;
  const std::unique_ptr<Journal> journal = UseJournal(request, outcome);

  options.cancel = CatchInterrupts();
  if (request.verbosity > 0) {
    options.log_level = request.verbosity > 1 ? TRACE_RUNS | TRACE_LEVELS : TRACE_RUNS;
    options.log = [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); };
  } else if (!request.quiet) {
    options.progress = ProgressLine(options);
  }
  try {
    outcome->result = CallLibrary(request, *outcome, engine, journal.get());
  } catch (const kapris::Error &error) {
    ClearProgressLine();
    throw FailureOf(request, error);
  }
  if (options.progress)
    ClearProgressLine();
  if (RanOutOfMemory(outcome->result))
    PrintWarnings({outcome->result.message});
}

// Returns what has reached the disk. Pipes and devices cannot be read again.
static std::vector<int> WriteAndRead(const Outcome &outcome, const std::string &text)
{
  const std::string &out = outcome.plan.out;

  WriteFile(out, text);
  const std::vector<int> part = out != "-" && IsRegularFile(out)
                                    ? LoadParts(out, outcome.hgr.ncells, outcome.request->nparts)
                                    : outcome.result.part;
  if (part != outcome.result.part)
    throw Failure{EXIT_FILES, fmt::format("{} does not hold what was written to it", Shown(out))};
  return part;
}

// Writing to one fails when its reader has closed it, who has then seen enough.
static bool IsPipe(const std::string &path)
{
  struct stat info;

  return (path == "-" ? fstat(STDOUT_FILENO, &info) : stat(path.c_str(), &info)) == 0 &&
         (S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode));
}

// To another place than was asked for, which is then the output.
static void RescueParts(Outcome *outcome, const std::string &text, Failure *failure)
{
  const std::string asked = outcome->plan.out == "-" ? "kapris.part" : outcome->plan.out;
  const std::string name(WithoutPacking(asked.substr(asked.rfind('/') + 1)));
  const std::string path = Rescue(name, text);

  if (path.empty()) {
    failure->text += "\nthe partition is lost: neither the working directory nor $TMPDIR nor /tmp takes it";
    throw *failure;
  }
  outcome->plan.out = path;
}

// The result is measured by other code than the library's. Returns why the file that was asked for was not written,
// if it was not.
static std::optional<Failure> WriteParts(Outcome *outcome)
{
  const kapris::Result &result = outcome->result;
  const std::string text = FormatParts(result.part);
  std::optional<Failure> failure;
  std::vector<int> part;

  try {
    part = WriteAndRead(*outcome, text);
  } catch (Failure &caught) {
    caught.status = EXIT_FILES; // also if what is read again makes no sense
    failure = caught;
    if (!IsPipe(outcome->plan.out))
      RescueParts(outcome, text, &*failure);
    part = result.part;
  }
  const Measures measures = Measure(NameOf(outcome->request->input), outcome->hgr, part);
  if (measures.cut != result.cut || measures.soed != result.soed)
    throw Failure{EXIT_INTERNAL, fmt::format("internal failure: the cut is {}, not {}; the SOED {}, not {}",
                                             measures.cut, result.cut, measures.soed, result.soed)};
  return failure;
}

// Lines of a digit or more.
static std::uint64_t LeastBytes(const Outcome &outcome)
{
  return PackingOfName(outcome.plan.out) == Packing::NONE ? 2 * static_cast<std::uint64_t>(outcome.hgr.ncells)
                                                          : 0;
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
  if (RanOutOfMemory(result))
    return EXIT_OUT_OF_MEMORY;
  return result.balanced ? EXIT_DONE : EXIT_OVER_LIMIT;
}

ExitStatus Solve(const std::string &command, const Request &request, const Engine &engine)
{
  Outcome outcome = {&request, Resolve(command, request, engine.nranks), {}, {}, {}, 0.0, {}, {}, {}, {}};

  CheckStreams(request);
  CheckInputsAndOutputs(request, outcome.plan);
  ReadInputs(request, &outcome);
  outcome.warnings =
      LimitWarnings(outcome.hgr, {request.nparts, outcome.plan.shares}, outcome.plan.options.epsilon);
  if (outcome.plan.nranks > outcome.plan.options.starts)
    outcome.warnings.push_back(fmt::format(
        "{} for {} ranks: the others have nothing to do without more --starts or a "
        "--time-limit",
        outcome.plan.options.starts == 1 ? "1 start" : fmt::format("{} starts", outcome.plan.options.starts),
        outcome.plan.nranks));
  PrintWarnings(outcome.warnings);
  if (request.dry_run) {
    std::fputs(PlanSummary(outcome).c_str(), stdout);
    return EXIT_DONE;
  }
  CheckRoom(outcome.plan.out, LeastBytes(outcome));
  RunLibrary(request, engine, &outcome);
  std::optional<Failure> failure = WriteParts(&outcome);
  try {
    Report(outcome);
  } catch (Failure &late) {
    if (failure)
      late.text = failure->text + "\n" + late.text;
    failure = late;
  }
  if (failure) {
    if (outcome.plan.out != "-" && !IsPipe(outcome.plan.out))
      failure->text += fmt::format("\nthe partition is in {}", Shown(outcome.plan.out));
    throw *failure;
  }
  return StatusOf(outcome.result);
}

} // namespace kapris_cli
