// cli/options/input.cpp - the options that say which hypergraph a verb reads, and how.
// SPDX-License-Identifier: MIT

#include "options/input.h"

#include "options/choice.h"

#include <climits>

namespace kapris_cli
{

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
         FormatNames());
  Choice(verb, "--model", &input->model,
         "What becomes nets. Matrix: row-net (default) or column-net. Formula: its clauses with variables "
         "(primal, default) or literals as cells, or its variables (dual)",
         ModelNames());
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

} // namespace kapris_cli
