// tests/api/cpp_test.cpp - the C++ interface: the same results as in C, and what it adds.
// SPDX-License-Identifier: MIT

#include "api/call.h"

#include <functional>

struct CppCall {
  Instance instance = Circuit(60);
  std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  kapris::Hypergraph hypergraph = {.ncells = 60, .net_starts = netptr, .pins = netind};
  kapris::Targets targets = {};
  kapris::Options options = {};
};

TEST(cpp, gives_what_c_gives)
{
  CppCall cpp;
  const std::vector<double> shares = {3.0 / 12.0, 1.0 / 12.0, 8.0 / 12.0};
  const Weights cellwgt(60, 2), netwgt(120, 3);
  const std::vector<int> fixed(60, -1);
  Call c = MakeCall(cpp.instance, 3);

  cpp.hypergraph.cell_weights = c.instance.cellwgt = cellwgt;
  cpp.hypergraph.net_weights = c.instance.netwgt = netwgt;
  cpp.targets = {3, shares, fixed};
  cpp.options = {KAPRIS_KWAY,
                 KAPRIS_SOED,
                 KAPRIS_PAIRS,
                 KAPRIS_ONE_WAY_FM,
                 KAPRIS_VCYCLE_NEVER,
                 3,
                 true,
                 9,
                 0.2,
                 2,
                 1,
                 2};
  cpp.options.records = true;
  cpp.options.members = c.options.members = 5;
  cpp.options.combinations = c.options.combinations = 4;
  c.twelfths = {3, 1, 8};
  c.fixed = fixed;
  c.percent = 20;
  c.options.scheme = KAPRIS_KWAY;
  c.options.objective = KAPRIS_SOED;
  c.options.coarsening = KAPRIS_PAIRS;
  c.options.refinement = KAPRIS_ONE_WAY_FM;
  c.options.vcycle = KAPRIS_VCYCLE_NEVER;
  c.options.runs = 3;
  c.options.reconst = 1;
  c.options.seed = 9;
  c.options.starts = c.options.threads = 2;
  c.options.first_start = c.options.records = 1;

  const ResultPtr expected = Solve(c);
  const kapris::Result result = kapris::Partition(cpp.hypergraph, cpp.targets, cpp.options);
  EXPECT_EQ(result.status, expected->status);
  EXPECT_EQ(result.message, expected->message);
  EXPECT_EQ(result.part, PartOf(expected));
  EXPECT_EQ(std::make_tuple(result.cut, result.soed, result.connectivity, result.imbalance, result.balanced),
            std::make_tuple(expected->cut, expected->soed, expected->connectivity, expected->imbalance,
                            expected->balanced != 0));
  EXPECT_EQ(result.part_weights,
            std::vector<std::int64_t>(expected->part_weights, expected->part_weights + 3));
  EXPECT_EQ(result.part_limits, std::vector<std::int64_t>(expected->part_limits, expected->part_limits + 3));
  EXPECT_EQ(std::make_tuple(result.seed, result.best_start), std::make_tuple(9, expected->best_start));
  ASSERT_EQ(result.starts.size(), 2u);
  EXPECT_EQ(result.starts[1].seed, expected->starts[1].seed);
  EXPECT_GT(result.peak_bytes, 0u);
  ASSERT_EQ(result.trials.size(), static_cast<std::size_t>(expected->ntrials));
  EXPECT_EQ(result.trials.back().value, expected->trials[expected->ntrials - 1].value);
  EXPECT_EQ(result.trials.back().parents[1], expected->trials[expected->ntrials - 1].parents[1]);

  // One partition alone, which has levels.
  cpp.options.members = c.options.members = 0;
  const ResultPtr alone = Solve(c);
  const kapris::Result one = kapris::Partition(cpp.hypergraph, cpp.targets, cpp.options);
  ASSERT_EQ(one.levels.size(), static_cast<std::size_t>(alone->nlevels));
  EXPECT_EQ(one.levels.back().value, alone->levels[alone->nlevels - 1].value);

  // The former names.
  kapris::Options former = cpp.options;
  std::swap(cpp.targets.part_shares, cpp.targets.target_weights);
  former.epsilon = 5.0;
  former.imbalance = 0.2;
  EXPECT_EQ(kapris::Partition(cpp.hypergraph, cpp.targets, former).part_limits, result.part_limits);

  const kapris::Result refined = kapris::Refine(cpp.hypergraph, cpp.targets, result.part, cpp.options);
  EXPECT_LE(refined.soed, result.soed);
  EXPECT_EQ(kapris::Evaluate(cpp.hypergraph, cpp.targets, refined.part, cpp.options).soed, refined.soed);
  EXPECT_THROW(kapris::Refine(cpp.hypergraph, cpp.targets, fixed, cpp.options), kapris::Error);
  EXPECT_THROW(kapris::Refine(cpp.hypergraph, cpp.targets, std::span(result.part).first(59), cpp.options),
               kapris::Error);
}

TEST(cpp, arrays_of_another_length_and_a_limit_of_zero_are_refused)
{
  const std::vector<int> three(3, 1);
  const Weights threeweights(3, 1);
  const std::vector<double> whole(1, 1.0);
  const std::vector<std::tuple<const char *, kapris::Status, std::function<void(CppCall *)>>> cases = {
      {"pins has 3 elements, but it should have as many as net_starts ends with, which is 487",
       KAPRIS_INVALID_ARGUMENT, [&](auto *call) { call->hypergraph.pins = three; }},
      {"net_weights has 3 elements, but it should be empty or have 120, one per net", KAPRIS_INVALID_ARGUMENT,
       [&](auto *call) { call->hypergraph.net_weights = threeweights; }},
      {"target_weights has 1 elements, but it should be empty or have 2, one per part",
       KAPRIS_INVALID_ARGUMENT, [&](auto *call) { call->targets.target_weights = whole; }},
      {"Memory allocation failed for api: cellwgt. Requested size: 480 bytes", KAPRIS_MEMORY_LIMIT,
       [](auto *call) { call->options.memory_limit = 0; }}};

  for (const auto &[message, status, spoil] : cases) {
    CppCall call;
    spoil(&call);
    try {
      kapris::Partition(call.hypergraph, call.targets, call.options);
      ADD_FAILURE() << "not refused: " << message;
    } catch (const kapris::Error &error) {
      EXPECT_STREQ(error.what(), message);
      EXPECT_EQ(error.status(), status);
    }
  }
}

TEST(cpp, what_a_callback_throws_comes_out)
{
  std::atomic<int> own = 0;

  for (std::atomic<int> *cancel : {static_cast<std::atomic<int> *>(nullptr), &own}) {
    CppCall call;
    int ncalls = 0;
    call.options.runs = 2000000000;
    call.options.starts = call.options.threads = 3;
    call.options.cancel = cancel;
    call.options.log_level = 16;
    call.options.log = [&](std::string_view) { throw ++ncalls; };
    EXPECT_THROW(kapris::Partition(call.hypergraph, call.targets, call.options), int);
    EXPECT_EQ(ncalls, 1);
    EXPECT_EQ(own, cancel == nullptr ? 0 : 1);

    call.options.log = {};
    call.options.cancel = nullptr;
    call.options.progress = [](const kapris::Progress &progress) {
      if (progress.seconds > 0.0)
        throw std::string("enough");
    };
    EXPECT_THROW(kapris::Partition(call.hypergraph, call.targets, call.options), std::string);
  }
}
