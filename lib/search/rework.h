// lib/search/rework.h - parts made anew, a few at a time; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "member.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// Divides the parts of parent into groups of up to groupsize that share cut nets, partitions the cells of each group
// anew by recursive bisection and combines that with what the group had. Never worse than the parent. Draws from the
// sequence of the seed.
Member Rework(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
              const Member *parent, int groupsize);

} // namespace kapris::engine::KAPRIS_ENGINE
