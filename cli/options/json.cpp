// cli/options/json.cpp - the option --json that several verbs have.
// SPDX-License-Identifier: MIT

#include "options/json.h"

#include "io/output.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kapris_cli
{

void AddJson(CLI::App *verb, std::string *path, const std::string &schema)
{
  verb->add_option("--json", *path,
                   fmt::format("Print one JSON object, schema {}, or write it to FILE", schema))
      ->type_name("[=FILE]");
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

void WriteJson(const Json &json, const std::string &path)
{
  // Names of files can hold any bytes.
  const std::string text = json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";

  WriteFile(path, text);
}

} // namespace kapris_cli
