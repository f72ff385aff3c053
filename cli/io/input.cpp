// cli/io/input.cpp - the hypergraph files that a verb reads: their formats, and the options that name them.
// SPDX-License-Identifier: MIT

#include "io/input.h"

#include "failure.h"

#include "io/entries.h"
#include "io/files.h"
#include "io/output.h"
#include "options/choice.h"

#include <fmt/core.h>

namespace kapris_cli
{

static const Names<Format> formats = {
    {"hgr", Format::HGR}, {"mtx", Format::MTX}, {"patoh", Format::PATOH}, {"cnf", Format::CNF}};

static const Names<Model> models = {{"row-net", Model::ROW_NET},
                                    {"column-net", Model::COLUMN_NET},
                                    {"primal", Model::PRIMAL},
                                    {"dual", Model::DUAL},
                                    {"literal", Model::LITERAL}};

void AddInput(CLI::App *verb, Input *input, bool required)
{
  CLI::Option *file =
      AddArgument(verb, "FILE", &input->path,
                  "Hypergraph (.hgr, .patoh), matrix (.mtx) or formula (.cnf), also gzip-compressed; - for "
                  "standard input");

  if (required)
    Require(file);
  Choice(verb, "--format", &input->format, "Format of FILE; default: by the end of its name, otherwise hgr",
         formats);
  Choice(verb, "--model", &input->model,
         "What becomes nets. Matrix: row-net (default) or column-net. Formula: its clauses with variables "
         "(primal, default) or literals as cells, or its variables (dual)",
         models);
  AddFlag(verb, "--unit-weights", &input->unit_weights,
          "Matrix: all cells weigh 1, not the number of their entries");
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

Format FormatOfName(std::string_view name)
{
  if (name.ends_with(".gz"))
    name.remove_suffix(3);
  for (const auto &[word, format] : formats)
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
  if (input.model != Model::BY_FORMAT && format != (of_matrix ? Format::MTX : Format::CNF))
    throw Failure{EXIT_USAGE, fmt::format("--model does not fit the format of {}: row-net and column-net are "
                                          "for mtx, primal, dual and literal for cnf",
                                          NameOf(input))};
  if (input.unit_weights && format != Format::MTX)
    throw Failure{EXIT_USAGE, fmt::format("--unit-weights is for matrices, and {} is none", NameOf(input))};
  return format;
}

static Hgr ReadText(const Input &input, Format format, std::string_view text, Problems *problems)
{
  const std::string name = NameOf(input);

  switch (format) {
  case Format::MTX:
    return ReadMtx(name, text, input.model, input.unit_weights, problems);
  case Format::PATOH:
    return ReadPatoh(name, text, problems);
  case Format::CNF:
    return ReadCnf(name, text, input.model, problems);
  case Format::HGR:
  case Format::BY_NAME:
    break;
  }
  return ReadHgr(name, text, problems);
}

Hgr ReadHypergraph(const Input &input, Problems *problems)
{
  const Format format = FormatOf(input);

  try {
    const Text text = OpenText(input.path);
    Hgr hgr = ReadText(input, format, text.bytes, problems);
    // The readers need no memory for cells that are only declared, but all that comes after them does.
    CheckProportion(StartScan(NameOf(input), text.bytes), "cells", hgr.ncells, text.bytes.size());
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
  return format == Format::PATOH ? FormatPatoh(hgr) : FormatHgr(hgr);
}

void WriteHypergraph(const std::string &path, Format format, const Hgr &hgr)
{
  WriteFile(path, FormatAs(format, hgr));
}

} // namespace kapris_cli
