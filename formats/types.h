// formats/types.h - a table of weights by the type of a cell.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kapris_formats
{

// Which types the table leaves to the others, it does not know if there is no line for these.
struct TypeWeights {
  std::string name;                                        // of the file, for messages
  std::vector<std::pair<std::string, std::int64_t>> types; // by name
  std::optional<std::int64_t> others;
};

// Lines of a type and weights, in columns that a first line "type NAME..." can name; the type * stands for all others.
// column: the name of the one that counts; empty: the first. The name is for messages.
TypeWeights ReadTypeWeights(const std::string &name, std::string_view text, const std::string &column);
TypeWeights LoadTypeWeights(const std::string &path, const std::string &column);

// The weight in the line of the type itself.
std::optional<std::int64_t> WeightOfType(const TypeWeights &table, std::string_view type);

} // namespace kapris_formats
