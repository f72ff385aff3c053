// cli/solve/request.cpp - the options of the verbs that call the library, and what they come to.
// SPDX-License-Identifier: MIT

#include "solve/request.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/text.h"
#include "json/json.h"
#include "options/choice.h"
#include "options/json.h"
#include "options/targets.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <fmt/core.h>
#include <thread>

namespace kapris_cli
{

// ----------------------------------------------------------------------------------------------------------
// Names

static const Names<Preset> presets = {
    {"fast", Preset::FAST}, {"default", Preset::DEFAULT}, {"quality", Preset::QUALITY}};
static const Names<kapris_scheme> schemes = {{"recursive", KAPRIS_RECURSIVE}, {"kway", KAPRIS_KWAY}};
// Of two names for one value, the first is the one that results tell.
static const Names<kapris_objective> objectives = {{"cut", KAPRIS_CUT},
                                                   {"connectivity", KAPRIS_CONNECTIVITY},
                                                   {"soed", KAPRIS_SOED},
                                                   {"km1", KAPRIS_CONNECTIVITY}};
static const Names<kapris_coarsening> coarsenings = {{"alternate", KAPRIS_ALTERNATE},
                                                     {"degree-stars", KAPRIS_DEGREE_STARS},
                                                     {"strong-stars", KAPRIS_STRONG_STARS},
                                                     {"whole-nets", KAPRIS_WHOLE_NETS},
                                                     {"pairs", KAPRIS_PAIRS}};
static const Names<kapris_refinement> refinements = {
    {"fm", KAPRIS_FM}, {"one-way-fm", KAPRIS_ONE_WAY_FM}, {"early-exit-fm", KAPRIS_EARLY_EXIT_FM}};
static const Names<kapris_vcycle> vcycles = {{"never", KAPRIS_VCYCLE_NEVER},
                                             {"best", KAPRIS_VCYCLE_BEST},
                                             {"improving", KAPRIS_VCYCLE_IMPROVING},
                                             {"close", KAPRIS_VCYCLE_CLOSE}};

template <class Value>
static const char *NameOfValue(const Names<Value> &names, Value value)
{
  for (const auto &[name, meaning] : names)
    if (meaning == value)
      return name;
  return "?";
}

const char *NameOfScheme(kapris_scheme scheme)
{
  return NameOfValue(schemes, scheme);
}

const char *NameOfObjective(kapris_objective objective)
{
  return NameOfValue(objectives, objective);
}

const char *NameOfCoarsening(kapris_coarsening coarsening)
{
  return NameOfValue(coarsenings, coarsening);
}

const char *NameOfRefinement(kapris_refinement refinement)
{
  return NameOfValue(refinements, refinement);
}

const char *NameOfVCycle(kapris_vcycle vcycle)
{
  return NameOfValue(vcycles, vcycle);
}

// ----------------------------------------------------------------------------------------------------------
// The options

static void AddGoal(CLI::App *verb, Request *request)
{
  Require(AddNumber(verb, "-k,--parts", &request->nparts, 1, INT_MAX, "N", "Number of parts"));
  CLI::Option *epsilon =
      AddDecimal(verb, "-e,--epsilon", &request->epsilon, 0.0, 1e6, "E",
                 "A part may weigh (1 + E) x its share of the total, the share rounded up to a "
                 "whole weight, then the product down; 3 percent are 0.03 [0.03]");
  CLI::Option *ubfactor =
      AddNumber(verb, "--ubfactor", &request->ubfactor, 1, 49, "P",
                "The same as a percentage, 1 to 49: of each bisection, or with --scheme kway of the parts");
  Exclude(ubfactor, epsilon);
  AddDecimal(
      verb, "--min-epsilon", &request->min_epsilon, 0.0, 1.0, "E",
      "A part may not weigh less than (1 - E) x its share, the share rounded down, then the product up [1]");
  AddFlag(verb, "--allow-empty", &request->allow_empty,
          "Parts may stay empty though there are cells that they can have");
  AddText(verb, "--target-weights", &request->target_weights, "W,W,...",
          "Relative weights that the parts should get, as in 2,1,1, or @FILE that has them");
  AddText(verb, "--fixed", &request->fixed, "FILE",
          "File with the part, from 0, that each cell must go to, or -1 for a free cell; or lines of a name "
          "and a part");
  AddText(verb, "--groups", &request->groups, "FILE",
          "File with cells that stay together, one group a line, names or numbers from 1");
  AddText(
      verb, "--terminals", &request->terminals, "CxR",
      "Fix terminals with places (Bookshelf) to the part of the field of C columns and R rows they lie in");
  Choice(verb, "--objective", &request->objective,
         "What to minimise; km1 is another word for connectivity [cut]", objectives);
}

static int ParseSeed(const std::string &text)
{
  int seed = -1;
  const char *end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, seed);

