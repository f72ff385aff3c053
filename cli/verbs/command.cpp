// cli/verbs/command.cpp - the description of the whole command.
// SPDX-License-Identifier: MIT

#include "kapris.h"

#include "options/choice.h"
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

static const char footer[] =
    "'kapris help VERB' or 'kapris VERB --help' explains a verb.\n"
    "\n"
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

void DescribeCommand(CLI::App *app, Run *run, ColorWhen *color)
{
  DescribeApp(app, description, footer,
              fmt::format("kapris {}.{}.{}\nMIT licence\nbuilt with {}", KAPRIS_VERSION_MAJOR,
                          KAPRIS_VERSION_MINOR, KAPRIS_VERSION_PATCH, compiler));
  Choice(app, "--color", color, "Colours in messages",
         {{"auto", ColorWhen::AUTO}, {"always", ColorWhen::ALWAYS}, {"never", ColorWhen::NEVER}});
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

} // namespace kapris_cli
