// cli/text.cpp - lists in texts.
// SPDX-License-Identifier: MIT

#include "text.h"

#include <fmt/core.h>

namespace kapris_cli
{

// The formatting library has the same, but takes seconds to compile.
template <typename Item>
static std::string JoinAll(const std::vector<Item> &items, const char *separator)
{
  std::string text;

  for (size_t i = 0; i < items.size(); i++)
    text += fmt::format("{}{}", i == 0 ? "" : separator, items[i]);
  return text;
}

std::string Join(const std::vector<std::string> &items, const char *separator)
{
  return JoinAll(items, separator);
}

std::string Join(const std::vector<int> &items, const char *separator)
{
  return JoinAll(items, separator);
}

std::string Join(const std::vector<std::int64_t> &items, const char *separator)
{
  return JoinAll(items, separator);
}

std::string Join(const std::vector<double> &items, const char *separator)
{
  return JoinAll(items, separator);
}

} // namespace kapris_cli
