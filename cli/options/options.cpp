// cli/options/options.cpp - the one file that knows the parser of command lines.
// SPDX-License-Identifier: MIT

#include "options/options.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/text.h"
#include "options/words.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <climits>
#include <fmt/core.h>
#include <iostream>

namespace kapris_cli
{

// ----------------------------------------------------------------------------------------------------------
// The command and its verbs

void DescribeApp(CLI::App *app, const char *name, const std::string &description, const std::string &footer,
                 const std::string &version)
{
  app->name(name);
  app->description(description);
  app->footer(footer);
  app->set_version_flag("--version", version);
  app->require_subcommand(1);
  app->fallthrough();
}

CLI::App *AddVerb(CLI::App *app, const char *name, const char *summary, const std::string &footer,
                  std::function<void()> chosen)
{
  CLI::App *verb = app->add_subcommand(name, summary);

  verb->footer(footer);
  verb->callback(std::move(chosen));
  return verb;
}

CLI::App *AddVerbOfVerbs(CLI::App *app, const char *name, const char *summary, const std::string &footer)
{
  CLI::App *verb = AddVerb(app, name, summary, footer, {});

  verb->fallthrough(false);
  return verb;
}

// The parser itself would only say that a verb is missing. Verbs made before do not inherit this.
void RefuseOthers(CLI::App *verb, std::function<void(const std::string &words)> refuse)
{
  verb->allow_extras();
  verb->callback([verb, refuse = std::move(refuse)] {
    if (verb->get_subcommands().empty())
      refuse(CLI::detail::join(verb->remaining(), " "));
  });
}

void CheckValues(CLI::App *app)
{
  for (CLI::Option *option : app->get_options()) {
    if (option->get_items_expected_max() == 0)
      continue;
    const bool iscount = option->get_type_name() == "N";
    option->transform(CLI::Validator(
        [iscount](std::string &text) -> std::string {
          if (text.empty())
            return "the value is empty";
          return iscount && text.size() > 1 && text[0] == '0' ? "'" + text + "' has a leading zero" : "";
        },
        ""));
  }
  for (CLI::App *verb : app->get_subcommands([](const CLI::App *) { return true; }))
    CheckValues(verb);
}

// The names of the options that a command and those around it have.
static std::vector<std::string> OptionNames(const CLI::App *app)
{
  std::vector<std::string> names;

  for (; app != nullptr; app = app->get_parent())
    for (const CLI::Option *option : app->get_options())
      for (const std::string &name : option->get_lnames())
        for (const std::string &known : NamesOfOption("--" + name))
          names.push_back(known);
  return names;
}

static std::string Suggestion(const std::string &given, const std::vector<std::string> &words)
{
  const std::string nearest = NearestWord(given, words);

  return nearest.empty() ? "" : fmt::format("; did you mean '{}'?", nearest);
}

// What is wrong with a command line without a verb.
static std::string VerbMissing(const CLI::App &app)
{
  const std::vector<std::string> words = app.remaining();
  std::vector<std::string> verbs;

  if (words.empty())
    return "a verb is missing";
  if (words[0].starts_with('-'))
    return fmt::format("a verb is missing before '{}', as in '{} partition'", Escape(words[0]),
                       app.get_name());
  for (const CLI::App *verb : app.get_subcommands([](const CLI::App *) { return true; }))
    verbs.push_back(verb->get_name());
  return fmt::format("there is no verb '{}'{}", Escape(words[0]), Suggestion(words[0], verbs));
}

// The words that belong to nothing, an option first: it can be why others seem to be missing.
static std::string LeftOver(const CLI::App *verb, const std::vector<std::string> &words)
{
  const auto option = std::find_if(words.begin(), words.end(),
                                   [](const std::string &word) { return word.size() > 1 && word[0] == '-'; });

  if (option == words.end())
    return fmt::format("'{}' was not expected", Escape(words[0]));
  const std::string name = option->substr(0, option->find('='));
  return fmt::format("there is no option '{}'{}", Escape(name), Suggestion(name, OptionNames(verb)));
}

// The parser's words, or better ones where these say little.
[[noreturn]] static void FailUsage(const CLI::App &app, const CLI::ParseError &error)
{
  const CLI::App *verb = &app;
  std::string name, text = Escape(error.what());

  while (!verb->get_subcommands().empty()) {
    verb = verb->get_subcommands()[0];
    name += " " + verb->get_name();
  }
  const std::vector<std::string> left = app.remaining(true);
  const bool missing = dynamic_cast<const CLI::RequiredError *>(&error) != nullptr;
  static const std::string conversion = "Could not convert: ", equals = " = ";
  if (verb == &app && missing)
    text = VerbMissing(app);
  else if (!left.empty() &&
           (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr ||
            (missing && std::any_of(left.begin(), left.end(), [](auto &word) { return word[0] == '-'; }))))
    text = LeftOver(verb, left);
  else if (const size_t at = text.find(equals); text.starts_with(conversion) && at != std::string::npos)
    text =
        fmt::format("{}: '{}' is not a number that it can be",
                    text.substr(conversion.size(), at - conversion.size()), text.substr(at + equals.size()));
  throw Failure{EXIT_USAGE, fmt::format("{}\n'{}{} --help' shows how to use it", text, app.get_name(), name)};
}

bool ReadCommandLine(std::vector<std::string> args, const std::function<void(CLI::App *)> &describe)
{
  CLI::App app;

  describe(&app);
  std::reverse(args.begin(), args.end()); // as the parser wants them
  try {
    app.parse(args);
    return true;
  } catch (const CLI::Success &request) {
    app.exit(request); // prints the help or the version
    std::cout.flush();
    if (!std::cout)
      throw Failure{EXIT_FILES, "cannot write standard output"};
    return false;
  } catch (const CLI::ParseError &error) {
    FailUsage(app, error);
  }
}

// ----------------------------------------------------------------------------------------------------------
// Options

CLI::Option *AddArgument(CLI::App *verb, const char *name, std::string *value, const std::string &help)
{
  return verb->add_option(name, *value, help)->type_name("");
}

CLI::Option *AddArguments(CLI::App *verb, const char *name, std::vector<std::string> *values,
                          const std::string &help)
{
  return verb->add_option(name, *values, help)->type_name("");
}

CLI::Option *AddText(CLI::App *verb, const char *name, std::string *value, const char *type,
                     const std::string &help)
{
  return verb->add_option(name, *value, help)->type_name(type);
}

CLI::Option *AddTexts(CLI::App *verb, const char *name, std::vector<std::string> *values, const char *type,
                      const std::string &help)
{
  return verb->add_option(name, *values, help)->type_name(type)->allow_extra_args(false);
}

void AddFlag(CLI::App *verb, const char *name, bool *value, const std::string &help)
{
  verb->add_flag(name, *value, help);
}

void AddFlag(CLI::App *verb, const char *name, int *times, const std::string &help)
{
  verb->add_flag(name, *times, help);
}

template <typename Value>
static CLI::Option *AddAnyNumber(CLI::App *verb, const char *name, Value *value, int low, int high,
                                 const char *type, const std::string &help)
{
  CLI::Option *option = verb->add_option(name, *value, help)->type_name(type);

  // What leaves the type is refused all the same.
  if (low > INT_MIN || high < INT_MAX)
    option->check(CLI::Range(low, high).description(""));
  return option;
}

CLI::Option *AddNumber(CLI::App *verb, const char *name, int *value, int low, int high, const char *type,
                       const std::string &help)
{
  return AddAnyNumber(verb, name, value, low, high, type, help);
}

CLI::Option *AddNumber(CLI::App *verb, const char *name, std::optional<int> *value, int low, int high,
                       const char *type, const std::string &help)
{
  return AddAnyNumber(verb, name, value, low, high, type, help);
}

template <typename Value>
static CLI::Option *AddAnyDecimal(CLI::App *verb, const char *name, Value *value, double low, double high,
                                  const char *type, const std::string &help)
{
  const auto check = [=](const std::string &text) {
    double given = 0;
    // The parser reads "nan" as a number, which is neither above nor below.
    const bool good = CLI::detail::lexical_cast(text, given) && given >= low && given <= high;
    return good ? "" : fmt::format("'{}' is not a number from {} to {}", text, low, high);
  };

  return verb->add_option(name, *value, help)->type_name(type)->check(check);
}

CLI::Option *AddDecimal(CLI::App *verb, const char *name, double *value, double low, double high,
                        const char *type, const std::string &help)
{
  return AddAnyDecimal(verb, name, value, low, high, type, help);
}

CLI::Option *AddDecimal(CLI::App *verb, const char *name, std::optional<double> *value, double low,
                        double high, const char *type, const std::string &help)
{
  return AddAnyDecimal(verb, name, value, low, high, type, help);
}

CLI::Option *AddBytes(CLI::App *verb, const char *name, std::uint64_t *value, const std::string &help)
{
  return verb->add_option(name, *value, help)
      ->type_name("SIZE")
      ->transform(CLI::AsSizeValue(false).description(""))
      ->transform(CLI::Validator(
          [](std::string &text) -> std::string {
            return text.starts_with('-') || text == "0" ? "'" + text + "' is not a number of bytes above 0"
                                                        : "";
          },
          ""));
}

CLI::Option *AddParsed(CLI::App *verb, const char *name, std::function<void(const std::string &)> read,
                       const std::string &standard, const char *type, const std::string &help)
{
  return verb->add_option_function<std::string>(name, std::move(read), help)
      ->type_name(type)
      ->default_str(standard);
}

// The type name of the option is the names, "fast|default|quality": help shows it, manual pages and completions read
// it.
CLI::Option *AddChoice(CLI::App *verb, const char *name, const std::vector<NamedNumber> &choices,
                       std::function<void(int)> store, int standard, const std::string &help)
{
  const std::string all = name, blamed = all.substr(all.rfind(',') + 1);
  std::string type, shown;

  for (const NamedNumber &choice : choices) {
    type += (type.empty() ? "" : "|") + std::string(choice.name);
    if (choice.number == standard)
      shown = choice.name;
  }
  const auto find = [=](const std::string &given) {
    for (const NamedNumber &choice : choices)
      if (choice.name == given)
        return store(choice.number);
    throw CLI::ValidationError(blamed, "'" + given + "' is not one of " + type);
  };
  return AddParsed(verb, name, find, shown, type.c_str(), help);
}

void SetGroup(CLI::App *verb, const char *group, const std::vector<std::string> &names)
{
  // Not by get_option_no_throw: it allocates, and ends the process where that fails.
  for (CLI::Option *option : verb->get_options())
    for (const std::string &name : option->get_lnames())
      if (std::find(names.begin(), names.end(), "--" + name) != names.end())
        option->group(group);
}

CLI::Option *Require(CLI::Option *option)
{
  return option->required();
}

CLI::Option *ShowDefault(CLI::Option *option)
{
  return option->capture_default_str();
}

void Exclude(CLI::Option *one, CLI::Option *other)
{
  one->excludes(other);
}

} // namespace kapris_cli
