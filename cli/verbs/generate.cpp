// cli/verbs/generate.cpp - kapris generate: writes a synthetic hypergraph.
// SPDX-License-Identifier: MIT

#include "generate/generate.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/input.h"
#include "formats/output.h"
#include "formats/parts.h"
#include "formats/text.h"
#include "measure/report.h"
#include "options/options.h"
#include "verbs/verbs.h"

#include <charconv>
#include <climits>
#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>

namespace kapris_cli
{

namespace
{

struct GenerateRequest {
  Recipe recipe;
  std::string kind;
  std::string out;
  std::string partition; // empty: the planted parts are not written
};

} // namespace

static constexpr int most = 1 << 30;

static std::string Written(const std::string &path)
{
  return Line("written", path == "-" ? "standard output" : path);
}

static ExitStatus WriteGenerated(const GenerateRequest &request)
{
  const Format format = FormatOfName(request.out);
  if (format == Format::MTX || format == Format::CNF)
    throw Failure{EXIT_USAGE, fmt::format("{}: only .hgr and .patoh are generated; convert makes others",
                                          Shown(request.out))};

  CheckFiles({}, {request.out, request.partition});
  const Generated generated = Generate(request.recipe);
  const std::string out = request.out.empty() ? fmt::format("{}-{}-{}.hgr", request.kind,
                                                            generated.hgr.ncells, request.recipe.seed)
                                              : request.out;
  CheckFiles({}, {out, request.partition});
  std::string summary = FormatSizes(out, generated.hgr) + Line("seed", request.recipe.seed);
  if (request.recipe.kind == Kind::PLANTED)
    summary += Line("planted cut", generated.planted_cut);
  WriteHypergraph(out, format, generated.hgr);
  summary += Written(out);
  if (!request.partition.empty()) {
    WriteFile(request.partition, FormatParts(generated.planted));
    summary += Written(request.partition);
  }
  std::fputs(summary.c_str(), out == "-" || request.partition == "-" ? stderr : stdout);
  return EXIT_DONE;
}

// "A:B" with low <= A <= B <= high, or "A" for A:A.
template <typename AnyRange>
static AnyRange ParseRange(const std::string &name, const std::string &text, decltype(AnyRange::low) low,
                           decltype(AnyRange::low) high)
{
  AnyRange range = {0, 0};
  const char *end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, range.low);
  const bool pair = first.ec == std::errc{} && first.ptr != end && *first.ptr == ':';
  const auto last = std::from_chars(pair ? first.ptr + 1 : text.data(), end, range.high);

  if (last.ec != std::errc{} || last.ptr != end || range.low < low || range.low > range.high ||
      range.high > high)
    throw Failure{EXIT_USAGE,
                  fmt::format("{} is '{}', not A or A:B with {} <= A <= B <= {}", name, text, low, high)};
  return range;
}

template <typename AnyRange>
static void AddRange(CLI::App *kind, const char *name, AnyRange *range, decltype(AnyRange::low) low,
                     decltype(AnyRange::low) high, const char *help)
{
  AddParsed(
      kind, name, [=](const std::string &text) { *range = ParseRange<AnyRange>(name, text, low, high); },
      fmt::format("{}:{}", range->low, range->high), "A:B", help);
}

static void AddCount(CLI::App *kind, const char *name, int *value, int low, int high, const char *help)
{
  ShowDefault(AddNumber(kind, name, value, low, high, "N", help));
}

static void AddShape(CLI::App *kind, const char *name, double *value, double low, double high,
                     const char *help)
{
  ShowDefault(AddDecimal(kind, name, value, low, high, "X", help));
}