  if (text != "random" && (read.ec != std::errc() || read.ptr != end))
    throw Failure{EXIT_USAGE, fmt::format("--seed: '{}' is neither a whole number up to {} nor 'random'",
                                          Escape(text), INT_MAX)};
  return seed;
}

static void AddMethod(CLI::App *verb, Request *request)
{
  Choice(verb, "--scheme", &request->scheme, "Recursive bisection or direct k-way partitioning [recursive]",
         schemes);
  Choice(verb, "--refinement", &request->refinement, "Refinement of bisections [early-exit-fm]", refinements);
  Choice(verb, "--vcycle", &request->vcycle, "Which runs are improved by V-cycles [never]", vcycles);
  AddNumber(verb, "--runs", &request->runs, 1, INT_MAX, "N",
            "Runs of each bisection or k-way partitioning [2]");
  AddNumber(verb, "--members", &request->members, 0, INT_MAX, "N",
            "Partitions that a start makes and combines, 0 = only one [4]");
}

static void AddWork(CLI::App *verb, Request *request)
{
  AddNumber(verb, "--combinations", &request->combinations, 0, INT_MAX, "N",
            "Combinations of them, at most; of one given partition improvements [12]");
  CLI::Option *starts = AddNumber(verb, "--starts", &request->starts, 1, INT_MAX, "N",
                                  "Independent starts, of which the best counts [1]");
  CLI::Option *range =
      AddText(verb, "--start-range", &request->start_range, "A:B",
              "Only the starts numbered A to B, to spread starts over machines; see the verb best");
  Exclude(range, starts);
  AddParsed(
      verb, "--seed", [request](const std::string &text) { request->seed = ParseSeed(text); }, "0", "S",
      "Fixes the random sequence; random or negative: from the clock");
  ShowDefault(AddNumber(verb, "-t,--threads", &request->threads, 0, INT_MAX, "N",
                        "Threads, 0 = one per processor; no effect on the result"));
  AddDecimal(verb, "--time-limit", &request->time_limit, 1e-3, 1e9, "S",
             "Seconds after which the best so far is written");
  AddBytes(verb, "--memory-limit", &request->memory_limit, "Bytes for the partitioning, as in 500M or 2G");
}

// Of the default output.
static const char part_suffix[] = "part", refined_suffix[] = "refined", combined_suffix[] = "combined";

static const char *SuffixOf(const std::string &command)
{
  return command == "refine" ? refined_suffix : command == "combine" ? combined_suffix : part_suffix;
}

static void AddOutput(CLI::App *verb, Request *request, const char *suffix)
{
  AddText(
      verb, "-o,--output", &request->out, "FILE",
      fmt::format("Part file, - for standard output; default: FILE.{}.N in the working directory", suffix));
  AddJson(verb, &request->json, "kapris-result-1");
  AddText(verb, "--names", &request->names, "FILE", "Write lines of a cell's name, a tab and its part too");
  AddFlag(verb, "--json-names", &request->json_names,
          "The JSON object has the names of the cells with their parts");
  AddFlag(verb, "--records", &request->records, "The JSON object tells of trials and levels too");
  AddText(verb, "--report", &request->report, "FILE",
          "Write a page with pictures of the result; see the verb report");
  AddFlag(verb, "-q,--quiet", &request->quiet, "Print only the name of the file written");
  AddFlag(verb, "-v,--verbose", &request->verbosity, "Trace the runs on standard error; -vv: the levels too");
  AddFlag(verb, "--dry-run", &request->dry_run,
          "Check everything and say what would be done, in what time and memory");
}

