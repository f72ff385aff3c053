// cli/io/input.h - the hypergraph files that a verb reads: their formats, and the options that name them.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/formats.h"
#include "io/hgr.h"

#include <string>

namespace CLI
{
class App;
}

namespace kapris_cli
{

enum class Format { BY_NAME, HGR, MTX, PATOH, CNF };

// What the options of a verb say about its FILE.
struct Input {
  std::string path; // "-" for standard input
  Format format = Format::BY_NAME;
  Model model = Model::BY_FORMAT;
  bool unit_weights = false; // matrices only
};

// Adds the argument FILE and the options that say how to read it.
void AddInput(CLI::App *verb, Input *input, bool required = true);

// The name for messages: "stdin" for "-".
std::string NameOf(const Input &input);

// The format that the end of a name stands for, ".gz" taken off; BY_NAME if none.
Format FormatOfName(std::string_view name);

// The names that the options --format and --model take, empty where the input was to tell; and what they mean.
std::string NameOfFormat(Format format);
std::string NameOfModel(Model model);
Format FormatNamed(const std::string &name);
Model ModelNamed(const std::string &name);

// Reads the hypergraph. A fault throws Failure with its place. With a list, faults and oddities go to it as far as
// the reader can go on, and what it returns is good for nothing if there is a fault among them.
Hgr ReadHypergraph(const Input &input, Problems *problems = nullptr);

// Writes it as .hgr, .patoh or, without its weights, .mtx; compressed if the name ends with .gz.
void WriteHypergraph(const std::string &path, Format format, const Hgr &hgr);

} // namespace kapris_cli
