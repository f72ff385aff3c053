// formats/ignore.cpp - nets that are left out.
// SPDX-License-Identifier: MIT

#include "formats/ignore.h"

#include <algorithm>
#include <utility>

namespace kapris_formats
{

// In time of the product of the lengths: after a mismatch only the last star takes a byte more. Brackets mean
// themselves, as they stand in names of nets.
bool Matches(std::string_view pattern, std::string_view name)
{
  size_t p = 0, n = 0, star = pattern.npos, taken = 0;

  while (n < name.size())
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      taken = n;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
      p++;
      n++;
    } else if (star != pattern.npos) {
      p = star + 1;
      n = ++taken;
    } else {
      return false;
    }
  return pattern.find_first_not_of('*', p) == pattern.npos;
}

void IgnoreNets(std::optional<int> most_pins, const std::vector<std::string> &patterns, Hgr *hgr,
                Details *details)
{
  size_t nnets = 0, npins = 0;

  if (details != nullptr && details->nets.empty())
    for (int net = 0; net < hgr->nnets; net++)
      details->nets.push_back(std::to_string(net + 1));
  for (size_t net = 0; net < static_cast<size_t>(hgr->nnets); net++) {
    const auto first = hgr->netind.begin() + hgr->netptr[net],
               last = hgr->netind.begin() + hgr->netptr[net + 1];
    const auto matches = [&](const std::string &pattern) { return Matches(pattern, details->nets[net]); };
    if ((most_pins && last - first > *most_pins) || std::any_of(patterns.begin(), patterns.end(), matches))
      continue;
    // The nets that stay move forward.
    std::copy(first, last, hgr->netind.begin() + static_cast<std::ptrdiff_t>(npins));
    npins += static_cast<size_t>(last - first);
    hgr->netptr[nnets] = static_cast<int>(npins) - static_cast<int>(last - first);
    if (!hgr->netwgts.empty())
      hgr->netwgts[nnets] = hgr->netwgts[net];
    if (details != nullptr && nnets != net)
      details->nets[nnets] = std::move(details->nets[net]);
    nnets++;
  }
  hgr->netptr.resize(nnets + 1);
  hgr->netptr[nnets] = static_cast<int>(npins);
  hgr->netind.resize(npins);
  if (!hgr->netwgts.empty())
    hgr->netwgts.resize(nnets);
  if (details != nullptr)
    details->nets.resize(nnets);
  hgr->nnets = static_cast<int>(nnets);
}

} // namespace kapris_formats
