// lib/search/borders.h - which parts lie side by side; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "goal.h"

#include "base/array.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// A net that is cut between two parts, p < q, among others.
struct BorderNet {
  int p, q, net;
};

// By p, q and net. Nets that touch more than mostparts are left out.
Array<BorderNet> FindBorderNets(const HGraph *graph, const int *part, int mostparts);

} // namespace kapris::engine::KAPRIS_ENGINE
