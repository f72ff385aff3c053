// tests/coarsen/islands_test.cpp - cells on no net: set aside and dealt to the parts.
// SPDX-License-Identifier: MIT

#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "support/build.h"

static std::vector<int> List(const int *x, int n)
{
  return std::vector<int>(x, x + n);
}

TEST(islands, follow_the_kept_cells_and_go_to_the_lightest_part)
{
  const Nets nets = {{9, 0}, {1, 2, 4}, {8, 6, 5}}; // not 3, 7
  Control ctrl = {};

  ctrl.nparts = 3;
  for (bool kway : {false, true}) {
    HGraph *graph = HGraphOf(Instance{10, nets, {10, 11, 12, 1, 14, 15, 16, 2, 18, 19}, {1, 2, 3}});
    SetWhere(graph, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    SeparateIslands__(graph);
    EXPECT_EQ(graph->ncells, 8);
    EXPECT_EQ(graph->nislands, 2);
    EXPECT_EQ(List(graph->islandmap, 10), (std::vector<int>{0, 1, 2, 9, 3, 4, 5, 8, 6, 7}));
    EXPECT_EQ(List(graph->netind, 8), (std::vector<int>{7, 0, 1, 2, 3, 6, 5, 4}));
    EXPECT_EQ(List(graph->incptr, 9), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(List(graph->where, 10), (std::vector<int>{0, 1, 2, 4, 5, 6, 8, 9, 7, 3}));
    EXPECT_EQ(List(graph->cellwgt, 10), (std::vector<int>{10, 11, 12, 14, 15, 16, 18, 19, 2, 1}));
    EXPECT_EQ(List(graph->adjwgt, 10), (std::vector<int>{1, 2, 2, 2, 3, 3, 3, 1, 0, 0}));

    // First the old cell 7, of weight 2.
    graph->pwgts[0] = graph->pwgts[1] = 5;
    graph->kpwgts = ismalloc__(3, 5, "test: kpwgts");
    graph->kpwgts[0] = 6;
    if (kway)
      PartitionIslandsKway__(&ctrl, graph);
    else
      PartitionIslands__(&ctrl, graph);
    EXPECT_EQ(graph->where[8], 1); // of equal parts: part 1 of two, else the lowest
    EXPECT_EQ(graph->where[9], kway ? 2 : 0);
    EXPECT_EQ(List(graph->kpwgts, 3), (kway ? std::vector<int>{6, 7, 6} : std::vector<int>{6, 5, 5}));
    EXPECT_EQ(List(graph->pwgts, 2), (kway ? std::vector<int>{5, 5} : std::vector<int>{6, 7}));
    FreeHGraph__(graph);
  }
}
