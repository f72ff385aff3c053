// cli/options/decimal.h - options whose value is a number with a fraction.
// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string>

namespace kapris_cli
{

// An option whose value is a number from low to high. Value is double, or optional<double> for one without default.
template <typename Value>
CLI::Option *AddDecimal(CLI::App *verb, const char *name, Value *value, double low, double high,
                        const char *help)
{
  const auto check = [=](const std::string &text) {
    double given = 0;
    // The parser reads "nan" as a number, which is neither above nor below.
    const bool good = CLI::detail::lexical_cast(text, given) && given >= low && given <= high;
    return good ? "" : fmt::format("'{}' is not a number from {} to {}", text, low, high);
  };
  CLI::Option *option = verb->add_option(name, *value, help)->type_name("X")->check(check);

  if constexpr (std::is_same_v<Value, double>)
    option->capture_default_str();
  return option;
}

} // namespace kapris_cli
