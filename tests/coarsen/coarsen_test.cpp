// tests/coarsen/coarsen_test.cpp - nets that only look identical, and the validators of groups and their contraction.
// SPDX-License-Identifier: MIT

#include "coarsen/match.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

TEST(coarsen, nets_are_merged_by_their_pins_not_by_their_key)
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

TEST(coarsen, validators_name_the_damaged_field)
{
  // Anchor 0; groups 0, 2 1, 3 4, 5; coarse nets {0,1} of net 4 and {2,3} of nets 1 and 3.
  HGraph *g = HGraphOf({{1, 2}, {4, 5}, {3, 4}, {3, 4, 5}, {0, 1}});
  std::vector<float> scores(6, NO_SCORE);
  Ints perm(6), keys(6), order(6), cand(6);
  std::vector<KeyVal> vpairs(6);
  MatchWork work = {scores.data(), perm.data(), vpairs.data(), keys.data(), order.data(), cand.data()};
  Control ctrl = TestControl();
  ctrl.maxcellwgt = 5;
  g->nfixed = 1;
  Grouping groups = Match_Edges__(&ctrl, g, &work);
  HGraph *coarser = CreateCoarseHGraph__(&ctrl, g, &groups);
  Ints netmap = {-1, 1, -1, 1, 0};
  const auto damaged = [&](auto *field, int value, const char *message) {
    ExpectNamed(field, value, message, [&] {
      const char *broken = CheckMatching(&ctrl, g, &groups);
      return broken != nullptr ? broken : CheckContraction(g, coarser, groups.cellmap, netmap.data());
    });
  };
  const char *heavy = "groups: an anchor is not alone, or a group is too heavy";
  const char *span = "netmap: a net was dropped that spans two coarse cells, or kept within one";

  damaged(&groups.mptr[4], 5, "mptr: the groups do not hold every cell");
  damaged(&groups.mptr[2], 1, "mptr: a group is empty");
  damaged(&groups.mind[2], 2, "mind: an entry is no cell or listed twice");
  damaged(&groups.cellmap[5], 2, "cellmap: disagrees with the groups");
  damaged(&g->cellwgt[4], 5, heavy);
  damaged(&g->nfixed, 2, heavy);
  damaged(&coarser->cellwgt[3], 2, "cellwgt: a coarse cell does not weigh what its members weigh");
  damaged(&netmap[0], 0, span);
  damaged(&netmap[1], -1, span);
  damaged(&netmap[1], 0, "netmap: a coarse net has other pins than its fine net");
  damaged(&g->dropwgt, 1, "dropwgt: not the weight of the dropped nets");
  damaged(&coarser->netwgt[1], 1, "netwgt: a coarse net does not weigh what its fine nets weigh");
  damaged(&coarser->incind[0], 1, "incind: a coarse cell's nets are not those that name it");
  QVfree__(&groups.cellmap, &groups.mptr, &groups.mind);
  FreeHGraph__(coarser);
  FreeHGraph__(g);
}
