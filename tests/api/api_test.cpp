// tests/api/api_test.cpp - the safe interface: refused arguments, and results that depend on nothing but the call.
// SPDX-License-Identifier: MIT

#include "kapris.h"

#include "api/call.h"
#include "base/random.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>

TEST(api, every_value_has_a_name_of_its_own)
{
  std::set<std::string> statuses, phases;

  for (int value = KAPRIS_OK; value <= KAPRIS_INTERNAL + 1; value++)
    statuses.insert(kapris_status_name(static_cast<kapris_status>(value)));
  for (int value = KAPRIS_PREPARING; value <= KAPRIS_BALANCING + 1; value++)
    phases.insert(kapris_phase_name(static_cast<kapris_phase>(value)));
  EXPECT_EQ(statuses.size(), KAPRIS_INTERNAL + 2u); // a value that there is not has one, too
  EXPECT_EQ(phases.size(), KAPRIS_BALANCING + 2u);
  EXPECT_EQ(statuses.count("time limit") + phases.count("coarsening"), 2u);
}

TEST(api, a_seed_from_the_clock_is_reported_and_can_be_repeated)
{
  Call call = MakeCall(Circuit(60), 3);
  call.options.seed = -5;
  const ResultPtr clock = Solve(call);
  ASSERT_GE(clock->seed, 0);
  EXPECT_EQ(clock->starts[0].seed, clock->seed);
  call.options.seed = clock->seed;
  EXPECT_EQ(FiguresOf(Solve(call)), FiguresOf(clock));
}

