// tests/core/measures_test.cpp - measures of a partition, pruning and the coarse-cell cap.
// SPDX-License-Identifier: MIT

#include "control/ctrl.h"
#include "support/build.h"

#include <cmath>
#include <numeric>
#include <tuple>

TEST(measures, by_hand)
{
  HGraph *graph = HGraphOf(Instance{3, {{0, 1, 2}}, {40, 60, 0}, {3}});
  const int parts[] = {0, 1, 2}, left[] = {0, 1, 1}, right[] = {1, 0, 0}, one[] = {1, 1, 1};

  EXPECT_EQ(ComputeActualCut__(graph, parts), 3);
  EXPECT_EQ(ComputeActualSOED__(graph, parts), 9);
  EXPECT_EQ(ComputeBalance__(graph, left), 0.4f);
  EXPECT_EQ(ComputeBalance__(graph, right), 0.4f);
  EXPECT_EQ(ComputeBalance__(graph, one), 0.0f);
  graph->ncells = 0;
  EXPECT_TRUE(std::isnan(ComputeBalance__(graph, one)));
  FreeHGraph__(graph);
  EXPECT_EQ(NumOfLargeNets__(3, std::vector<int>{0, 3, 7, 12}.data()), 2);
}

static std::vector<int> Range(int first, int size)
{
  std::vector<int> range(size);
  std::iota(range.begin(), range.end(), first);
  return range;
}

TEST(measures, pruning_keeps_every_cell_and_the_nets_of_at_most_50_pins)
{
  const Nets all = {Range(0, 51), {59, 3}, Range(4, 50), {}, Range(1, 51), {7}};
  const Instance kept = {60, {{59, 3}, Range(4, 50), {}, {7}}, {}, {}};
  HGraph *graph = HGraphOf(Instance{60, all, Range(100, 60), {1, 2, 3, 4, 5, 6}});
  Control ctrl = {};

  graph->nfixed = 2;
  ctrl.maxnetsize = 50;
  HGraph *pruned = PruneHGraph__(&ctrl, graph);
  FreeHGraph__(graph); // the copy shares nothing with it
  EXPECT_EQ(pruned->nfixed, 2);
  EXPECT_EQ(std::vector<int>(pruned->netptr, pruned->netptr + pruned->nnets + 1), kept.NetPtr());
  EXPECT_EQ(std::vector<int>(pruned->netind, pruned->netind + pruned->netptr[4]), kept.NetInd());
  EXPECT_EQ(std::vector<int>(pruned->netwgt, pruned->netwgt + 4), (std::vector<int>{2, 3, 4, 6}));
  EXPECT_EQ(std::vector<int>(pruned->cellwgt, pruned->cellwgt + pruned->ncells), Range(100, 60));
  EXPECT_VALID(CheckIncidence__(pruned));
  FreeHGraph__(pruned);
}

TEST(measures, cap_is_twice_the_average_of_the_cells_that_are_not_heavy)
{
  const std::tuple<int, int, int, int> cases[] = {
      // cells, weight of the last, cap, heavy
      {10, 1, 0, 1},       // 20 / 100 = 0, so all are heavy: 0 / 90
      {1000, 1, 20, 0},    // 2000 / 100
      {1000, 1000, 20, 1}, // 3998 / 100 = 39, then 1998 / 99
      {1000, 20, 20, 0},   // 2038 / 100, which the last cell does not exceed
  };
  Control ctrl = {};

  ctrl.coarsento = 100;
  for (const auto &[n, last, cap, heavy] : cases) {
    std::vector<int> cellwgt(n, 1);
    cellwgt.back() = last;
    EXPECT_EQ(ComputeMaxCellWgt__(&ctrl, n, cellwgt.data()), cap) << last;
    EXPECT_EQ(ctrl.heavycells, heavy) << last;
  }
}
