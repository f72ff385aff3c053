// tests/api/api_test.cpp - the safe interface: refused arguments, and results that depend on nothing but the call.
// SPDX-License-Identifier: MIT

#include "kapris.h"

#include "api/call.h"
#include "base/random.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <sstream>

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

TEST(api, limits_of_parts_are_exact)
{
  constexpr std::int64_t large = std::int64_t{1} << 61;
  static const double tenths[] = {0.1, 0.9}, twelfths[] = {5.0 / 12, 7.0 / 12}, thirds[] = {2.0 / 3, 1.0 / 3},
                      digits[] = {0.123456789, 0.876543211},
                      odd[] = {1234567.0 / 8888888, 7654321.0 / 8888888}, tiny[] = {1e-300, 1.0};
  const struct {
    std::int64_t total;
    int nparts;
    const double *shares;
    double epsilon;
    std::int64_t limit;
  } cases[] = {
      {27507, 32, nullptr, 0.03, 885},
      {100, 1, nullptr, 0.03, 103}, // in doubles, 1.03 x 100 can come out as 102.99...
      {100, 2, nullptr, 0.1, 55},
      {3, 2, nullptr, 0.0, 2},
      {0, 2, nullptr, 0.5, 0},
      {5, 2, nullptr, 1e-300, 3},
      {large, 3, nullptr, 0.0, large / 3 + 1},
      {large, 2, nullptr, 1e6, INT64_MAX},
      {large, 2, nullptr, 1.7976931348623157e308, INT64_MAX},
      {large - 1, 4, nullptr, 0.07, large / 4 + (large / 4 * 7) / 100},
      {100, 2, tenths, 0.0, 10}, // the double 0.1 is more than a tenth
      {12 * (large / 12), 2, twelfths, 0.0, 5 * (large / 12)},
      {12 * (large / 12) + 1, 2, twelfths, 0.0, 5 * (large / 12) + 1},
      {3 * (large / 4), 2, thirds, 0.5, 3 * (large / 4)},
      {1000000000, 2, digits, 0.0, 123456789},
      {8888888, 2, odd, 0.0, 1234567},
      {large, 2, tiny, 0.0, 1},
  };

  for (const auto &c : cases)
    EXPECT_EQ(kapris_part_limit(c.total, c.nparts, c.shares, 0, c.epsilon), c.limit)
        << c.total << " " << c.nparts << " " << c.epsilon;
  EXPECT_EQ(kapris::PartLimit(12, {.nparts = 2, .part_shares = twelfths}, 1, 0.0), 7);
  EXPECT_EQ(kapris::PartMinimum(27507, {.nparts = 32}, 0, 0.03), 859 - 25);
  EXPECT_EQ(kapris_part_minimum(100, 3, nullptr, 0, 0.0), 33);
  EXPECT_EQ(kapris_part_minimum(100, 3, nullptr, 0, 1.01), -1);
  EXPECT_EQ(kapris_part_limit(-1, 2, nullptr, 0, 0.0), -1);
  EXPECT_EQ(kapris_part_limit(1, 2, nullptr, 2, 0.0), -1);
  EXPECT_EQ(kapris_part_limit(1, 2, nullptr, 0, NAN), -1);
}

