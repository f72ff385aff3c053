// tests/coarsen/islands_test.cpp - cells on no net are set aside behind the others, and come back.
// SPDX-License-Identifier: MIT

#include "coarsen/coarsen.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

namespace
{

// Cells 1 3 5 on nets, 0 2 4 6 on none; those that are set aside go behind, the lowest number last:
//   nets {1,3} {3,5,1} {5,1}
struct islands : testing::Test {
  HGraph *graph = HGraphOf(
      Instance{7, {{1, 3}, {3, 5, 1}, {5, 1}}, Units({10, 11, 12, 13, 14, 15, 16}), Units({1, 2, 3})});
  std::string before;

  ~islands() override
  {
    FreeHGraph__(graph);
  }

  // The digits are the numbers of the cells, to see where each of them goes.
  void Start(int nfixed)
  {
    graph->nfixed = nfixed;
    before = BytesOf(graph);
  }
};

} // namespace

TEST_F(islands, of_a_finest_level_leave_its_hypergraph_as_it_is)
{
  const struct {
    int nfixed;
    Ints order; // the cells by their new numbers
    Nets nets;
    Ints incptr;
  } rows[] = {
      {0, {1, 3, 5, 6, 4, 2, 0}, {{0, 1}, {1, 2, 0}, {2, 0}}, {0, 3, 5, 7}},
      // Anchors stay first, though cells 0 and 2 are on no net.
      {3, {0, 1, 2, 3, 5, 6, 4}, {{1, 3}, {3, 4, 1}, {4, 1}}, {0, 0, 3, 3, 5, 7}},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(row.nfixed);
    const int nkept = static_cast<int>(row.incptr.size()) - 1;
    Start(row.nfixed);
    Level level = OpenLevel(graph);
    level.part.where = CopyOf<int>(Ints{0, 1, 2, 3, 4, 5, 6});
    SeparateIslands__(&level);

    EXPECT_EQ(BytesOf(graph), before);
    EXPECT_EQ(level.graph, level.own);
    ASSERT_NE(level.graph, graph);
    EXPECT_EQ(level.outer, graph);
    EXPECT_EQ(level.graph->ncells, nkept);
    EXPECT_EQ(level.graph->nislands, 7 - nkept);
    EXPECT_EQ(ListOf(7, level.part.where), row.order);
    EXPECT_EQ(NetsOf(level.graph), row.nets);
    EXPECT_EQ(ListOf(nkept + 1, level.graph->incptr), row.incptr);
    EXPECT_VALID(CheckIncidence(level.graph));
    for (int i = 0; i < 7; i++) {
      const int old = row.order[static_cast<std::size_t>(i)];
      EXPECT_EQ(level.islandmap[old], i);
      EXPECT_EQ(level.graph->cellwgt[i], graph->cellwgt[old]);
      EXPECT_EQ(level.graph->adjwgt[i], graph->adjwgt[old]);
      level.part.where[i] = 7 - old;
    }

    CombineIslands__(&level);
    EXPECT_EQ(ListOf(7, level.part.where), (Ints{7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(level.graph, graph);
    EXPECT_EQ(level.own, nullptr);
    EXPECT_EQ(level.islandmap, nullptr);
    EXPECT_EQ(BytesOf(graph), before);
    CloseLevel(&level);
  }
}

TEST_F(islands, of_a_coarser_level_are_still_reached_by_its_finer_one)
{
  for (bool partitioned : {false, true}) {
    TestLevel fine(HGraphOf(Nets{{0, 8}}));
    const Ints cellmap = {3, 0, 6, 2, 1, 5, 4, 0, 3};
    Start(1);
    Level *coarse = fine.coarser =
        CreateLevel(&fine, CopyHGraph(7, 3, graph->cellwgt, graph->netptr, graph->netind, graph->netwgt));
    CreateIncidentHGraph__(coarse->own);
    coarse->own->nfixed = 1;
    fine.cellmap = CopyOf<Cell>(cellmap);
    if (partitioned)
      coarse->part.where = CopyOf<int>(Ints{0, 1, 2, 3, 4, 5, 6});
    SeparateIslands__(coarse);

    const Ints order = {0, 1, 3, 5, 6, 4, 2};
    EXPECT_EQ(coarse->graph, coarse->own); // renumbered itself
    EXPECT_EQ(coarse->islandmap, nullptr);
    EXPECT_EQ(coarse->graph->nislands, 3);
    EXPECT_EQ(NetsOf(coarse->graph), (Nets{{1, 2}, {2, 3, 1}, {3, 1}}));
    EXPECT_VALID(CheckIncidence(coarse->graph));
    for (std::size_t i = 0; i < cellmap.size(); i++) {
      EXPECT_EQ(order[static_cast<std::size_t>(fine.cellmap[i])], cellmap[i]);
      EXPECT_EQ(coarse->graph->cellwgt[fine.cellmap[i]], graph->cellwgt[cellmap[i]]);
    }
    if (partitioned) {
      EXPECT_EQ(ListOf(7, coarse->part.where), order);
    }
    CombineIslands__(coarse); // which is for the finest level
    EXPECT_EQ(coarse->graph->nislands, 3);
    FreeLevel(coarse);
  }
}

TEST_F(islands, without_any_a_level_stays_as_it_is)
{
  HGraph *full = HGraphOf(Nets{{0, 1}, {1, 2}, {4, 3}});
  Level level = OpenLevel(full);

  SeparateIslands__(&level);
  EXPECT_EQ(level.graph, full);
  EXPECT_EQ(level.own, nullptr);
  EXPECT_EQ(level.islandmap, nullptr);
  FreeHGraph__(full);
}
