// tests/property/exact_test.cpp - what is known exactly: measures do not change with the form of a hypergraph, no
// partition is below the optimum, planted partitions are found, and refinement never worsens.
// SPDX-License-Identifier: MIT

#include "kapris.hpp"

#include "property/run.h"
#include "support/graph.h"

#include <algorithm>
#include <memory>
#include <numeric>

// ----------------------------------------------------------------------------------------------------------
// Measures of a given partition

namespace
{

struct Measured {
  std::int64_t cut, soed, connectivity;
  double imbalance;
  std::vector<std::int64_t> weights;

  bool operator==(const Measured &) const = default;
};

} // namespace

static kapris::Hypergraph View(const Instance &instance, const std::vector<int> &netptr,
                               const std::vector<int> &netind)
{
  return {instance.ncells, netptr, netind, instance.cellwgt, instance.netwgt};
}

// By the safe interface, which measures a partition whose cells are all fixed; the core's own measures must agree.
static Measured Measure(const Instance &instance, const std::vector<int> &part, int nparts)
{
  const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  kapris::Options options;
  options.runs = 1;
  const kapris::Result result =
      kapris::Partition(View(instance, netptr, netind), {nparts, {}, part}, options);
  HGraph *graph = HGraphOf(instance);

  EXPECT_EQ(result.part, part);
  EXPECT_EQ(ComputeActualCut__(graph, part.data()), result.cut);
  EXPECT_EQ(ComputeActualSOED__(graph, part.data()), result.soed);
  EXPECT_EQ(CutOf(instance, part), result.cut);
  EXPECT_EQ(SoedOf(instance, part), result.soed);
  FreeHGraph__(graph);
  return {result.cut, result.soed, result.connectivity, result.imbalance, result.part_weights};
}

static std::vector<int> Permutation(TestRandom *random, std::size_t n)
{
  std::vector<int> order(n);

  std::iota(order.begin(), order.end(), 0);
  for (std::size_t i = n; i > 1; i--)
    std::swap(order[i - 1], order[static_cast<std::size_t>(random->Below(static_cast<int>(i)))]);
  return order;
}

template <class T>
static std::vector<T> Permuted(const std::vector<T> &list, const std::vector<int> &order)
{
  std::vector<T> permuted;

  for (std::size_t i = 0; i < list.size(); i++)
    permuted.push_back(list[static_cast<std::size_t>(order[i])]);
  return permuted;
}

// Cell i of the new hypergraph is cell order[i] of the old one.
static void RenumberCells(Instance *instance, std::vector<int> *part, const std::vector<int> &order)
{
  std::vector<int> number(order.size());

  for (std::size_t i = 0; i < order.size(); i++)
    number[static_cast<std::size_t>(order[i])] = static_cast<int>(i);
  for (std::vector<int> &net : instance->nets)
    for (int &pin : net)
      pin = number[static_cast<std::size_t>(pin)];
  instance->cellwgt = Permuted(instance->cellwgt, order);
  *part = Permuted(*part, order);
}

TEST(exact, measures_do_not_depend_on_the_form_of_the_hypergraph)
{
  for (std::uint64_t seed = 1; seed <= 60; seed++) {
    TestRandom random = {seed};
    Instance instance = RandomInstance(&random, 5 + random.Below(60), 60, ODD_ALL);
    const int nparts = 2 + random.Below(6);
    std::vector<int> part = RandomParts(&random, instance.ncells, nparts, 0);
    const Measured first = Measure(instance, part, nparts);
    SCOPED_TRACE(seed);

    RenumberCells(&instance, &part, Permutation(&random, part.size()));
    EXPECT_EQ(Measure(instance, part, nparts), first) << "cells";
    const std::vector<int> order = Permutation(&random, instance.nets.size());
    instance.nets = Permuted(instance.nets, order);
    instance.netwgt = Permuted(instance.netwgt, order);
    EXPECT_EQ(Measure(instance, part, nparts), first) << "nets";
    for (std::vector<int> &net : instance.nets)
      net = Permuted(net, Permutation(&random, net.size()));
    EXPECT_EQ(Measure(instance, part, nparts), first) << "pins";

    // A net's weight on two nets, nets of one pin or none, cells without weight and nets.
    for (std::size_t j = 0; j < 20; j++) {
      const int some = random.Below(instance.netwgt[j] + 1);
      instance.netwgt[j] -= some;
      instance.nets.push_back(Nets(instance.nets)[j]);
      instance.netwgt.push_back(some);
    }
    EXPECT_EQ(Measure(instance, part, nparts), first) << "split nets";
    for (int i = 0; i < 20; i++) {
      instance.nets.push_back(i % 4 == 0 ? std::vector<int>() : std::vector<int>(1, i % instance.ncells));
      instance.netwgt.push_back(1000);
    }
    EXPECT_EQ(Measure(instance, part, nparts), first) << "single pins";
    for (int i = 0; i < 20; i++) {
      part.push_back(i % nparts);
      instance.cellwgt.push_back(0);
    }
    instance.ncells += 20;
    EXPECT_EQ(Measure(instance, part, nparts), first) << "islands";
  }
}