// What is used most comes first, without a heading of its own.
static void GroupOptions(CLI::App *verb)
{
  SetGroup(verb, "Balance",
           {"--ubfactor", "--min-epsilon", "--allow-empty", "--target-weights", "--fixed", "--groups",
            "--terminals"});
  SetGroup(verb, "Method",
           {"--scheme", "--coarsening", "--refinement", "--vcycle", "--runs", "--members", "--combinations",
            "--reconst"});
  SetGroup(verb, "Work", {"--start-range", "--memory-limit", "--journal"});
  SetGroup(verb, "Results", {"--names", "--json", "--json-names", "--records", "--verbose", "--dry-run"});
}

static void AddJournal(CLI::App *verb, Request *request)
{
  AddText(verb, "--journal", &request->journal, "FILE",
          "Keep each start in FILE as it ends; the same command goes on from there after a crash");
}

void AddPartitionOptions(CLI::App *verb, Request *request)
{
  AddGoal(verb, request);
  Choice(verb, "--preset", &request->preset, "How much time to spend; other options override it", presets);
  Choice(verb, "--coarsening", &request->coarsening, "How cells are grouped [alternate]", coarsenings);
  AddMethod(verb, request);
  AddWork(verb, request);
  AddJournal(verb, request);
  AddFlag(verb, "--reconst", &request->reconst, "Pieces of cut nets stay in the recursion");
  AddOutput(verb, request, part_suffix);
  GroupOptions(verb);
}

void AddRefineOptions(CLI::App *verb, Request *request)
{
  AddGoal(verb, request);
  AddMethod(verb, request);
  AddWork(verb, request);
  AddOutput(verb, request, refined_suffix);
  GroupOptions(verb);
}

void AddCombineOptions(CLI::App *verb, Request *request)
{
  AddGoal(verb, request);
  AddWork(verb, request);
  AddOutput(verb, request, combined_suffix);
  GroupOptions(verb);
}

// ----------------------------------------------------------------------------------------------------------
// What they come to

[[noreturn]] static void Refuse(const std::string &text)
{
  throw Failure{EXIT_USAGE, text};
}

static void SetPreset(Preset preset, kapris::Options *options)
{
  if (preset == Preset::FAST) {
    options->runs = 3;
    options->members = 1;
    options->combinations = 3;
  } else if (preset == Preset::QUALITY) {
    options->members = 8;
    options->combinations = 40;
  }
}

template <class Target, class Value>
static void Override(Target *target, const std::optional<Value> &value)
{
  if (value)
    *target = *value;
}

// Two numbers A:B, or false.
static bool ParseRange(const std::string &text, int *first, int *last)
{
  const char *end = text.data() + text.size();
  const auto left = std::from_chars(text.data(), end, *first);

  if (left.ec != std::errc() || left.ptr == end || *left.ptr != ':')
    return false;
  const auto right = std::from_chars(left.ptr + 1, end, *last);
  return right.ec == std::errc() && right.ptr == end && *first >= 0 && *first <= *last && *last < INT_MAX;
}

// What bisections of that allowance add up to over the depth of the recursion; without the error of the power, which
// can take a unit off a limit.
static double EpsilonOf(int ubfactor, const kapris::Options &options, int nparts)
{
  if (options.scheme == KAPRIS_KWAY)
    return ubfactor / 100.0;
  const double epsilon = std::pow(1.0 + ubfactor / 50.0, std::ceil(std::log2(nparts))) - 1.0;
  return epsilon < 1e3 ? std::round(epsilon * 1e12) / 1e12 : epsilon;
}