TEST(api, minimums_are_reached_from_nothing_in_all_parts_but_one)
{
  for (const int nparts : {2, 7, 70}) {
    Call call = MakeCall(Circuit(60), nparts);
    call.options.runs = 2;
    call.percent = 10000; // one part could have them all
    call.minpercent = 40;
    Connect(&call);
    const ResultPtr result = Refine(call, std::vector<int>(60, nparts - 1));
    EXPECT_EQ(WrongIn(call, result), "");
    EXPECT_EQ(result->status, KAPRIS_OK);
  }
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
  static const double zero[] = {0.0, 1.0}, few[] = {1e10, 1.0}, nan[] = {NAN, 1.0};
  const auto set = [](auto *option, int value) { std::memcpy(option, &value, sizeof value); };
  const std::vector<std::tuple<const char *, std::function<void(kapris_problem *, kapris_options *)>>> cases =
      {{"problem: not filled by kapris_init_problem of this version", [](auto *p, auto *) { p->size = 0; }},
       {"options: not filled by kapris_init_options of this version", [](auto *, auto *o) { o->size--; }},
       {"scheme: no such value", [&](auto *, auto *o) { set(&o->scheme, 2); }},
       {"objective: no such value", [&](auto *, auto *o) { set(&o->objective, 3); }},
       {"coarsening: no such value", [&](auto *, auto *o) { set(&o->coarsening, 5); }},
       {"refinement: no such value", [&](auto *, auto *o) { set(&o->refinement, -1); }},
       {"vcycle: no such value", [&](auto *, auto *o) { set(&o->vcycle, 4); }},
       {"runs is 0, but it should be at least 1", [](auto *, auto *o) { o->runs = 0; }},
       {"reconst is 2, but it should be 0 or 1", [](auto *, auto *o) { o->reconst = 2; }},
       {"records is -1, but it should be 0 or 1", [](auto *, auto *o) { o->records = -1; }},
       {"seed is 2147483648, but it should be at most 2147483647",
        [](auto *, auto *o) { o->seed = 2147483648; }},
       {"epsilon is -0.01, but it should be at least 0", [](auto *, auto *o) { o->epsilon = -0.01; }},
       {"epsilon is inf, but it should be at least 0",
        [](auto *, auto *o) { o->imbalance = INFINITY; }}, // the former name
       {"min_epsilon is 1.5, but it should be between 0 and 1",
        [](auto *, auto *o) { o->min_epsilon = 1.5; }},
       {"allow_empty is 2, but it should be 0 or 1", [](auto *, auto *o) { o->allow_empty = 2; }},
       {"starts is 0, but it should be at least 1", [](auto *, auto *o) { o->starts = 0; }},
       {"first_start is -1, but it should be at least 0", [](auto *, auto *o) { o->first_start = -1; }},
       {"first_start is 2147483647, but first_start and starts, which is 1, should add up to at most "
        "2147483647",
        [](auto *, auto *o) { o->first_start = 2147483647; }},
       {"threads is 0, but it should be at least 1", [](auto *, auto *o) { o->threads = 0; }},
       {"time_limit is -1, but it should be at least 0", [](auto *, auto *o) { o->time_limit = -1.0; }},
       {"nparts is 0, but it should be at least 1", [](auto *p, auto *) { p->nparts = 0; }},
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
       {"target_weights[0] is 0, but it should be above 0 and at most 1e+15",
        [](auto *p, auto *) { p->part_shares = zero; }}, // the former name
       {"target_weights[0] is nan, but it should be above 0 and at most 1e+15",
        [](auto *p, auto *) { p->target_weights = nan; }},
       {"target_weights[1] is 1, less than 1e-09 of the sum, which is 1e+10",
        [](auto *p, auto *) { p->target_weights = few; }},
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

TEST(api, the_best_start_is_the_first_by_the_objective)
{
  int ndecided = 0; // where another objective would have chosen another

  for (int seed = 0; seed < 8; seed++)
    for (const kapris_objective objective : {KAPRIS_CUT, KAPRIS_SOED, KAPRIS_CONNECTIVITY}) {
      Call call = MakeCall(Circuit(60), 5);
      call.options.scheme = KAPRIS_KWAY;
      call.options.vcycle = KAPRIS_VCYCLE_NEVER;
      call.options.runs = 1;
      call.options.members = 0; // the better the starts, the less they differ
      call.options.starts = 10;
      call.options.seed = seed;
      call.options.objective = objective;
      const ResultPtr result = Solve(call);
      const auto first = [&](kapris_objective by) {
        const auto key = [&](const kapris_start &s) {
          const std::int64_t value = by == KAPRIS_CUT ? s.cut : by == KAPRIS_SOED ? s.soed : s.soed - s.cut;
          return std::make_tuple(s.excess, value, by == KAPRIS_CUT ? s.soed : s.cut, s.imbalance);
        };
        const kapris_start *starts = result->starts;
        return std::min_element(starts, starts + result->nstarts,
                                [&](const auto &a, const auto &b) { return key(a) < key(b); }) -
               starts;
      };
      EXPECT_EQ(WrongIn(call, result), "");
      EXPECT_EQ(result->best_start, first(objective)) << objective << ", seed " << seed;
      ndecided += objective == KAPRIS_CONNECTIVITY && first(KAPRIS_SOED) != first(objective);
    }
  EXPECT_GT(ndecided, 0);
}

TEST(api, neither_threads_nor_the_number_of_starts_change_what_a_start_gives)
{
  // The bits choose scheme, fixed cells, members and weights for the engine of 64 bits: in steps of three every pair of
  // choices once or twice.
  for (int variant = 0; variant < 16; variant += 3) {
    const bool fixed = variant & 2;
    Call call = MakeCall(Circuit(120), 7);
    call.options.scheme = variant & 1 ? KAPRIS_KWAY : KAPRIS_RECURSIVE;
    call.options.runs = 2;
    call.options.members = variant & 4 ? 3 : 0;
    call.options.combinations = 2;
    call.options.starts = 5;
    if (variant & 8)
      call.instance.cellwgt.assign(120, std::int64_t{1} << 40);
    if (fixed)
      for (int i = 0; i < 120; i++)
        call.fixed.push_back(i % 20 == 0 ? i / 20 : -1);
    const ResultPtr five = Solve(call);
    for (int threads : {2, 8}) {
      call.options.threads = threads;
      EXPECT_EQ(FiguresOf(Solve(call)), FiguresOf(five)) << threads << " threads, variant " << variant;
    }

    const auto key = [](const kapris_start &s) {
      return std::make_tuple(s.excess, s.cut, s.soed, s.imbalance);
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
