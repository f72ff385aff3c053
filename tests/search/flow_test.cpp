// tests/search/flow_test.cpp - minimum cuts against all cuts, and refinement by them.
// SPDX-License-Identifier: MIT

#include "search_case.h"

#include "search/flow.h"
#include "search/mincut.h"

namespace
{

// Cells 0 and 1 stay where they are.
Network RandomNetwork(TestRandom *random, int ncells)
{
  Network n = {};

  n.netptr.push_back(0);
  for (int i = 0; i < ncells; i++) {
    n.cellwgts.push_back(static_cast<Weight>(UNIT) * random->Below(i < 2 ? 20 : 5));
    n.sides.push_back(static_cast<char>(i < 2 ? i : random->Below(2)));
    n.distances.push_back(i < 2 ? 100 : random->Below(3));
  }
  for (int j = 0; j < 2 * ncells; j++) {
    const std::size_t first = n.netind.size();
    for (int i = 0; i < ncells; i++)
      if (random->Below(ncells) < 3)
        n.netind.push_back(i);
    if (n.netind.size() < first + 2) {
      n.netind.resize(first);
      continue;
    }
    n.netptr.push_back(static_cast<int>(n.netind.size()));
    n.netwgts.push_back(static_cast<Weight>(UNIT) * (1 + random->Below(4)));
  }
  return n;
}

Weight CutOf(const Network &n, const Array<char> &sides)
{
  Weight cut = 0;

  for (std::size_t j = 0; j < n.netwgts.size(); j++)
    for (int k = n.netptr[j]; k < n.netptr[j + 1]; k++)
      if (sides[At(n.netind[At(k)])] != sides[At(n.netind[At(n.netptr[j])])]) {
        cut += n.netwgts[j];
        break;
      }
  return cut;
}

bool KeepsLimits(const Network &n, const Array<char> &sides)
{
  Weight weights[2] = {0, 0};

  for (std::size_t i = 0; i < sides.size(); i++)
    weights[At(sides[i])] += n.cellwgts[i];
  return weights[0] <= n.limits[0] && weights[1] <= n.limits[1] && weights[0] >= n.minimums[0] &&
         weights[1] >= n.minimums[1];
}

// Of all that keep the limits; -1 if none does.
Weight LeastCut(const Network &n)
{
  const int free = static_cast<int>(n.sides.size()) - 2;
  Weight least = -1;

  for (int bits = 0; bits < 1 << free; bits++) {
    Array<char> sides = {0, 1};
    for (int i = 0; i < free; i++)
      sides.push_back(static_cast<char>(bits >> i & 1));
    if (KeepsLimits(n, sides) && (least < 0 || CutOf(n, sides) < least))
      least = CutOf(n, sides);
  }
  return least;
}

} // namespace

TEST(flow, a_cut_is_least_where_limits_leave_room_and_keeps_them_where_not)
{
  TestRandom random = {5};
  const Hooks hooks = {};
  Control ctrl = {};
  int nfound = 0, nleast = 0;

  ctrl.hooks = &hooks;
  for (int round = 0; round < 400; round++) {
    Network n = RandomNetwork(&random, 4 + random.Below(8));
    Weight total = 0;
    for (const Weight wgt : n.cellwgts)
      total += wgt;
    const bool tight = round % 2 == 1;
    for (int side = 0; side < 2; side++) {
      n.limits[side] = tight ? total / 2 + static_cast<Weight>(UNIT) * random.Below(10) : total;
      n.minimums[side] = tight ? static_cast<Weight>(UNIT) * random.Below(3) : 0;
    }
    const Weight least = LeastCut(n), bound = CutOf(n, n.sides);
    const Array<char> before = n.sides;
    const bool found = FindMinimumCut(&ctrl, &n, bound);
    if (!found) {
      EXPECT_EQ(n.sides, before);
      EXPECT_TRUE(tight || least == bound) << "round " << round;
      continue;
    }
    nfound++;
    EXPECT_EQ(n.sides[0], 0);
    EXPECT_EQ(n.sides[1], 1);
    EXPECT_TRUE(KeepsLimits(n, n.sides));
    EXPECT_LT(CutOf(n, n.sides), bound);
    EXPECT_TRUE(tight || CutOf(n, n.sides) == least) << "round " << round;
    nleast += CutOf(n, n.sides) == least;
  }
  // Cells are chosen by a rule where limits bind: not always the best one.
  EXPECT_GT(nfound, 250);
  EXPECT_GT(nleast, nfound * 9 / 10);
}

TEST(flow, refinement_lowers_the_objective_within_the_limits_and_moves_no_anchor)
{
  TestRandom random = {6};
  const Hooks hooks = {};
  Control ctrl = {};
  int nbetter = 0;

  ctrl.hooks = &hooks;
  for (int round = 0; round < 150; round++) {
    const int nparts = 2 + random.Below(5);
    Case c(&random, nparts, round % 3 != 0, round % 3 != 1);
    const Ints given = c.part;
    c.graph->nfixed = random.Chance(50) ? nparts : 0;
    const Value before = Evaluate(&c.goal, c.graph, c.part.data());
    Value value = before;
    RefineByFlow(&ctrl, &c.goal, c.graph, nullptr, c.part.data(), &value);
    EXPECT_EQ(value, Evaluate(&c.goal, c.graph, c.part.data()));
    EXPECT_LE(value, before);
    if (value == before) {
      EXPECT_EQ(c.part, given);
      continue;
    }
    nbetter++;
    EXPECT_LT(value.main, before.main);
    for (int i = 0; i < c.graph->nfixed; i++)
      EXPECT_EQ(c.part[At(i)], given[At(i)]);
    const std::vector<Weight> weights = c.Weigh(c.part), weighed = c.Weigh(given);
    for (int p = 0; p < nparts; p++) {
      EXPECT_LE(weights[At(p)], std::max(weighed[At(p)], c.limits[At(p)]));
      EXPECT_GE(weights[At(p)], std::min(weighed[At(p)], c.minimums[At(p)]));
    }
    // Pairs that are as they were are left alone.
    const Ints refined = c.part;
    Value again = value;
    RefineByFlow(&ctrl, &c.goal, c.graph, refined.data(), c.part.data(), &again);
    EXPECT_EQ(c.part, refined);
  }
  EXPECT_GT(nbetter, 75);
}
