// cli/measure/bounds.h - what the library can add up, and how heavy a part may be.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"
#include "measure/measures.h"

#include <functional>
#include <string>

namespace kapris_cli
{

// Throws Failure if a sum that the library forms would leave 32 bits. The name is for messages.
void CheckSums(const std::string &name, const Hgr &hgr, int nparts);

// ceil((1 + millionths / 10^6) * total / nparts), exactly, for 0 <= millionths <= 10^6.
long long ShareLimit(long long total, long long nparts, long long millionths);

// The limit of each part; empty if there are none.
using Limits = std::function<long long(int part)>;

// The number of parts that are above their limit.
int CountOver(const Measures &measures, const Limits &limits);

} // namespace kapris_cli
