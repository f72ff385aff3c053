// formats/input.cpp - hypergraph files of all formats: how one is to be read, and reading and writing it.
// SPDX-License-Identifier: MIT

#include "formats/input.h"

#include "formats/bookshelf.h"
#include "formats/entries.h"
#include "formats/failure.h"
#include "formats/files.h"
#include "formats/ignore.h"
#include "formats/output.h"
#include "formats/packed.h"
#include "formats/types.h"
#include "formats/yosys.h"

#include <climits>
#include <fmt/core.h>

namespace kapris_formats
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

const Names<Format> &FormatNames()
{
  return formats;
}

const Names<Model> &ModelNames()
{
  return models;
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

} // namespace kapris_formats
