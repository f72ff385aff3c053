// cli/manual/table.cpp - reads the parser's description of the command.
// SPDX-License-Identifier: MIT

#include "manual/table.h"

#include "verbs/verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace kapris_cli
{

// The names of an enumerated option; Choice (options/choice.h) makes them its type name.
static std::vector<std::string> ReadChoices(const std::string &type)
{
  const bool names = type.find('|') != std::string::npos &&
                     type.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;

  return names ? CLI::detail::split(type, '|') : std::vector<std::string>();
}

// The parser does not tell the type of a value, but whether it takes one: no number looks like this.
static bool TakesFile(CLI::Option *option)
{
  option->clear();
  option->add_result("/dev/null");
  try {
    option->run_callback();
    return true;
  } catch (...) { // also what the option's own reader throws
    return false;
  }
}

static Item ReadItem(CLI::Option *option)
{
  Item item;

  item.text = option->get_description();
  std::replace(item.text.begin(), item.text.end(), '\n', ' ');
  item.standard = option->get_default_str();
  item.group = option->get_group();
  item.required = option->get_required();
  if (option->get_items_expected_max() == 0)
    return item;
  item.value = option->get_type_name().empty() ? "VALUE" : option->get_type_name();
  item.optional = item.value.starts_with("[=");
  if (item.optional)
    item.value = item.value.substr(2, item.value.size() - 3);
  item.choices = ReadChoices(item.value);
  item.takes_file = item.choices.empty() && TakesFile(option);
  item.many = option->get_items_expected_max() > 1;
  return item;
}

// Options without a group are hidden.
static std::vector<Item> ReadItems(CLI::App *app)
{
  std::vector<Item> items;

  for (CLI::Option *option : app->get_options([](CLI::Option *o) { return !o->get_group().empty(); })) {
    const Item item = ReadItem(option);
    if (option->get_positional()) {
      items.push_back(item);
      items.back().argument = option->get_name(true);
    }
    if (!option->nonpositional())
      continue;
    items.push_back(item);
    for (const std::string &name : option->get_snames())
      items.back().names.push_back("-" + name);
    for (const std::string &name : option->get_lnames())
      items.back().names.push_back("--" + name);
  }
  return items;
}

// The first words about the command, without its name: "partitions hypergraphs".
static std::string ReadSummary(const Command &command)
{
  const std::vector<Paragraph> &paragraphs = command.sections[0].paragraphs;
  std::string summary = paragraphs.empty() ? command.word : paragraphs[0].text;

  if (summary.starts_with(command.name + " "))
    summary.erase(0, command.name.size() + 1);
  return summary.substr(0, summary.find_first_of(":."));
}

// Parses on the way, so app is good for nothing else afterwards.
static Command ReadCommand(CLI::App *app, const std::string &parent)
{
  Command command;

  command.word = app->get_name();
  command.name = parent + (parent.empty() ? "" : " ") + command.word;
  command.sections = ReadSections(app->get_description() + "\n\n" + app->get_footer());
  command.summary = ReadSummary(command);
  command.items = ReadItems(app);
  for (CLI::App *verb : app->get_subcommands([](CLI::App *) { return true; }))
    command.verbs.push_back(ReadCommand(verb, command.name));
  return command;
}

Description ReadDescription(const Describe &describe)
{
  CLI::App app;
  Run run;
  ColorWhen color = ColorWhen::AUTO;

  describe(&app, &run, &color);
  return {ReadCommand(&app, ""), app.version()};
}

} // namespace kapris_cli