// The verb of a kind with the options that all kinds share.
static CLI::App *AddKind(CLI::App *verb, Run *run, Kind kind, const char *name, const char *summary,
                         const char *example, Recipe **recipe)
{
  auto request = std::make_shared<GenerateRequest>();
  CLI::App *app = AddVerb(verb, name, summary, example,
                          [request, run] { *run = [request] { return WriteGenerated(*request); }; });

  request->kind = name;
  request->recipe.kind = kind;
  *recipe = &request->recipe;
  AddText(
      app, "-o,--output", &request->out, "OUT",
      "Output, .hgr or .patoh, compressed if it ends with .gz, .xz or .bz2; - for standard output; default: "
      "KIND-CELLS-SEED.hgr");
  AddCount(app, "--seed", &request->recipe.seed, 0, INT_MAX, "Fixes the random sequence");
  AddRange(app, "--cell-weights", &request->recipe.cellwgts, 0, most_weight,
           "Random weights of cells, A to B");
  AddRange(app, "--net-weights", &request->recipe.netwgts, 0, most_weight, "Random weights of nets, A to B");
  if (kind == Kind::PLANTED)
    AddText(app, "--partition", &request->partition, "PART",
            "Also write the planted parts, - for standard output");
  if (kind != Kind::GRID)
    AddCount(app, "--cells", &request->recipe.cells, 2, kind == Kind::CIRCUIT ? 50'000'000 : most,
             "Number of cells");
  if (kind != Kind::GRID && kind != Kind::CIRCUIT)
    AddCount(app, "--nets", &request->recipe.nets, 0, most, "Number of nets; 0: as many as cells");
  if (kind == Kind::RANDOM || kind == Kind::PLANTED)
    AddRange(app, "--size", &request->recipe.size, 1, INT_MAX,
             "Cells of a net: A to B, all equally frequent");
  return app;
}

void AddGenerate(CLI::App *app, Run *run)
{
  CLI::App *verb =
      AddVerbOfVerbs(app, "generate", "Write a synthetic hypergraph",
                     "The same options give the same bytes on every machine.\n"
                     "'kapris generate KIND --help' explains a kind.\n\n"
                     "Examples:\n"
                     "  kapris generate circuit --cells 20000 --seed 1 -o circuit.hgr\n"
                     "  kapris generate planted --parts 4 --crossing 50 --partition planted.part");
  Recipe *recipe = nullptr;

  CLI::App *kind =
      AddKind(verb, run, Kind::CIRCUIT, "circuit", "Circuit-like, with small cuts",
              "Example: kapris generate circuit --cells 20000 --rent 0.65 -o circuit.hgr", &recipe);
  AddShape(kind, "--rent", &recipe->rent, 0.1, 1, "Nets that leave a block grow with this power of its size");
  AddShape(kind, "--pins", &recipe->pins, 0.1, 1000, "Average pins of a cell, about");

  kind = AddKind(verb, run, Kind::GRID, "grid", "A net for each cell of a grid and its neighbours",
                 "Example: kapris generate grid --rows 300 --cols 200", &recipe);
  AddCount(kind, "--rows", &recipe->rows, 1, most, "Rows of the grid");
  AddCount(kind, "--cols", &recipe->cols, 1, most, "Columns of the grid");
  AddCount(kind, "--depth", &recipe->depth, 1, most, "Layers of the grid");

  AddKind(verb, run, Kind::RANDOM, "random", "Nets of random cells",
          "Example: kapris generate random --cells 1000 --nets 2000 --size 2:10 --cell-weights 1:9", &recipe);

  kind = AddKind(verb, run, Kind::POWERLAW, "powerlaw", "Nets of random cells, few of them large",
                 "Example: kapris generate powerlaw --cells 50000 --exponent 2 --max-size 1000", &recipe);
  AddShape(kind, "--exponent", &recipe->exponent, 0, 10, "Nets of S cells are as frequent as S^-X");
  AddCount(kind, "--max-size", &recipe->max_size, 2, 10'000'000, "Cells of the largest nets");

  kind = AddKind(
      verb, run, Kind::PLANTED, "planted", "Nets inside parts, and some of two parts",
      "Example: kapris generate planted --cells 8000 --parts 4 --crossing 50 --partition planted.part",
      &recipe);
  AddCount(kind, "--parts", &recipe->parts, 2, most, "Number of parts, of equal size");
  AddCount(kind, "--crossing", &recipe->crossing, 0, most, "Nets that span two parts");

  RefuseOthers(verb, [](const std::string &words) {
    throw Failure{
        EXIT_USAGE,
        fmt::format("generate: KIND must be circuit, grid, random, powerlaw or planted, not '{}'", words)};
  });
}

} // namespace kapris_cli
