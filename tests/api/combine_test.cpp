// tests/api/combine_test.cpp - one partition of several: never worse than the best, fixed cells stay, the same with any
// threads.
// SPDX-License-Identifier: MIT

#include "api/call.h"

TEST(combine, is_never_worse_than_the_best_of_those_given)
{
  int nbetter = 0, nkept = 0;

  for (std::uint64_t seed = 1; seed <= 120; seed++) {
    Call call = RandomCall(seed);
    std::vector<std::vector<int>> parts;
    std::vector<Rank> ranks;
    Connect(&call);
    const int members = call.options.members, starts = call.options.starts;
    call.options.starts = 1;
    call.options.runs = 1;
    call.options.members = 0; // leaves something to improve
    for (int i = 0; i < 2 + static_cast<int>(seed % 4); i++) {
      call.options.seed = 10 * i;
      const ResultPtr made = SolveConnected(call);
      ranks.push_back(RankOf(call, made));
      parts.push_back(PartOf(made));
    }
    parts.push_back(AnyPart(call, seed));
    call.options.members = members;
    call.options.starts = starts;
    const ResultPtr better = Combine(call, parts);
    ASSERT_EQ(WrongIn(call, better), "") << seed;
    const auto best = std::min_element(ranks.begin(), ranks.end());
    ASSERT_LE(RankOf(call, better), *best) << seed;
    nbetter += RankOf(call, better) < *best;
    if (better->best_start == -1 && RankOf(call, better) == *best && call.instance.ncells > 0) {
      nkept++;
      ASSERT_EQ(PartOf(better), parts[static_cast<std::size_t>(best - ranks.begin())]) << seed;
    }
    call.options.threads = 4 - call.options.threads;
    ASSERT_EQ(FiguresOf(Combine(call, parts)), FiguresOf(better)) << seed;
  }
  EXPECT_GT(nbetter, 20);
  EXPECT_GT(nkept, 10);
}

TEST(combine, one_partition_is_refined)
{
  for (std::uint64_t seed = 1; seed <= 20; seed++) {
    Call call = RandomCall(seed);
    call.options.members = 2;
    Connect(&call);
    const std::vector<int> part = AnyPart(call, seed);
    EXPECT_EQ(FiguresOf(Combine(call, {part})), FiguresOf(Refine(call, part)));
    EXPECT_EQ(FiguresOf(Combine(call, {part, part})), FiguresOf(Refine(call, part)));
  }
}

TEST(combine, partitions_that_cannot_be_are_named)
{
  Call call = MakeCall({4, {{0, 1}, {1, 2}, {2, 3}}, {}, {}}, 2);
  call.fixed = {-1, 1, -1, -1};
  Connect(&call);
  const std::vector<int> good = {0, 1, 0, 1}, high = {0, 1, 2, 0}, loose = {0, 0, 1, 1};
  const std::vector<std::tuple<std::vector<const int *>, const char *>> cases = {
      {{good.data(), high.data()}, "parts[1][2] is 2, but it should be between 0 and 1"},
      {{loose.data(), good.data()}, "parts[0][1] is 0, but the cell is fixed to part 1"},
      {{good.data(), nullptr}, "parts[1] is null"},
      {std::vector<const int *>(), "ngiven is 0, but it should be at least 1"}};
  const auto check = [&](int ngiven, const int *const *parts, const char *message) {
    kapris_result *made = nullptr;
    EXPECT_EQ(kapris_combine(&call.problem, &call.options, ngiven, parts, &made), KAPRIS_INVALID_ARGUMENT);
    const ResultPtr result(made);
    EXPECT_STREQ(result->message, message);
    EXPECT_EQ(result->part, nullptr);
  };

  for (const auto &[parts, message] : cases)
    check(static_cast<int>(parts.size()), parts.data(), message);
  check(2, nullptr, "parts is null");
}
