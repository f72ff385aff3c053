// tests/search/population_test.cpp - members and their combinations, and searches as a whole.
// SPDX-License-Identifier: MIT

#include "base/random.h"
#include "search/member.h"
#include "search/rework.h"
#include "search/search.h"
#include "support/graph.h"

#include <set>

typedef std::vector<int> Ints;

namespace
{

// A caller that keeps what it is told, and ends the run.
struct Caller {
  int calls = 1 << 30; // of proceed that succeed
  const Instance *instance = nullptr;
  std::vector<std::int64_t> cuts; // of the announced partitions
  std::vector<Step> steps;
  Hooks hooks = {};

  Caller()
  {
    hooks.owner = hooks.taker = this;
    hooks.proceed = [](void *owner) { return static_cast<Caller *>(owner)->calls-- > 0; };
    hooks.incumbent = [](void *taker, const int *part) {
      Caller *caller = static_cast<Caller *>(taker);
      caller->cuts.push_back(CutOf(*caller->instance, Ints(part, part + caller->instance->ncells)));
    };
    hooks.record = [](void *owner, const Step *step) {
      static_cast<Caller *>(owner)->steps.push_back(*step);
    };
  }
  Caller(const Caller &) = delete;
};

// A search of a random hypergraph into four parts.
struct SearchCase {
  Instance instance;
  HGraph *graph;
  std::vector<double> shares = std::vector<double>(4, 0.25);
  std::vector<Weight> limits, minimums = std::vector<Weight>(4, 0);
  SearchGoal goal = {};
  Control ctrl = TestControl();
  Ints part;

  SearchCase(int ncells, std::uint64_t seed, Caller *caller)
      : instance(), graph(nullptr), limits(), part(static_cast<std::size_t>(ncells), 0)
  {
    TestRandom random = {seed};

    instance = RandomInstance(&random, ncells, ncells + ncells / 4, ODD_ISLANDS | ODD_LARGE);
    graph = HGraphOf(instance);
    limits.assign(4, static_cast<Weight>(ncells / 4 + ncells / 40 + 1));
    goal = {4, true, false, limits.data(), minimums.data()};
    ctrl.nparts = 4;
    ctrl.rtype = REFINE_EARLY_EXIT;
    ctrl.seed = 7;
    ctrl.bounds.shares = shares.data();
    ctrl.bounds.limits = limits.data();
    ctrl.bounds.total = static_cast<Weight>(ncells);
    caller->instance = &instance;
    ctrl.hooks = &caller->hooks;
  }
  SearchCase(const SearchCase &) = delete;
  ~SearchCase()
  {
    FreeHGraph__(graph);
  }
};

} // namespace

TEST(member, a_child_is_never_worse_than_the_better_parent)
{
  Caller caller;
  int nbetter = 0;

  for (std::uint64_t seed = 1; seed <= 6; seed++) {
    SearchCase c(600, seed, &caller);
    const Member a = Bisect(&c.ctrl, &c.goal, 1, c.graph),
                 b = PartitionDirectly(&c.ctrl, &c.goal, 2, c.graph);
    const Member child = Combine(&c.ctrl, &c.goal, 3, c.graph, &a, &b);
    const Member cycled = Cycle(&c.ctrl, &c.goal, 3, c.graph, &b);
    EXPECT_EQ(child.value, Evaluate(&c.goal, c.graph, child.part.data()));
    EXPECT_LE(child.value, std::min(a.value, b.value));
    EXPECT_LE(cycled.value, b.value);
    EXPECT_EQ(Distance(c.graph, &a, &a), 0);
    EXPECT_EQ(Distance(c.graph, &a, &b), Distance(c.graph, &b, &a));
    nbetter += child.value < std::min(a.value, b.value);
  }
  EXPECT_GT(nbetter, 2);
}

TEST(member, parts_made_anew_leave_a_partition_no_worse_and_anchors_where_they_are)
{
  Caller caller;
  int nbetter = 0;

  for (std::uint64_t seed = 1; seed <= 6; seed++) {
    SearchCase c(600, seed, &caller);
    c.graph->nfixed = seed % 2 == 0 ? 4 : 0;
    c.goal.connectivity = seed % 3 == 0;
    c.goal.cut = seed % 3 != 1;
    c.goal.connectivity |= !c.goal.cut;
    Member parent = Bisect(&c.ctrl, &c.goal, 1, c.graph);
    for (int groupsize = 2; groupsize <= 4; groupsize++) {
      const Member child = Rework(&c.ctrl, &c.goal, 3, c.graph, &parent, groupsize);
      EXPECT_EQ(child.value, Evaluate(&c.goal, c.graph, child.part.data()));
      EXPECT_LE(child.value, parent.value);
      for (int i = 0; i < c.graph->nfixed; i++)
        EXPECT_EQ(child.part[At(i)], i);
      nbetter += child.value < parent.value;
      parent = child;
    }
  }
  EXPECT_GT(nbetter, 6);

  // Nothing to make anew: all parts lie apart.
  SearchCase apart(8, 1, &caller);
  const Instance islands = {8, {}, {}, {}};
  HGraph *graph = HGraphOf(islands);
  const Member parent = {{0, 0, 1, 1, 2, 2, 3, 3}, {0, 0, 0}};
  EXPECT_EQ(Rework(&apart.ctrl, &apart.goal, 3, graph, &parent, 2).part, parent.part);
  FreeHGraph__(graph);
}

TEST(search, goes_on_until_it_is_stopped_and_announces_only_what_is_better)
{
  Caller caller;
  SearchCase c(300, 3, &caller);
  const SearchPlan plan = {1, 0, false, true};
  const std::uint64_t serial = CurrentLedger()->serial;

  caller.calls = 8000;
  EXPECT_THROW(Search(&c.ctrl, &c.goal, &plan, c.graph, c.part.data()), StopRun);
  ReleaseLedger(serial);
  EXPECT_GT(caller.cuts.size(), 3u);
  // The first one is that of the coarsest level.
  for (std::size_t i = 1; i < caller.cuts.size(); i++)
    EXPECT_LE(caller.cuts[i], caller.cuts[i - 1]);
  std::set<std::pair<int, int>> pairs;
  for (const Step &step : caller.steps)
    if (step.parents[0] != step.parents[1]) {
      EXPECT_TRUE(pairs.insert(std::minmax(step.parents[0], step.parents[1])).second) << "a pair twice";
    }
  EXPECT_GT(pairs.size(), 5u);
}
