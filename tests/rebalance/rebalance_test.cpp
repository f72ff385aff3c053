// tests/rebalance/rebalance_test.cpp - bringing parts within their limits: harm of moves, swaps, packing, proofs.
// SPDX-License-Identifier: MIT

#include "rebalance/rebalance.h"
#include "support/build.h"

#include <algorithm>
#include <climits>
#include <numeric>
#include <utility>

using namespace kapris::engine::safe;

typedef std::vector<int> Ints;
typedef std::vector<std::int64_t> Limits;

namespace
{

struct Task {
  Instance instance;
  Limits limits;
  Ints fixed = {}; // empty = all free
  Goal goal = {true, false};
  std::int64_t excess = 0; // after Rebalanced
};

// With the arrays that it points to.
struct Posed {
  Ints netptr, netind;
  Weights ones;
  Limits nothing;
  BalanceProblem problem;
};

} // namespace

static std::int64_t WeightOf(const Task &task, std::size_t i)
{
  return task.instance.cellwgt.empty() ? 1 : task.instance.cellwgt[i];
}

static std::int64_t ExcessOf(const Task &task, const Ints &part)
{
  Limits over(task.limits.size());
  std::int64_t excess = 0;

  for (std::size_t i = 0; i < part.size(); i++)
    over[static_cast<std::size_t>(part[i])] += WeightOf(task, i);
  for (std::size_t p = 0; p < over.size(); p++)
    excess += std::max<std::int64_t>(0, over[p] - task.limits[p]);
  return excess;
}

// Minimums of nothing.
static Posed Pose(const Task &task)
{
  const Instance *instance = &task.instance;
  const std::size_t nparts = task.limits.size(), ncells = static_cast<std::size_t>(instance->ncells);
  Posed posed = {instance->NetPtr(),
                 instance->NetInd(),
                 Weights(std::max(instance->nets.size(), ncells), 1),
                 Limits(nparts),
                 {}};

  posed.problem = {instance->ncells,
                   static_cast<int>(instance->nets.size()),
                   instance->cellwgt.empty() ? posed.ones.data() : instance->cellwgt.data(),
                   instance->netwgt.empty() ? posed.ones.data() : instance->netwgt.data(),
                   posed.netptr.data(),
                   posed.netind.data(),
                   static_cast<int>(nparts),
                   task.limits.data(),
                   posed.nothing.data(),
                   true,
                   task.fixed.empty() ? nullptr : task.fixed.data(),
                   task.goal,
                   nullptr,
                   nullptr};
  return posed;
}

// What must hold for every call is checked here.
static BalanceVerdict Rebalanced(Task *task, Ints *part)
{
  const Ints before = *part;
  const Posed posed = Pose(*task);
  BalanceProblem problem = posed.problem;
  const std::size_t blocks = CurrentLedger()->blocks;

  EXPECT_EQ(TotalExcess(&problem, before.data()), ExcessOf(*task, before));
  for (int steps = 0; steps < 8; steps++) {
    Ints stopped = before;
    int left = steps;
    problem.owner = &left;
    problem.proceed = [](void *owner) { return (*static_cast<int *>(owner))-- > 0; };
    const std::uint64_t serial = CurrentLedger()->serial;
    const BalanceVerdict ended = Rebalance(&problem, stopped.data());
    EXPECT_EQ(ended == INTERRUPTED, left < 0); // asked once too often
    ReleaseLedger(serial);                     // as the end of a stopped call does
    EXPECT_LE(ExcessOf(*task, stopped), ExcessOf(*task, before));
  }
  problem.proceed = nullptr;
  const BalanceVerdict verdict = Rebalance(&problem, part->data());
  EXPECT_EQ(CurrentLedger()->blocks, blocks);
  for (std::size_t i = 0; i < part->size(); i++) {
    if ((*part)[i] < 0 || (*part)[i] >= problem.nparts) {
      ADD_FAILURE() << "cell " << i << " is in part " << (*part)[i];
      return verdict;
    }
    EXPECT_TRUE(task->fixed.empty() || task->fixed[i] < 0 || (*part)[i] == before[i]) << "cell " << i;
  }
  task->excess = ExcessOf(*task, *part);
  EXPECT_LE(task->excess, ExcessOf(*task, before));
  EXPECT_EQ(verdict == BALANCED, task->excess == 0);
  return verdict;
}

