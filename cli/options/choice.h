// cli/options/choice.h - options whose value is one of a few names.
// SPDX-License-Identifier: MIT
#pragma once

#include "options/options.h"

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kapris_cli
{

// What the values of an enumeration are called.
template <typename T>
using Names = std::vector<std::pair<std::string, T>>;

// Adds an option, or an argument, that takes one of the names and stores what the name stands for. The default is
// what *value is now, and is shown if it has a name.
//
//   Choice(verb, "--preset", &request->preset, "How much time to spend", {{"fast", FAST}, {"quality", QUALITY}});
template <typename T>
CLI::Option *Choice(CLI::App *verb, const char *option_name, T *value, const std::string &help,
                    const Names<std::type_identity_t<T>> &choices)
{
  std::vector<std::string> names;
  std::vector<T> meanings;
  std::string standard;

  for (const auto &[name, meaning] : choices) {
    names.push_back(name);
    meanings.push_back(meaning);
    if (meaning == *value)
      standard = name;
  }
  const auto store = [value, meanings](size_t n) { *value = meanings[n]; };
  return AddChoice(verb, option_name, names, store, standard, help);
}

} // namespace kapris_cli
