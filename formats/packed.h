// formats/packed.h - compressed data in memory.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace kapris_formats
{

enum class Packing { NONE, GZIP, XZ, BZIP2, ZSTD };

// By the first bytes of data, and by the end of a file's name.
Packing PackingOf(std::string_view bytes);
Packing PackingOfName(std::string_view name);

// The name without the end that stands for a packing.
std::string_view WithoutPacking(std::string_view name);

// False for zstd, which is only read.
bool CanPack(Packing packing);

// The text of the data, however many streams it is in; the name is for messages.
std::string Unpack(const std::string &name, Packing packing, std::string_view bytes);

// The same bytes for the same text: without name and time.
std::string Pack(Packing packing, std::string_view text);

} // namespace kapris_formats
