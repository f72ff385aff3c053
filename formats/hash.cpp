// formats/hash.cpp - short names for contents.
// SPDX-License-Identifier: MIT

#include "formats/hash.h"

#include "formats/formats.h"
#include "formats/parts.h"

#include <fmt/core.h>
#include <string_view>
#include <xxhash.h>

namespace kapris_formats
{

static std::string HashOfText(std::string_view text)
{
  return fmt::format("{:016x}", XXH64(text.data(), text.size(), 0));
}

std::string HashOf(const Hgr &hgr)
{
  return HashOfText(FormatHgr(hgr));
}

std::string HashOf(const std::vector<int> &part)
{
  return HashOfText(FormatParts(part));
}

} // namespace kapris_formats
