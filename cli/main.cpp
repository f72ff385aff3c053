// cli/main.cpp - the kapris command: reads the command line, runs a verb, turns failures into exit statuses.
// SPDX-License-Identifier: MIT

#include "failure.h"
#include "kapris.h"
#include "verbs.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fmt/format.h>
#include <new>
#include <string>

using namespace kapris_cli;

static const char description[] =
    "Examples:\n"
    "  kapris partition circuit.hgr -k 4                     four parts, written to circuit.hgr.part.4\n"
    "  kapris partition circuit.hgr -k 2 --imbalance 1 --seed 7 --runs 20 -o halves.txt\n"
    "  kapris partition - -k 2 -o - < circuit.hgr            from standard input to standard output\n"
    "  kapris eval circuit.hgr circuit.hgr.part.4            cut and balance of a partition\n"
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

static void DescribeCommand(CLI::App *app, Run *run)
{
  app->footer(footer);
  app->set_version_flag("--version", fmt::format("kapris {}.{}.{}", KAPRIS_VERSION_MAJOR,
                                                 KAPRIS_VERSION_MINOR, KAPRIS_VERSION_PATCH));
  app->require_subcommand(1);
  AddPartition(app, run);
  AddEval(app, run);
}

// Results that did not reach standard output are a failure, however late that shows.
static ExitStatus FlushResults(ExitStatus status)
{
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw Failure{EXIT_FILES, fmt::format("cannot write standard output: {}", std::strerror(errno))};
  return status;
}

static bool HasVerb(const CLI::App &app, const std::string &name)
{
  for (const CLI::App *verb : app.get_subcommands([](const CLI::App *) { return true; }))
    if (verb->get_name() == name)
      return true;
  return false;
}

static ExitStatus Execute(int argc, char **argv)
{
  CLI::App app(description, "kapris");
  Run run;

  DescribeCommand(&app, &run);
  // The parser itself would only say that a verb is missing.
  if (argc > 1 && argv[1][0] != '-' && !HasVerb(app, argv[1]))
    throw Failure{EXIT_USAGE,
                  fmt::format("there is no verb '{}'\nkapris: --help shows how to use it", argv[1])};
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &request) {
    app.exit(request); // prints the help or the version
    std::cout.flush();
    if (!std::cout)
      throw Failure{EXIT_FILES, "cannot write standard output"};
    return EXIT_DONE;
  } catch (const CLI::ParseError &error) {
    throw Failure{EXIT_USAGE, fmt::format("{}\nkapris: --help shows how to use it", error.what())};
  }
  return FlushResults(run());
}

int main(int argc, char **argv)
{
  try {
    return Execute(argc, argv);
  } catch (const Failure &failure) {
    std::fflush(stdout);
    fmt::print(stderr, "{}{}\n", failure.status == EXIT_MALFORMED ? "" : "kapris: ", failure.text);
    return failure.status;
  } catch (const std::bad_alloc &) {
    std::fputs("kapris: out of memory\n", stderr);
    return EXIT_OUT_OF_MEMORY;
  } catch (const std::exception &error) {
    fmt::print(stderr, "kapris: internal failure: {}\n", error.what());
    return EXIT_INTERNAL;
  }
}
