// cli/color.cpp - colours in messages, where they are wanted.
// SPDX-License-Identifier: MIT

#include "color.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace kapris_cli
{

static bool IsWanted(ColorWhen when)
{
  const char *no = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");

  if (when != ColorWhen::AUTO)
    return when == ColorWhen::ALWAYS;
  return (no == nullptr || *no == '\0') && isatty(STDERR_FILENO) && terminal != nullptr &&
         std::string_view(terminal) != "dumb";
}

Ink Red(ColorWhen when)
{
  return IsWanted(when) ? Ink{"\033[1;31m", "\033[0m"} : Ink{"", ""};
}

} // namespace kapris_cli
