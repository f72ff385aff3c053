// cli/main.cpp - the kapris command: reads the command line, runs a verb, turns failures into exit statuses.
// SPDX-License-Identifier: MIT

#include "failure.h"

#include "options/json.h"
#include "verbs/verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fmt/format.h>
#include <new>
#include <string>
#include <vector>

using namespace kapris_cli;

// Results that did not reach standard output are a failure, however late that shows.
static ExitStatus FlushResults(ExitStatus status)
{
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw Failure{EXIT_FILES, fmt::format("cannot write standard output: {}", std::strerror(errno))};
  return status;
}

static const CLI::App *FindVerb(const CLI::App &app, const std::string &name)
{
  for (const CLI::App *verb : app.get_subcommands([](const CLI::App *) { return true; }))
    if (verb->get_name() == name)
      return verb;
  return nullptr;
}

[[noreturn]] static void FailUsage(const std::string &text, const std::string &verb)
{
  throw Failure{EXIT_USAGE, fmt::format("{}\n'kapris{} --help' shows how to use it", text,
                                        verb.empty() ? "" : " " + verb)};
}

static ExitStatus Execute(int argc, char **argv, ColorWhen *color)
{
  CLI::App app("", "kapris");
  Run run;
  std::vector<std::string> args(argv + 1, argv + argc);
  const std::string first = args.empty() ? "" : args[0];

  DescribeCommand(&app, &run, color);
  // The parser itself would only say that a verb is missing.
  if (!first.empty() && first[0] != '-' && FindVerb(app, first) == nullptr)
    FailUsage(fmt::format("there is no verb '{}'", first), "");
  ExpandJson(&args);
  std::reverse(args.begin(), args.end()); // as the parser wants them
  try {
    app.parse(args);
  } catch (const CLI::Success &request) {
    app.exit(request); // prints the help or the version
    std::cout.flush();
    if (!std::cout)
      throw Failure{EXIT_FILES, "cannot write standard output"};
    return EXIT_DONE;
  } catch (const CLI::ParseError &error) {
    FailUsage(error.what(), FindVerb(app, first) != nullptr ? first : "");
  }
  return FlushResults(run());
}

// The text of malformed input begins with its place, as compilers have it.
static void Complain(ColorWhen color, const Failure &failure)
{
  std::fflush(stdout);
  // Where nobody can read it, the exit status has to do.
  if (failure.status != EXIT_MALFORMED)
    std::fputs((Red(color, "kapris:") + " ").c_str(), stderr);
  std::fputs((failure.text + "\n").c_str(), stderr);
}

int main(int argc, char **argv)
{
  ColorWhen color = ColorWhen::AUTO;

  try {
    return Execute(argc, argv, &color);
  } catch (const Failure &failure) {
    Complain(color, failure);
    return failure.status;
  } catch (const std::bad_alloc &) {
    std::fputs("kapris: out of memory\n", stderr);
    return EXIT_OUT_OF_MEMORY;
  } catch (const std::exception &error) {
    Complain(color, {EXIT_INTERNAL, fmt::format("internal failure: {}", error.what())});
    return EXIT_INTERNAL;
  }
}
