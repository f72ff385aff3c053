// tests/coarsen/levels_test.cpp - the chain of levels that coarsening makes: what each must keep of the one before.
// SPDX-License-Identifier: MIT

#include "coarsen/coarsen.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

static const Matching all_matchings[] = {MATCH_ALTERNATE, MATCH_DEGREE, MATCH_STRONG, MATCH_NETS,
                                         MATCH_PAIRS};

// A path of n cells with a weight of 1 per cell and net, and nets over every third, fifth and ninth cell of it; every
// 50th cell but the first is on no net.
static Instance Path(int n)
{
  Instance instance = {n, {}, {}, {}};
  Ints path;

  for (int i = 0; i < n; i++)
    if (i == 0 || i % 50 != 0)
      path.push_back(i);
  for (std::size_t i = 0; i + 1 < path.size(); i++)
    instance.nets.push_back({path[i], path[i + 1]});
  for (std::size_t i = 0; i + 9 < path.size(); i += 7)
    instance.nets.push_back({path[i], path[i + 3], path[i + 5], path[i + 9]});
  return instance;
}

// Frees the levels below the finest one and gives that its hypergraph back, with some partition.
static void FreeBelow(Level *top, Level *coarsest)
{
  while (coarsest != top) {
    coarsest = coarsest->finer;
    FreeLevel(coarsest->coarser);
  }
  if (top->part.where == nullptr)
    top->part.where = ismalloc__(top->outer->ncells, 0, "test: where");
  CombineIslands__(top);
}

// For each cell of the finest level that is on a net its cell on the coarsest one, or -1 if it ends on a level in
// between as part of a cell on no net.
static Ints MapToCoarsest(const Level *top)
{
  Ints map;

  for (int i = 0; i < top->graph->ncells; i++) {
    int c = i;
    for (const Level *level = top; level->coarser != nullptr && c != -1; level = level->coarser)
      c = c < level->graph->ncells ? level->cellmap[c] : -1;
    map.push_back(c);
  }
  return map;
}

// Names and weights that must be the same on both levels.
static void ExpectSound(const Level *level, Weight maxcellwgt)
{
  const Level *coarser = level->coarser;
  const int n = coarser->graph->ncells + coarser->graph->nislands;
  std::vector<Weight> wgts(static_cast<std::size_t>(n), 0);
  Ints nmembers(static_cast<std::size_t>(n), 0);

  EXPECT_EQ(coarser->finer, level);
  EXPECT_EQ(coarser->level, level->level + 1);
  EXPECT_EQ(coarser->graph->nfixed, level->graph->nfixed);
  for (int i = 0; i < level->graph->ncells; i++) {
    ASSERT_TRUE(level->cellmap[i] >= 0 && level->cellmap[i] < n);
    wgts[static_cast<std::size_t>(level->cellmap[i])] += level->graph->cellwgt[i];
    nmembers[static_cast<std::size_t>(level->cellmap[i])]++;
  }
  for (int i = 0; i < level->graph->nfixed; i++) {
    EXPECT_EQ(level->cellmap[i], i);
    EXPECT_EQ(nmembers[static_cast<std::size_t>(i)], 1);
  }
  for (std::size_t c = 0; c < wgts.size(); c++) {
    EXPECT_EQ(wgts[c], coarser->graph->cellwgt[c]);
    EXPECT_TRUE(nmembers[c] == 1 || (nmembers[c] > 1 && wgts[c] <= maxcellwgt));
  }
  EXPECT_EQ(iasum__(coarser->graph->nnets, coarser->graph->netwgt) + coarser->graph->dropwgt,
            iasum__(level->graph->nnets, level->graph->netwgt) + level->graph->dropwgt);
}

TEST(levels, two_strong_pairs_become_two_cells)
{
  // 0 === 1 --- 2 === 3
  for (Matching matching : all_matchings) {
    SCOPED_TRACE(matching);
    Control ctrl = TestControl();
    TestLevel top(HGraphOf(Instance{4, {{0, 1}, {1, 2}, {2, 3}}, {}, Units({5, 1, 5})}));
    ctrl.ctype = matching;
    ctrl.coarsento = 2;
    ctrl.maxcellwgt = 2;
    Level *coarsest = Coarsen__(&ctrl, &top);
    ASSERT_EQ(top.coarser, coarsest);
    EXPECT_EQ(top.cellmap[0], top.cellmap[1]);
    EXPECT_EQ(top.cellmap[2], top.cellmap[3]);
    EXPECT_EQ(NetsOf(coarsest->graph), (Nets{{0, 1}}));
    EXPECT_EQ(coarsest->graph->netwgt[0], UNIT);
    EXPECT_EQ(coarsest->graph->dropwgt, 10 * UNIT);
    FreeBelow(&top, coarsest);
  }
}

