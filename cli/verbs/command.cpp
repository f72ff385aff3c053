// cli/verbs/command.cpp - the description of the whole command.
// SPDX-License-Identifier: MIT

#include "kapris.h"

#include "verbs/verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace kapris_cli
{

static const char description[] =
    "Examples:\n"
    "  kapris partition circuit.hgr -k 4                     four parts, written to circuit.hgr.part.4\n"
    "  kapris partition circuit.hgr -k 2 --imbalance 1 --seed 7 --runs 20 -o halves.txt\n"
    "  kapris partition - -k 2 -o - < circuit.hgr            from standard input to standard output\n"
    "  kapris eval circuit.hgr circuit.hgr.part.4            cut and balance of a partition\n"
    "  kapris check circuit.hgr                              what is wrong with a file\n"
    "  kapris convert matrix.mtx.gz nets.hgr                 from one format into another\n"
    "\n"
    "kapris partitions hypergraphs: it divides the cells into parts of similar weight and cuts few nets.";

static const char footer[] =
    "'kapris VERB --help' explains a verb.\n"
    "\n"
    "Exit status:\n"
    "  0  done, and all parts within their limits\n"
    "  1  internal failure\n"
    "  2  wrong usage\n"
    "  3  malformed input; the message starts with file:line:column\n"
    "  4  a part is over its limit; the best partition found is written all the same\n"
    "  5  out of memory\n"
    "  6  a file cannot be read or written";

void DescribeCommand(CLI::App *app, Run *run)
{
  app->description(description);
  app->footer(footer);
  app->set_version_flag("--version", fmt::format("kapris {}.{}.{}", KAPRIS_VERSION_MAJOR,
                                                 KAPRIS_VERSION_MINOR, KAPRIS_VERSION_PATCH));
  app->require_subcommand(1);
  AddPartition(app, run);
  AddEval(app, run);
  AddCheck(app, run);
  AddConvert(app, run);
}

} // namespace kapris_cli
