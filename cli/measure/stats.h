// cli/measure/stats.h - what a hypergraph looks like: sizes, degrees, components, repetition.
// SPDX-License-Identifier: MIT
#pragma once

#include "measure/report.h"

namespace kapris_cli
{

// Adds what the help of the verb stats explains to an object: counts, and distributions with a histogram by powers
// of two. In time near linear.
void AddStats(const Hgr &hgr, Json *json);

} // namespace kapris_cli
