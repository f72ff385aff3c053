// cli/verbs/convert.cpp - kapris convert: a hypergraph from one format into another.
// SPDX-License-Identifier: MIT
//
//   fit      what the target cannot hold is refused, or dropped where the user says so   FitIntoMatrix, FitIntoGraph,
//                                                                                        CheckNames
//   write    compressed if the name says so                                              WriteFile
//   verify   by reading the file again                                                   CheckWritten

#include "libraries.h"

#include "formats/bookshelf.h"
#include "formats/failure.h"
#include "formats/files.h"
#include "formats/fit.h"
#include "formats/output.h"
#include "formats/text.h"
#include "measure/report.h"
#include "options/choice.h"
#include "options/input.h"
#include "verbs/verbs.h"

#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kapris_cli
{

namespace
{

struct ConvertRequest {
  Input input;
  std::string out;
  Format to = Format::BY_NAME;
  Drops drops;
  bool drop_names = false;
  std::string names; // file that keeps them; empty: none
};

} // namespace

static Format OutputFormat(const ConvertRequest &request)
{
  const Format format = request.to == Format::BY_NAME ? FormatOfName(request.out) : request.to;

  if (format == Format::BY_NAME)
    throw Failure{EXIT_USAGE,
                  fmt::format("the name {} does not end with a format: add --to", Shown(request.out))};
  if (format == Format::CNF || format == Format::WCNF)
    throw Failure{EXIT_USAGE, "formulas can only be read: write .hgr, .mtx, .patoh, .graph or .aux"};
  if (format == Format::YOSYS)
    throw Failure{EXIT_USAGE, "netlists of yosys can only be read: write .aux, which has names too, or .hgr"};
  return format;
}

static void CheckNames(const ConvertRequest &request, Format format, const Details &details)
{
  // Nets of a file without names can be called by the numbers that they had.
  const bool lost = !details.cells.empty() && format != Format::BOOKSHELF;

  if (lost && request.names.empty() && !request.drop_names)
    throw Failure{EXIT_USAGE,
                  "the names would be lost: --names FILE keeps them beside OUT, --drop-names leaves them "
                  "out, and the places of terminals"};
}

// Lines of a kind, a number from 1, and a name or a place, with tabs between them.
static std::string FormatDetails(const Details &details)
{
  std::string text;

  for (size_t i = 0; i < details.cells.size(); i++)
    text += fmt::format("cell\t{}\t{}\n", i + 1, CellName(details, static_cast<int>(i)));
  for (size_t i = 0; i < details.nets.size(); i++)
    text += fmt::format("net\t{}\t{}\n", i + 1, NetName(details, static_cast<int>(i)));
  for (const Terminal &terminal : details.terminals)
    text += fmt::format("terminal\t{}\t{} {}\n", terminal.cell + 1, terminal.x, terminal.y);
  return text;
}

static void CheckWritten(const ConvertRequest &request, Format format, const Hgr &meant,
                         const Details &details)
{
  Input written;

  written.path = request.out;
  written.format = format;
  written.unit_weights = format == Format::MTX;
  Details read;
  const bool same = ReadHypergraph(written, nullptr, &read) == meant;
  if (!same || (format == Format::BOOKSHELF && !details.cells.empty() && read.cells != details.cells))
    throw Failure{EXIT_INTERNAL,
                  fmt::format("internal failure: {} does not read as it was meant", Shown(request.out))};
}

static ExitStatus Convert(const ConvertRequest &request)
{
  const Format format = OutputFormat(request);
  std::vector<std::string> outputs = {request.out};
  if (format == Format::BOOKSHELF)
    outputs = BookshelfOutputs(request.out);
  outputs.push_back(request.names);
  CheckFiles({request.input.path, request.input.types}, outputs);

  Details details;
  Hgr hgr = ReadHypergraph(request.input, nullptr, &details);
  CheckNames(request, format, details);
  if (format == Format::MTX)
    hgr = FitIntoMatrix(request.drops, hgr);
  if (format == Format::GRAPH)
    hgr = FitIntoGraph(request.drops, hgr, &details);
  if (format == Format::BOOKSHELF) {
    // Every cell has its area there.
    hgr.cellwgts.resize(static_cast<size_t>(hgr.ncells), 1);
    for (const auto &[path, text] : FormatBookshelf(request.out, hgr, details))
      WriteFile(path, text);
  } else {
    WriteHypergraph(request.out, format, hgr);
  }
  // What goes into a stream or device cannot be read again.
  if (request.out != "-" && IsRegularFile(request.out))
    CheckWritten(request, format, hgr, details);
  if (!request.names.empty())
    WriteFile(request.names, FormatDetails(details));

  const std::string report = FormatSizes(NameOf(request.input), hgr) +
                             Line("written", request.out == "-" ? "standard output" : Shown(request.out));
  std::fputs(report.c_str(), request.out == "-" ? stderr : stdout);
  return EXIT_DONE;
}

void AddConvert(CLI::App *app, Run *run)
{
  auto request = std::make_shared<ConvertRequest>();
  CLI::App *verb = AddVerb(
      app, "convert", "Write a hypergraph in another format",
      "A matrix is written with a row per net and a column per cell, without weights. What it "
      "cannot hold is\n"
      "refused unless an option drops it. The names of a netlist go into a file of their own, in lines of "
      "cell or\nnet, a number from 1 and a name, with tabs between them.",
      [request, run] { *run = [request] { return Convert(*request); }; });

  AddInput(verb, &request->input);
  Require(
      AddArgument(verb, "OUT", &request->out,
                  "Output, compressed if it ends with .gz, .xz or .bz2; - for standard output, with --to"));
  Choice(verb, "--to", &request->to, "Format of OUT; default: by the end of its name",
         {{"hgr", Format::HGR},
          {"mtx", Format::MTX},
          {"patoh", Format::PATOH},
          {"graph", Format::GRAPH},
          {"bookshelf", Format::BOOKSHELF}});
  AddFlag(verb, "--drop-weights", &request->drops.weights, "Leave out weights that OUT cannot hold");
  AddText(verb, "--names", &request->names, "FILE",
          "Write the names of cells and nets, which OUT cannot hold");
  AddFlag(verb, "--drop-names", &request->drop_names, "Leave out the names of cells and nets");
  AddFlag(verb, "--drop-repeats", &request->drops.repeats, "Leave out repeated pins that OUT cannot hold");
}

} // namespace kapris_cli