// ----------------------------------------------------------------------------------------------------------
// The optimum

namespace
{

struct Optimum {
  long cut = -1, soed = -1, connectivity = -1; // -1: no partition keeps to the limits
};

} // namespace

// Over all partitions of which no part weighs more than limit.
static Optimum OptimumOf(const Instance &instance, int nparts, long limit)
{
  std::vector<int> part(static_cast<std::size_t>(instance.ncells), 0);
  Optimum best;

  for (;;) {
    std::vector<long> weights(static_cast<std::size_t>(nparts), 0);
    for (std::size_t i = 0; i < part.size(); i++)
      weights[static_cast<std::size_t>(part[i])] += instance.cellwgt.empty() ? 1 : instance.cellwgt[i];
    if (*std::max_element(weights.begin(), weights.end()) <= limit) {
      const long cut = CutOf(instance, part), soed = SoedOf(instance, part);
      best.cut = best.cut < 0 ? cut : std::min(best.cut, cut);
      best.soed = best.soed < 0 ? soed : std::min(best.soed, soed);
      best.connectivity = best.connectivity < 0 ? soed - cut : std::min(best.connectivity, soed - cut);
    }
    std::size_t i = 0;
    while (i < part.size() && ++part[i] == nparts)
      part[i++] = 0;
    if (i == part.size())
      return best;
  }
}

TEST(exact, results_are_bounded_by_the_optimum_and_mostly_reach_it)
{
  int ncalls = 0, nbalanced = 0, nfeasible = 0, noptimal = 0;

  for (std::uint64_t seed = 1; seed <= 60; seed++) {
    TestRandom random = {seed};
    const int nparts = 2 + random.Below(2);
    const Instance instance =
        RandomInstance(&random, 3 + random.Below(nparts == 2 ? 8 : 5), 12, random.Below(ODD_ALL + 1));
    const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
    for (const kapris_scheme scheme : {KAPRIS_RECURSIVE, KAPRIS_KWAY})
      for (const kapris_objective objective : {KAPRIS_CUT, KAPRIS_SOED, KAPRIS_CONNECTIVITY}) {
        kapris::Options options;
        options.scheme = scheme;
        options.objective = objective;
        options.imbalance = 0.3;
        options.starts = 3;
        const kapris::Result result =
            kapris::Partition(View(instance, netptr, netind), {nparts, {}, {}}, options);
        const Optimum best = OptimumOf(instance, nparts, result.part_limits[0]);
        ncalls++;
        nfeasible += best.cut >= 0;
        nbalanced += result.balanced;
        if (!result.balanced)
          continue;
        ASSERT_GE(result.cut, best.cut) << seed;
        ASSERT_GE(result.soed, best.soed) << seed;
        ASSERT_GE(result.connectivity, best.connectivity) << seed;
        ASSERT_GE(best.cut, 0) << seed;
        noptimal += objective == KAPRIS_CUT    ? result.cut == best.cut
                    : objective == KAPRIS_SOED ? result.soed == best.soed
                                               : result.connectivity == best.connectivity;
      }
  }
  std::printf("%d calls, %d with a solution, %d found one, %d the optimum\n", ncalls, nfeasible, nbalanced,
              noptimal);
  EXPECT_GT(nfeasible, ncalls / 2);
  EXPECT_GT(nbalanced, nfeasible * 97 / 100);
  EXPECT_GT(noptimal, nbalanced * 3 / 4);
}

