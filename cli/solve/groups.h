// cli/solve/groups.h - cells that stay together: merged before the library is called, unfolded after it.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/hgr.h"
#include "formats/names.h"

#include <string>
#include <string_view>
#include <vector>

namespace kapris_cli
{

struct Grouping {
  std::string name;             // of the file, for messages
  int count = 0;                // of merged cells
  std::vector<int> merged;      // [ncells]: the merged cell that each is in, numbered by their first cells
  std::vector<long long> lines; // [count]: where the group stands; 0: a cell of no group
};

// One group a line, names or numbers; a cell is in at most one. The name is for messages.
Grouping ReadGroups(const std::string &name, std::string_view text, const NameIndex &index);
Grouping LoadGroups(const std::string &path, const NameIndex &index);

// The hypergraph of the merged cells. A net keeps its number, its weight and, in each partition that keeps groups
// together, the parts that it spans.
Hgr MergeCells(const Hgr &hgr, const Grouping &groups);

// The parts of merged cells from those of their cells, -1 for none: fixed cells fix their group, unless they do not
// agree. whole: a partition, not fixed cells; it matters for the message.
std::vector<int> MergeParts(const std::vector<int> &part, const Grouping &groups, const Details &details,
                            bool whole);
std::vector<int> UnfoldParts(const std::vector<int> &merged, const Grouping &groups);

} // namespace kapris_cli
