// lib/search/climb.h - refinement of all parts that climbs hills.
// SPDX-License-Identifier: MIT
#pragma once

#include "goal.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Improves part, [graph->ncells], whose value is *value, by searches that go on through moves without gain and keep
// their best prefix; never makes it worse. Anchors stay. Needs the incidence of graph.
void Climb(const Control *ctrl, const SearchGoal *goal, const HGraph *graph, int *part, Value *value);

} // namespace kapris::engine::KAPRIS_ENGINE
