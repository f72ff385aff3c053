// cli/verbs/command.cpp - the description of the whole command.
// SPDX-License-Identifier: MIT

#include "kapris.h"

#include "options/choice.h"
#include "solve/solve.h"
#include "verbs/verbs.h"

#include <fmt/core.h>

namespace kapris_cli
{

static const char description[] =
    "Examples:\n"
    "  kapris partition circuit.hgr -k 4                     four parts, written to circuit.hgr.part.4\n"
    "  kapris partition circuit.hgr -k 2 --epsilon 0.01 --seed 7 --starts 20 -o halves.part\n"
    "  kapris partition - -k 2 -o - < circuit.hgr            from standard input to standard output\n"
    "  kapris partition circuit.hgr -k 4 --report page.html  the same, and a page with pictures of the "
    "result\n"
    "  kapris eval circuit.hgr circuit.hgr.part.4            cut and balance of a partition\n"
    "  kapris stats circuit.hgr                              sizes, degrees, components\n"
    "  kapris generate circuit --cells 20000 -o circuit.hgr  a synthetic hypergraph\n"
    "  kapris check circuit.hgr                              what is wrong with a file\n"
    "  kapris convert matrix.mtx.gz nets.hgr                 from one format into another\n"
    "\n"
    "kapris partitions hypergraphs: it divides the cells into parts of similar weight and cuts few nets.\n"
    "A cell is a vertex of the hypergraph, a net a hyperedge.";

static const char mpi_description[] =
    "Examples:\n"
    "  mpirun -n 8 kapris-mpi partition circuit.hgr -k 4 --starts 100\n"
    "  mpirun -n 8 kapris-mpi partition circuit.hgr -k 4 --time-limit 600\n"
    "\n"
    "kapris-mpi partitions hypergraphs by several processes, on one machine or many, which MPI connects.\n"
    "Everything else is as for kapris.";

static const char help_footer[] = "'kapris help VERB' or 'kapris VERB --help' explains a verb.\n\n";
static const char mpi_footer[] = "'kapris-mpi partition --help' lists the options.\n\n";

static const char footer[] =
    "Exit status:\n"
    "  0  done, and all parts within their limits; also when --time-limit ended the run\n"
    "  1  internal failure\n"
    "  2  wrong usage\n"
    "  3  malformed input; the message starts with file:line:column\n"
    "  4  a part is over its limit; the best partition found is written all the same\n"
    "  5  out of memory; if some starts had been made, the best of them is written all the same\n"
    "  6  a file cannot be read or written\n"
    "  130  interrupted; the best partition so far is written, if the run had begun\n"
    "\n"
    "Environment:\n"
    "  NO_COLOR  no colours in messages";

#if defined(__clang__)
static const char compiler[] = "clang++ " __clang_version__;
#else
static const char compiler[] = "g++ " __VERSION__;
#endif

static void Describe(CLI::App *app, ColorWhen *color, const char *name, const char *text, const char *help)
{
  DescribeApp(app, name, text, std::string(help) + footer,
              fmt::format("{} {}.{}.{}\nMIT licence\nbuilt with {}", name, KAPRIS_VERSION_MAJOR,
                          KAPRIS_VERSION_MINOR, KAPRIS_VERSION_PATCH, compiler));
  Choice(app, "--color", color, "Colours in messages",
         {{"auto", ColorWhen::AUTO}, {"always", ColorWhen::ALWAYS}, {"never", ColorWhen::NEVER}});
}

void DescribeCommand(CLI::App *app, Run *run, ColorWhen *color)
{
  Describe(app, color, "kapris", description, help_footer);
  AddPartition(app, run);
  AddRefine(app, run);
  AddCombine(app, run);
  AddBest(app, run);
  AddReport(app, run);
  AddEval(app, run);
  AddGenerate(app, run);
  AddStatsVerb(app, run);
  AddCheck(app, run);
  AddConvert(app, run);
  CheckValues(app);
}

void DescribeMpiCommand(CLI::App *app, Run *run, ColorWhen *color, const Engine &engine)
{
  Describe(app, color, "kapris-mpi", mpi_description, mpi_footer);
  AddMpiPartition(app, run, engine);
  CheckValues(app);
}

} // namespace kapris_cli
