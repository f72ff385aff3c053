// tests/coarsen/coarsening_test.cpp - the level loop, free and within a partition.
// SPDX-License-Identifier: MIT

#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "support/build.h"

struct coarsening : testing::Test {
  Control ctrl = {};

  coarsening()
  {
    ctrl.maxnetsize = 50;
    ctrl.coarsento = 10;
    ctrl.maxcellwgt = 4;
  }
};

static void FreeLevels(HGraph *graph)
{
  while (graph != nullptr) {
    HGraph *coarser = graph->coarser;
    FreeHGraph__(graph);
    graph = coarser;
  }
}

TEST_F(coarsening, levels_are_linked_and_keep_weights_and_cuts)
{
  for (int seed = 0; seed < 200; seed++) {
    TestRandom random = {static_cast<std::uint64_t>(seed)};
    const Instance instance =
        RandomInstance(&random, 30 + random.Below(200), 60 + random.Below(200), ODD_ALL);
    SCOPED_TRACE(instance.Literal());
    HGraph *graph = HGraphOf(instance);
    const bool restricted = seed % 7 > 4;
    std::vector<int> where(instance.ncells), part;
    for (int &p : where)
      p = random.Below(3);
    if (restricted)
      SetWhere(graph, where);
    ctrl.ctype = restricted ? seed % 2 : 1 + seed % 7;
    const HGraph *coarsest = (restricted ? CCoarsen__ : Coarsen__)(&ctrl, graph);
    ASSERT_NE(coarsest, graph);
    EXPECT_EQ(iasum__(coarsest->nnets, coarsest->netwgt) + coarsest->dropwgt,
              iasum__(graph->nnets, graph->netwgt));
    for (int c = 0; c < coarsest->ncells; c++)
      part.push_back(restricted ? coarsest->where[c] : random.Below(4));
    const int cut = ComputeActualCut__(coarsest, part.data());

    // Down the levels to the finest, and there to the numbers of its caller; islands do not count.
    for (const HGraph *level = coarsest; level != graph; level = level->finer) {
      const HGraph *finer = level->finer;
      ASSERT_EQ(finer->coarser, level);
      EXPECT_EQ(finer->level, level->level - 1);
      EXPECT_GT(finer->ncells + finer->nislands, ctrl.coarsento);
      EXPECT_EQ(finer->where, nullptr);
      std::vector<int> finerpart(finer->ncells + finer->nislands, 0);
      for (int i = 0; i < finer->ncells; i++)
        finerpart[i] = part[finer->cellmap[i]];
      part = finerpart;
    }
    std::vector<int> projected(part);
    for (int i = 0; i < instance.ncells && graph->islandmap != nullptr; i++)
      projected[i] = part[graph->islandmap[i]];
    EXPECT_EQ(cut, CutOf(instance, restricted ? where : projected));
    FreeLevels(graph);
  }
}
