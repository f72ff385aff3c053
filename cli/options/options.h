// cli/options/options.h - what the verbs say about themselves and their options. Only options.cpp knows the parser,
// whose
// headers take long to compile.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace kapris_cli
{

// ----------------------------------------------------------------------------------------------------------
// The command and its verbs

// What the help of the whole command says. Every command line needs a verb, and its options may stand before it.
void DescribeApp(CLI::App *app, const char *name, const std::string &description, const std::string &footer,
                 const std::string &version);

// chosen is called once the command line with this verb has been read completely.
CLI::App *AddVerb(CLI::App *app, const char *name, const char *summary, const std::string &footer,
                  std::function<void()> chosen);

// A verb that needs one of the verbs that are added to it, with the options that belong to that one alone; refuse is
// called with the words that are there if it is missing.
CLI::App *AddVerbOfVerbs(CLI::App *app, const char *name, const char *summary, const std::string &footer);
void RefuseOthers(CLI::App *verb, std::function<void(const std::string &words)> refuse);

// What no option means, of any verb: a value that is not there, as a script's variable that was never set, and a number
// with a leading zero, which the parser would read as octal.
void CheckValues(CLI::App *app);

// Reads the command line by the description that describe gives. False if all that it asked for was help or the
// version, which have been printed. Throws Failure with what is wrong.
bool ReadCommandLine(std::vector<std::string> args, const std::function<void(CLI::App *)> &describe);

// ----------------------------------------------------------------------------------------------------------
// Options. A name is "-k,--parts", without dashes that of an argument; type is what stands for the value in the help.

CLI::Option *AddArgument(CLI::App *verb, const char *name, std::string *value, const std::string &help);
CLI::Option *AddArguments(CLI::App *verb, const char *name, std::vector<std::string> *values,
                          const std::string &help);
CLI::Option *AddText(CLI::App *verb, const char *name, std::string *value, const char *type,
                     const std::string &help);
// A text that can be given several times.
CLI::Option *AddTexts(CLI::App *verb, const char *name, std::vector<std::string> *values, const char *type,
                      const std::string &help);
void AddFlag(CLI::App *verb, const char *name, bool *value, const std::string &help);
void AddFlag(CLI::App *verb, const char *name, int *times, const std::string &help);

// A whole number from low to high.
CLI::Option *AddNumber(CLI::App *verb, const char *name, int *value, int low, int high, const char *type,
                       const std::string &help);
CLI::Option *AddNumber(CLI::App *verb, const char *name, std::optional<int> *value, int low, int high,
                       const char *type, const std::string &help);
// A number from low to high.
CLI::Option *AddDecimal(CLI::App *verb, const char *name, double *value, double low, double high,
                        const char *type, const std::string &help);
CLI::Option *AddDecimal(CLI::App *verb, const char *name, std::optional<double> *value, double low,
                        double high, const char *type, const std::string &help);
// A number of bytes above 0, as in 500M.
CLI::Option *AddBytes(CLI::App *verb, const char *name, std::uint64_t *value, const std::string &help);

// A value that read makes something of, or throws Failure. The default is shown.
CLI::Option *AddParsed(CLI::App *verb, const char *name, std::function<void(const std::string &)> read,
                       const std::string &standard, const char *type, const std::string &help);
// One of the names; store gets its number. The name of the default, if it has one, is shown.
struct NamedNumber {
  const char *name;
  int number;
};
CLI::Option *AddChoice(CLI::App *verb, const char *name, const std::vector<NamedNumber> &choices,
                       std::function<void(int)> store, int standard, const std::string &help);

// Puts options that the verb has under a heading of the help.
void SetGroup(CLI::App *verb, const char *group, const std::vector<std::string> &names);

CLI::Option *Require(CLI::Option *option);
CLI::Option *ShowDefault(CLI::Option *option);
// The two cannot be given together.
void Exclude(CLI::Option *one, CLI::Option *other);

} // namespace kapris_cli
