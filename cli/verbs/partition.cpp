// cli/verbs/partition.cpp - kapris partition, refine and combine: a hypergraph in, a part file and a summary out.
// SPDX-License-Identifier: MIT

#include "options/input.h"
#include "options/options.h"
#include "solve/solve.h"
#include "verbs/verbs.h"

#include <memory>
#include <string>

namespace kapris_cli
{

static const char notes[] =
    "FILE counts cells from 1, part files count parts from 0.\n"
    "The best start is the first one in this order: less weight out of the limits; fewer "
    "empty parts; the smaller\n"
    "objective; the smaller cut, or soed if the cut is the objective; the smaller imbalance; the "
    "smaller number.\n"
    "The same seed gives the same partition on every machine and with any number of threads, "
    "unless a time limit\n"
    "or Ctrl-C ends the run early; then the best so far is written. No part stays empty while "
    "there are cells\n"
    "that it can have.\n"
    "A start makes --members partitions and combines pairs of them. With --time-limit it does so until "
    "the time is\n"
    "up, and starts that have not begun by then are left out.\n";

// A verb that runs the library. text: what its help says before the notes. The caller adds its options.
static CLI::App *AddSolver(CLI::App *app, Run *run, const char *name, const char *purpose,
                           const std::string &text, const std::shared_ptr<Request> &request,
                           const Engine &engine = LocalEngine())
{
  return AddVerb(app, name, purpose, text + notes, [name, request, run, engine] {
    *run = [name, request, engine] { return Solve(name, *request, engine); };
  });
}

static void AddPartitionBy(const Engine &engine, CLI::App *app, Run *run, const std::string &help)
{
  auto request = std::make_shared<Request>();
  CLI::App *verb = AddSolver(app, run, "partition", "Partition a hypergraph", help, request, engine);

  AddPartitionOptions(verb, request.get());
  AddInput(verb, &request->input);
}

void AddPartition(CLI::App *app, Run *run)
{
  AddPartitionBy(LocalEngine(), app, run,
                 "Examples:\n"
                 "  kapris partition circuit.hgr -k 4 -e 0.01\n"
                 "  kapris partition matrix.mtx -k 16 --scheme kway --objective soed --threads 0\n"
                 "  kapris partition circuit.hgr -k 2 --preset quality --time-limit 60 --json=run.json\n\n");
}

void AddMpiPartition(CLI::App *app, Run *run, const Engine &engine)
{
  AddPartitionBy(
      engine, app, run,
      "Examples:\n"
      "  mpirun -n 8 kapris-mpi partition circuit.hgr -k 16 --starts 100\n"
      "  mpirun -n 8 kapris-mpi partition circuit.hgr -k 16 --time-limit 600 --threads 4\n\n"
      "Rank 0 reads the input, writes the results and shows the progress. Each rank has --threads of its "
      "own\n"
      "and may hold --memory-limit bytes.\n\n"
      "Starts are handed out as ranks become free; any number of ranks gives the partition that one process\n"
      "gives. With --time-limit each rank is a start, they send each other what they find, and the best of\n"
      "all is written; what they find depends on when it arrives.\n\n");
}

void AddRefine(CLI::App *app, Run *run)
{
  auto request = std::make_shared<Request>();
  CLI::App *verb = AddSolver(
      app, run, "refine", "Improve a partition, never returning a worse one",
      "Examples:\n"
      "  kapris refine circuit.hgr circuit.hgr.part.4 -k 4 -o better.part\n"
      "  kapris refine circuit.hgr halves.part -k 2 --combinations 1 -o quick.part\n\n"
      "Parts above their limits are repaired first. Each start then refines all parts and improves them\n"
      "up to --combinations times; with --time-limit it goes on to make partitions of its own and "
      "combines\n"
      "them with the given one. With --members 0 each run refines the best partition of its start so\n"
      "far, then improves it by V-cycles unless --vcycle is never. Two parts are refined as a "
      "bisection,\n"
      "or with --scheme kway as more parts are.\n\n",
      request);

  AddRefineOptions(verb, request.get());
  AddInput(verb, &request->input);
  request->parts.resize(1);
  Require(AddArgument(verb, "PART", &request->parts[0], "Part file to improve, - for standard input"));
}

void AddCombine(CLI::App *app, Run *run)
{
  auto request = std::make_shared<Request>();
  CLI::App *verb = AddSolver(
      app, run, "combine", "Make a better partition of several, never returning a worse one",
      "Examples:\n"
      "  kapris combine circuit.hgr a.part b.part c.part -k 8 -o better.part\n"
      "  kapris combine circuit.hgr *.part -k 8 --combinations 100 --threads 0 -o better.part\n\n"
      "Parts above their limits are repaired first. Each start refines all parts of each partition and\n"
      "combines pairs of them up to --combinations times: cells on which both agree stay together, and\n"
      "the better one is refined on the way back. With --time-limit it goes on to make partitions of "
      "its\n"
      "own and combines them too. One PART, or several that are the same, are improved as "
      "by refine.\n\n",
      request);

  AddCombineOptions(verb, request.get());
  AddInput(verb, &request->input);
  Require(AddArguments(verb, "PART", &request->parts, "Part files to combine, - for standard input"));
}

} // namespace kapris_cli
