// cli/io/input.cpp - the hypergraph files that a verb reads: their formats, and the options that name them.
// SPDX-License-Identifier: MIT

#include "io/input.h"

#include "failure.h"

#include "io/files.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <map>
#include <utility>

namespace kapris_cli
{

static const std::map<std::string, Format> formats = {
    {"hgr", Format::HGR}, {"mtx", Format::MTX}, {"patoh", Format::PATOH}, {"cnf", Format::CNF}};

static const std::map<std::string, Model> models = {{"row-net", Model::ROW_NET},
                                                    {"column-net", Model::COLUMN_NET},
                                                    {"primal", Model::PRIMAL},
                                                    {"dual", Model::DUAL},
                                                    {"literal", Model::LITERAL}};

// An option that takes one of the words; the help and the messages list them.
template <typename Value>
static void AddChoice(CLI::App *verb, const std::string &name, const std::string &help,
                      const std::map<std::string, Value> &words, Value *value)
{
  std::string all;

  for (const auto &word : words)
    all += (all.empty() ? "" : "|") + word.first;
  verb->add_option_function<std::string>(
          name, [&words, value](const std::string &word) { *value = words.at(word); }, help)
      ->type_name(all)
      ->check(CLI::IsMember(&words).description(""));
}

void AddInput(CLI::App *verb, Input *input)
{
  verb->add_option("FILE", input->path,
                   "Hypergraph (.hgr, .patoh), matrix (.mtx) or formula (.cnf), also gzip-compressed; - for "
                   "standard input")
      ->required()
      ->type_name("");
  AddChoice(verb, "--format", "Format of FILE; default: by the end of its name, otherwise hgr", formats,
            &input->format);
  AddChoice(verb, "--model",
            "What becomes nets. Matrix: row-net (default) or column-net. Formula: its clauses with variables "
            "(primal, default) or literals as cells, or its variables (dual)",
            models, &input->model);
  verb->add_flag("--unit-weights", input->unit_weights,
                 "Matrix: all cells weigh 1, not the number of their entries");
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
    if (name.ends_with("." + word))
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
    return ReadText(input, format, OpenText(input.path).bytes, problems);
  } catch (const Failure &failure) {
    if (problems == nullptr || failure.status != EXIT_MALFORMED)
      throw;
    AddProblem(problems, false, failure.text);
    return {};
  }
}

} // namespace kapris_cli
