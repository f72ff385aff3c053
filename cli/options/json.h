// cli/options/json.h - the option --json that several verbs have.
// SPDX-License-Identifier: MIT
#pragma once

#include "measure/report.h"

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

// The object in a file; throws Failure for anything that no result looks like.
Json ReadJson(const std::string &path);

// Writes the object to the place that the option named.
void WriteJson(const Json &json, const std::string &path);

} // namespace kapris_cli