static void SetStarts(const Request &request, kapris::Options *options)
{
  int last = 0;

  Override(&options->starts, request.starts);
  if (request.start_range.empty())
    return;
  if (!ParseRange(request.start_range, &options->first_start, &last))
    Refuse(fmt::format("--start-range: '{}' is not A:B with 0 <= A <= B", request.start_range));
  if (request.seed < 0)
    Refuse("--start-range needs a --seed of 0 or more: starts of a clock seed cannot be put together");
  options->starts = last - options->first_start + 1;
}

// FILE.part.N in the working directory, whichever directory FILE is in.
static std::string DefaultOutput(const std::string &command, const Request &request)
{
  const std::string name = PlainNameOf(request.input);

  return fmt::format("{}.{}.{}", name.substr(name.rfind('/') + 1), SuffixOf(command), request.nparts);
}

static void CheckJournal(const Request &request, const kapris::Options &options)
{
  if (request.journal.empty())
    return;
  if (request.journal == "-")
    Refuse("--journal needs a file");
  if (request.seed < 0)
    Refuse("--journal needs a --seed of 0 or more: the starts of a clock seed cannot be made again");
  if (request.time_limit && options.members > 0)
    Refuse("--journal keeps starts that were completed; with --time-limit none is, but for --members 0");
  if (request.records || !request.report.empty())
    Refuse("--journal has no trials and levels for --records or --report");
}

// With members and a time limit, all ranks search until it ends, each on a start of its own.
static void SetIslands(const Request &request, Plan *plan)
{
  if (plan->nranks == 0 || !request.time_limit || plan->options.members == 0)
    return;
  if (request.starts || !request.start_range.empty())
    Refuse("--starts and --start-range do not go with --time-limit here: each rank is a start that ends with "
           "it");
  plan->options.starts = plan->nranks;
}

Plan Resolve(const std::string &command, const Request &request, int nranks)
{
  const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
  Plan plan;
  kapris::Options &options = plan.options;

  plan.command = command;
  plan.nranks = nranks;
  SetPreset(request.preset, &options);
  Override(&options.scheme, request.scheme);
  Override(&options.objective, request.objective);
  Override(&options.coarsening, request.coarsening);
  Override(&options.refinement, request.refinement);
  Override(&options.vcycle, request.vcycle);
  Override(&options.runs, request.runs);
  Override(&options.members, request.members);
  Override(&options.combinations, request.combinations);
  Override(&options.epsilon, request.epsilon);
  Override(&options.min_epsilon, request.min_epsilon);
  options.allow_empty = request.allow_empty;
  if (request.ubfactor)
    options.epsilon = EpsilonOf(*request.ubfactor, options, request.nparts);
  options.reconst = request.reconst;
  options.seed = request.seed;
  SetStarts(request, &options);
  options.threads = request.threads > 0 ? request.threads : static_cast<int>(processors);
  if (request.time_limit)
    options.time_limit = std::chrono::duration<double>(*request.time_limit);
  SetIslands(request, &plan);
  if (request.memory_limit > 0)
    options.memory_limit = request.memory_limit;
  if (!request.target_weights.empty())
    plan.shares = LoadTargetWeights(request.target_weights, request.nparts);
  plan.out = request.out.empty() ? DefaultOutput(command, request) : request.out;
  // The verb best finds the part file by its name in the result.
  if (!request.json.empty() && !IsJsonText(plan.out))
    Refuse("--json cannot name an output that is not UTF-8 text; choose another with -o");
  if (!request.json.empty() && request.dry_run)
    Refuse("--dry-run has no result for --json");
  if (!request.report.empty() && request.dry_run)
    Refuse("--dry-run has no result for --report");
  if (request.records && request.json.empty())
    Refuse("--records goes into the object of --json");
  if (request.json_names && request.json.empty())
    Refuse("--json-names go into the object of --json");
  CheckJournal(request, options);
  options.records = request.records || !request.report.empty();
  return plan;
}

} // namespace kapris_cli
