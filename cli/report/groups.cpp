// cli/report/groups.cpp - consecutive parts that share a mark.
// SPDX-License-Identifier: MIT

#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

Groups GroupParts(size_t nparts, size_t most)
{
  return {nparts, std::min(nparts, most)};
}

// The largest group whose first part is not above the part.
size_t GroupOf(const Groups &groups, size_t part)
{
  return ((part + 1) * groups.ngroups - 1) / groups.nparts;
}

size_t FirstOf(const Groups &groups, size_t group)
{
  return group * groups.nparts / groups.ngroups;
}

size_t LabelStride(const Groups &groups)
{
  const size_t room = groups.nparts > 1000 ? 8 : groups.nparts > 100 ? 10 : 16;

  return (groups.ngroups + room - 1) / room;
}

std::string NameOfGroup(const Groups &groups, size_t group)
{
  const size_t first = FirstOf(groups, group), last = FirstOf(groups, group + 1) - 1;

  return first == last ? fmt::format("{}", first) : fmt::format("{}-{}", first, last);
}

} // namespace kapris_report
