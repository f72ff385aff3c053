// lib/search/flow.h - refinement by minimum cuts between pairs of parts.
// SPDX-License-Identifier: MIT
#pragma once

#include "goal.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Improves part, [graph->ncells], whose value is *value; never makes it worse. Anchors stay. Needs the incidence of
// graph. refined, [graph->ncells], or NULL: a partition that has been refined so; pairs of parts that are as they are
// there are left out. Draws nothing.
void RefineByFlow(const Control *ctrl, const SearchGoal *goal, const HGraph *graph, const int *refined,
                  int *part, Value *value);

} // namespace kapris::engine::KAPRIS_ENGINE
