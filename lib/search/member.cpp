// lib/search/member.cpp - the members of a population: made, improved, and combined.
// SPDX-License-Identifier: MIT
//
// Two partitions are combined by coarsening only inside the cells on which they agree (Andre, Schlag, Schulz: memetic
// multilevel hypergraph partitioning, 2018): the coarsest level then holds, as few cells, just what they decide
// differently, and climbing from the better one picks from the other what helps.

#include "member.h"

#include "climb.h"

#include "base/random.h"
#include "core/constants.h"
#include "drivers/drivers.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

static Weight HeaviestCluster(const SearchGoal *goal, const HGraph *graph)
{
  double total = 0.0;

  for (int i = 0; i < graph->ncells; i++)
    total += static_cast<double>(graph->cellwgt[i]);
  return TruncateWeight(std::max(1.0, HEAVIEST_CLUSTER * total / goal->nparts));
}

static int CoarsestCells(const SearchGoal *goal, int perpart, const HGraph *graph)
{
  return static_cast<int>(std::min<std::int64_t>(graph->ncells, std::int64_t{perpart} * goal->nparts));
}

static void Project(const Array<int> &map, Array<int> *part)
{
  Array<int> finer(map.size());

  for (std::size_t i = 0; i < map.size(); i++)
    finer[i] = (*part)[At(map[i])];
  part->swap(finer);
}

void ClimbUp(const Control *ctrl, const SearchGoal *goal, const Ladder *ladder, Member *member)
{
  for (std::size_t l = ladder->graphs.size(); l-- > 0;) {
    if (l + 1 < ladder->graphs.size())
      Project(ladder->maps[l], &member->part);
    Climb(ctrl, goal, ladder->graphs[l], member->part.data(), &member->value);
  }
}

// ----------------------------------------------------------------------------------------------------------
// New ones

// The part of a search: the hooks of its caller hear nothing of what it does inside.
static Control InnerControl(const Control *ctrl, std::int64_t seed, Hooks *hooks)
{
  Control inner = *ctrl;

  *hooks = *ctrl->hooks;
  hooks->incumbent = nullptr;
  hooks->worked = nullptr;
  hooks->record = nullptr;
  inner.hooks = hooks;
  inner.seed = seed;
  inner.complete = inner.kwayrefine = false;
  inner.recorded = RECORD_NOTHING;
  return inner;
}

Member Bisect(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, HGraph *graph)
{
  Hooks hooks;
  const Control inner = InnerControl(ctrl, seed, &hooks);
  Member member = {Array<int>(At(graph->ncells)), {}};

  PartitionByBisection(&inner, graph, member.part.data());
  member.value = Evaluate(goal, graph, member.part.data());
  return member;
}

// By recursive bisection of the coarsest level, which stays as it is.
static Member BisectCoarsest(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, int nruns,
                             const HGraph *graph)
{
  Hooks hooks;
  Control inner = InnerControl(ctrl, seed, &hooks);

  EnterPhase(ctrl, PHASE_INITIAL, graph->ncells);
  hooks.enter = nullptr; // all of it is one phase
  inner.nruns = nruns;
  inner.rtype = REFINE_FM;
  inner.vcycle = CYCLE_NONE;
  HGraph *copy =
      CopyHGraph(graph->ncells, graph->nnets, graph->cellwgt, graph->netptr, graph->netind, graph->netwgt);
  copy->nfixed = graph->nfixed;
  Member member = Bisect(&inner, goal, seed, copy);
  FreeHGraph__(copy);
  return member;
}

Member PartitionDirectly(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph)
{
  Ladder ladder;

  InitRandom__(seed);
  Coarsen(ctrl, graph, nullptr, CoarsestCells(goal, DIRECT_PER_PART, graph),
          std::max<Weight>(1, HeaviestCluster(goal, graph) / 4), &ladder);
  Member member = BisectCoarsest(ctrl, goal, RandomDraw(), DIRECT_TRIALS, ladder.graphs.back());
  ClimbUp(ctrl, goal, &ladder, &member);
  return member;
}

Member PartitionQuickly(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph)
{
  Ladder ladder;

  InitRandom__(seed);
  Coarsen(ctrl, graph, nullptr, CoarsestCells(goal, QUICK_PER_PART, graph), HeaviestCluster(goal, graph),
          &ladder);
  Member member = BisectCoarsest(ctrl, goal, RandomDraw(), 1, ladder.graphs.back());
  // For a limit that ends before the finest level.
  Array<int> first = member.part;
  for (std::size_t l = ladder.maps.size(); l-- > 0;)
    Project(ladder.maps[l], &first);
  Announce(ctrl, first.data());
  ClimbUp(ctrl, goal, &ladder, &member);
  return member;
}

// ----------------------------------------------------------------------------------------------------------
// From others

static Member ClimbWithin(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
                          const int *labels, const Member *better)
{
  Ladder ladder;
  Member child = *better;

  InitRandom__(seed);
  Coarsen(ctrl, graph, labels, CoarsestCells(goal, SEARCHED_PER_PART, graph), HeaviestCluster(goal, graph),
          &ladder);
  for (std::size_t l = 0; l < ladder.maps.size(); l++) {
    Array<int> coarser(At(ladder.graphs[l + 1]->ncells));
    for (std::size_t i = 0; i < ladder.maps[l].size(); i++)
      coarser[At(ladder.maps[l][i])] = child.part[i];
    child.part.swap(coarser);
  }
  ClimbUp(ctrl, goal, &ladder, &child);
  return child;
}

Member Cycle(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
             const Member *parent)
{
  return ClimbWithin(ctrl, goal, seed, graph, parent->part.data(), parent);
}

// Numbers the pairs of parts that cells have in a and b: cells of one pair get one number.
static Array<int> Overlay(int nparts, const Member *a, const Member *b)
{
  const std::size_t n = a->part.size();
  Array<std::int64_t> pairs(n), used;
  Array<int> labels(n);

  for (std::size_t i = 0; i < n; i++)
    pairs[i] = std::int64_t{a->part[i]} * nparts + b->part[i];
  used = pairs;
  std::sort(used.begin(), used.end());
  used.erase(std::unique(used.begin(), used.end()), used.end());
  for (std::size_t i = 0; i < n; i++)
    labels[i] = static_cast<int>(std::lower_bound(used.begin(), used.end(), pairs[i]) - used.begin());
  return labels;
}

Member Combine(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
               const Member *a, const Member *b)
{
  const Array<int> labels = Overlay(goal->nparts, a, b);

  return ClimbWithin(ctrl, goal, seed, graph, labels.data(), b->value < a->value ? b : a);
}

static bool IsCut(const HGraph *graph, int net, const Array<int> &part)
{
  const int *pins = graph->netind;
  const int first = graph->netptr[net], last = graph->netptr[net + 1];

  for (int k = first + 1; k < last; k++)
    if (part[At(pins[k])] != part[At(pins[first])])
      return true;
  return false;
}

Weight Distance(const HGraph *graph, const Member *a, const Member *b)
{
  Weight distance = 0;

  for (int j = 0; j < graph->nnets; j++)
    if (IsCut(graph, j, a->part) != IsCut(graph, j, b->part))
      distance += graph->netwgt[j];
  return distance;
}

} // namespace kapris::engine::KAPRIS_ENGINE