TEST(api, invalid_arguments_are_named)
{
  static const std::int64_t most = std::int64_t{1} << 61; // of the total of weights
  static const std::int64_t weights[] = {1, -4, 1, 1}, heavy[] = {most - 1, 1, 0, 1},
                            huge[] = {INT64_MAX, 1, 1, 1};
  static const int starts[] = {0, 2, 1, 5};
  static const int offset[] = {1, 2, 4, 5}, pins[] = {0, 1, 1, 4, 2}, fixed[] = {-1, 0, 2, -1},
                   below[] = {-2, 0, 0, 0};
  static const std::int64_t heavynets[] = {most / 2, 1, 0};
  static const double zero[] = {0.0, 1.0}, few[] = {0.5, 0.25}, nan[] = {NAN, 1.0};
  const auto set = [](auto *option, int value) { std::memcpy(option, &value, sizeof value); };
  const std::vector<std::tuple<const char *, std::function<void(kapris_problem *, kapris_options *)>>> cases =
      {{"problem: not filled by kapris_init_problem of this version", [](auto *p, auto *) { p->size = 0; }},
       {"options: not filled by kapris_init_options of this version", [](auto *, auto *o) { o->size--; }},
       {"scheme: no such value", [&](auto *, auto *o) { set(&o->scheme, 2); }},
       {"objective: no such value", [&](auto *, auto *o) { set(&o->objective, 2); }},
       {"coarsening: no such value", [&](auto *, auto *o) { set(&o->coarsening, 5); }},
       {"refinement: no such value", [&](auto *, auto *o) { set(&o->refinement, -1); }},
       {"vcycle: no such value", [&](auto *, auto *o) { set(&o->vcycle, 4); }},
       {"runs is 0, but it should be at least 1", [](auto *, auto *o) { o->runs = 0; }},
       {"reconst is 2, but it should be 0 or 1", [](auto *, auto *o) { o->reconst = 2; }},
       {"records is -1, but it should be 0 or 1", [](auto *, auto *o) { o->records = -1; }},
       {"seed is 2147483648, but it should be at most 2147483647",
        [](auto *, auto *o) { o->seed = 2147483648; }},
       {"imbalance is -0.01, but it should be at least 0", [](auto *, auto *o) { o->imbalance = -0.01; }},
       {"imbalance is inf, but it should be at least 0", [](auto *, auto *o) { o->imbalance = INFINITY; }},
       {"starts is 0, but it should be at least 1", [](auto *, auto *o) { o->starts = 0; }},
       {"first_start is -1, but it should be at least 0", [](auto *, auto *o) { o->first_start = -1; }},
       {"first_start is 2147483647, but first_start and starts, which is 1, should add up to at most "
        "2147483647",
        [](auto *, auto *o) { o->first_start = 2147483647; }},
       {"threads is 0, but it should be at least 1", [](auto *, auto *o) { o->threads = 0; }},
       {"time_limit is -1, but it should be at least 0", [](auto *, auto *o) { o->time_limit = -1.0; }},
       {"nparts is 1, but it should be at least 2", [](auto *p, auto *) { p->nparts = 1; }},
       {"ncells is -1, but it should be at least 0", [](auto *p, auto *) { p->ncells = -1; }},
       {"nnets is -1, but it should be at least 0", [](auto *p, auto *) { p->nnets = -1; }},
       {"net_starts is null", [](auto *p, auto *) { p->net_starts = nullptr; }},
       {"net_starts[0] is 1, but it should be 0", [](auto *p, auto *) { p->net_starts = offset; }},
       {"net_starts[2] is 1, but it should be at least net_starts[1], which is 2",
        [](auto *p, auto *) { p->net_starts = starts; }},
       {"pins is null", [](auto *p, auto *) { p->pins = nullptr; }},
       {"pins[3] is 4, but a pin should be at least 0 and below ncells, which is 4 (net 1)",
        [](auto *p, auto *) { p->pins = pins; }},
       {"cell_weights[1] is -4, but it should be at least 0",
        [](auto *p, auto *) { p->cell_weights = weights; }},
       {"cell_weights[3] is 1: the total cell weight is then above 2305843009213693952",
        [](auto *p, auto *) { p->cell_weights = heavy; }},
       {"cell_weights[0] is 9223372036854775807: the total cell weight is then above 2305843009213693952",
        [](auto *p, auto *) { p->cell_weights = huge; }},
       {"net_weights[1] is -4, but it should be at least 0",
        [](auto *p, auto *) { p->net_weights = weights; }},
       {"net_weights[1] is 1: the sum of net weight x min(pins, nparts) is then above 2305843009213693952",
        [](auto *p, auto *) { p->net_weights = heavynets; }},
       {"part_shares[0] is 0, but it should be above 0 and at most 1",
        [](auto *p, auto *) { p->part_shares = zero; }},
       {"part_shares[0] is nan, but it should be above 0 and at most 1",
        [](auto *p, auto *) { p->part_shares = nan; }},
       {"part_shares: the sum is 0.75, but it should be 1", [](auto *p, auto *) { p->part_shares = few; }},
       {"fixed[2] is 2, but it should be between -1 and 1", [](auto *p, auto *) { p->fixed = fixed; }},
       {"fixed[0] is -2, but it should be between -1 and 1", [](auto *p, auto *) { p->fixed = below; }}};

  for (const auto &[message, spoil] : cases) {
    Call call = MakeCall({4, {{0, 1}, {1, 2}, {3}}, {}, {}}, 2);
    Connect(&call);
    spoil(&call.problem, &call.options);
    const ResultPtr result = SolveConnected(call);
    EXPECT_EQ(result->status, KAPRIS_INVALID_ARGUMENT) << message;
    EXPECT_STREQ(result->message, message);
  }

  Call call = MakeCall(Circuit(10), 2);
  Connect(&call);
  kapris_result *result = nullptr;
  EXPECT_EQ(kapris_partition(nullptr, &call.options, &result), KAPRIS_INVALID_ARGUMENT);
  EXPECT_STREQ(result->message, "problem is null");
  kapris_free_result(result);
  EXPECT_EQ(kapris_partition(&call.problem, nullptr, &result), KAPRIS_INVALID_ARGUMENT);
  EXPECT_STREQ(result->message, "options is null");
  kapris_free_result(result);
  EXPECT_EQ(kapris_partition(&call.problem, &call.options, nullptr), KAPRIS_INVALID_ARGUMENT);
  kapris_free_result(nullptr);
}

