// cli/solve/progress.cpp - the progress line on a terminal.
// SPDX-License-Identifier: MIT

#include "solve/progress.h"

#include "solve/request.h"

#include <cstdio>
#include <fmt/core.h>
#include <memory>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kapris_cli
{

static const double UPDATE_INTERVAL = 0.2; // seconds
static const double ESTIMATE_AFTER = 0.05; // of the work

static size_t TerminalWidth()
{
  struct winsize size = {};

  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

static std::string FormatLine(const kapris::Progress &progress, const char *objective)
{
  const int current = std::min(progress.starts_done + 1, progress.starts);
  std::string line = kapris::PhaseName(progress.phase);

  if (progress.level_cells > 0)
    line += fmt::format(" {} cells", progress.level_cells);
  line += fmt::format(", start {}/{}", current, progress.starts);
  if (progress.best >= 0)
    line += fmt::format(", best {} {}", objective, progress.best);
  line += fmt::format(", {:.1f} s", progress.seconds);
  if (progress.done > ESTIMATE_AFTER)
    line += fmt::format(", about {:.0f} s left", progress.seconds * (1.0 - progress.done) / progress.done);
  return line;
}

std::function<void(const kapris::Progress &)> ProgressLine(const kapris::Options &options)
{
  const char *objective = NameOfObjective(options.objective);
  const auto shown = std::make_shared<double>(-1.0);

  if (!isatty(STDERR_FILENO))
    return {};
  return [objective, shown](const kapris::Progress &progress) {
    if (progress.seconds - *shown < UPDATE_INTERVAL)
      return;
    *shown = progress.seconds;
    // A line that wraps could not be taken back.
    const std::string line = FormatLine(progress, objective).substr(0, TerminalWidth() - 1);
    std::fputs(("\r\033[K" + line).c_str(), stderr);
    std::fflush(stderr);
  };
}

void ClearProgressLine()
{
  if (isatty(STDERR_FILENO))
    std::fputs("\r\033[K", stderr);
}

} // namespace kapris_cli
