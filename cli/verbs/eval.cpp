// cli/verbs/eval.cpp - kapris eval: measures a part file against its hypergraph.
// SPDX-License-Identifier: MIT

#include "failure.h"

#include "io/files.h"
#include "io/input.h"
#include "io/parts.h"
#include "measure/measures.h"
#include "measure/report.h"
#include "verbs/verbs.h"

#include <CLI/CLI.hpp>
#include <climits>
#include <cstdio>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

namespace kapris_cli
{

struct EvalRequest {
  Input input;
  std::string parts;
  int nparts = 0; // 0: as many as the largest part number asks for
};

static ExitStatus Eval(const EvalRequest &request)
{
  if (request.input.path == "-" && request.parts == "-")
    throw Failure{EXIT_USAGE, "only one of FILE and PART can be standard input"};

  const Hgr hgr = ReadHypergraph(request.input);
  const std::vector<int> part =
      ReadParts(InputName(request.parts), ReadFile(request.parts), hgr.ncells, request.nparts);
  const Measures measures = Measure(hgr, part);
  const long long highest = measures.used.empty() ? -1 : measures.used.back().number;
  const long long nparts = request.nparts > 0 ? request.nparts : highest + 1;

  const std::string report = FormatSizes(NameOf(request.input), hgr) + Line("parts", nparts) +
                             Line("cut", measures.cut) + Line("soed", measures.soed) +
                             Line("connectivity-1", measures.connectivity) +
                             Line("imbalance", fmt::format("{:.4f}", Imbalance(measures, nparts))) +
                             FormatWeights(measures, nparts, 0);
  std::fputs(report.c_str(), stdout);
  return EXIT_DONE;
}

void AddEval(CLI::App *app, Run *run)
{
  CLI::App *verb = app->add_subcommand("eval", "Measure a partition");
  auto request = std::make_shared<EvalRequest>();

  verb->footer("cut             weight of the nets that span more than one part\n"
               "soed            weight of these nets, each times the parts that it spans\n"
               "connectivity-1  weight of these nets, each times the parts that it spans less one\n"
               "imbalance       weight of the heaviest part over the average, less 1");
  AddInput(verb, &request->input);
  verb->add_option("PART", request->parts, "Part file, - for standard input")->required()->type_name("");
  verb->add_option("-k,--parts", request->nparts,
                   "Number of parts; default: the largest part number plus one")
      ->type_name("N")
      ->check(CLI::Range(1, INT_MAX).description(""));
  verb->callback([request, run] { *run = [request] { return Eval(*request); }; });
}

} // namespace kapris_cli
