// lib/search/member.h - the members of a population: made, improved, and combined; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "ladder.h"

namespace kapris::engine::KAPRIS_ENGINE
{

struct Member {
  Array<int> part; // [ncells]
  Value value;
};

// Each of these draws from the sequence of the seed.

// A partition by recursive bisection, its options those of ctrl; not yet refined in all parts.
Member Bisect(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, HGraph *graph);
// The same on a coarse level, refined in all parts on every level.
Member PartitionDirectly(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph);
// As little work as possible: the latter with a coarser level and one trial. Announces the first partition by ctrl.
Member PartitionQuickly(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph);

// A V-cycle: coarsens within the parts of parent and climbs on every level. Never worse than the parent.
Member Cycle(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
             const Member *parent);

// The same within the cells on which both parents agree, from the better one; never worse than it. What only one
// of them cuts is for refinement to decide.
Member Combine(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
               const Member *a, const Member *b);

// Climbs on the levels of ladder from the coarsest, which has the partition in member, to the finest.
void ClimbUp(const Control *ctrl, const SearchGoal *goal, const Ladder *ladder, Member *member);

// How much two partitions differ: the weight of the nets that one of them cuts and the other does not.
Weight Distance(const HGraph *graph, const Member *a, const Member *b);

} // namespace kapris::engine::KAPRIS_ENGINE
