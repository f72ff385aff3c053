// cli/formats/hash.h - short names for contents, to tell whether two runs had the same input.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"

#include <string>
#include <vector>

namespace kapris_formats
{

// What xxhsum prints for the hypergraph as .hgr, as "convert --to hgr" writes it, and for a part file as it is written:
// 16 digits that depend on the numbers alone, not on the format that they came in or the machine. They guard against
// mistakes, not against forgery.
std::string HashOf(const Hgr &hgr);
std::string HashOf(const std::vector<int> &part);

} // namespace kapris_formats
