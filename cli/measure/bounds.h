// cli/measure/bounds.h - what the library can add up, and how heavy a part may be.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"
#include "measure/measures.h"

#include <functional>
#include <string>

namespace kapris_cli
{

// Throws Failure if the weight of the nets, each times the parts that it can span, is above most_weight. That of the
// cells cannot be. The name is for messages.
void CheckSums(const std::string &name, const Hgr &hgr, int nparts);

// ceil((1 + millionths / 10^6) * total / nparts), exactly, for 0 <= millionths <= 10^6.
std::int64_t ShareLimit(std::int64_t total, long long nparts, long long millionths);

// The limit of each part; empty if there are none.
using Limits = std::function<std::int64_t(int part)>;

// The number of parts that are above their limit.
int CountOver(const Measures &measures, const Limits &limits);

} // namespace kapris_cli
