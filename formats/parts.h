// formats/parts.h - part files: one part number per line, in the order of the cells, counted from 0.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kapris_formats
{

// Reads exactly ncells lines; the name is for messages. With nparts > 0, every number must be below it.
std::vector<int> ReadParts(const std::string &name, std::string_view text, int ncells, int nparts);

// The same for pre-assigned parts: -1 leaves a cell free.
std::vector<int> ReadFixed(const std::string &name, std::string_view text, int ncells, int nparts);

// The same from files, "-" for standard input.
std::vector<int> LoadParts(const std::string &path, int ncells, int nparts);
std::vector<int> LoadFixed(const std::string &path, int ncells, int nparts);

std::string FormatParts(const std::vector<int> &part);

} // namespace kapris_formats
