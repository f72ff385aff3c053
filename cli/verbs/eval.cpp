// cli/verbs/eval.cpp - kapris eval: measures a part file against its hypergraph.
// SPDX-License-Identifier: MIT
//
//   measure   what was asked for           Evaluate
//   print     as lines or as one object    FormatEvaluation, EvaluationJson

#include "failure.h"
#include "text.h"

#include "io/input.h"
#include "io/output.h"
#include "io/parts.h"
#include "json/objects.h"
#include "measure/report.h"
#include "options/json.h"
#include "options/options.h"
#include "verbs/evaluation.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>
#include <vector>

namespace kapris_cli
{

static constexpr int most_matrix = 4096;
static constexpr size_t most_misplaced = 5;

static Evaluation Evaluate(const EvalRequest &request)
{
  if ((request.input.path == "-") + (request.parts == "-") + (request.fixed == "-") > 1)
    throw Failure{EXIT_USAGE, "only one of FILE, PART and FIXED can be standard input"};
  CheckFiles({request.input.path, request.parts, request.fixed}, {request.json});

  Evaluation eval;
  eval.hgr = ReadHypergraph(request.input);
  eval.part = LoadParts(request.parts, eval.hgr.ncells, request.nparts);
  if (!request.fixed.empty())
    eval.fixed = LoadFixed(request.fixed, eval.hgr.ncells, request.nparts);
  eval.measures = Measure(NameOf(request.input), eval.hgr, eval.part);
  eval.nparts = request.nparts;
  if (request.nparts == 0 && !eval.measures.used.empty())
    eval.nparts = eval.measures.used.back().number + 1LL;
  if (request.matrix && eval.nparts > most_matrix)
    throw Failure{EXIT_USAGE,
                  fmt::format("--matrix is for up to {} parts, not {}", most_matrix, eval.nparts)};
  if (request.epsilon && eval.nparts > 0) {
    const std::int64_t limit =
        ShareLimit(eval.measures.total, eval.nparts, std::llround(*request.epsilon * 1e6));
    eval.limits = [limit](int) { return limit; };
  }
  for (size_t cell = 0; cell < eval.fixed.size(); cell++) {
    eval.nfixed += eval.fixed[cell] >= 0;
    if (eval.fixed[cell] >= 0 && eval.fixed[cell] != eval.part[cell])
      eval.misplaced.push_back(static_cast<int>(cell));
  }
  if (request.matrix || request.nets)
    eval.nets = CutNets(eval.hgr, eval.part);
  if (request.matrix)
    eval.matrix = CutMatrix(eval.hgr, eval.nets, static_cast<int>(eval.nparts));
  return eval;
}

static std::string FormatFixed(const Evaluation &eval)
{
  std::string text = Line("fixed cells", fmt::format("{}, elsewhere {}", eval.nfixed, eval.misplaced.size()));

  for (size_t n = 0; n < std::min(eval.misplaced.size(), most_misplaced); n++) {
    const size_t cell = static_cast<size_t>(eval.misplaced[n]);
    text += Line(fmt::format("cell {}", cell + 1),
                 fmt::format("in part {}, fixed to part {}", eval.part[cell], eval.fixed[cell]));
  }
  return text;
}

static std::string FormatNets(const Evaluation &eval)
{
  std::string text;

  for (const CutNet &cut : eval.nets)
    text += Line("cut net", fmt::format("{} {} {} {}", cut.net + 1, NetWeight(eval.hgr, cut.net),
                                        cut.parts.size(), Join(cut.parts, " ")));
  return text;
}

static std::string FormatMatrix(const Evaluation &eval)
{
  std::string text;

  for (size_t p = 0; p < eval.matrix.size(); p++)
    text += Line(fmt::format("matrix {}", p), Join(eval.matrix[p], "\t"));
  return text;
}

static std::string FormatEvaluation(const EvalRequest &request, const Evaluation &eval)
{
  const Measures &measures = eval.measures;

  return FormatSizes(NameOf(request.input), eval.hgr) + Line("parts", eval.nparts) +
         Line("cut", measures.cut) + Line("soed", measures.soed) +
         Line("connectivity-1", measures.connectivity) +
         Line("imbalance", fmt::format("{:.4f}", Imbalance(measures, eval.nparts))) +
         FormatWeights(measures, eval.nparts, eval.limits) +
         (request.fixed.empty() ? "" : FormatFixed(eval)) + FormatMatrix(eval) +
         (request.nets ? FormatNets(eval) : "");
}

static ExitStatus Eval(const EvalRequest &request)
{
  const Evaluation eval = Evaluate(request);

  if (!request.json.empty())
    WriteEvaluation(request, eval);
  if (request.json != "-")
    std::fputs(FormatEvaluation(request, eval).c_str(), stdout);
  return CountOver(eval.measures, eval.limits) > 0 || !eval.misplaced.empty() ? EXIT_OVER_LIMIT : EXIT_DONE;
}

void AddEval(CLI::App *app, Run *run)
{
  auto request = std::make_shared<EvalRequest>();
  CLI::App *verb = AddVerb(
      app, "eval", "Measure a partition",
      "cut             weight of the nets that span more than one part\n"
      "soed            weight of these nets, each times the parts that it spans\n"
      "connectivity-1  weight of these nets, each times the parts that it spans less one\n"
      "imbalance       weight of the heaviest part over the average, less 1\n"
      "matrix P        for each part: weight of the cut nets that touch it and part P\n"
      "cut net         its number from 1, its weight, the number of parts that it spans, these parts\n\n"
      "The exit status is 4 if a part is over its limit or a fixed cell is elsewhere.\n\n"
      "Example: kapris eval circuit.hgr circuit.hgr.part.4 --epsilon 0.03 --matrix",
      [request, run] { *run = [request] { return Eval(*request); }; });

  AddInput(verb, &request->input);
  Require(AddArgument(verb, "PART", &request->parts, "Part file, - for standard input"));
  AddNumber(verb, "-k,--parts", &request->nparts, 1, INT_MAX, "N",
            "Number of parts; default: the largest part number plus one");
  AddText(verb, "--fixed", &request->fixed, "FIXED",
          "Check against the part that each cell must be in, or -1 for a free cell; - for standard input");
  AddDecimal(verb, "--epsilon", &request->epsilon, 0, 1, "E",
             "Check against the limit (1 + E) x total / parts, rounded up; 6 decimals count");
  AddFlag(verb, "--matrix", &request->matrix, "Print what each pair of parts shares of the cut");
  AddFlag(verb, "--nets", &request->nets, "List the cut nets");
  AddJson(verb, &request->json, "kapris-eval-1");
}

} // namespace kapris_cli
