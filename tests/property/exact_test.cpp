// tests/property/exact_test.cpp - what is known exactly: no partition is below the optimum, planted partitions are
// found, and refinement never worsens.
// SPDX-License-Identifier: MIT

#include "kapris.hpp"

#include "property/run.h"

#include <algorithm>
#include <numeric>

static kapris::Hypergraph View(const Instance &instance, const std::vector<int> &netptr,
                               const std::vector<int> &netind)
{
  return {instance.ncells, netptr, netind, instance.cellwgt, instance.netwgt};
}

static std::vector<int> Permutation(TestRandom *random, std::size_t n)
{
  std::vector<int> order(n);

  std::iota(order.begin(), order.end(), 0);
  for (std::size_t i = n; i > 1; i--)
    std::swap(order[i - 1], order[static_cast<std::size_t>(random->Below(static_cast<int>(i)))]);
  return order;
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
      std::vector<int> planted(static_cast<std::size_t>(ncells));
      const std::vector<int> number = Permutation(&random, planted.size());
      for (std::size_t i = 0; i < planted.size(); i++)
        planted[static_cast<std::size_t>(number[i])] = static_cast<int>(i) / size;
      for (std::vector<int> &net : instance.nets)
        for (int &pin : net)
          pin = number[static_cast<std::size_t>(pin)];
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