// ----------------------------------------------------------------------------------------------------------
// Planted partitions, and refinement

TEST(exact, planted_partitions_are_found)
{
  for (const int nparts : {2, 4, 8})
    for (std::uint64_t seed = 1; seed <= 2; seed++) {
      TestRandom random = {seed};
      const int size = 40, ncells = nparts * size, ncrossing = 2 * nparts;
      Instance instance = {ncells, {}, {}, {}};
      for (int j = 0; j < 6 * ncells; j++) { // inside a part
        const int base = size * random.Below(nparts);
        std::vector<int> net;
        for (int k = 2 + random.Below(3); k > 0; k--)
          net.push_back(base + random.Below(size));
        instance.nets.push_back(net);
      }
      for (int j = 0; j < ncrossing; j++)
        instance.nets.push_back({random.Below(ncells), random.Below(ncells)});
      // Numbers must not give it away.
      std::vector<int> planted;
      for (int i = 0; i < ncells; i++)
        planted.push_back(i / size);
      RenumberCells(&instance, &planted, Permutation(&random, planted.size()));
      const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();

      for (const kapris_scheme scheme : {KAPRIS_RECURSIVE, KAPRIS_KWAY}) {
        kapris::Options options;
        options.scheme = scheme;
        options.runs = 4;
        const kapris::Result result =
            kapris::Partition(View(instance, netptr, netind), {nparts, {}, {}}, options);
        EXPECT_TRUE(result.balanced);
        EXPECT_EQ(result.cut, CutOf(instance, planted)) << nparts << " parts, seed " << seed;
      }
    }
}

// The safe interface promises it for the whole order of results; of the plain one it holds for the cut where nothing
// has to be balanced first and no V-cycle looks at the SOED.
TEST(exact, the_plain_refiners_never_worsen_a_balanced_partition)
{
  int nbetter = 0;

  for (std::uint64_t seed = 1; seed <= 200; seed++) {
    TestRandom random = {seed};
    Call call = {};
    call.entry = seed % 2 == 0 ? REFINE_2WAY : REFINE_KWAY;
    call.nparts = call.entry == REFINE_2WAY ? 2 : 2 + random.Below(5);
    call.UBfactor = 20;
    const int ncells = 12 * (1 + random.Below(40));
    call.instance = RandomInstance(&random, ncells, 2 * ncells, ODD_DUPLICATES | ODD_LARGE | ODD_ISLANDS);
    call.options = {1, 1, 1 + random.Below(5), 1 + (call.entry == REFINE_2WAY ? random.Below(3) : 0), 1, 0, 0,
                    1, 0};
    for (const int i : Permutation(&random, static_cast<std::size_t>(ncells)))
      call.part.push_back(i % call.nparts);
    const long before = CutOf(call.instance, call.part), after = CutOf(call.instance, RunCall(call).part);
    EXPECT_LE(after, before) << Literal(call);
    nbetter += after < before;
  }
  EXPECT_GT(nbetter, 190);
}

// V-cycles of the best trials take back what they did not improve, and sometimes they improve it.
TEST(exact, final_vcycles_never_worsen_a_bisection)
{
  int nbetter = 0;

  for (std::uint64_t seed = 1; seed <= 12; seed++) {
    TestRandom random = {seed};
    Call call = {};
    call.entry = PART_RECURSIVE;
    call.nparts = 2;
    call.UBfactor = 10;
    call.instance = RandomInstance(&random, 1500, 2500, ODD_LARGE);
    call.options = {1, 1, 5, 3, 0, 0, 0, static_cast<int>(seed), 0};
    const int without = RunCall(call).cut;
    call.options[4] = 1;
    const int with = RunCall(call).cut;
    EXPECT_LE(with, without) << Literal(call);
    nbetter += with < without;
  }
  EXPECT_GT(nbetter, 0);
}
