// cli/options/input.h - the options that say which hypergraph a verb reads, and how.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/input.h"

namespace CLI
{
class App;
}

namespace kapris_cli
{

// Adds the argument FILE and the options that say how to read it.
void AddInput(CLI::App *verb, Input *input, bool required = true);

} // namespace kapris_cli
