// tests/coarsen/matching_test.cpp - partner searches, and the validators of what the matching schemes make.
// SPDX-License-Identifier: MIT

#include "coarsen/match.h"
#include "support/graph.h"

#include <tuple>

struct matching : testing::Test {
  Control ctrl = TestControl();
  std::vector<int> perm = std::vector<int>(12001), keys = perm, order = perm, cand = perm;
  std::vector<float> scores = std::vector<float>(12001, NO_SCORE);
  std::vector<KeyVal> vpairs = std::vector<KeyVal>(12001);
  MatchWork work = {scores.data(), perm.data(), vpairs.data(), keys.data(), order.data(), cand.data()};

  matching()
  {
    ctrl.maxcellwgt = 5;
  }

  ~matching() override
  {
    EXPECT_EQ(scores, std::vector<float>(12001, NO_SCORE)); // every search leaves them as they were
  }
};

typedef std::vector<int> Ints;

TEST_F(matching, searches_take_the_strongest_partner_and_break_ties_each_in_its_way)
{
  // Cell weights and matching, weights of the groups behind that of no group, net weights; then the partner
  // of cell 0 as a pair and as a star.
  const std::tuple<Weights, Ints, std::vector<Weight>, Weights, int, int> cases[] = {
      {{2, 2, 2, 1, 1}, {-1, -1, -1, -1, -1}, {0}, {1, 1, 1, 1}, 4, 1}, // lightest, first found; first found
      {{2, 2, 2, 1, 1}, {-1, -1, -1, -1, -1}, {0}, {1, 1, 1, 2}, 3, 3}, // strongest
      {{2, 3, 1, 4, 1}, {-1, -1, -1, -1, -1}, {0}, {2, 1, 1, 9}, 1, 1}, // 2 + 3 is the cap, 2 + 4 above it
      {{2, 4, 4, 4, 4}, {-1, -1, -1, -1, -1}, {0}, {1, 1, 1, 1}, -1, -1},
      {{1, 1, 1, 1, 1}, {-1, 0, -1, 1, -1}, {0, 2, 2}, {1, 1, 1, 1}, 4, 4}, // the first unmatched
      {{1, 1, 1, 1, 1}, {-1, 0, 0, 1, 1}, {0, 2, 2}, {1, 1, 1, 1}, -1, 3},  // the last matched
      {{1, 1, 1, 1, 1}, {-1, 0, 0, 1, 1}, {0, 4, 5}, {1, 1, 1, 9}, -1, 2},  // 1 + 4 is the cap, group 1 full
      {{1, 1, 1, 1, 1}, {-1, 0, 0, 0, 1}, {0, 5, 1}, {1, 1, 1, 1}, -1, 4},  // a group of one
  };

  for (const auto &[cellwgt, cellmap, wgts, netwgt, pair, star] : cases) {
    HGraph *graph = HGraphOf(Instance{5, {{0, 1}, {4, 0}, {0, 2}, {3, 0}}, cellwgt, netwgt});
    const MatchView view = {graph, cellmap.data(), nullptr};
    EXPECT_EQ(FindCell__(&ctrl, &view, &work, 0), pair) << testing::PrintToString(cellmap);
    EXPECT_EQ(FindCellStar__(&ctrl, &view, &work, wgts.data(), 0), star) << testing::PrintToString(cellmap);
    FreeHGraph__(graph);
  }
}

TEST_F(matching, validators_name_the_damaged_field)
{
  // Anchor 0; groups 0, 2 1, 3 4, 5; coarse nets {0,1} of net 4 and {2,3} of nets 1 and 3.
  HGraph *g = HGraphOf({{1, 2}, {4, 5}, {3, 4}, {3, 4, 5}, {0, 1}});
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
