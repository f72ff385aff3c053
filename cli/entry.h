// cli/entry.h - from the arguments of main to an exit status.
// SPDX-License-Identifier: MIT
#pragma once

#include "verbs/verbs.h"

namespace kapris_cli
{

// What describes a command: DescribeCommand, or one like it.
using Describe = std::function<void(CLI::App *app, Run *run, ColorWhen *color)>;

// Reads the command line and runs what it asks for. Failures are told on standard error; throws nothing.
int RunCommand(int argc, char **argv, const Describe &describe);

} // namespace kapris_cli