// Cells of the given weights on no net, all in part 0 unless they are fixed.
static BalanceVerdict Packed(const Weights &cellwgt, const Limits &limits, const Ints &fixed = {},
                             std::int64_t *excess = nullptr)
{
  Task task = {{static_cast<int>(cellwgt.size()), {}, cellwgt, {}}, limits, fixed};
  Ints part(cellwgt.size(), 0);

  for (std::size_t i = 0; i < fixed.size(); i++)
    part[i] = std::max(0, fixed[i]);
  const BalanceVerdict verdict = Rebalanced(&task, &part);
  if (excess != nullptr)
    *excess = task.excess;
  return verdict;
}

TEST(rebalance, leaves_a_balanced_partition_alone_without_allocating)
{
  Task task = {{4, {{0, 1}, {2, 3}}, {3, 1, 1, 3}, {}}, {4, 4}};
  Ints part = {0, 1, 0, 1}; // both nets cut for no need
  const std::uint64_t serial = CurrentLedger()->serial;

  EXPECT_EQ(Rebalanced(&task, &part), BALANCED);
  EXPECT_EQ(part, Ints({0, 1, 0, 1}));
  EXPECT_EQ(CurrentLedger()->serial, serial);

  Task thousands = {{5000, {}, {}, {}}, Limits(5000, 1)};
  part.resize(5000);
  std::iota(part.begin(), part.end(), 0);
  EXPECT_EQ(Rebalanced(&thousands, &part), BALANCED);
  EXPECT_EQ(CurrentLedger()->serial, serial);
  part[4000] = 3000;
  EXPECT_EQ(Rebalanced(&thousands, &part), BALANCED);
  EXPECT_EQ(part[4000] + part[3000], 7000);
}

TEST(rebalance, shows_what_is_impossible_and_comes_as_close_as_it_can)
{
  std::int64_t excess;

  EXPECT_EQ(Packed({2, 2, 2}, {3, 3}, {}, &excess), IMPOSSIBLE);
  EXPECT_EQ(excess, 1);
  EXPECT_EQ(Packed({5, 1, 1}, {4, 9}, {0, -1, -1}, &excess), IMPOSSIBLE); // 5 is fixed below a limit of 4
  EXPECT_EQ(excess, 1);
  EXPECT_EQ(Packed({3, 3, 3}, {4, 4}, {}, &excess), IMPOSSIBLE); // 9 in 8
  EXPECT_EQ(excess, 2);
  EXPECT_EQ(Packed({9, 1}, {8, 8}, {}, &excess), IMPOSSIBLE);
  EXPECT_EQ(excess, 1);
  // The others are beyond the search. Of odd limits one unit is of no use to even weights.
  Weights even(400, 2);
  std::fill_n(even.begin(), 200, 4);
  EXPECT_EQ(Packed(even, {601, 599}), IMPOSSIBLE);
  // 39 places, all different, for 40 cells of weight 40.
  Weights heavy(41, 40);
  Limits limits(39);
  heavy[0] = 1;
  std::iota(limits.begin(), limits.end(), 40);
  EXPECT_EQ(Packed(heavy, limits), IMPOSSIBLE);
}

static bool HasPartition(const Task &task, Ints *part, std::size_t i)
{
  if (i == part->size())
    return ExcessOf(task, *part) == 0;
  for (int p = 0; p < static_cast<int>(task.limits.size()); p++) {
    if (!task.fixed.empty() && task.fixed[i] >= 0 && task.fixed[i] != p)
      continue;
    (*part)[i] = p;
    if (HasPartition(task, part, i + 1))
      return true;
  }
  return false;
}

static constexpr Goal GOALS[] = {{true, false}, {true, true}, {false, true}};

