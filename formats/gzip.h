// formats/gzip.h - gzip data in memory.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace kapris_formats
{

bool IsGzip(std::string_view bytes);

// The text of one or more gzip members; the name is for messages.
std::string Decompress(const std::string &name, std::string_view bytes);

// The same bytes for the same text: without name and time.
std::string Compress(std::string_view text);

} // namespace kapris_formats
