// cli/verbs.h - the verbs of the tool.
// SPDX-License-Identifier: MIT
#pragma once

#include "failure.h"

#include <functional>

namespace CLI
{
class App;
}

namespace kapris_cli
{

// What is to be done once the command line has been read completely.
using Run = std::function<ExitStatus()>;

// Each adds its verb with options to app; the parser sets run if the user names the verb.
void AddPartition(CLI::App *app, Run *run);
void AddEval(CLI::App *app, Run *run);

} // namespace kapris_cli
