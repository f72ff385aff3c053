// tests/search/search_case.h - what refinement is tried on.
// SPDX-License-Identifier: MIT
#pragma once

#include "base/array.h"
#include "search/goal.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

// A random hypergraph of the width, a partition of it, and limits that leave it some room or none.
struct Case {
  Instance instance;
  HGraph *graph;
  Ints part;
  std::vector<Weight> limits, minimums;
  SearchGoal goal;

  Case(TestRandom *random, int nparts, bool cut, bool connectivity)
      : instance(RandomInstance(random, 20 + random->Below(100), 20 + random->Below(150),
                                ODD_WEIGHTS | ODD_ISLANDS | ODD_DUPLICATES | ODD_LARGE)),
        graph(nullptr), part(), limits(), minimums(static_cast<std::size_t>(nparts), 0), goal()
  {
    std::vector<Weight> weights(minimums);

    instance.cellwgt = Units(instance.cellwgt);
    instance.netwgt = Units(instance.netwgt);
    graph = HGraphOf(instance);
    for (int i = 0; i < graph->ncells; i++) {
      part.push_back(i < nparts ? i : random->Below(nparts));
      weights[At(part.back())] += graph->cellwgt[i];
    }
    for (int p = 0; p < nparts; p++) {
      limits.push_back(weights[At(p)] + static_cast<Weight>(UNIT) * (random->Below(30) - 3));
      minimums[At(p)] = random->Chance(30) ? weights[At(p)] : 0;
    }
    goal = {nparts, cut, connectivity, limits.data(), minimums.data()};
  }
  Case(const Case &) = delete;
  ~Case()
  {
    FreeHGraph__(graph);
  }

  std::vector<Weight> Weigh(const Ints &of) const
  {
    std::vector<Weight> weights(limits.size(), 0);

    for (int i = 0; i < graph->ncells; i++)
      weights[At(of[At(i)])] += graph->cellwgt[i];
    return weights;
  }
};
