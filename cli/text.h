// cli/text.h - lists in texts.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kapris_cli
{

// The items with the separator between them.
std::string Join(const std::vector<std::string> &items, const char *separator);
std::string Join(const std::vector<int> &items, const char *separator);
std::string Join(const std::vector<std::int64_t> &items, const char *separator);
std::string Join(const std::vector<double> &items, const char *separator);

} // namespace kapris_cli
