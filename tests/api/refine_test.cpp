// tests/api/refine_test.cpp - improving a given partition: never worse, fixed cells stay, the same with any threads.
// SPDX-License-Identifier: MIT

#include "api/call.h"

TEST(refine, is_never_worse_than_what_was_given)
{
  int nbetter = 0, nkept = 0;

  for (std::uint64_t seed = 1; seed <= 150; seed++) {
    Call call = RandomCall(seed);
    Connect(&call);
    const int members = call.options.members;
    call.options.starts = 1;
    call.options.runs = 1;
    call.options.members = 0; // leaves something to improve
    const ResultPtr made = SolveConnected(call);
    const ResultPtr figures = Evaluate(call, PartOf(made));
    const auto told = [](const ResultPtr &r) {
      return std::make_tuple(PartOf(r), r->cut, r->soed, r->connectivity, r->imbalance, r->excess);
    };
    ASSERT_EQ(told(figures), told(made)) << seed;
    ASSERT_EQ(figures->nstarts, 0);
    call.options.members = members;
    call.options.starts = 2;
    call.options.seed = 3;
    const ResultPtr better = Refine(call, PartOf(made));
    ASSERT_EQ(WrongIn(call, better), "") << seed;
    ASSERT_LE(RankOf(call, better), RankOf(call, made)) << seed;
    nbetter += RankOf(call, better) < RankOf(call, made);
    if (RankOf(call, better) == RankOf(call, made) && call.instance.ncells > 0) {
      nkept++;
      ASSERT_EQ(better->best_start, -1) << seed;
      ASSERT_EQ(PartOf(better), PartOf(made));
    }

    // From any partition, with any number of threads.
    const std::vector<int> part = AnyPart(call, seed);
    const ResultPtr result = Refine(call, part);
    ASSERT_EQ(WrongIn(call, result), "") << seed;
    call.options.threads = 4 - call.options.threads;
    ASSERT_EQ(FiguresOf(Refine(call, part)), FiguresOf(result)) << seed;
  }
  EXPECT_GT(nbetter, 4);
  EXPECT_GT(nkept, 20);
}

TEST(refine, the_objective_decides_what_is_better)
{
  // With cell 0 in part 0, 1, 2 the cut is 11, 12, 14, the SOED 28, 27, 28, the connectivity 17, 15, 14.
  Call call = MakeCall({4, {{0, 1}, {0, 2}, {0, 2, 3}, {0, 1, 3}}, {}, {3, 2, 6, 3}}, 3);
  call.fixed = {-1, 0, 1, 2};
  call.percent = 100;
  Connect(&call);
  for (const kapris_objective objective : {KAPRIS_CUT, KAPRIS_SOED, KAPRIS_CONNECTIVITY}) {
    call.options.objective = objective;
    const std::vector<int> best = {static_cast<int>(objective), 0, 1, 2};
    EXPECT_EQ(PartOf(Refine(call, best)), best);
  }
}

TEST(refine, what_is_nearer_to_the_limits_is_better)
{
  Call call = MakeCall({4, {{0, 1, 2, 3}}, {10, 1, 1, 0}, {}}, 2); // at most 6 each
  Connect(&call);
  const ResultPtr result = Refine(call, {0, 0, 0, 0});
  EXPECT_EQ(result->status, KAPRIS_INFEASIBLE);
  EXPECT_EQ(WrongIn(call, result), "");
  EXPECT_EQ(std::make_tuple(result->excess, result->cut), std::make_tuple(4, 1));
}

TEST(refine, a_partition_that_cannot_be_is_named)
{
  const std::vector<std::tuple<std::vector<int>, const char *>> cases = {
      {{0, 1, 2, 0}, "part[2] is 2, but it should be between 0 and 1"},
      {{0, 1, -1, 0}, "part[2] is -1, but it should be between 0 and 1"},
      {{0, 0, 1, 1}, "part[1] is 0, but the cell is fixed to part 1"}};
  Call call = MakeCall({4, {{0, 1}, {1, 2}, {2, 3}}, {}, {}}, 2);
  call.fixed = {-1, 1, -1, -1};
  Connect(&call);

  for (const auto &[part, message] : cases) {
    const ResultPtr result = Refine(call, part);
    EXPECT_EQ(result->status, KAPRIS_INVALID_ARGUMENT);
    EXPECT_STREQ(result->message, message);
  }
  kapris_result *result = nullptr;
  EXPECT_EQ(kapris_refine(&call.problem, &call.options, nullptr, &result), KAPRIS_INVALID_ARGUMENT);
  EXPECT_STREQ(result->message, "part is null");
  kapris_free_result(result);
}
