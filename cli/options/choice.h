// cli/options/choice.h - options whose value is one of a few names.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/named.h"
#include "options/options.h"

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace kapris_cli
{

template <typename T>
std::vector<NamedNumber> NumbersOf(const Names<T> &choices)
{
  std::vector<NamedNumber> numbers;

  for (const Named<T> &choice : choices)
    numbers.push_back({choice.name, static_cast<int>(choice.value)});
  return numbers;
}

// Adds an option, or an argument, that takes one of the names and stores what the name stands for. The default is
// what *value is now, and is shown if it has a name.
//
//   Choice(verb, "--preset", &request->preset, "How much time to spend", {{"fast", FAST}, {"quality", QUALITY}});
template <typename T>
void Choice(CLI::App *verb, const char *name, T *value, const std::string &help,
            const Names<std::type_identity_t<T>> &choices)
{
  const auto store = [value](int number) { *value = static_cast<T>(number); };

  AddChoice(verb, name, NumbersOf(choices), store, static_cast<int>(*value), help);
}

// The same without default.
template <typename T>
void Choice(CLI::App *verb, const char *name, std::optional<T> *value, const std::string &help,
            const Names<std::type_identity_t<T>> &choices)
{
  const auto store = [value](int number) { *value = static_cast<T>(number); };

  AddChoice(verb, name, NumbersOf(choices), store, -1, help);
}

} // namespace kapris_cli
