// cli/verbs/verbs.h - the verbs of the tool.
// SPDX-License-Identifier: MIT
#pragma once

#include "color.h"
#include "libraries.h"

#include "formats/failure.h"

#include <functional>

namespace CLI
{
class App;
}

namespace kapris_cli
{

struct Engine;

// What is to be done once the command line has been read completely.
using Run = std::function<ExitStatus()>;

// Describes the whole command: its verbs with their options, examples, exit statuses. Help, manual pages and
// completions come from this one description. The parser sets run when the user names a verb.
void DescribeCommand(CLI::App *app, Run *run, ColorWhen *color);

// The same for the command whose processes share the starts; of its verbs there is only partition.
void DescribeMpiCommand(CLI::App *app, Run *run, ColorWhen *color, const Engine &engine);

// Each adds its verb with options to app.
void AddPartition(CLI::App *app, Run *run);
void AddMpiPartition(CLI::App *app, Run *run, const Engine &engine);
void AddRefine(CLI::App *app, Run *run);
void AddCombine(CLI::App *app, Run *run);
void AddBest(CLI::App *app, Run *run);
void AddReport(CLI::App *app, Run *run);
void AddEval(CLI::App *app, Run *run);
void AddGenerate(CLI::App *app, Run *run);
void AddStatsVerb(CLI::App *app, Run *run);
void AddCheck(CLI::App *app, Run *run);
void AddConvert(CLI::App *app, Run *run);

} // namespace kapris_cli
