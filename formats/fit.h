// formats/fit.h - what remains of a hypergraph in a format that cannot hold everything.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "formats/names.h"

namespace kapris_formats
{

// What may be lost without a refusal. Messages call them by the options of the tool, --drop-weights and --drop-repeats.
struct Drops {
  bool weights = false;
  bool repeats = false; // pins that a net names again
};

// What remains in a matrix of ones. Throws Failure where that loses something that may not be lost.
Hgr FitIntoMatrix(const Drops &drops, const Hgr &hgr);

// Nets as edges, in the order that a graph gives them, and the names of nets with them.
Hgr FitIntoGraph(const Drops &drops, const Hgr &hgr, Details *details);

} // namespace kapris_formats