TEST(api, neither_threads_nor_the_number_of_starts_change_what_a_start_gives)
{
  for (kapris_scheme scheme : {KAPRIS_RECURSIVE, KAPRIS_KWAY}) {
    for (int fixed = 0; fixed <= 1; fixed++) {
      Call call = MakeCall(Circuit(120), 7);
      call.options.scheme = scheme;
      call.options.runs = 2;
      call.options.starts = 5;
      if (fixed)
        for (int i = 0; i < 120; i++)
          call.fixed.push_back(i % 20 == 0 ? i / 20 : -1);
      const ResultPtr five = Solve(call);
      for (int threads : {2, 4}) {
        call.options.threads = threads;
        EXPECT_EQ(FiguresOf(Solve(call)), FiguresOf(five)) << threads << " threads";
      }

      const auto key = [](const kapris_start &s) {
        return std::make_tuple(!s.balanced, s.cut, s.soed, s.imbalance);
      };
      const kapris_start *best = std::min_element(
          five->starts, five->starts + 5, [&](const auto &a, const auto &b) { return key(a) < key(b); });
      EXPECT_EQ(five->best_start, best - five->starts);
      EXPECT_EQ(std::make_tuple(five->cut, five->soed), std::make_tuple(best->cut, best->soed));
      call.options.starts = 3;
      call.options.first_start = 2;
      const ResultPtr three = Solve(call);
      for (int i = 0; i < 3; i++)
        EXPECT_EQ(key(three->starts[i]), key(five->starts[2 + i]));
      EXPECT_TRUE(five->best_start < 2 || PartOf(three) == PartOf(five));
      call.options.starts = 1;
      call.options.first_start = 0;
      for (int i = 0; i < 5; i++) {
        call.options.seed = five->starts[i].seed;
        const ResultPtr one = Solve(call);
        EXPECT_EQ(key(one->starts[0]), key(five->starts[i]));
        EXPECT_TRUE(PartOf(one) == PartOf(five) || i != five->best_start);
      }
    }
  }
}

// Nets of one pin and cells that a net names twice make the plain interface miscount this one, and say so.
static Instance Miscounted()
{
  std::istringstream nets(
      "26/16 18 16 14/26 0 8 3/12 11 12 24/25 22 24 6/13 14 26/19 20 4 20 5/6 24/8/12 23 7 25/"
      "3/19 17 20 18/22/15 3 27 4 26/22 0 12/20/27 21 2 16 22/27/14 1 12 15/19 5 13 11 3/"
      "3 14 22 11/3 16 27/6 7/13/20 20 9/21 8 11/24 2 23");
  Instance instance = {28, {}, {}, {}};

  for (std::string net; std::getline(nets, net, '/');) {
    std::istringstream pins(net);
    instance.nets.emplace_back(std::istream_iterator<int>(pins), std::istream_iterator<int>());
  }
  return instance;
}

static std::vector<int> PlainPart(const Instance &instance)
{
  const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  const int options[9] = {1, 1, 1, 1, 1, 0, 0, 1, 8};
  std::vector<int> part(static_cast<std::size_t>(instance.ncells), -1);
  int cut = -1;

  KAPRIS_PartRecursive(instance.ncells, static_cast<int>(instance.nets.size()), nullptr, netptr.data(),
                       netind.data(), nullptr, 2, 5, options, part.data(), &cut);
  part.push_back(cut);
  return part;
}

TEST(api, the_calling_thread_goes_on_as_if_nothing_had_happened)
{
  const Instance miscounted = Miscounted();
  Call good = MakeCall(miscounted, 2), starved = good, wrong = good;
  good.options.seed = good.options.runs = 1;
  starved.options.memory_limit = 2000;
  wrong.options.runs = 0;

  testing::internal::CaptureStdout();
  const std::vector<int> usual = PlainPart(miscounted);
  const std::string traces = testing::internal::GetCapturedStdout();
  EXPECT_NE(traces.find("The mincut for this bisection"), std::string::npos);
  EXPECT_NE(traces.find("Wrong cut!"), std::string::npos);
  for (const auto &[call, status] :
       {std::make_tuple(good, KAPRIS_OK), std::make_tuple(starved, KAPRIS_MEMORY_LIMIT),
        std::make_tuple(wrong, KAPRIS_INVALID_ARGUMENT)}) {
    InitRandom__(5);
    RandomDraw();
    const int second = RandomDraw();
    InitRandom__(5);
    RandomDraw();
    testing::internal::CaptureStdout();
    EXPECT_EQ(Solve(call)->status, status);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(RandomDraw(), second);

    testing::internal::CaptureStdout();
    EXPECT_EQ(PlainPart(miscounted), usual);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), traces);
  }
}
