// cli/solve/progress.h - the progress line on a terminal.
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <kapris.hpp>

namespace kapris_cli
{

// A callback that keeps one line on standard error up to date, or none if that is no terminal.
std::function<void(const kapris::Progress &)> ProgressLine(const kapris::Options &options);

// Takes the line away, if there is one.
void ClearProgressLine();

} // namespace kapris_cli
