// tests/multilevel/trials_test.cpp - which trials get V-cycles, and which partitions are kept.
// SPDX-License-Identifier: MIT

#include "multilevel/trials.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

TEST(trials, a_policy_chooses_those_that_get_cycles_at_once)
{
  const struct {
    CyclePolicy policy;
    std::int64_t best, value;
    bool improved, wanted;
  } rows[] = {
      {CYCLE_NONE, 100, 50, true, false},
      {CYCLE_BEST, 100, 50, true, false}, // after the last trial
      // The best so far, ties counted, or the best on the hypergraph without large nets.
      {CYCLE_IMPROVING, 100, 99, false, true},
      {CYCLE_IMPROVING, 100, 100, false, true},
      {CYCLE_IMPROVING, 100, 101, false, false},
      {CYCLE_IMPROVING, 100, 101, true, true},
      // Less than 1.2 times the best, or less than 20 away from it.
      {CYCLE_CLOSE, 1000, 1199, false, true},
      {CYCLE_CLOSE, 1000, 1200, true, false},
      {CYCLE_CLOSE, 10, 29, false, true},
      {CYCLE_CLOSE, 10, 30, true, false},
      {CYCLE_CLOSE, 0, 19, false, true},
      {CYCLE_CLOSE, 1000, 1, false, true},
      {CYCLE_CLOSE, 1000 * UNIT, 1199 * UNIT, false, true},
      {CYCLE_CLOSE, 1000 * UNIT, 1201 * UNIT, true, false},
  };

  for (const auto &row : rows) {
    Control ctrl = TestControl();
    Trials trials = {};
    ctrl.vcycle = row.policy;
    trials.best = static_cast<Weight>(row.best);
    EXPECT_EQ(WantsVCycle(&ctrl, &trials, static_cast<Weight>(row.value), row.improved), row.wanted)
        << &row - rows;
  }
}

TEST(trials, the_earliest_of_equals_is_the_best_and_the_worst_kept_one_gives_way)
{
  // The partition of trial t holds 10 t.
  const struct {
    CyclePolicy policy;
    int nruns, nkept;   // slots that are asked for
    std::int64_t bound; // of the values
    Weights values;
    std::string taken; // by each trial: whether it is the best
    Ints trials;       // in the slots, in the end
    Weights kept;
  } rows[] = {
      {CYCLE_BEST, 5, 2, 100, {7, 5, 9, 5, 4}, "11001", {4, 1}, {4, 5}}, // 3 had taken the place of 0
      {CYCLE_BEST, 5, 3, 100, {7, 5, 7, 7, 8}, "11000", {0, 1, 2}, {7, 5, 7}},
      {CYCLE_BEST, 2, 3, 100, {6, 6}, "10", {0, 1}, {6, 6}}, // no more slots than trials
      {CYCLE_IMPROVING, 3, 3, 100, {6, 7, 5}, "101", {}, {}},
      {CYCLE_NONE, 2, 3, 100, {6, 7}, "10", {}, {}},
      // A value above the bound: the first trial counts all the same, but its slot stays empty.
      {CYCLE_BEST, 2, 2, 8, {9, 9}, "10", {-1, -1}, {8, 8}},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    Control ctrl = TestControl();
    Trials trials;
    int part[2] = {-1, -1}, best = -1;
    std::string taken;
    std::int64_t sum = 0;
    ctrl.vcycle = row.policy;
    ctrl.nruns = row.nruns;
    StartTrials(&ctrl, &trials, 2, static_cast<Weight>(row.bound * UNIT), row.nkept);
    for (int t = 0; t < row.nruns; t++) {
      const int where[] = {10 * t, 10 * t + 1};
      const std::int64_t value = row.values[static_cast<std::size_t>(t)] * UNIT;
      taken += NoteTrial(&trials, t, static_cast<Weight>(value), where, part) ? '1' : '0';
      best = taken.back() == '1' ? t : best;
      EXPECT_EQ(part[0], 10 * best);
      EXPECT_EQ(part[1], 10 * best + 1);
      EXPECT_EQ(trials.best, row.values[static_cast<std::size_t>(best)] * UNIT);
      sum += value;
    }
    EXPECT_EQ(trials.sum, sum);
    EXPECT_EQ(taken, row.taken);
    EXPECT_EQ(ListOf(trials.nkept, trials.trials), row.trials);
    EXPECT_EQ(WeightsOf(trials.nkept, trials.values), Units(row.kept));
    for (int i = 0; i < trials.nkept && trials.trials[i] != -1; i++)
      EXPECT_EQ(ListOf(2, trials.parts[i]), (Ints{10 * trials.trials[i], 10 * trials.trials[i] + 1}));

    // What V-cycles come to replaces the best partition only if it is better.
    const int cycled[] = {98, 99};
    EXPECT_FALSE(NoteCycled(&trials, trials.best, cycled, part));
    EXPECT_EQ(part[0], 10 * best);
    EXPECT_TRUE(NoteCycled(&trials, trials.best - 1, cycled, part));
    EXPECT_EQ(trials.best, row.values[static_cast<std::size_t>(best)] * UNIT - 1);
    EXPECT_EQ(ListOf(2, part), (Ints{98, 99}));
    FreeTrials(&trials);
  }
}

TEST(trials, only_a_smaller_value_is_the_best_without_large_nets)
{
  const Control ctrl = TestControl();
  Trials trials;
  std::string best;

  StartTrials(&ctrl, &trials, 2, 9, 0);
  for (Weight value : {9, 8, 8, 7, 8})
    best += NotePrunedValue(&trials, value) ? '1' : '0';
  EXPECT_EQ(best, "01010");
  EXPECT_EQ(trials.bestpruned, 7);
  EXPECT_EQ(trials.best, 9);
}
