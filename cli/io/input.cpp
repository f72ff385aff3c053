// cli/io/input.cpp - the hypergraph files that a verb reads: their formats, and the options that name them.
// SPDX-License-Identifier: MIT

#include "io/input.h"

#include "failure.h"

#include "io/files.h"

#include <CLI/CLI.hpp>

namespace kapris_cli
{

void AddInput(CLI::App *verb, Input *input)
{
  verb->add_option("FILE", input->path, "Hypergraph in .hgr format, - for standard input")
      ->required()
      ->type_name("");
}

std::string NameOf(const Input &input)
{
  return InputName(input.path);
}

Hgr ReadHypergraph(const Input &input, std::vector<Problem> *problems)
{
  try {
    return ReadHgr(NameOf(input), ReadFile(input.path));
  } catch (const Failure &failure) {
    if (problems == nullptr || failure.status != EXIT_MALFORMED)
      throw;
    problems->push_back({false, failure.text});
    return {};
  }
}

} // namespace kapris_cli
