// cli/solve/part_bytes.h - partitions as bytes, for files and messages.
// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kapris_cli
{

// One, two or four bytes a cell, as few as hold all parts, lowest first.
std::string BytesOfPart(std::span<const int> part, int nparts);

// Nothing where these are not the bytes of a partition of so many cells.
std::optional<std::vector<int>> PartOfBytes(std::string_view bytes, int ncells, int nparts);

} // namespace kapris_cli
