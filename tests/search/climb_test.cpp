// tests/search/climb_test.cpp - pins by parts, values and refinement against their definitions.
// SPDX-License-Identifier: MIT

#include "search_case.h"

#include "base/random.h"
#include "search/climb.h"
#include "search/netparts.h"

TEST(netparts, moved_pins_are_counted_as_from_the_start)
{
  TestRandom random = {1};

  for (int round = 0; round < 30; round++) {
    const int nparts = 2 + random.Below(9);
    Case c(&random, nparts, true, false);
    NetParts pins;
    CountPins(c.graph, nparts, c.part.data(), &pins);
    for (int move = 0; move < 40; move++) {
      const int v = random.Below(c.graph->ncells), to = random.Below(nparts);
      int *from = &c.part[At(v)];
      for (int i = c.graph->incptr[v]; *from != to && i < c.graph->incptr[v + 1]; i++)
        MovePin(&pins, c.graph->incind[i], *from, to);
      *from = to;
    }
    EXPECT_VALID(CheckNetParts(c.graph, nparts, c.part.data(), &pins));
    if (pins.nets[0].nparts > 0) {
      pins.list[At(pins.nets[0].first)].pins++;
      EXPECT_STREQ(CheckNetParts(c.graph, nparts, c.part.data(), &pins),
                   "net parts: a net has another number of pins in a part");
    }
  }
}

TEST(climb, improves_within_the_limits_by_what_it_says)
{
  TestRandom random = {2};
  int nimproved = 0;

  for (int round = 0; round < 150; round++) {
    SCOPED_TRACE(round);
    const int nparts = 2 + random.Below(7), objective = round % 3;
    Case c(&random, nparts, objective != 1, objective != 0);
    Control ctrl = TestControl();
    const Ints given = c.part;
    Value value = Evaluate(&c.goal, c.graph, c.part.data());
    const Value before = value;
    const std::vector<Weight> old = c.Weigh(given);
    c.graph->nfixed = random.Chance(50) ? nparts : 0;
    InitRandom__(round);
    Climb(&ctrl, &c.goal, c.graph, c.part.data(), &value);

    const std::int64_t cut = CutOf(c.instance, c.part), soed = SoedOf(c.instance, c.part);
    EXPECT_EQ(value.main, objective == 0 ? cut : objective == 1 ? soed - cut : soed);
    EXPECT_EQ(value.tie, objective == 1 ? cut : soed - cut);
    EXPECT_LE(value, before) << c.instance.Literal();
    nimproved += value.main < before.main;
    const std::vector<Weight> weights = c.Weigh(c.part);
    Weight excess = 0;
    for (std::size_t p = 0; p < weights.size(); p++) {
      EXPECT_LE(weights[p], std::max(c.limits[p], old[p]));
      EXPECT_GE(weights[p], std::min(c.minimums[p], old[p]));
      EXPECT_NE(std::count(c.part.begin(), c.part.end(), static_cast<int>(p)), 0);
      excess += std::max<Weight>(0, weights[p] - c.limits[p]);
    }
    EXPECT_EQ(value.excess, excess);
    for (int i = 0; i < c.graph->nfixed; i++)
      EXPECT_EQ(c.part[At(i)], given[At(i)]);
  }
  EXPECT_GT(nimproved, 100);
}

// The cells 0 and 1 hold together; both belong to 2 rather than to 3, where they are: each alone loses by going.
TEST(climb, goes_through_a_move_that_loses)
{
  const Instance instance = {
      6, {{0, 1}, {0, 2}, {1, 2}, {0, 3}, {1, 3}, {2, 4}, {3, 5}}, {}, Units({5, 3, 3, 1, 1, 9, 9})};
  HGraph *graph = HGraphOf(instance);
  Control ctrl = TestControl();
  const std::vector<Weight> limits = {4, 4}, minimums = {0, 0};
  const SearchGoal goal = {2, true, false, limits.data(), minimums.data()};
  Ints part = {1, 1, 0, 1, 0, 1};
  Value value = Evaluate(&goal, graph, part.data());

  EXPECT_EQ(value.main, 6 * UNIT);
  Climb(&ctrl, &goal, graph, part.data(), &value);
  EXPECT_EQ(part, (Ints{0, 0, 0, 1, 0, 1}));
  FreeHGraph__(graph);
}
