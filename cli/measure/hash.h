// cli/measure/hash.h - short names for contents, to tell whether two runs had the same input.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"

#include <string>
#include <vector>

namespace kapris_cli
{

// 16 hexadecimal digits that depend on the numbers alone, not on the file that they came from or the machine. They
// guard against mistakes, not against forgery.
std::string HashOf(const Hgr &hgr);
std::string HashOf(const std::vector<int> &numbers);

} // namespace kapris_cli
