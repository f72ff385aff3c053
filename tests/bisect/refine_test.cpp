// tests/bisect/refine_test.cpp - the first bisection, uncoarsening, V-cycles, and the split of a bisection.
// SPDX-License-Identifier: MIT

#include "bisect/bisect.h"
#include "coarsen/coarsen.h"
#include "control/ctrl.h"
#include "recursive/recursive.h"
#include "support/build.h"

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>

namespace
{

typedef std::vector<int> Ints;

struct refine : testing::Test {
  Control ctrl = {};
  std::string text; // printed by the last Print

  refine()
  {
    ctrl.coarsento = 4;
    ctrl.ctype = 5;
    ctrl.maxnetsize = 50;
    ctrl.maxcellwgt = 1000;
    ctrl.ubfactor = 0.1f;
    ctrl.part0frac = 0.5f;
  }
  void Print(const std::function<void()> &run)
  {
    testing::internal::CaptureStdout();
    run();
    text = testing::internal::GetCapturedStdout();
  }

  // Lines of text that contain the pattern.
  long Count(const char *pattern) const
  {
    const testing::Matcher<std::string> matcher = testing::ContainsRegex(pattern);
    std::istringstream lines(text);
    long n = 0;
    for (std::string line; std::getline(lines, line);)
      n += matcher.Matches(line);
    return n;
  }

  // Nets 0-1, 1-2, ...
  static Instance Path(int ncells)
  {
    Instance path = {ncells, {}, {}, {}};
    for (int i = 1; i < ncells; i++)
      path.nets.push_back({i - 1, i});
    return path;
  }

  // Bisects a path over several levels; returns how many of them are refined.
  int BisectPath()
  {
    HGraph *graph = HGraphOf(Path(128)), *coarsest = Coarsen__(&ctrl, graph);
    const int nlevels = coarsest->level;
    InitPartition__(&ctrl, coarsest);
    Print([&] { Refine__(&ctrl, graph, coarsest); });
    EXPECT_EQ(graph->coarser, nullptr);
    EXPECT_EQ(graph->mincut, CutOf(Path(128), Where(graph)));
    FreeHGraph__(graph);
    return nlevels;
  }
};

} // namespace

TEST_F(refine, the_first_bisection_deals_the_anchors_and_keeps_the_best_of_its_trials)
{
  const int dbglvl = ctrl.dbglvl = DBG_INITPART | DBG_PASSES | DBG_MOVES; // the passes are not traced

  for (ctrl.kwayrefine = 0; ctrl.kwayrefine < 2; ctrl.kwayrefine++) {
    HGraph *graph = HGraphOf(Path(9));
    int wgt0, wgt1, cut, best = 9;
    graph->nfixed = 4;
    Print([&] { InitPartition__(&ctrl, graph); });
    for (std::istringstream trials(text); trials >> wgt0 >> wgt1 >> cut;)
      best = std::min(best, cut);
    EXPECT_EQ(Count("^[0-9 ]{5} [0-9 ]{5} [0-9 ]{5}$"), ctrl.kwayrefine ? 20 : 10);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), ctrl.kwayrefine ? 21 : 11);
    EXPECT_EQ(Count(("^Bestcut Icut:     " + std::to_string(best) + "$").c_str()), 1);
    EXPECT_EQ(graph->mincut, best);
    EXPECT_EQ(CutOf(Path(9), Where(graph)), best);
    EXPECT_EQ(std::count(graph->where, graph->where + 4, 0), 2);
    EXPECT_EQ(ctrl.dbglvl, dbglvl);
    FreeHGraph__(graph);
  }
  HGraph *empty = HGraphOf(Path(0));
  empty->mincut = -5;
  Print([&] { InitPartition__(&ctrl, empty); });
  EXPECT_EQ(text, "");
  EXPECT_EQ(empty->mincut, -5);
  FreeHGraph__(empty);
}

TEST_F(refine, one_level_alone_keeps_its_state_and_two_such_cycles_are_the_last_and_restore_the_options)
{
  HGraph *graph = HGraphOf(Path(4));

  SetWhere(graph, {0, 1, 0, 1});
  graph->mincut = 90;
  ctrl.dbglvl = DBG_LONG;
  Print([&] { Refine__(&ctrl, graph, graph); });
  EXPECT_EQ(Where(graph), Ints({0, 1, 0, 1}));
  Print([&] { EXPECT_EQ(VCycleRefinement__(&ctrl, graph, 0), 90); });
  EXPECT_EQ(text, "          [(min = 90)]\n");
  Print([&] { EXPECT_EQ(VCycleRefinement__(&ctrl, graph, 10), 90); });
  EXPECT_EQ(text, "          [90 90 (min = 90)]\n");
  EXPECT_EQ(ctrl.coarsento, 4);
  EXPECT_EQ(ctrl.ctype, 5);
  FreeHGraph__(graph);
}

TEST_F(refine, a_split_keeps_whole_nets_and_with_reconst_the_pieces_of_two_pins_and_more)
{
  // The sides are cells 0 1 4 and cells 2 3 5.
  const Nets nets = {{1, 0}, {0, 1, 2, 3}, {0, 2}, {5}, {}, {3, 0, 5}, {4, 1}};
  const Instance instance = {6, nets, {1, 2, 3, 4, 5, 6}, {2, 3, 9, 7, 9, 8, 4}};
  const Ints where = {0, 0, 1, 1, 0, 1};
  typedef std::map<Ints, int> WeightedNets;
  const WeightedNets kept[2][2] = {{{{{0, 1}, 2}, {{1, 2}, 4}}, {{{2}, 7}}},
                                   {{{{0, 1}, 5}, {{1, 2}, 4}}, {{{2}, 7}, {{0, 1}, 3}, {{1, 2}, 8}}}};

  for (ctrl.reconst = 0; ctrl.reconst < 2; ctrl.reconst++) {
    HGraph *graph = HGraphOf(instance), *subs[2] = {CreateHGraph__(), CreateHGraph__()};
    Ints label = {10, 11, 12, 13, 14, 15};
    graph->label = label.data();
    graph->nfixed = 4;
    SplitGraphPart__(&ctrl, graph, where.data(), subs[0], subs[1]);
    for (int s = 0; s < 2; s++) {
      WeightedNets found;
      for (int j = 0; j < subs[s]->nnets; j++) {
        Ints pins(subs[s]->netind + subs[s]->netptr[j], subs[s]->netind + subs[s]->netptr[j + 1]);
        std::sort(pins.begin(), pins.end());
        EXPECT_TRUE(found.emplace(pins, subs[s]->netwgt[j]).second); // merged
      }
      EXPECT_EQ(found, kept[ctrl.reconst][s]);
      EXPECT_VALID(CheckHGraph__(subs[s]));
      EXPECT_EQ(Ints(subs[s]->label, subs[s]->label + 3), s == 0 ? Ints({10, 11, 14}) : Ints({12, 13, 15}));
      EXPECT_EQ(Ints(subs[s]->cellwgt, subs[s]->cellwgt + 3), s == 0 ? Ints({1, 2, 5}) : Ints({3, 4, 6}));
      EXPECT_EQ(subs[s]->nfixed, 2);
      EXPECT_EQ(subs[s]->ncells, 3);
      QVfree__(&subs[s]->label);
      FreeHGraph__(subs[s]);
    }
    FreeHGraph__(graph);
  }
}
