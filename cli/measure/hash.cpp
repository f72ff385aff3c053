// cli/measure/hash.cpp - short names for contents.
// SPDX-License-Identifier: MIT

#include "measure/hash.h"

#include <cstdint>
#include <fmt/format.h>

namespace kapris_cli
{

static void Mix(std::uint64_t *hash, std::uint64_t value)
{
  std::uint64_t h = (*hash ^ value) * 0x9e3779b97f4a7c15u;

  *hash = h ^ (h >> 32);
}

static void MixAll(std::uint64_t *hash, const std::vector<int> &numbers)
{
  Mix(hash, numbers.size());
  for (const int number : numbers)
    Mix(hash, static_cast<std::uint32_t>(number));
}

std::string HashOf(const Hgr &hgr)
{
  std::uint64_t hash = 1;

  Mix(&hash, static_cast<std::uint64_t>(hgr.ncells));
  for (const std::vector<int> *numbers : {&hgr.netptr, &hgr.netind, &hgr.cellwgts, &hgr.netwgts})
    MixAll(&hash, *numbers);
  return fmt::format("{:016x}", hash);
}

std::string HashOf(const std::vector<int> &numbers)
{
  std::uint64_t hash = 1;

  MixAll(&hash, numbers);
  return fmt::format("{:016x}", hash);
}

} // namespace kapris_cli
