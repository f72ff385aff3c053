// cli/io/input.cpp - the hypergraph files that a verb reads: their formats, and the options that name them.
// SPDX-License-Identifier: MIT

#include "io/input.h"

#include "failure.h"

#include "io/bookshelf.h"
#include "io/entries.h"
#include "io/files.h"
#include "io/ignore.h"
#include "io/output.h"
#include "io/packed.h"
#include "io/types.h"
#include "io/yosys.h"
#include "options/choice.h"

#include <climits>
#include <fmt/core.h>

namespace kapris_cli
{

static const Names<Format> formats = {{"hgr", Format::HGR},     {"mtx", Format::MTX},
                                      {"patoh", Format::PATOH}, {"cnf", Format::CNF},
                                      {"wcnf", Format::WCNF},   {"graph", Format::GRAPH},
                                      {"yosys", Format::YOSYS}, {"bookshelf", Format::BOOKSHELF}};

// Other ends of names than those that are called as their formats.
static const Names<Format> suffixes = {{"json", Format::YOSYS}, {"aux", Format::BOOKSHELF}};

static const Names<Model> models = {{"row-net", Model::ROW_NET},
                                    {"column-net", Model::COLUMN_NET},
                                    {"primal", Model::PRIMAL},
                                    {"dual", Model::DUAL},
                                    {"literal", Model::LITERAL}};

void AddInput(CLI::App *verb, Input *input, bool required)
{
  CLI::Option *file = AddArgument(
      verb, "FILE", &input->path,
      "Hypergraph (.hgr, .patoh), matrix (.mtx), formula (.cnf, .wcnf), graph (.graph), netlist of "
      "yosys (.json) or Bookshelf problem (.aux), also compressed (.gz, .xz, .bz2, .zst); - for standard "
      "input");

  if (required)
    Require(file);
  Choice(verb, "--format", &input->format, "Format of FILE; default: by the end of its name, otherwise hgr",
         formats);
  Choice(verb, "--model", &input->model,
         "What becomes nets. Matrix: row-net (default) or column-net. Formula: its clauses with variables "
         "(primal, default) or literals as cells, or its variables (dual)",
         models);
  AddFlag(verb, "--unit-weights", &input->unit_weights,
          "Matrix: all cells weigh 1, not the number of their entries; .wcnf: so do all clauses");
  AddText(verb, "--module", &input->module, "NAME",
          "Netlist: the top module; default: the one that is marked so");
  AddNumber(verb, "--depth", &input->depth, 0, INT_MAX, "N",
            "Netlist: levels of modules that are dissolved into their cells; 0: none [all]");
  AddText(verb, "--weights", &input->types, "TYPES",
          "Netlist: file with lines of a type of cells and its weight [1 for every type]");
  AddText(verb, "--weight-by", &input->column, "NAME",
          "Column of TYPES, by its first line 'type NAME...' [the first]");
  AddNumber(verb, "--ignore-nets-above", &input->ignore_above, 0, INT_MAX, "N",
            "Leave out nets of more than N pins");
  AddTexts(verb, "--ignore-nets", &input->ignore, "PATTERN",
           "Leave out nets whose name, or number, matches, as in '*clk*'; can be given several times");
  SetGroup(verb, "Input",
           {"--format", "--model", "--unit-weights", "--module", "--depth", "--weights", "--weight-by",
            "--ignore-nets-above", "--ignore-nets"});
}

void CopyReading(const Input &from, Input *to)
{
  const std::string path = to->path;

  *to = from;
  to->path = path;
}

bool SameReading(const Input &one, const Input &other)
{
  Input copy = other;

  copy.path = one.path;
  return one == copy;
}

std::vector<std::string> ReadingWords(const Input &input)
{
  std::vector<std::string> words;
  const auto add = [&words](const char *option, const std::string &value) {
    if (!value.empty())
      words.insert(words.end(), {option, value});
  };

  add("--format", NameOfFormat(input.format));
  add("--model", NameOfModel(input.model));
  if (input.unit_weights)
    words.push_back("--unit-weights");
  add("--module", input.module);
  add("--depth", input.depth ? std::to_string(*input.depth) : "");
  add("--weights", input.types);
  add("--weight-by", input.column);
  add("--ignore-nets-above", input.ignore_above ? std::to_string(*input.ignore_above) : "");
  for (const std::string &pattern : input.ignore)
    add("--ignore-nets", pattern);
  return words;
}

template <typename Value>
static std::string NameIn(const Names<Value> &names, Value value)
{
  for (const auto &[name, meaning] : names)
    if (meaning == value)
      return name;
  return "";
}

template <typename Value>
static Value ValueIn(const Names<Value> &names, const std::string &given, Value otherwise)
{
  for (const auto &[name, meaning] : names)
    if (name == given)
      return meaning;
  return otherwise;
}

std::string NameOfFormat(Format format)
{
  return NameIn(formats, format);
}

std::string NameOfModel(Model model)
{
  return NameIn(models, model);
}

Format FormatNamed(const std::string &name)
{
  return ValueIn(formats, name, Format::BY_NAME);
}

Model ModelNamed(const std::string &name)
{
  return ValueIn(models, name, Model::BY_FORMAT);
}

std::string NameOf(const Input &input)
{
  return InputName(input.path);
}

std::string PlainNameOf(const Input &input)
{
  return input.path == "-" ? "stdin" : input.path;
}

Format FormatOfName(std::string_view name)
{
  name = WithoutPacking(name);
  for (const Names<Format> *names : {&formats, &suffixes})
    for (const auto &[word, format] : *names)
      if (name.ends_with(std::string(".") + word))
        return format;
  return Format::BY_NAME;
}

static Format FormatOf(const Input &input)
{
  Format format = input.format == Format::BY_NAME ? FormatOfName(input.path) : input.format;

  if (format == Format::BY_NAME)
    format = Format::HGR;
  const bool of_matrix = input.model == Model::ROW_NET || input.model == Model::COLUMN_NET;
  const bool formula = format == Format::CNF || format == Format::WCNF;
  if (input.model != Model::BY_FORMAT && !(of_matrix ? format == Format::MTX : formula))
    throw Failure{EXIT_USAGE, fmt::format("--model does not fit the format of {}: row-net and column-net are "
                                          "for mtx, primal, dual and literal for cnf and wcnf",
                                          NameOf(input))};
  if (input.unit_weights && format != Format::MTX && format != Format::WCNF)
    throw Failure{
        EXIT_USAGE,
        fmt::format("--unit-weights is for matrices and weighted formulas, and {} is none", NameOf(input))};
  const bool netlist = !input.module.empty() || input.depth || !input.types.empty();
  if (netlist && format != Format::YOSYS)
    throw Failure{EXIT_USAGE,
                  fmt::format("--module, --depth and --weights are for netlists of yosys, and {} is none",
                              NameOf(input))};
  if (input.types.empty() && !input.column.empty())
    throw Failure{EXIT_USAGE, "--weight-by names a column of --weights"};
  return format;
}

static Hgr ReadNetlist(const Input &input, std::string_view text, Problems *problems, Details *details)
{
  const TypeWeights table = input.types.empty() ? TypeWeights{} : LoadTypeWeights(input.types, input.column);
  const YosysRules rules = {input.module, input.depth.value_or(INT_MAX),
                            input.types.empty() ? nullptr : &table};

  return ReadYosys(NameOf(input), text, rules, problems, details);
}

static Hgr ReadText(const Input &input, Format format, std::string_view text, Problems *problems,
                    Details *details)
{
  const std::string name = NameOf(input);

  switch (format) {
  case Format::MTX:
    return ReadMtx(name, text, input.model, input.unit_weights, problems);
  case Format::PATOH:
    return ReadPatoh(name, text, problems);
  case Format::CNF:
    return ReadCnf(name, text, input.model, problems);
  case Format::WCNF:
    return ReadWcnf(name, text, input.model, input.unit_weights, problems);
  case Format::GRAPH:
    return ReadGraph(name, text, problems);
  case Format::YOSYS:
    return ReadNetlist(input, text, problems, details);
  case Format::BOOKSHELF:
    return LoadBookshelf(input.path, text, problems, details);
  case Format::HGR:
  case Format::BY_NAME:
    break;
  }
  return ReadHgr(name, text, problems);
}

Hgr ReadHypergraph(const Input &input, Problems *problems, Details *details)
{
  const Format format = FormatOf(input);
  const bool ignoring = input.ignore_above || !input.ignore.empty();
  Details own;

  try {
    const Text text = OpenText(input.path);
    // Patterns match names.
    Details *const found = details == nullptr && !input.ignore.empty() ? &own : details;
    Hgr hgr = ReadText(input, format, text.bytes, problems, found);
    // The readers need no memory for cells that are only declared, but all that comes after them does.
    CheckProportion(StartScan(NameOf(input), text.bytes), "cells", hgr.ncells, text.bytes.size());
    if (ignoring)
      IgnoreNets(input.ignore_above, input.ignore, &hgr, found);
    return hgr;
  } catch (const Failure &failure) {
    if (problems == nullptr || failure.status != EXIT_MALFORMED)
      throw;
    AddProblem(problems, false, failure.text);
    return {};
  }
}

static std::string FormatAs(Format format, const Hgr &hgr)
{
  if (format == Format::MTX)
    return FormatMtx(hgr);
  if (format == Format::GRAPH)
    return FormatGraph(hgr);
  return format == Format::PATOH ? FormatPatoh(hgr) : FormatHgr(hgr);
}

void WriteHypergraph(const std::string &path, Format format, const Hgr &hgr)
{
  WriteFile(path, FormatAs(format, hgr));
}

} // namespace kapris_cli
