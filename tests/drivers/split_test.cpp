// tests/drivers/split_test.cpp - what a side of a bisection keeps of the nets.
// SPDX-License-Identifier: MIT

#include "drivers/drivers.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

TEST(split, sides_keep_whole_nets_and_with_reconst_their_pieces)
{
  // Side 0 has the cells 0 1 4 6, renamed 0 1 2 3, side 1 the cells 2 3 5 7.
  const Ints where = {0, 0, 1, 1, 0, 1, 0, 1};
  const Nets nets = {
      {1, 0, 4},       // side 0: {1,0,2}
      {2, 7},          // side 1: {0,3}
      {0, 1, 2},       // cut: {0,1} and a single pin
      {7, 3, 0, 1, 2}, // cut: {0,1} again and {3,1,0}
      {6},             // side 0: {3}
      {},              // on no side
      {2, 3, 7, 4},    // cut: {0,1,3} again
      {0, 6},          // side 0: {0,3}
      {4, 5},          // cut: single pins
  };
  const struct {
    bool reconst;
    Nets nets[2];
    Weights netwgt[2];
  } rows[] = {
      {false, {{{1, 0, 2}, {3}, {0, 3}}, {{0, 3}}}, {{1, 16, 128}, {2}}},
      // Pins sorted, and nets by the sum of pin + 100 x position.
      {true, {{{3}, {0, 1}, {0, 3}, {0, 1, 2}}, {{0, 3}, {0, 1, 3}}}, {{16, 4 + 8, 128, 1}, {2, 8 + 64}}},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(row.reconst);
    Control ctrl = TestControl();
    HGraph *sides[2], *graph = HGraphOf(Instance{8, nets, Units({1, 2, 3, 4, 5, 6, 7, 8}),
                                                 Units({1, 2, 4, 8, 16, 32, 64, 128, 256})});
    const std::string before = BytesOf(graph);
    Cell *labels[2];
    ctrl.reconst = row.reconst;
    SplitGraphPart__(&ctrl, graph, where.data(), sides, labels);

    EXPECT_EQ(BytesOf(graph), before);
    EXPECT_EQ(ListOf(4, labels[0]), (Ints{0, 1, 4, 6}));
    EXPECT_EQ(ListOf(4, labels[1]), (Ints{2, 3, 5, 7}));
    EXPECT_EQ(WeightsOf(4, sides[0]->cellwgt), Units({1, 2, 5, 7}));
    EXPECT_EQ(WeightsOf(4, sides[1]->cellwgt), Units({3, 4, 6, 8}));
    for (int s = 0; s < 2; s++) {
      EXPECT_EQ(sides[s]->ncells, 4);
      EXPECT_EQ(sides[s]->nfixed, 0);
      EXPECT_EQ(NetsOf(sides[s]), row.nets[s]);
      EXPECT_EQ(WeightsOf(sides[s]->nnets, sides[s]->netwgt), Units(row.netwgt[s]));
      QVfree__(&labels[s]);
      FreeHGraph__(sides[s]);
    }
    FreeHGraph__(graph);
  }
}

TEST(split, anchors_go_with_their_parts_and_a_side_may_be_empty)
{
  // Anchors 0 1 of the parts on side 0, anchor 2 of that on side 1.
  Control ctrl = TestControl();
  HGraph *graph = HGraphOf({{0, 3}, {1, 2}, {2, 4}}), *sides[2];
  Cell *labels[2];

  graph->nfixed = 3;
  ctrl.bounds.nanchors0 = 2;
  SplitGraphPart__(&ctrl, graph, Ints{0, 0, 1, 0, 1}.data(), sides, labels);
  EXPECT_EQ(sides[0]->nfixed, 2);
  EXPECT_EQ(sides[1]->nfixed, 1);
  EXPECT_EQ(ListOf(3, labels[0]), (Ints{0, 1, 3}));
  EXPECT_EQ(ListOf(2, labels[1]), (Ints{2, 4}));
  for (int s = 0; s < 2; s++) {
    QVfree__(&labels[s]);
    FreeHGraph__(sides[s]);
  }

  graph->nfixed = ctrl.bounds.nanchors0 = 0;
  SplitGraphPart__(&ctrl, graph, Ints{1, 1, 1, 1, 1}.data(), sides, labels);
  EXPECT_EQ(sides[0]->ncells, 0);
  EXPECT_EQ(sides[0]->nnets, 0);
  EXPECT_EQ(NetsOf(sides[1]), NetsOf(graph));
  for (int s = 0; s < 2; s++) {
    QVfree__(&labels[s]);
    FreeHGraph__(sides[s]);
  }
  FreeHGraph__(graph);
}
