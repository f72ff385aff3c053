// cli/verbs/convert.cpp - kapris convert: a hypergraph from one format into another.
// SPDX-License-Identifier: MIT
//
//   fit      what the target cannot hold is refused, or dropped where the user says so   FitIntoMatrix
//   write    compressed if the name ends with .gz                                        WriteFile
//   verify   by reading the file again                                                   CheckWritten

#include "failure.h"

#include "io/entries.h"
#include "io/files.h"
#include "io/input.h"
#include "io/output.h"
#include "measure/report.h"
#include "options/choice.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>
#include <vector>

namespace kapris_cli
{

namespace
{

struct ConvertRequest {
  Input input;
  std::string out;
  Format to = Format::BY_NAME;
  bool drop_weights = false;
  bool drop_repeats = false;
};

} // namespace

static Format OutputFormat(const ConvertRequest &request)
{
  const Format format = request.to == Format::BY_NAME ? FormatOfName(request.out) : request.to;

  if (format == Format::BY_NAME)
    throw Failure{EXIT_USAGE, fmt::format("the name {} does not end with a format: add --to", request.out)};
  if (format == Format::CNF)
    throw Failure{EXIT_USAGE, "formulas can only be read: write .hgr, .mtx or .patoh"};
  return format;
}

static bool AllOnes(const std::vector<std::int64_t> &weights)
{
  return std::all_of(weights.begin(), weights.end(), [](std::int64_t weight) { return weight == 1; });
}

// Whether the cells weigh what the reader of matrices gives them.
static bool WeighTheirEntries(const Hgr &hgr)
{
  std::vector<std::int64_t> left = hgr.cellwgts;

  for (const int pin : hgr.netind)
    left[static_cast<size_t>(pin)]--;
  return std::all_of(left.begin(), left.end(), [](std::int64_t weight) { return weight == 0; });
}

// What remains of a hypergraph in a matrix of ones.
static Hgr FitIntoMatrix(const ConvertRequest &request, const Hgr &hgr)
{
  Hgr meant = hgr;

  SortPins(&meant);
  if (meant.netind.size() < hgr.netind.size() && !request.drop_repeats)
    throw Failure{EXIT_USAGE, fmt::format("{} pins are repeated in their nets, which a matrix cannot hold: "
                                          "--drop-repeats leaves them out",
                                          hgr.netind.size() - meant.netind.size())};
  const bool cells_kept = AllOnes(meant.cellwgts) || WeighTheirEntries(meant);
  if (!request.drop_weights && !(AllOnes(meant.netwgts) && cells_kept))
    throw Failure{EXIT_USAGE, fmt::format("the {} weights would be lost in a matrix: --drop-weights leaves "
                                          "them out, .hgr and .patoh hold them",
                                          cells_kept ? "net" : "cell")};
  meant.netwgts.clear();
  meant.cellwgts.clear();
  return meant;
}

static void CheckWritten(const ConvertRequest &request, Format format, const Hgr &meant)
{
  Input written;

  written.path = request.out;
  written.format = format;
  written.unit_weights = format == Format::MTX;
  if (!(ReadHypergraph(written) == meant))
    throw Failure{EXIT_INTERNAL,
                  fmt::format("internal failure: {} does not read as it was meant", request.out)};
}

static ExitStatus Convert(const ConvertRequest &request)
{
  const Format format = OutputFormat(request);
  CheckFiles({request.input.path}, {request.out});

  Hgr hgr = ReadHypergraph(request.input);
  if (format == Format::MTX)
    hgr = FitIntoMatrix(request, hgr);
  WriteHypergraph(request.out, format, hgr);
  // What goes into a stream or device cannot be read again.
  if (request.out != "-" && IsRegularFile(request.out))
    CheckWritten(request, format, hgr);

  const std::string report = FormatSizes(NameOf(request.input), hgr) +
                             Line("written", request.out == "-" ? "standard output" : request.out);
  std::fputs(report.c_str(), request.out == "-" ? stderr : stdout);
  return EXIT_DONE;
}

void AddConvert(CLI::App *app, Run *run)
{
  auto request = std::make_shared<ConvertRequest>();
  CLI::App *verb =
      AddVerb(app, "convert", "Write a hypergraph in another format",
              "A matrix is written with a row per net and a column per cell, without weights. What it "
              "cannot hold is\n"
              "refused unless an option drops it.",
              [request, run] { *run = [request] { return Convert(*request); }; });

  AddInput(verb, &request->input);
  Require(AddArgument(verb, "OUT", &request->out,
                      "Output, compressed if it ends with .gz; - for standard output, with --to"));
  Choice(verb, "--to", &request->to, "Format of OUT; default: by the end of its name",
         {{"hgr", Format::HGR}, {"mtx", Format::MTX}, {"patoh", Format::PATOH}});
  AddFlag(verb, "--drop-weights", &request->drop_weights, "Leave out weights that OUT cannot hold");
  AddFlag(verb, "--drop-repeats", &request->drop_repeats, "Leave out repeated pins that OUT cannot hold");
}

} // namespace kapris_cli
