// cli/verbs/partition.cpp - kapris partition and kapris refine: a hypergraph in, a part file and a summary out.
// SPDX-License-Identifier: MIT

#include "options/options.h"
#include "solve/solve.h"
#include "verbs/verbs.h"

#include <memory>
#include <string>

namespace kapris_cli
{

static const char notes[] = "FILE counts cells from 1, part files count parts from 0.\n"
                            "The best start is the first one in this order: all parts within their limits; "
                            "the smaller objective; the\n"
                            "other objective; the smaller imbalance; the smaller number. The same seed gives "
                            "the same partition on every\n"
                            "machine and with any number of threads, unless a time limit or Ctrl-C ends the "
                            "run early; then the best so\n"
                            "far is written.\n";

void AddPartition(CLI::App *app, Run *run)
{
  auto request = std::make_shared<Request>();
  CLI::App *verb = AddVerb(
      app, "partition", "Partition a hypergraph",
      std::string(
          "Examples:\n"
          "  kapris partition circuit.hgr -k 4 -e 0.01\n"
          "  kapris partition matrix.mtx -k 16 --scheme kway --objective soed --threads 0\n"
          "  kapris partition circuit.hgr -k 2 --preset quality --time-limit 60 --json=run.json\n\n") +
          notes,
      [request, run] { *run = [request] { return Solve("partition", *request); }; });

  AddInput(verb, &request->input);
  AddPartitionOptions(verb, request.get());
}

void AddRefine(CLI::App *app, Run *run)
{
  auto request = std::make_shared<Request>();
  CLI::App *verb = AddVerb(
      app, "refine", "Improve a partition, never returning a worse one",
      std::string(
          "Examples:\n"
          "  kapris refine circuit.hgr circuit.hgr.part.4 -k 4 -o better.part\n"
          "  kapris refine circuit.hgr halves.part -k 2 --vcycle never -o quick.part\n\n"
          "Parts above their limits are repaired first. Each run refines the best partition of its\n"
          "start so far, then improves it by V-cycles unless --vcycle is never. Two parts are refined\n"
          "as a bisection, or with --scheme kway as more parts are.\n\n") +
          notes,
      [request, run] { *run = [request] { return Solve("refine", *request); }; });

  AddInput(verb, &request->input);
  Require(AddArgument(verb, "PART", &request->part, "Part file to improve, - for standard input"));
  AddRefineOptions(verb, request.get());
}

} // namespace kapris_cli
