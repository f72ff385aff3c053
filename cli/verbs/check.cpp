// cli/verbs/check.cpp - kapris check: every fault and oddity of a hypergraph file with its place.
// SPDX-License-Identifier: MIT

#include "libraries.h"

#include "formats/failure.h"
#include "measure/bounds.h"
#include "options/input.h"
#include "options/options.h"
#include "solve/estimate.h"
#include "verbs/verbs.h"

#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>

namespace kapris_cli
{

// More sums must fit for more than two parts, depending on their number: what only fails there is a warning.
static void AddSums(const std::string &name, const Hgr &hgr, Problems *problems)
{
  constexpr int many = 1024;
  bool others_fit = false;

  try {
    CheckSums(name, hgr, 2);
    others_fit = true;
    CheckSums(name, hgr, many);
  } catch (const Failure &failure) {
    AddProblem(problems, others_fit, failure.text + (others_fit ? " (for more than two parts)" : ""));
  }
}

static std::string Counted(long long n, const char *what)
{
  return fmt::format("{} {}{}", n, what, n == 1 ? "" : "s");
}

// What the default options would cost.
static std::string Expectation(const Hgr &hgr)
{
  std::string text = "to partition:";

  for (const int nparts : {2, 8, 64}) {
    Request request;
    request.nparts = nparts;
    const Plan plan = Resolve("partition", request);
    text += fmt::format("{} {} parts {}", nparts == 2 ? "" : ";", nparts,
                        FormatCost(EstimateCost(request, plan, hgr)));
  }
  return text;
}

static ExitStatus Check(const Input &input)
{
  Problems problems;
  const Hgr hgr = ReadHypergraph(input, &problems);

  if (problems.nerrors == 0)
    AddSums(NameOf(input), hgr, &problems);
  for (const Problem &problem : problems.kept)
    fmt::print("{}\n", problem.text);
  const long long nmore =
      problems.nerrors + problems.nwarnings - static_cast<long long>(problems.kept.size());
  if (nmore > 0)
    fmt::print("{} not listed\n", Counted(nmore, "more problem"));
  if (problems.nerrors == 0)
    fmt::print("{}\n", Expectation(hgr));
  fmt::print("{}, {}\n", Counted(problems.nerrors, "error"), Counted(problems.nwarnings, "warning"));
  return problems.nerrors > 0 ? EXIT_MALFORMED : EXIT_DONE;
}

void AddCheck(CLI::App *app, Run *run)
{
  auto input = std::make_shared<Input>();
  CLI::App *verb = AddVerb(
      app, "check", "Find everything that is wrong with a file, or odd",
      "Each problem is a line file:line:column: message; the last line counts them. Without errors, the "
      "line\n"
      "before it tells what partitions would cost. Odd is what is read all the same: repeated pins, nets\n"
      "without pins or with the weight 0, a graph in place of a hypergraph.\n"
      "The exit status is 0 without errors and 3 with errors, warnings or not.",
      [input, run] { *run = [input] { return Check(*input); }; });

  AddInput(verb, input.get());
}

} // namespace kapris_cli
