// formats/input.h - hypergraph files of all formats: how one is to be read, and reading and writing it.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/formats.h"
#include "formats/hgr.h"
#include "formats/named.h"
#include "formats/names.h"

#include <optional>
#include <string>
#include <vector>

namespace kapris_formats
{

enum class Format { BY_NAME, HGR, MTX, PATOH, CNF, WCNF, GRAPH, YOSYS, BOOKSHELF };

// Where a hypergraph is, and how it is to be read.
struct Input {
  std::string path; // "-" for standard input
  Format format = Format::BY_NAME;
  Model model = Model::BY_FORMAT;
  bool unit_weights = false; // matrices and weighted formulas only
  std::string module;        // netlists only, as what follows; empty: the top
  std::optional<int> depth;  // of dissolved modules; none: all
  std::string types, column; // file with the weights of types, and which of them; empty: none, the first
  std::optional<int> ignore_above; // nets of more pins are left out
  std::vector<std::string> ignore; // patterns of names of nets that are left out

  bool operator==(const Input &) const = default;
};

// Whether two files are read in the same way, and how to bring that about: all but the path.
bool SameReading(const Input &one, const Input &other);
void CopyReading(const Input &from, Input *to);

// The name for messages: "stdin" for "-", escaped if it cannot be shown; and as it is.
std::string NameOf(const Input &input);
std::string PlainNameOf(const Input &input);

// The format that the end of a name stands for, ".gz" and the like taken off; BY_NAME if none.
Format FormatOfName(std::string_view name);

// The names of formats and models; those of one value, empty where the input was to tell; and what they mean.
const Names<Format> &FormatNames();
const Names<Model> &ModelNames();
std::string NameOfFormat(Format format);
std::string NameOfModel(Model model);
Format FormatNamed(const std::string &name);
Model ModelNamed(const std::string &name);

// Reads the hypergraph. A fault throws Failure with its place. With a list, faults and oddities go to it as far as
// the reader can go on, and what it returns is good for nothing if there is a fault among them.
// details: gets what the format has beside the hypergraph.
Hgr ReadHypergraph(const Input &input, Problems *problems = nullptr, Details *details = nullptr);

// Writes it as .hgr, .patoh, .graph or, without its weights, .mtx; compressed if the name ends with .gz, .xz or .bz2.
void WriteHypergraph(const std::string &path, Format format, const Hgr &hgr);

} // namespace kapris_formats
