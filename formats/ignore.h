// formats/ignore.h - nets that are left out, as clocks and resets can be.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "formats/names.h"

#include <optional>
#include <string>
#include <vector>

namespace kapris_formats
{

// Removes the nets of more pins, and those whose name matches one of the patterns, in which * stands for any bytes
// and ? for one. Where nets have no names, the numbers that they had become names. details can be NULL without
// patterns.
void IgnoreNets(std::optional<int> most_pins, const std::vector<std::string> &patterns, Hgr *hgr,
                Details *details);

bool Matches(std::string_view pattern, std::string_view name);

} // namespace kapris_formats
