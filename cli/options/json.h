// cli/options/json.h - the option --json that several verbs have.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace kapris_cli
{

// Adds the option. *path is empty without it, "-" for standard output.
void AddJson(CLI::App *verb, std::string *path, const std::string &schema);

// The parser cannot leave a value out: "--json" alone becomes "--json=-".
void ExpandJson(std::vector<std::string> *args);

} // namespace kapris_cli
