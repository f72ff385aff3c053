// cli/solve/part_bytes.cpp - partitions as bytes.
// SPDX-License-Identifier: MIT

#include "solve/part_bytes.h"

#include "libraries.h"

#include <cstdint>

namespace kapris_cli
{

static size_t BytesPerCell(int nparts)
{
  return nparts <= 1 << 8 ? 1 : nparts <= 1 << 16 ? 2 : 4;
}

std::string BytesOfPart(std::span<const int> part, int nparts)
{
  const size_t width = BytesPerCell(nparts);
  std::string bytes;

  bytes.reserve(width * part.size());
  for (const int p : part)
    for (size_t k = 0; k < width; k++)
      bytes += static_cast<char>(static_cast<unsigned>(p) >> (8 * k) & 255);
  return bytes;
}

std::optional<std::vector<int>> PartOfBytes(std::string_view bytes, int ncells, int nparts)
{
  const size_t width = BytesPerCell(nparts);
  std::vector<int> part;

  if (bytes.size() != width * static_cast<size_t>(ncells))
    return std::nullopt;
  part.reserve(static_cast<size_t>(ncells));
  for (size_t i = 0; i < bytes.size(); i += width) {
    std::uint32_t p = 0;
    for (size_t k = width; k-- > 0;)
      p = p << 8 | static_cast<unsigned char>(bytes[i + k]);
    if (p >= static_cast<std::uint32_t>(nparts))
      return std::nullopt;
    part.push_back(static_cast<int>(p));
  }
  return part;
}

} // namespace kapris_cli
