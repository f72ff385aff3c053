// cli/entry.cpp - from the arguments of main to an exit status: reads the command line, runs a verb, tells failures.
// SPDX-License-Identifier: MIT

#include "entry.h"

#include "libraries.h"

#include "formats/failure.h"
#include "options/json.h"
#include "options/options.h"
#include "options/words.h"
#include "verbs/verbs.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fmt/core.h>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace kapris_cli
{

// Results that did not reach standard output are a failure, however late that shows.
static ExitStatus FlushResults(ExitStatus status)
{
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw Failure{EXIT_FILES, fmt::format("cannot write standard output: {}", std::strerror(errno))};
  return status;
}

static ExitStatus Execute(int argc, char **argv, const Describe &describe, ColorWhen *color)
{
  Run run;
  std::vector<std::string> args(argv + 1, argv + argc);

  ExpandWords(&args);
  ExpandJson(&args);
  const bool described =
      !ReadCommandLine(std::move(args), [&](CLI::App *app) { describe(app, &run, color); });
  return described ? EXIT_DONE : FlushResults(run());
}

// The text of malformed input begins with its place, as compilers have it. Nothing here allocates: memory can be what
// the failure is about.
static void Complain(ColorWhen color, ExitStatus status, const char *text, const char *more = "")
{
  const Ink red = Red(color);

  std::fflush(stdout);
  // Where nobody can read it, the exit status has to do.
  if (status != EXIT_MALFORMED)
    for (const char *piece : {red.on, "kapris:", red.off, " "})
      std::fputs(piece, stderr);
  std::fputs(text, stderr);
  std::fputs(more, stderr);
  std::fputc('\n', stderr);
}

// The JSON library allocates where it must not throw, so that the process can only end.
[[noreturn]] static void EndAtOnce()
{
  try {
    if (const std::exception_ptr cause = std::current_exception())
      std::rethrow_exception(cause);
  } catch (const std::bad_alloc &) {
    Complain(ColorWhen::NEVER, EXIT_OUT_OF_MEMORY, "out of memory");
    std::_Exit(EXIT_OUT_OF_MEMORY);
  } catch (...) {
  }
  std::abort();
}

int RunCommand(int argc, char **argv, const Describe &describe)
{
  ColorWhen color = ColorWhen::AUTO;

  // Beyond the limit on the size of files a write then fails, instead of ending the process with half a file on the
  // disk.
  std::signal(SIGXFSZ, SIG_IGN);
  std::set_terminate(EndAtOnce);
  try {
    return Execute(argc, argv, describe, &color);
  } catch (const Failure &failure) {
    Complain(color, failure.status, failure.text.c_str());
    return failure.status;
  } catch (const std::bad_alloc &) {
    Complain(color, EXIT_OUT_OF_MEMORY, "out of memory");
    return EXIT_OUT_OF_MEMORY;
  } catch (const std::system_error &error) { // of fmt::print
    Complain(color, EXIT_FILES, "cannot write standard output: ", std::strerror(error.code().value()));
    return EXIT_FILES;
  } catch (const std::exception &error) {
    Complain(color, EXIT_INTERNAL, "internal failure: ", error.what());
    return EXIT_INTERNAL;
  }
}

} // namespace kapris_cli