TEST(levels, coarsening_ends_when_cells_no_longer_join)
{
  // No two may: a level of pairs ends at once, of stars after a second slow one. A level small enough is its own end.
  for (auto [matching, nlevels] : {std::pair{MATCH_PAIRS, 1}, {MATCH_ALTERNATE, 2}, {MATCH_NETS, 2}}) {
    Control ctrl = TestControl();
    TestLevel top(HGraphOf(Path(40)));
    ctrl.ctype = matching;
    ctrl.coarsento = 39;
    ctrl.maxcellwgt = 1;
    Level *coarsest = Coarsen__(&ctrl, &top);
    EXPECT_EQ(coarsest->level, nlevels);
    EXPECT_EQ(coarsest->graph->ncells, 40);
    FreeBelow(&top, coarsest);
    CloseCycle(&top);
    ctrl.coarsento = 40;
    EXPECT_EQ(Coarsen__(&ctrl, &top), &top);
  }
}

TEST(levels, each_keeps_weights_anchors_and_the_cut_of_every_partition_below)
{
  const int most = 20;

  for (Matching matching : all_matchings) {
    SCOPED_TRACE(matching);
    Control ctrl = TestControl();
    TestLevel top(HGraphOf(Path(300)));
    HGraph *shared = top.owned;
    shared->nfixed = 3;
    const std::string before = BytesOf(shared);
    ctrl.ctype = matching;
    ctrl.coarsento = 30;
    ctrl.maxcellwgt = most;
    Level *coarsest = Coarsen__(&ctrl, &top);

    EXPECT_EQ(BytesOf(shared), before);
    EXPECT_EQ(top.graph->nislands, 5);
    EXPECT_GE(coarsest->level, 2);
    EXPECT_LT(coarsest->graph->ncells, 100);
    for (const Level *level = &top; level != coarsest; level = level->coarser)
      ExpectSound(level, most);

    const Ints map = MapToCoarsest(&top);
    TestRandom random = {11};
    for (int t = 0; t < 5; t++) {
      Ints cpart, part;
      for (int c = 0; c < coarsest->graph->ncells; c++)
        cpart.push_back(random.Below(4));
      for (int c : map)
        part.push_back(c == -1 ? 0 : cpart[static_cast<std::size_t>(c)]);
      EXPECT_EQ(ComputeActualCut__(coarsest->graph, cpart.data()),
                ComputeActualCut__(top.graph, part.data()));
    }
    FreeBelow(&top, coarsest);
  }
}

TEST(levels, no_group_of_a_cycle_spans_two_parts)
{
  for (RestrictedMatching matching : {MATCH_PART_STARS, MATCH_PART_PAIRS}) {
    SCOPED_TRACE(matching);
    Control ctrl = TestControl();
    std::string digits;
    for (int i = 0; i < 2500; i++)
      digits += static_cast<char>('0' + i / 20 % 3);
    TestLevel top(HGraphOf(Path(2500)), digits);
    HGraph *shared = top.owned;
    shared->nfixed = 3;
    const std::string before = BytesOf(shared);
    ctrl.nparts = 3;
    ctrl.maxcellwgt = 20;
    Level *coarsest = CCoarsen__(&ctrl, matching, &top);

    EXPECT_EQ(BytesOf(shared), before);
    EXPECT_GE(coarsest->level, 2);
    EXPECT_LE(coarsest->graph->ncells, 1000);
    for (const Level *level = &top; level != coarsest; level = level->coarser) {
      EXPECT_EQ(level->part.where, nullptr); // the partition has gone down
      ExpectSound(level, 20);
    }
    // Cells that share a coarse cell are of one part, and the coarsest partition is that of the finest level.
    const Ints map = MapToCoarsest(&top);
    for (int i = 0; i < shared->ncells; i++) {
      const int at = top.islandmap[i];
      const int c = at < top.graph->ncells ? map[static_cast<std::size_t>(at)] : -1;
      ASSERT_TRUE(c == -1 || coarsest->part.where[c] == digits[static_cast<std::size_t>(i)] - '0') << i;
    }
    FreeBelow(&top, coarsest);
  }
}
