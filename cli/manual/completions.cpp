// cli/manual/completions.cpp - completions for bash, zsh and fish.
// SPDX-License-Identifier: MIT

#include "manual/table.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace kapris_cli
{

static std::string Words(const std::vector<std::string> &words)
{
  return fmt::format("{}", fmt::join(words, " "));
}

// What is special where the text goes gets a backslash; the quote itself is replaced.
static std::string Quote(const std::string &text, const std::string &special, const std::string &quote)
{
  std::string quoted;

  for (const char c : text) {
    if (special.find(c) != std::string::npos)
      quoted += '\\';
    quoted += c == '\'' ? quote : std::string(1, c);
  }
  return quoted;
}

static std::vector<std::string> VerbsOf(const Command &command)
{
  std::vector<std::string> words;

  for (const Command &verb : command.verbs)
    words.push_back(verb.word);
  return words;
}

namespace
{

// bash: the places of a word, "kapris partition:--output" for the value of an option and "kapris partition:" for
// others, and what it may be there.
struct Places {
  std::vector<std::string> commands;
  std::string values;
  std::string plain;
};

} // namespace

static void AddPlaces(const Command &command, Places *places)
{
  std::vector<std::string> names;
  std::vector<std::string> words = VerbsOf(command);
  std::string files;

  places->commands.push_back("'" + command.name + "'");
  for (const Item &item : command.items) {
    names.insert(names.end(), item.names.begin(), item.names.end());
    if (item.names.empty()) {
      words.insert(words.end(), item.choices.begin(), item.choices.end());
      files = item.takes_file ? " files=1" : files;
    } else if (!item.value.empty() && !item.optional) {
      places->values += fmt::format("    '{}:{}') words='{}'{} ;;\n", command.name,
                                    fmt::join(item.names, "' | '" + command.name + ":"), Words(item.choices),
                                    item.takes_file ? " files=1" : "");
    }
  }
  places->plain += fmt::format("        '{0}:-'*) words='{1}' ;;\n        '{0}:'*) words='{2}'{3} ;;\n",
                               command.name, Words(names), Words(words), files);
  for (const Command &verb : command.verbs)
    AddPlaces(verb, places);
}

std::string BashCompletion(const Command &root)
{
  Places places;

  AddPlaces(root, &places);
  return fmt::format(R"(_{0}()
{{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}}
  local word command={0} words='' files=''
  # --option=value arrives as three words.
  if [[ $current == '=' ]]; then
    current=''
  elif [[ $previous == '=' ]]; then
    previous=${{COMP_WORDS[COMP_CWORD - 2]}}
  fi
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    case "$command $word" in
      {1}) command+=" $word" ;;
    esac
  done
  case $command:$previous in
{2}    *)
      case $command:$current in
{3}      esac ;;
  esac
  COMPREPLY=()
  [[ -n $words ]] && mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  if [[ -n $files ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t -O "${{#COMPREPLY[@]}}" COMPREPLY < <(compgen -f -- "$current")
  fi
}}
complete -F _{0} {0}
)",
                     root.word, fmt::join(places.commands, " | "), places.values, places.plain);
}

static std::string ZshAction(const Item &item)
{
  if (item.takes_file)
    return "_files";
  return item.choices.empty() ? " " : fmt::format("({})", Words(item.choices));
}

// "-k+" takes the value in the same word, too, "--parts=" after an equals sign, "--json=-" only there. Forms exclude
// each other.
static std::string ZshItem(const Item &item)
{
  if (item.names.empty())
    return fmt::format("'{}{}:{}'", item.many ? "*:" : (item.required ? ":" : "::"),
                       Quote(item.text, ":\\", "'\\''"), ZshAction(item));
  const std::string sign = item.value.empty() ? "" : item.optional ? "=-" : "=";
  const std::string value =
      fmt::format("{}{}:{}", item.optional ? "::" : ":", Quote(item.value, ":\\", "'\\''"), ZshAction(item));
  std::vector<std::string> forms;
  for (const std::string &name : item.names)
    forms.push_back(name + (sign == "=" && !name.starts_with("--") ? "+" : sign));
  return fmt::format("'({})'{}{}{}'[{}]{}'", item.many ? "" : Words(item.names), forms.size() > 1 ? "{" : "",
                     fmt::join(forms, ","), forms.size() > 1 ? "}" : "", Quote(item.text, "[]\\", "'\\''"),
                     item.value.empty() ? "" : value);
}

// A function for each command; verbs are completed by functions of their own.
static std::string ZshFunction(const Command &command)
{
  std::string function = command.name;
  std::replace(function.begin(), function.end(), ' ', '_');
  std::string text = fmt::format("_{}()\n{{\n  local curcontext=$curcontext context state state_descr line\n"
                                 "  typeset -A opt_args\n  _arguments -C -s",
                                 function);
  std::string verbs;
  std::string functions;

  for (const Item &item : command.items)
    text += " \\\n    " + ZshItem(item);
  for (const Command &verb : command.verbs) {
    verbs += fmt::format(" {}\\:'{}'", verb.word, Quote(verb.summary, "\\", "'\\''"));
    functions += ZshFunction(verb);
  }
  if (!command.verbs.empty())
    text += fmt::format(" \\\n    '1:command:(({}))' '*::argument:->argument'\n"
                        "  [[ $state == argument ]] && _{}_$line[1]",
                        Quote(verbs.substr(1), "", "'\\''"), function);
  return text + "\n}\n" + functions;
}

std::string ZshCompletion(const Command &root)
{
  return fmt::format("#compdef {0}\n{1}_{0} \"$@\"\n", root.word, ZshFunction(root));
}

static std::string FishItem(const Item &item, const std::string &start)
{
  std::string line = start;

  for (const std::string &name : item.names)
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  if (!item.names.empty() && !item.value.empty() && !item.optional)
    line += " -r";
  if (item.takes_file)
    line += " -F";
  if (!item.choices.empty())
    line += " -a '" + Words(item.choices) + "'";
  return line + " -d '" + Quote(item.text, "\\", "\\'") + "'\n";
}

// conditions: those for the words of the command.
static std::string FishCommand(const std::string &tool, const Command &command,
                               const std::vector<std::string> &conditions)
{
  const std::string seen = "__fish_seen_subcommand_from ";
  std::vector<std::string> here = conditions;
  if (!command.verbs.empty())
    here.push_back("not " + seen + Words(VerbsOf(command)));
  const std::string start = fmt::format("complete -c {} -n '{}'", tool, fmt::join(here, "; and "));
  std::string text;

  for (const Item &item : command.items)
    text += FishItem(item, start);
  for (const Command &verb : command.verbs) {
    std::vector<std::string> inner = conditions;
    inner.push_back(seen + verb.word);
    text += fmt::format("{} -a {} -d '{}'\n", start, verb.word, Quote(verb.summary, "\\", "\\'")) +
            FishCommand(tool, verb, inner);
  }
  return text;
}

std::string FishCompletion(const Command &root)
{
  return fmt::format("complete -c {} -f\n", root.word) + FishCommand(root.word, root, {});
}

} // namespace kapris_cli
