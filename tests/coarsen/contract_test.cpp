// tests/coarsen/contract_test.cpp - what a contraction makes of nets and cells, and the hypergraph around fixed cells.
// SPDX-License-Identifier: MIT

#include "coarsen/match.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

// Groups by their members; the caller frees the arrays.
static Grouping GroupingOf(int ncells, const Nets &members)
{
  Grouping groups = {};

  groups.cellmap = ismalloc__(ncells, UNMATCHED, "test: cellmap");
  groups.mptr = ismalloc__(ncells + 1, 0, "test: mptr");
  groups.mind = imalloc__(ncells, "test: mind");
  for (const Ints &group : members) {
    for (int cell : group)
      AddMember(&groups, cell);
    CloseGroup(&groups);
  }
  return groups;
}

TEST(contraction, drops_nets_within_a_cell_and_merges_identical_ones)
{
  // Groups:  0 = {1,0}  1 = {3,2}  2 = {5}  3 = {4}  4 = {6}
  const Nets nets = {
      {0, 1},       // {0}: dropped
      {1, 2},       // {0,1}
      {0, 3},       // {0,1} again
      {2, 4, 5},    // {1,2,3}
      {5, 3, 0, 2}, // {0,1,2}: two pins in a cell are one
      {6, 6},       // {4}: dropped
      {2, 6, 2},    // {1,4}
      {4, 3, 5},    // {1,2,3} again
      {},           // stays
  };
  const Control ctrl = TestControl();
  HGraph *graph =
      HGraphOf(Instance{7, nets, Units({1, 2, 3, 4, 5, 6, 7}), Units({1, 2, 3, 4, 5, 6, 7, 8, 9})});
  Grouping groups = GroupingOf(7, {{1, 0}, {3, 2}, {5}, {4}, {6}});

  graph->dropwgt = static_cast<Weight>(3 * UNIT);
  HGraph *coarser = CreateCoarseHGraph__(&ctrl, graph, &groups);
  // By the sum of position x pin: 0, 2, 8, 9, 14.
  EXPECT_EQ(NetsOf(coarser), (Nets{{}, {0, 1}, {0, 1, 2}, {1, 4}, {1, 2, 3}}));
  EXPECT_EQ(WeightsOf(5, coarser->netwgt), Units({9, 2 + 3, 5, 7, 4 + 8}));
  EXPECT_EQ(coarser->dropwgt, (3 + 1 + 6) * UNIT);
  EXPECT_EQ(coarser->ncells, 5);
  EXPECT_EQ(WeightsOf(5, coarser->cellwgt), Units({3, 7, 6, 5, 7}));
  EXPECT_EQ(WeightsOf(5, coarser->adjwgt), Units({10, 29, 17, 12, 7}));
  // In the order in which the members name them: cell 3 those of nets 1, 4 and 7, then cell 2 that of net 6.
  EXPECT_EQ(ListOf(6, coarser->incptr), (Ints{0, 2, 6, 8, 9, 10}));
  EXPECT_EQ(ListOf(10, coarser->incind), (Ints{1, 2, 1, 2, 4, 3, 4, 2, 4, 3}));
  const float unit = static_cast<float>(UNIT);
  EXPECT_EQ(ListOf(4, coarser->edgewgt + 1), (std::vector<float>{5 * unit, 2.5f * unit, 7 * unit, 6 * unit}));
  FreeHGraph__(coarser);
  FreeHGraph__(graph);
  QVfree__(&groups.cellmap, &groups.mptr, &groups.mind);
}

TEST(contraction, nets_are_merged_by_their_pins_not_by_their_key)
{
  // {0,3} and {1,2} have the same sum of pin + 100 x position, 303; two pins of a cell stay two.
  const Nets nets = {{}, {3, 0}, {1, 2}, {0, 3}, {1, 0, 0}, {4}, {0, 1}, {0, 1, 0}, {2, 1}, {3, 0}};
  const struct {
    Nets nets;
    Weights netwgt;
    Nets merged;
    Weights mergedwgt;
  } rows[] = {
      {nets,
       {1, 2, 4, 8, 16, 32, 64, 128, 256, 512},
       {{}, {4}, {0, 1}, {0, 3}, {1, 2}, {0, 0, 1}},
       {1, 32, 64, 2 + 8 + 512, 4 + 256, 16 + 128}},
      {{{2, 0, 1}}, {3}, {{0, 1, 2}}, {3}},
      {{}, {}, {}, {}},
  };

  for (const auto &row : rows) {
    const Instance instance = {5, row.nets, {}, Units(row.netwgt)};
    HGraph *graph = HGraphOf(instance), *merged = CreateHGraph__();
    CollapseSameHEdges__(graph->nnets, graph->netptr, graph->netind, graph->netwgt, &merged->nnets,
                         &merged->netptr, &merged->netind, &merged->netwgt);
    EXPECT_EQ(NetsOf(merged), row.merged);
    EXPECT_EQ(WeightsOf(merged->nnets, merged->netwgt), Units(row.mergedwgt));
    FreeHGraph__(merged);
    FreeHGraph__(graph);
  }
}

TEST(contraction, one_anchor_stands_for_all_cells_of_a_part)
{
  // Nothing is fixed to part 1: its anchor, cell 1, weighs nothing and is on no net.
  const Ints fixed = {-1, 0, -1, 0, 2, -1};
  Control ctrl = TestControl();
  HGraph *graph = HGraphOf(Instance{
      6, {{0, 1}, {1, 3}, {2, 4, 3}, {5, 1}, {5, 3}}, Units({1, 2, 3, 4, 5, 6}), Units({1, 2, 3, 4, 5})});
  Cell *cellmap;

  ctrl.nparts = 3;
  HGraph *compressed = CompressFixedCells__(&ctrl, graph, fixed.data(), &cellmap);
  EXPECT_EQ(ListOf(6, cellmap), (Ints{3, 0, 4, 0, 2, 5}));
  EXPECT_EQ(compressed->nfixed, 3);
  EXPECT_EQ(NetsOf(compressed), (Nets{{0, 3}, {0, 5}, {0, 2, 4}}));
  EXPECT_EQ(WeightsOf(3, compressed->netwgt), Units({1, 4 + 5, 3}));
  EXPECT_EQ(WeightsOf(compressed->ncells, compressed->cellwgt), Units({2 + 4, 0, 5, 1, 3, 6}));
  EXPECT_EQ(compressed->dropwgt, 2 * UNIT);
  EXPECT_EQ(compressed->incptr, nullptr); // whoever partitions it builds it

  // The parts 2, 0, 1 of the anchors are 0, 1, 2; so are those of the other cells.
  Ints part(6, 9);
  ProjectFixedCells__(&ctrl, 6, cellmap, part.data(), Ints{2, 0, 1, 1, 0, 2}.data());
  EXPECT_EQ(part, (Ints{2, 0, 1, 0, 2, 0}));
  // Two anchors in one part: the later one names it, and no name is left for part 2.
  ProjectFixedCells__(&ctrl, 6, cellmap, part.data(), Ints{1, 1, 0, 1, 2, 0}.data());
  EXPECT_EQ(part, (Ints{1, 1, -1, 1, 2, 2}));
  FreeHGraph__(compressed);
  FreeHGraph__(graph);
  QVfree__(&cellmap);
}
