// tests/drivers/partition_test.cpp - the drivers find the optimum where it is obvious, and share a hypergraph.
// SPDX-License-Identifier: MIT

#include "base/random.h"
#include "coarsen/coarsen.h"
#include "drivers/drivers.h"
#include "multilevel/uncoarsen.h"
#include "refine/twoway/twoway.h"
#include "support/graph.h"

#include <set>
#include <thread>

typedef std::vector<int> Ints;

// Every pair of cells of a clique is a net, and a ring of nets joins the first cell of each with the last of the one
// before. With two cliques one net joins them.
static Instance Cliques(const Nets &cliques)
{
  Instance instance = {0, {}, {}, {}};

  for (std::size_t k = 0; k < cliques.size(); k++) {
    const Ints &cells = cliques[k];
    for (std::size_t i = 0; i < cells.size(); i++)
      for (std::size_t j = 0; j < i; j++)
        instance.nets.push_back({cells[j], cells[i]});
    instance.ncells += static_cast<int>(cells.size());
    if (cliques.size() > 2 || k == 1)
      instance.nets.push_back({cliques[(k + cliques.size() - 1) % cliques.size()].back(), cells[0]});
  }
  instance.cellwgt = Units(Weights(static_cast<std::size_t>(instance.ncells), 1));
  instance.netwgt = Units(Weights(instance.nets.size(), 1));
  return instance;
}

// Cliques of the given sizes, of cells in their order.
static Nets InOrder(const Ints &sizes)
{
  Nets cliques;
  int n = 0;

  for (int size : sizes) {
    cliques.push_back({});
    while (size-- > 0)
      cliques.back().push_back(n++);
  }
  return cliques;
}

// A hypergraph as a driver takes it: it builds the incidence.
static HGraph *BareGraph(const Instance &instance)
{
  HGraph *graph = HGraphOf(instance);

  QVfree__(&graph->incptr, &graph->incind, &graph->adjwgt, &graph->edgewgt);
  return graph;
}

TEST(initpart, finds_two_cliques_within_the_bounds)
{
  const struct {
    Nets cliques;
    int nfixed;
    bool inorder;
    float ubfactor;
    std::int64_t cut;
    std::set<std::string> outcomes; // empty = any
  } rows[] = {
      {{{0, 1, 2, 3}, {4, 5, 6, 7}}, 0, false, 0.0f, 1, {"00001111", "11110000"}},
      // Six cells and two: only where a side may have two. Else two of the six follow, with a cut of 2 x 4 nets.
      {{{0, 1, 2, 3, 4, 5}, {6, 7}}, 0, false, 0.25f, 1, {"00000011", "11111100"}},
      {{{0, 1, 2, 3, 4, 5}, {6, 7}}, 0, false, 0.0f, 8, {}},
      // Anchors 0 and 1, each in one of the cliques, in the order of their parts or in any.
      {{{0, 2, 3, 4}, {1, 5, 6, 7}}, 2, true, 0.0f, 1, {"01000111"}},
      {{{0, 2, 3, 4}, {1, 5, 6, 7}}, 2, false, 0.0f, 1, {"01000111", "10111000"}},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    std::set<std::string> outcomes;
    for (int seed = 1; seed <= 20; seed++) {
      Control ctrl = TestControl();
      TestLevel level(HGraphOf(Cliques(row.cliques)));
      level.owned->nfixed = row.nfixed;
      ctrl.bounds.ubfactor = row.ubfactor;
      ctrl.bounds.nanchors0 = row.nfixed / 2;
      ctrl.bounds.inorder = row.inorder;
      InitRandom__(seed);
      InitPartition__(&ctrl, &level);
      EXPECT_EQ(level.part.mincut, row.cut * UNIT);
      EXPECT_EQ(ComputeActualCut__(level.graph, level.part.where), row.cut * UNIT);
      EXPECT_GE(ComputeBalance__(level.graph, level.part.where), 0.5f - row.ubfactor);
      outcomes.insert(level.Digits());
    }
    if (!row.outcomes.empty()) {
      EXPECT_EQ(outcomes, row.outcomes);
    }
  }
}

