// cli/verbs/report.cpp - kapris report: the page that shows a result.
// SPDX-License-Identifier: MIT

#include "report/report.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/output.h"
#include "formats/text.h"
#include "options/input.h"
#include "options/options.h"
#include "verbs/verbs.h"

#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <optional>

namespace kapris_cli
{

namespace
{

struct ReportRequest {
  std::string result, part, out = "report.html";
  Input input; // path empty: neither hypergraph nor partition
};

} // namespace

static ExitStatus Report(const ReportRequest &request)
{
  std::optional<ReportInput> input;

  if (request.input.path.empty() != request.part.empty())
    throw Failure{EXIT_USAGE, "FILE and PART go together: give both, or none"};
  if ((request.result == "-") + (request.input.path == "-") + (request.part == "-") > 1)
    throw Failure{EXIT_USAGE, "only one of RESULT, FILE and PART can be standard input"};
  CheckFiles({request.result, request.input.path, request.part, request.input.types}, {request.out});
  const ReportData data = LoadReportData(request.result);
  if (!request.part.empty())
    input = LoadReportInput(InputName(request.result), data, request.input, request.part);
  WriteFile(request.out, ReportPage(data, input ? &input->hgr : nullptr, input ? &input->part : nullptr,
                                    input ? &input->details : nullptr));
  if (request.out != "-")
    fmt::print("{}\n", Shown(request.out));
  return EXIT_DONE;
}

void AddReport(CLI::App *app, Run *run)
{
  auto request = std::make_shared<ReportRequest>();
  CLI::App *verb = AddVerb(
      app, "report", "Write a page with pictures of a result",
      "Examples:\n"
      "  kapris partition circuit.hgr -k 8 --report page.html      (in one step)\n"
      "  kapris partition circuit.hgr -k 8 --json=run.json --records\n"
      "  kapris report run.json circuit.hgr circuit.hgr.part.8 -o page.html\n\n"
      "The page is one HTML file that loads nothing else: what was run and how to repeat it, part weights\n"
      "against their limits, the cut between parts, the parts that nets span, what each start gave and\n"
      "whether more would pay, and the pins before and after ordering by part. Without FILE and PART it "
      "shows\n"
      "what RESULT tells; trials and levels are there if the run had --records.",
      [request, run] { *run = [request] { return Report(*request); }; });

  Require(
      AddArgument(verb, "RESULT", &request->result, "File written with --json=FILE, - for standard input"));
  AddInput(verb, &request->input, false);
  AddArgument(verb, "PART", &request->part, "The part file of the run, - for standard input");
  ShowDefault(AddText(verb, "-o,--output", &request->out, "FILE", "The page, - for standard output"));
}

} // namespace kapris_cli
