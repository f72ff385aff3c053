// lib/starts/candidate.cpp - the total order of the partitions that a call can deliver.
// SPDX-License-Identifier: MIT

#include "candidate.h"

#include <tuple>

namespace kapris::engine::safe
{

bool IsBetter(const kapris_options *options, const Candidate *a, const Candidate *b)
{
  const bool bycut = options->objective == KAPRIS_CUT;
  const auto key = [bycut](const Candidate *c) {
    const Measures *m = &c->measures;
    return std::make_tuple(!m->balanced, bycut ? m->cut : m->soed, bycut ? m->soed : m->cut, m->imbalance,
                           c->start);
  };

  if (a->start == NO_CANDIDATE || b->start == NO_CANDIDATE)
    return b->start == NO_CANDIDATE;
  // The simple partition stands in for a balanced one only.
  if (a->start == SIMPLE_PARTITION || b->start == SIMPLE_PARTITION) {
    if (a->measures.balanced != b->measures.balanced)
      return a->measures.balanced;
    return b->start == SIMPLE_PARTITION;
  }
  return key(a) < key(b);
}

} // namespace kapris::engine::safe