TEST(drivers, find_a_part_for_each_clique_of_a_ring)
{
  const Ints three = {4, 4, 4}, five = {4, 4, 4, 4, 4}, mixed = {4, 8, 4};
  const struct {
    Ints sizes;
    bool direct, polished;
    KwayObjective objective;
    std::vector<double> shares; // and limits with one cell to spare; empty = equal parts
    Ints fixed;                 // parts of the first cells of the cliques
    Ints parts;                 // of the cliques; empty = any
  } rows[] = {
      {three, false, false, MINIMISE_CUT, {}, {}, {}},
      {three, false, true, MINIMISE_CUT, {}, {}, {}},
      {three, true, false, MINIMISE_CUT, {}, {}, {}},
      {three, true, false, MINIMISE_SOED, {}, {}, {}},
      {five, false, false, MINIMISE_CUT, {}, {}, {}},
      {five, true, false, MINIMISE_SOED, {}, {}, {}},
      {mixed, false, true, MINIMISE_CUT, {0.25, 0.25, 0.5}, {}, {}},
      {three, false, false, MINIMISE_CUT, {}, {2, 0, 1}, {2, 0, 1}},
      {three, true, false, MINIMISE_CUT, {}, {2, 0, 1}, {2, 0, 1}},
      {mixed, false, false, MINIMISE_CUT, {0.25, 0.5, 0.25}, {2, 1, 0}, {2, 1, 0}},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    const int nparts = static_cast<int>(row.sizes.size());
    const Nets cliques = InOrder(row.sizes);
    HGraph *graph = BareGraph(Cliques(cliques));
    Control ctrl = TestControl();
    std::vector<Weight> limits;
    Ints part(static_cast<std::size_t>(graph->ncells), -1);

    ctrl.nparts = nparts;
    ctrl.nruns = 4;
    ctrl.seed = 1;
    ctrl.objective = row.objective;
    ctrl.kwayrefine = row.polished;
    ctrl.bounds.ubfactor = row.direct ? 1.25f : 0.02f;
    ctrl.coarsento = row.direct ? graph->ncells - 1 : 100;
    ctrl.bounds.total = iasum__(graph->ncells, graph->cellwgt);
    if (!row.shares.empty()) {
      for (double share : row.shares)
        limits.push_back(static_cast<Weight>((share * graph->ncells + 1) * UNIT));
      ctrl.bounds.shares = row.shares.data();
      ctrl.bounds.limits = limits.data();
    }
    ctrl.fixed = !row.fixed.empty();
    for (std::size_t k = 0; k < row.fixed.size(); k++)
      part[static_cast<std::size_t>(cliques[k][0])] = row.fixed[k];

    // The nets of the ring are cut, each between two parts.
    const std::int64_t value = row.objective == MINIMISE_SOED ? 2 * nparts : nparts;
    EXPECT_EQ((row.direct ? MultilevelKwayPartition__ : MultilevelPartition__)(&ctrl, graph, part.data()),
              value * UNIT);
    EXPECT_EQ(ComputeActualCut__(graph, part.data()), nparts * UNIT);
    std::set<int> used;
    for (std::size_t k = 0; k < cliques.size(); k++) {
      const int p = part[static_cast<std::size_t>(cliques[k][0])];
      for (int cell : cliques[k])
        EXPECT_EQ(part[static_cast<std::size_t>(cell)], p) << cell;
      if (!row.parts.empty()) {
        EXPECT_EQ(p, row.parts[k]);
      } else if (!row.shares.empty()) {
        EXPECT_EQ(row.shares[static_cast<std::size_t>(p)] * graph->ncells,
                  static_cast<double>(cliques[k].size()));
      }
      used.insert(p);
    }
    EXPECT_EQ(static_cast<int>(used.size()), nparts);
    FreeHGraph__(graph);
  }
}

// A trial and its V-cycles; they work on nothing of the hypergraph that others do not see.
static std::string RunTrial(const HGraph *graph, TwoWayScheme scheme, int seed)
{
  Control ctrl = TestControl();
  Level level = OpenLevel(graph);
  std::string digits;

  ctrl.bounds.ubfactor = 0.05f;
  ComputeMaxCellWgt__(&ctrl, graph->ncells, graph->cellwgt);
  InitRandom__(seed);
  Level *coarsest = Coarsen__(&ctrl, &level);
  InitPartition__(&ctrl, coarsest);
  Uncoarsen(&ctrl, TwoWayRefiner(scheme), &level, coarsest);
  CloseCycle(&level);
  RunVCycles(&ctrl, TwoWayRefiner(scheme), &level, 3);
  for (int i = 0; i < graph->ncells; i++)
    digits += static_cast<char>('0' + level.part.where[i]);
  CloseLevel(&level);
  return digits;
}

TEST(drivers, trials_at_once_on_one_hypergraph_give_what_they_give_alone)
{
  TestRandom random = {3};
  HGraph *graph = HGraphOf(RandomInstance(&random, 3000, 3500, ODD_ISLANDS | ODD_DUPLICATES | ODD_WEIGHTS));
  const std::string before = BytesOf(graph);

  for (TwoWayScheme scheme : {REFINE_FM, REFINE_ONE_WAY, REFINE_EARLY_EXIT}) {
    const std::string alone[2] = {RunTrial(graph, scheme, 1), RunTrial(graph, scheme, 2)};
    std::string together[2];
    std::thread other([&] {
      together[1] = RunTrial(graph, scheme, 2);
      EXPECT_EQ(CurrentLedger()->blocks, 0u); // of this thread
    });
    together[0] = RunTrial(graph, scheme, 1);
    other.join();
    EXPECT_NE(alone[0], alone[1]); // else they could have exchanged everything
    EXPECT_EQ(together[0], alone[0]);
    EXPECT_EQ(together[1], alone[1]);
    EXPECT_EQ(BytesOf(graph), before);
  }
  FreeHGraph__(graph);
}
