// cli/text.cpp - lists in texts.
// SPDX-License-Identifier: MIT

#include "text.h"

#include <fmt/format.h>

namespace kapris_cli
{

std::string Join(const std::vector<std::string> &items, const char *separator)
{
  return fmt::format("{}", fmt::join(items, separator));
}

std::string Join(const std::vector<int> &items, const char *separator)
{
  return fmt::format("{}", fmt::join(items, separator));
}

std::string Join(const std::vector<std::int64_t> &items, const char *separator)
{
  return fmt::format("{}", fmt::join(items, separator));
}

std::string Join(const std::vector<double> &items, const char *separator)
{
  return fmt::format("{}", fmt::join(items, separator));
}

} // namespace kapris_cli
