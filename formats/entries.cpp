// formats/entries.cpp - hypergraphs from (net, cell) pairs in any order.
// SPDX-License-Identifier: MIT

#include "formats/entries.h"

#include <algorithm>
#include <climits>
#include <fmt/core.h>

namespace kapris_formats
{

void SortPins(Hgr *hgr)
{
  int kept = 0;

  for (size_t n = 0; n + 1 < hgr->netptr.size(); n++) {
    const auto first = hgr->netind.begin() + hgr->netptr[n], last = hgr->netind.begin() + hgr->netptr[n + 1];
    std::sort(first, last);
    const auto end = std::unique(first, last);
    // The pins of earlier nets have moved forward; so do these.
    hgr->netptr[n] = kept;
    kept = static_cast<int>(std::copy(first, end, hgr->netind.begin() + kept) - hgr->netind.begin());
  }
  hgr->netptr.back() = kept;
  hgr->netind.resize(static_cast<size_t>(kept));
}

static void WarnEntries(const Scan &header, const Hgr &hgr, size_t nentries)
{
  int nempty = 0, first_empty = 0;

  for (int n = hgr.nnets; n > 0; n--)
    if (hgr.netptr[static_cast<size_t>(n)] == hgr.netptr[static_cast<size_t>(n) - 1]) {
      nempty++;
      first_empty = n;
    }
  if (nempty > 0)
    WarnAt(header, header.at, fmt::format("nets without pins: {}, the first is net {}", nempty, first_empty));
  if (hgr.netind.size() < nentries)
    WarnAt(header, header.at, fmt::format("repeated entries, merged: {}", nentries - hgr.netind.size()));
  // Sorted instead of marked: the text need not vouch for the number of cells.
  std::vector<int> used = hgr.netind;
  std::sort(used.begin(), used.end());
  const auto nused = std::unique(used.begin(), used.end()) - used.begin();
  if (nused < hgr.ncells)
    WarnAt(header, header.at, fmt::format("cells on no net: {} of {}", hgr.ncells - nused, hgr.ncells));
}

Hgr HgrOfEntries(const Scan &header, int nnets, int ncells, const std::vector<Entry> &entries)
{
  Hgr hgr;

  if (entries.size() > INT_MAX)
    FailAt(header, header.at, fmt::format("more than {} pins, the largest number", INT_MAX));
  hgr.nnets = nnets;
  hgr.ncells = ncells;
  hgr.netptr.assign(static_cast<size_t>(nnets) + 1, 0);
  hgr.netind.resize(entries.size());
  // Each start is first one slot too far to the left; filling moves it to its place.
  for (const Entry &entry : entries)
    if (entry.net + 1 < nnets)
      hgr.netptr[static_cast<size_t>(entry.net) + 2]++;
  for (size_t n = 1; n < hgr.netptr.size(); n++)
    hgr.netptr[n] += hgr.netptr[n - 1];
  for (const Entry &entry : entries)
    hgr.netind[static_cast<size_t>(hgr.netptr[static_cast<size_t>(entry.net) + 1]++)] = entry.cell;
  SortPins(&hgr);
  if (header.problems != nullptr)
    WarnEntries(header, hgr, entries.size());
  return hgr;
}

void CheckProportion(const Scan &header, const char *what, int count, size_t length)
{
  constexpr size_t per_byte = 64, always_allowed = 1000000;

  if (static_cast<size_t>(count) > per_byte * length + always_allowed)
    FailAt(header, header.at,
           fmt::format("{} {} are too many for a text of {} bytes: at most {} per byte and {} more are read",
                       count, what, length, per_byte, always_allowed));
}

} // namespace kapris_formats
