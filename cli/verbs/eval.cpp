// cli/verbs/eval.cpp - kapris eval: measures a part file against its hypergraph.
// SPDX-License-Identifier: MIT
//
//   measure   what was asked for           Evaluate
//   print     as lines or as one object    FormatEvaluation, EvaluationJson

#include "libraries.h"

#include "formats/failure.h"
#include "formats/output.h"
#include "formats/text.h"
#include "json/objects.h"
#include "measure/report.h"
#include "options/input.h"
#include "options/json.h"
#include "options/options.h"
#include "options/targets.h"
#include "verbs/evaluation.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>
#include <vector>

namespace kapris_cli
{

static constexpr int most_matrix = 4096;
static constexpr size_t most_misplaced = 5;

static void SetLimits(const EvalRequest &request, Evaluation *eval)
{
  if ((!request.epsilon && request.min_epsilon == 1.0) || eval->nparts == 0)
    return;
  if (eval->nparts > INT_MAX)
    throw Failure{EXIT_USAGE, fmt::format("limits are for up to {} parts, not {}", INT_MAX, eval->nparts)};
  const kapris::Targets targets = {.nparts = static_cast<int>(eval->nparts), .target_weights = eval->shares};
  eval->limits = LimitsOf(eval->measures.total, targets, request.epsilon, request.min_epsilon);
  if (request.epsilon)
    PrintWarnings(LimitWarnings(eval->hgr, targets, *request.epsilon));
}

static Evaluation Evaluate(const EvalRequest &request)
{
  if ((request.input.path == "-") + (request.parts == "-") + (request.fixed == "-") +
          (TargetFile(request.target_weights) == "-") + (request.input.types == "-") >
      1)
    throw Failure{EXIT_USAGE, "only one of the inputs can be standard input"};
  CheckFiles({request.input.path, request.parts, request.fixed, TargetFile(request.target_weights),
              request.input.types},
             {request.json});

  Evaluation eval;
  if (!request.target_weights.empty())
    eval.shares = LoadTargetWeights(request.target_weights, request.nparts);
  const int nparts = eval.shares.empty() ? request.nparts : static_cast<int>(eval.shares.size());
  eval.hgr = ReadHypergraph(request.input, nullptr, &eval.details);
  eval.part = LoadNamedParts(request.parts, eval.details, eval.hgr.ncells, nparts);
  if (!request.fixed.empty())
    eval.fixed = LoadNamedFixed(request.fixed, eval.details, eval.hgr.ncells, nparts);
  eval.components = ComponentsOfParts(eval.hgr, Place(eval.part));
  eval.measures = Measure(NameOf(request.input), eval.hgr, eval.part);
  eval.nparts = nparts;
  if (nparts == 0 && !eval.measures.used.empty())
    eval.nparts = eval.measures.used.back().number + 1LL;
  if (request.matrix && eval.nparts > most_matrix)
    throw Failure{EXIT_USAGE,
                  fmt::format("--matrix is for up to {} parts, not {}", most_matrix, eval.nparts)};
  SetLimits(request, &eval);
  for (size_t cell = 0; cell < eval.fixed.size(); cell++) {
    eval.nfixed += eval.fixed[cell] >= 0;
    if (eval.fixed[cell] >= 0 && eval.fixed[cell] != eval.part[cell])
      eval.misplaced.push_back(static_cast<int>(cell));
  }
  if (request.matrix || request.nets)
    eval.nets = CutNets(eval.hgr, eval.part);
  SortCutNets(eval.hgr, &eval.nets);
  if (request.nets)
    eval.border = BorderCells(eval.hgr, eval.nets);
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

// Those parts that are not connected, the first of them.
static std::string FormatComponents(const Evaluation &eval)
{
  constexpr int most_listed = 16;
  std::string text = eval.components.empty() ? "" : Line("components", DescribeComponents(eval.components));
  int nlisted = 0;

  for (const PartComponents &part : eval.components)
    if (part.count > 1 && nlisted++ < most_listed)
      text += Line(fmt::format("components {}", part.part),
                   fmt::format("{}, {} cells outside the largest", part.count, part.outside));
  return text;
}

// Behind a tab, if there are names.
static std::string NameAtEnd(const std::vector<std::string> &names, const std::string &name)
{
  return names.empty() ? "" : "\t" + name;
}

static std::string FormatNets(const Evaluation &eval)
{
  std::string text;

  for (const CutNet &cut : eval.nets)
    text += Line("cut net", fmt::format("{} {} {} {}{}", cut.net + 1, NetWeight(eval.hgr, cut.net),
                                        cut.parts.size(), Join(cut.parts, " "),
                                        NameAtEnd(eval.details.nets, NetName(eval.details, cut.net))));
  for (const BorderCell &border : eval.border)
    text +=
        Line("border cell", fmt::format("{} {} {} {}{}", border.cell + 1, border.weight, border.nnets,
                                        eval.part[static_cast<size_t>(border.cell)],
                                        NameAtEnd(eval.details.cells, CellName(eval.details, border.cell))));
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
         Line("connectivity", measures.connectivity) +
         Line("imbalance", fmt::format("{:.4f}", Imbalance(measures, eval.nparts, eval.shares))) +
         FormatWeights(measures, eval.nparts, eval.limits) + FormatComponents(eval) +
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
  const bool out =
      CountOver(eval.measures, eval.limits) > 0 || CountUnder(eval.measures, eval.nparts, eval.limits) > 0;
  return out || !eval.misplaced.empty() ? EXIT_OVER_LIMIT : EXIT_DONE;
}

void AddEval(CLI::App *app, Run *run)
{
  auto request = std::make_shared<EvalRequest>();
  CLI::App *verb = AddVerb(
      app, "eval", "Measure a partition",
      "cut             weight of the nets that span more than one part\n"
      "soed            weight of these nets, each times the parts that it spans\n"
      "connectivity    weight of these nets, each times the parts that it spans less one; also km1\n"
      "imbalance       weight of the heaviest part over its share, less 1\n"
      "components      of each part: groups of cells that nets connect inside it\n"
      "matrix P        for each part: weight of the cut nets that touch it and part P\n"
      "cut net         its number from 1, its weight, the number of parts that it spans, these parts\n"
      "border cell     a cell on cut nets: its number from 1, their weight, how many they are, its part\n"
      "These two come by weight, the heaviest first, and end with a tab and the name if the file has "
      "names.\n\n"
      "The exit status is 4 if a part is over its limit or below its minimum, or a fixed cell is "
      "elsewhere.\n\n"
      "Example: kapris eval circuit.hgr circuit.hgr.part.4 --epsilon 0.03 --matrix",
      [request, run] { *run = [request] { return Eval(*request); }; });

  AddInput(verb, &request->input);
  Require(AddArgument(verb, "PART", &request->parts, "Part file, - for standard input"));
  AddNumber(verb, "-k,--parts", &request->nparts, 1, INT_MAX, "N",
            "Number of parts; default: the largest part number plus one");
  AddText(verb, "--fixed", &request->fixed, "FIXED",
          "Check against the part that each cell must be in, or -1 for a free cell; - for standard input");
  AddDecimal(verb, "-e,--epsilon", &request->epsilon, 0, 1e6, "E",
             "Check against the limits (1 + E) x the share rounded up to a whole weight, then down");
  ShowDefault(AddDecimal(verb, "--min-epsilon", &request->min_epsilon, 0, 1, "E",
                         "Check against the minimums (1 - E) x the share rounded down, then up"));
  AddText(verb, "--target-weights", &request->target_weights, "W,W,...",
          "Relative weights that the parts should have, as in 2,1,1, or @FILE that has them");
  AddFlag(verb, "--matrix", &request->matrix, "Print what each pair of parts shares of the cut");
  AddFlag(verb, "--nets", &request->nets, "List the cut nets, and the cells on them");
  AddJson(verb, &request->json, "kapris-eval-1");
  AddFlag(verb, "--json-names", &request->json_names,
          "The cut nets and border cells of --json have their names");
}

} // namespace kapris_cli
