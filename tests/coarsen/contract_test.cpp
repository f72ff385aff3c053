// tests/coarsen/contract_test.cpp - contraction, merging of identical nets, and anchors of pre-assigned cells.
// SPDX-License-Identifier: MIT

#include "coarsen/match.h"
#include "control/ctrl.h"
#include "support/build.h"

#include <numeric>

template <class T>
static std::vector<T> List(const T *x, int n)
{
  return std::vector<T>(x, x + n);
}

static HGraph *Contracted(const Instance &instance, const std::vector<int> &cellmap, int ngroups)
{
  HGraph *graph = HGraphOf(instance);
  Control ctrl = {};

  graph->dropwgt = 100;
  graph->cellmap = icopy__(graph->ncells, cellmap.data(), imalloc__(graph->ncells, "test: cellmap"));
  graph->mptr = imalloc__(ngroups + 1, "test: mptr");
  graph->mind = imalloc__(graph->ncells, "test: mind");
  ListMembers__(graph->ncells, ngroups, graph->cellmap, graph->mptr, graph->mind);
  CreateCoarseHGraph__(&ctrl, graph, ngroups);
  return graph;
}

static void FreeLevels(HGraph *graph)
{
  FreeHGraph__(graph->coarser);
  FreeHGraph__(graph);
}

TEST(contract, drops_nets_within_a_cell_and_merges_equal_ones)
{
  const Nets nets = {{0, 1}, {2, 5, 3}, {4, 0, 2}, {7, 0, 1, 6}, {5, 3}, {}, {7}, {6, 6, 1}};
  HGraph *graph = Contracted({9, nets, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {1, 2, 4, 3, 5, 6, 10, 7}},
                             {0, 0, 1, 1, 2, 3, 4, 4, 5}, 6);
  const HGraph *coarser = graph->coarser;

  // Keys, 100 x the sum of position x pin + pins: {} 0, {1,3} 702, {0,4} 802, {0,1,2} 803.
  EXPECT_EQ(List(graph->netmap, 8), (std::vector<int>{-1, 1, 3, 2, 1, 0, -1, 2}));
  EXPECT_EQ(List(coarser->netptr, coarser->nnets + 1), (std::vector<int>{0, 0, 2, 4, 7}));
  EXPECT_EQ(List(coarser->netind, 7), (std::vector<int>{1, 3, 0, 4, 0, 1, 2}));
  EXPECT_EQ(List(coarser->netwgt, 4), (std::vector<int>{6, 7, 10, 4}));
  EXPECT_EQ(List(coarser->edgewgt + 1, 3), (std::vector<float>{7, 10, 2}));
  EXPECT_EQ(List(coarser->cellwgt, 6), (std::vector<int>{3, 7, 5, 6, 15, 9}));
  EXPECT_EQ(List(coarser->incptr, 7), (std::vector<int>{0, 2, 4, 5, 6, 7, 7}));
  EXPECT_EQ(List(coarser->incind, 7), (std::vector<int>{3, 2, 1, 3, 3, 1, 2})); // as members first name them
  EXPECT_EQ(List(coarser->adjwgt, 6), (std::vector<int>{14, 11, 4, 7, 10, 0}));
  EXPECT_EQ(coarser->dropwgt, 100 + 1 + 10);
  FreeLevels(graph);
}

// The weights after merging, in the order of the merged nets.
static std::vector<int> Collapsed(const Nets &nets, const std::vector<int> &netwgt)
{
  const Instance instance = {0, nets, {}, netwgt};
  std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  int n, *outptr, *outind, *outwgt;

  CollapseSameHEdges__(netptr.size() - 1, netptr.data(), netind.data(), netwgt.data(), &n, &outptr, &outind,
                       &outwgt);
  const std::vector<int> merged(outwgt, outwgt + n);
  QVfree__(&outptr, &outind, &outwgt);
  return merged;
}

TEST(contract, collapse_compares_neighbours_of_equal_key_until_one_has_another_size)
{
  // {0,4} and {1,3} share the key 100 x (4 + 300) + 2.
  EXPECT_EQ(Collapsed({{}, {}, {4, 0}, {1, 3}, {0, 4}, {9, 5}}, {1, 2, 4, 8, 16, 32}),
            (std::vector<int>{3, 20, 8, 32}));

  // Pins 0..101 at positions 1..102: 100 x (5151 + 525300) + 102 = 53045202 = 100 x (530152 + 300) + 2.
  std::vector<int> large(102);
  const std::vector<int> small = {530151, 1};
  std::iota(large.begin(), large.end(), 0);
  EXPECT_EQ(Collapsed({small, large, small}, {1, 2, 4}), (std::vector<int>{1, 2, 4}));
  EXPECT_EQ(Collapsed({large, small, small}, {1, 2, 4}), (std::vector<int>{1, 6}));
}
