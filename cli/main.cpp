// cli/main.cpp - the kapris command: reads the command line, runs a verb, turns failures into exit statuses.
// SPDX-License-Identifier: MIT

#include "failure.h"

#include "verbs/verbs.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fmt/format.h>
#include <new>
#include <string>

using namespace kapris_cli;

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
  CLI::App app("", "kapris");
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
