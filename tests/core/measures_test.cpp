// tests/core/measures_test.cpp - quality of a partition, pruning, and the largest weight of a coarse cell.
// SPDX-License-Identifier: MIT

#include "support/graph.h"

#include <cmath>

TEST(measures, count_cut_nets_once_or_per_part)
{
  // A net of one pin and one without any, which no partition cuts, and a pin listed twice.
  const Nets nets = {{0, 1}, {1, 2, 3}, {3, 4, 5}, {0, 5}, {2}, {}, {4, 4}};
  HGraph *graph = HGraphOf(Instance{6, nets, {}, Units({1, 2, 3, 4, 90, 90, 90})});
  const struct {
    std::string part;
    std::int64_t cut, soed;
  } rows[] = {{"000000", 0, 0},
              {"222222", 0, 0},
              {"000111", 2 + 4, 2 * (2 + 4)},
              {"001122", 2 + 3 + 4, 2 * (2 + 3 + 4)},
              {"012012", 1 + 2 + 3 + 4, 2 * (1 + 4) + 3 * (2 + 3)}};

  for (const auto &row : rows) {
    std::vector<int> part;
    for (char digit : row.part)
      part.push_back(digit - '0');
    EXPECT_EQ(ComputeActualCut__(graph, part.data()), row.cut * UNIT) << row.part;
    EXPECT_EQ(ComputeActualSOED__(graph, part.data()), row.soed * UNIT) << row.part;
  }
  FreeHGraph__(graph);
}

TEST(measures, balance_is_the_lighter_side_or_the_heaviest_part)
{
  const int halves[] = {0, 0, 0, 1, 1, 1}, swapped[] = {1, 1, 1, 0, 0, 0}, thirds[] = {0, 0, 1, 1, 2, 2};
  HGraph *graph = HGraphOf(Instance{6, {}, Units({1, 2, 3, 4, 5, 5}), {}});
  HGraph *weightless = HGraphOf(Instance{6, {}, Weights(6, 0), {}}), *none = HGraphOf(Instance{});

  EXPECT_FLOAT_EQ(ComputeBalance__(graph, halves), 6 / 20.0f);
  EXPECT_FLOAT_EQ(ComputeBalance__(graph, swapped), 6 / 20.0f);
  EXPECT_FLOAT_EQ(ComputeBalanceKway__(graph, 3, thirds), 3 * 10 / 20.0f);
  EXPECT_FLOAT_EQ(ComputeBalanceKway__(graph, 5, thirds), 5 * 10 / 20.0f); // two empty parts
  EXPECT_TRUE(std::isnan(ComputeBalance__(weightless, halves)));
  EXPECT_TRUE(std::isnan(ComputeBalanceKway__(weightless, 3, thirds)));
  EXPECT_TRUE(std::isnan(ComputeBalance__(none, halves)));
  for (HGraph *g : {graph, weightless, none})
    FreeHGraph__(g);
}

TEST(prune, keeps_all_cells_and_the_nets_of_at_most_so_many_pins)
{
  Control ctrl = TestControl();
  HGraph *graph = HGraphOf(Instance{
      5, {{0, 1, 2, 3}, {4, 1, 0}, {2, 3}, {1, 1, 2, 3}, {3}}, {1, 2, 3, 4, 5}, Units({6, 7, 8, 9, 5})});
  graph->nfixed = 1;
  const std::string before = BytesOf(graph);

  ctrl.maxnetsize = 3; // of pins as they are listed
  HGraph *pruned = PruneHGraph__(&ctrl, graph);
  EXPECT_EQ(NetsOf(pruned), (Nets{{4, 1, 0}, {2, 3}, {3}}));
  EXPECT_EQ(WeightsOf(3, pruned->netwgt), Units({7, 8, 5}));
  EXPECT_EQ(WeightsOf(5, pruned->cellwgt), (Weights{1, 2, 3, 4, 5}));
  EXPECT_EQ(pruned->nfixed, 1);
  EXPECT_VALID(CheckIncidence(pruned));
  FreeHGraph__(pruned);

  // All of it: no copy, unless weight has been dropped on the way.
  ctrl.maxnetsize = 4;
  EXPECT_EQ(PruneHGraph__(&ctrl, graph), nullptr);
  EXPECT_EQ(BytesOf(graph), before);
  graph->dropwgt = 1;
  pruned = PruneHGraph__(&ctrl, graph);
  ASSERT_NE(pruned, nullptr);
  EXPECT_EQ(NetsOf(pruned), NetsOf(graph));
  EXPECT_EQ(pruned->dropwgt, 0);
  FreeHGraph__(pruned);
  FreeHGraph__(graph);
}

TEST(prune, heavy_cells_take_a_place_each_and_the_rest_shares_the_others)
{
  const struct {
    int coarsento;
    Weights cellwgt;
    int rest, places;
    bool heavy;
  } rows[] = {
      {4, {1, 1, 1, 1, 1, 1, 1, 1}, 8, 4, false},
      {4, {8, 1, 1, 1, 1, 1, 1, 1, 1}, 16, 4, false}, // as heavy as the cap, 2 x 16/4
      {4, {10, 1, 1, 1, 1, 1, 1}, 6, 3, true},        // above it
      {6, {20, 1, 1, 1, 20, 1, 1, 1}, 6, 4, true},    // both above 2 x 46/6
      {10, {30, 9, 1, 1, 1, 1, 1, 1}, 15, 9, true},   // 9 is the cap with the 30, and above that without
      {0, {5, 1}, 6, 1, false},
      {100, {}, 0, 100, false},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    Control ctrl = TestControl();
    const Weights scaled = Units(row.cellwgt);
    const std::vector<Weight> cellwgt(scaled.begin(), scaled.end());
    ctrl.coarsento = row.coarsento;
    ComputeMaxCellWgt__(&ctrl, static_cast<int>(cellwgt.size()), cellwgt.data());
    EXPECT_EQ(ctrl.maxcellwgt, 2 * row.rest * UNIT / row.places);
    EXPECT_EQ(ctrl.heavycells, row.heavy);
  }
}

TEST(prune, nets_of_four_pins_are_large)
{
  const int netptr[] = {0, 4, 4, 7, 12};

  EXPECT_EQ(NumOfLargeNets__(4, netptr), 2);
}
