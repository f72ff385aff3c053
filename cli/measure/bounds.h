// cli/measure/bounds.h - what the library can add up, and how heavy its recursion may make a part.
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

// The largest weight that the library may give one of nparts parts.
//
// n parts are bisected into n div 2 parts and the rest. A side has at least (share - percent/100) of the weight to
// be bisected, rounded down, so the other side can have what is left, and so on down to the part. The polish of 3 to
// 64 parts makes no part heavier than the heaviest: there the largest of these limits holds for every part.
long long PartLimit(long long total, int nparts, int percent, int part);

// ceil((1 + millionths / 10^6) * total / nparts), exactly, for 0 <= millionths <= 10^6.
long long ShareLimit(long long total, long long nparts, long long millionths);

// The limit of each part; empty if there are none.
using Limits = std::function<long long(int part)>;

// The number of parts that are above their limit; with percent, above that of PartLimit.
int CountOver(const Measures &measures, const Limits &limits);
int CountOver(const Measures &measures, int nparts, int percent);

} // namespace kapris_cli
