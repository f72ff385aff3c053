// cli/options/choice.h - options whose value is one of a few names.
// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kapris_cli
{

// What the values of an enumeration are called.
template <typename T>
using Names = std::vector<std::pair<std::string, T>>;

// Adds an option, or an argument, that takes one of the names and stores what the name stands for. The type name of the
// option is the names, "fast|default|quality": help shows it, manual pages and completions read it. The default is
// what *value is now, and is shown if it has a name.
//
//   Choice(verb, "--preset", &request->preset, "How much time to spend", {{"fast", FAST}, {"quality", QUALITY}});
template <typename T>
CLI::Option *Choice(CLI::App *verb, const std::string &option_name, T *value, const std::string &description,
                    const Names<std::type_identity_t<T>> &choices)
{
  std::string names;
  std::string shown;
  for (const auto &[name, meaning] : choices) {
    names += (names.empty() ? "" : "|") + name;
    if (meaning == *value)
      shown = name;
  }
  const std::string blamed = option_name.substr(option_name.rfind(',') + 1);
  const auto store = [value, choices, names, blamed](const std::string &given) {
    for (const auto &[name, meaning] : choices)
      if (name == given) {
        *value = meaning;
        return;
      }
    throw CLI::ValidationError(blamed, "'" + given + "' is not one of " + names);
  };
  return verb->add_option_function<std::string>(option_name, store, description)
      ->type_name(names)
      ->default_str(shown);
}

} // namespace kapris_cli
