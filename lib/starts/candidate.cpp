// lib/starts/candidate.cpp - the total order of the partitions that a call can deliver.
// SPDX-License-Identifier: MIT

#include "candidate.h"

#include <tuple>

namespace kapris::engine::safe
{

Goal GoalOf(const kapris_options *options)
{
  return {options->objective != KAPRIS_CONNECTIVITY, options->objective != KAPRIS_CUT};
}

bool IsBetter(const kapris_options *options, const Candidate *a, const Candidate *b)
{
  const Goal goal = GoalOf(options);
  const auto key = [goal](const Candidate *c) {
    const Measures *m = &c->measures;
    const Score score = ScoreOf(goal, m->cut, m->soed);
    return std::make_tuple(m->excess, m->nempty, score.first, score.second, m->imbalance, c->start);
  };

  if (a->start == NO_CANDIDATE || b->start == NO_CANDIDATE)
    return b->start == NO_CANDIDATE;
  // The simple partition stands in for those only that keep to the limits less well.
  if (a->start == SIMPLE_PARTITION || b->start == SIMPLE_PARTITION) {
    if (a->measures.excess != b->measures.excess)
      return a->measures.excess < b->measures.excess;
    return b->start == SIMPLE_PARTITION;
  }
  return key(a) < key(b);
}

} // namespace kapris::engine::safe
