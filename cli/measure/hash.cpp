// cli/measure/hash.cpp - short names for contents.
// SPDX-License-Identifier: MIT

#include "measure/hash.h"

#include <cstdint>
#include <fmt/core.h>
#include <type_traits>

namespace kapris_cli
{

static void Mix(std::uint64_t *hash, std::uint64_t value)
{
  std::uint64_t h = (*hash ^ value) * 0x9e3779b97f4a7c15u;

  *hash = h ^ (h >> 32);
}

template <typename Number>
static void MixAll(std::uint64_t *hash, const std::vector<Number> &numbers)
{
  Mix(hash, numbers.size());
  for (const Number number : numbers)
    Mix(hash, static_cast<std::make_unsigned_t<Number>>(number));
}

std::string HashOf(const Hgr &hgr)
{
  std::uint64_t hash = 1;

  Mix(&hash, static_cast<std::uint64_t>(hgr.ncells));
  MixAll(&hash, hgr.netptr);
  MixAll(&hash, hgr.netind);
  MixAll(&hash, hgr.cellwgts);
  MixAll(&hash, hgr.netwgts);
  return fmt::format("{:016x}", hash);
}

std::string HashOf(const std::vector<int> &numbers)
{
  std::uint64_t hash = 1;

  MixAll(&hash, numbers);
  return fmt::format("{:016x}", hash);
}

} // namespace kapris_cli
