// cli/options/json.cpp - the option --json that several verbs have.
// SPDX-License-Identifier: MIT

#include "options/json.h"

#include "options/options.h"

#include <fmt/core.h>

namespace kapris_cli
{

void AddJson(CLI::App *verb, std::string *path, const std::string &schema)
{
  AddText(verb, "--json", path, "[=FILE]",
          fmt::format("Print one JSON object, schema {}, or write it to FILE", schema));
}

void ExpandJson(std::vector<std::string> *args)
{
  for (std::string &arg : *args) {
    if (arg == "--")
      return;
    if (arg == "--json")
      arg = "--json=-";
  }
}

} // namespace kapris_cli
