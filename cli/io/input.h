// cli/io/input.h - the hypergraph files that a verb reads: their formats, and the options that name them.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace kapris_cli
{

enum class Format { BY_NAME, HGR };

// What the options of a verb say about its FILE.
struct Input {
  std::string path; // "-" for standard input
  Format format = Format::BY_NAME;
};

// What is wrong with a file, or only odd.
struct Problem {
  bool warning;
  std::string text; // begins with "file:line:column: "
};

// Adds the argument FILE and the options that say how to read it.
void AddInput(CLI::App *verb, Input *input);

// The name for messages: "stdin" for "-".
std::string NameOf(const Input &input);

// Reads the hypergraph. A fault throws Failure with its place. With a list, faults and oddities go to it as far as
// the reader can go on, and what it returns is good for nothing if there is a fault among them.
Hgr ReadHypergraph(const Input &input, std::vector<Problem> *problems = nullptr);

} // namespace kapris_cli
