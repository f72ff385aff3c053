// cli/manual/table.h - the parser's description of the command as plain records, for the generators.
// SPDX-License-Identifier: MIT
#pragma once

#include "entry.h"

#include <string>
#include <vector>

namespace kapris_cli
{

// An option, or an argument if it has no names.
struct Item {
  std::vector<std::string> names; // with their dashes, short ones first
  std::string argument;
  std::string value; // what stands for the value; empty for a flag
  std::string text;
  std::string standard; // the default; empty if help shows none
  std::string group;
  std::vector<std::string> choices; // all values that it can take, if these are few
  bool takes_file = false;
  bool optional = false; // the value can be left out, and stands behind an equals sign if not
  bool required = false;
  bool many = false; // takes more than one value
};

// A paragraph, or what a term, command or number means.
struct Paragraph {
  std::string term; // empty for a paragraph
  std::string text;
};

struct Section {
  std::string title; // empty for what is about the command as a whole
  std::vector<Paragraph> paragraphs;
};

struct Command {
  std::string name; // all words of it: "kapris partition"
  std::string word; // the last of them
  std::string summary;
  std::vector<Item> items;
  std::vector<Section> sections; // the first is the one without title
  std::vector<Command> verbs;
};

// The whole description of a tool.
struct Description {
  Command command;
  std::string version; // as the option --version prints it
};
Description ReadDescription(const Describe &describe);

// Splits help text into sections. A line such as "Exit status:" with indented lines below opens one, "Example: "
// is one; columns are two blanks or more apart.
std::vector<Section> ReadSections(const std::string &text);

// The generators, which return the contents of files. version has the name of the tool before it; date may be empty;
// command is root or below it, among these siblings.
std::string ManualPage(const Command &root, const Command *parent, const Command &command,
                       const std::string &version, const std::string &date);
std::string BashCompletion(const Command &root);
std::string ZshCompletion(const Command &root);
std::string FishCompletion(const Command &root);

} // namespace kapris_cli