// Random weights, limits between tight and loose, some cells fixed, a random partition; every other one with weights
// and limits of 60 bits, of which nothing else depends.
static Task RandomTask(TestRandom *random, int ncells, int nparts, int heaviest, Ints *part)
{
  Task task = {RandomInstance(random, ncells, ncells, 0),
               Limits(static_cast<std::size_t>(nparts)),
               {},
               GOALS[random->Below(3)]};
  const bool anyfixed = random->Chance(50);
  int total = 0;

  part->clear();
  for (int i = 0; i < ncells; i++) {
    task.instance.cellwgt.push_back(random->Below(heaviest + 1));
    total += static_cast<int>(task.instance.cellwgt.back());
    part->push_back(random->Below(nparts));
    if (anyfixed)
      task.fixed.push_back(random->Chance(20) ? part->back() : -1);
  }
  std::erase_if(task.instance.nets, [](const Ints &net) { return net.size() < 2; });
  for (std::int64_t &limit : task.limits)
    limit = std::max(0, total / nparts + random->Below(heaviest + 2) - heaviest / 4);
  const std::int64_t unit = random->Chance(50) ? 1 : (std::int64_t{1} << 60) / (total + heaviest + 2);
  for (std::int64_t &weight : task.instance.cellwgt)
    weight *= unit;
  for (std::int64_t &limit : task.limits)
    limit *= unit;
  return task;
}

TEST(rebalance, agrees_with_brute_force_on_small_problems)
{
  TestRandom random = {7};
  int nbalanced = 0, nimpossible = 0;

  for (int round = 0; round < 3000 && !::testing::Test::HasFailure(); round++) {
    Ints part, any;
    Task task = RandomTask(&random, 1 + random.Below(9), 2 + random.Below(3), 1 + random.Below(12), &part);
    any = part;
    const bool possible = HasPartition(task, &any, 0);
    EXPECT_EQ(Rebalanced(&task, &part), possible ? BALANCED : IMPOSSIBLE) << task.instance.Literal();
    nbalanced += possible;
    nimpossible += !possible;
  }
  EXPECT_GT(std::min(nbalanced, nimpossible), 300);
}

TEST(rebalance, moves_what_does_least_harm_under_the_goal)
{
  // One of 0, 1, 2 must go from part 0, to part 2: the cut rises by 0, 1, 3, the connectivity by 5, 0, -1.
  for (int g = 0; g < 3; g++) {
    Task task = {{6, {{0, 3, 4}, {1, 3}, {1, 4, 5}, {2, 3}, {2, 4, 5}}, {}, {5, 1, 1, 3, 4}},
                 {3, 1, 2},
                 {-1, -1, -1, 0, 1, 2},
                 GOALS[g]};
    Ints part = {0, 0, 0, 0, 1, 2}, expected = part;
    expected[static_cast<std::size_t>(g)] = 2;
    EXPECT_EQ(Rebalanced(&task, &part), BALANCED);
    EXPECT_EQ(part, expected) << g;
  }
}

TEST(rebalance, spreads_one_part_that_holds_everything)
{
  Task task = {{20000, {}, {}, {}}, Limits(16, 1880)};
  Ints part(20000, 0);

  for (int i = 0; i < 20000; i++) {
    task.instance.cellwgt.push_back(1 + i % 2); // 30000 together, 1875 for each part
    if (i > 0)
      task.instance.nets.push_back({i - 1, i});
  }
  EXPECT_EQ(Rebalanced(&task, &part), BALANCED);
  EXPECT_LT(CutOf(task.instance, part), 200);

  // Without nets every cell goes to the part with the most room.
  Task free = {{30, {}, {}, {}}, {12, 12, 12}};
  part.assign(30, 0);
  EXPECT_EQ(Rebalanced(&free, &part), BALANCED);
  EXPECT_EQ(std::count(part.begin(), part.end(), 1), 9);
  EXPECT_EQ(std::count(part.begin(), part.end(), 2), 9);
}
