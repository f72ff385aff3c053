// tests/api/sweep_test.cpp - what must hold for every call of the safe interface, with weights for either engine.
// SPDX-License-Identifier: MIT
//
// KAPRIS_SWEEP_CALLS sets the number of calls and KAPRIS_SWEEP_SEED the first seed.

#include "api/call.h"

static const std::int64_t FACTOR = std::int64_t{1} << 36; // makes any weight but 0 one of more than 32 bits

// The same problem with all weights, which are written out, times FACTOR.
static Call Scaled(Call call)
{
  Instance *instance = &call.instance;

  instance->cellwgt.resize(static_cast<std::size_t>(instance->ncells), 1);
  instance->netwgt.resize(instance->nets.size(), 1);
  for (Weights *weights : {&instance->cellwgt, &instance->netwgt})
    for (std::int64_t &weight : *weights)
      weight *= FACTOR;
  return call;
}

static bool IsNarrow(const Instance &instance)
{
  const auto isnarrow = [](std::int64_t weight) { return weight <= INT32_MAX; };

  return std::all_of(instance.cellwgt.begin(), instance.cellwgt.end(), isnarrow) &&
         std::all_of(instance.netwgt.begin(), instance.netwgt.end(), isnarrow);
}

TEST(sweep, figures_and_limits_hold_for_every_call_and_scale_with_the_weights)
{
  const long first = Setting("KAPRIS_SWEEP_SEED", 1), ncalls = Setting("KAPRIS_SWEEP_CALLS", 150);

  for (long seed = first; seed < first + ncalls && !testing::Test::HasFailure(); seed++) {
    Call call = RandomCall(static_cast<std::uint64_t>(seed));
    Connect(&call);
    const ResultPtr result = SolveConnected(call);
    EXPECT_EQ(WrongIn(call, result), "") << seed << ", " << call.instance.Literal();
    // With another partition, which the order of the objective ranks anywhere.
    Call other = call;
    other.options.seed += 1000;
    other.options.members = 0;
    const std::vector<int> more = PartOf(Solve(other));
    const ResultPtr combined = Combine(call, {more, PartOf(result)});
    EXPECT_EQ(WrongIn(call, combined), "") << seed << ", " << call.instance.Literal();
    EXPECT_LE(RankOf(call, combined), RankOf(call, result)) << seed;
    EXPECT_LE(RankOf(call, combined), RankOf(call, Evaluate(call, more))) << seed;
    if (!IsNarrow(call.instance))
      continue;

    Call scaled = Scaled(call);
    const ResultPtr wide = Solve(scaled);
    EXPECT_EQ(WrongIn(scaled, wide), "") << seed << ", " << scaled.instance.Literal();
    Connect(&scaled);
    EXPECT_LE(RankOf(scaled, Refine(scaled, PartOf(wide))), RankOf(scaled, wide)) << seed;
    // Of one partition, given by its cells, all figures differ by the factor.
    call.fixed = scaled.fixed = PartOf(wide);
    const ResultPtr narrow = Solve(call), again = Solve(scaled);
    EXPECT_EQ(PartOf(narrow), PartOf(again));
    EXPECT_EQ(narrow->cut * FACTOR, again->cut) << seed;
    EXPECT_EQ(narrow->soed * FACTOR, again->soed) << seed;
    for (int p = 0; p < narrow->nparts; p++)
      EXPECT_EQ(narrow->part_weights[p] * FACTOR, again->part_weights[p]) << seed;
  }
}
