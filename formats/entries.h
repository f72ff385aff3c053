// formats/entries.h - hypergraphs from (net, cell) pairs in any order, for the formats of matrices and formulas.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "formats/scan.h"

#include <vector>

namespace kapris_formats
{

struct Entry {
  int net;
  int cell;
};

// Nets keep their numbers, those without entries too. The pins of a net rise, each once. The header is the place of
// faults and warnings about the whole.
Hgr HgrOfEntries(const Scan &header, int nnets, int ncells, const std::vector<Entry> &entries);

// The pins of each net rise, each once.
void SortPins(Hgr *hgr);

// Fails if memory for so many, of which a text need not name each, is out of proportion to its length.
void CheckProportion(const Scan &header, const char *what, int count, size_t length);

} // namespace kapris_formats
