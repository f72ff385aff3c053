// tests/api/records_test.cpp - the records of a call: trials and levels that agree with each other and the result.
// SPDX-License-Identifier: MIT

#include "api/call.h"

#include <algorithm>
#include <map>

static std::vector<kapris_level> LevelsOf(const ResultPtr &result)
{
  return std::vector<kapris_level>(result->levels, result->levels + result->nlevels);
}

// What a trial is compared by.
static std::int64_t ValueOf(const kapris_trial &trial)
{
  return trial.cycled >= 0 ? std::min(trial.value, trial.cycled) : trial.value;
}

// The first thing about the trials that is not as it should be, or nothing.
static std::string WrongTrials(const Call &call, const ResultPtr &result)
{
  std::map<int, std::vector<kapris_trial>> starts;

  for (int i = 0; i < result->ntrials; i++)
    starts[result->trials[i].start].push_back(result->trials[i]);
  if (static_cast<int>(starts.size()) != result->nstarts)
    return "starts without trials";
  for (const auto &[start, trials] : starts) {
    int nbest = 0;
    std::int64_t least = INT64_MAX, best = -1;
    if (static_cast<int>(trials.size()) != call.options.runs)
      return "number of trials of start " + std::to_string(start);
    for (std::size_t t = 0; t < trials.size(); t++) {
      if (trials[t].number != static_cast<int>(t))
        return "order of trials";
      least = std::min(least, ValueOf(trials[t]));
      nbest += trials[t].best;
      best = trials[t].best ? ValueOf(trials[t]) : best;
    }
    if (nbest != 1 || best != least)
      return "best trial of start " + std::to_string(start);
  }
  return "";
}

// Down through smaller and smaller levels, and up through the same ones; at the top perhaps with nets that were left
// out. Expects all levels of one cycle.
static std::string WrongCycle(const std::vector<kapris_level> &levels)
{
  std::vector<kapris_level> down;
  std::size_t i = 0;

  for (; i < levels.size() && levels[i].phase == KAPRIS_COARSENING; i++) {
    if (levels[i].value != -1 ||
        (i > 0 && (levels[i].cells > down.back().cells || levels[i].pins > down.back().pins)))
      return "on the way down";
    down.push_back(levels[i]);
  }
  if (!down.empty()) {
    if (i == levels.size() || levels[i].phase != KAPRIS_INITIAL || levels[i].cells != down.back().cells)
      return "at the coarsest level";
    i++;
    // No way up from where there was none down.
    for (std::size_t d = down.size() - 1; d-- > 0; i++)
      if (i == levels.size() || levels[i].phase != KAPRIS_REFINING || levels[i].cells != down[d].cells ||
          levels[i].nets != down[d].nets || levels[i].pins != down[d].pins || levels[i].value < 0)
        return "on the way up";
  }
  if (i < levels.size() && levels[i].phase == KAPRIS_REFINING &&
      (down.empty() || (levels[i].cells == down[0].cells && levels[i].nets > down[0].nets)))
    i++;
  return i == levels.size() ? "" : "levels that belong to nothing";
}

static std::string WrongLevels(const std::vector<kapris_level> &levels)
{
  std::map<std::pair<int, int>, std::vector<kapris_level>> cycles;

  for (std::size_t i = 0; i < levels.size(); i++) {
    const std::pair<int, int> cycle = {levels[i].polish, levels[i].cycle};
    if (i > 0 && cycle < std::pair<int, int>(levels[i - 1].polish, levels[i - 1].cycle))
      return "order of cycles";
    if (levels[i].imbalance < -1.0 || levels[i].cells < 0)
      return "figures";
    cycles[cycle].push_back(levels[i]);
  }
  for (const auto &[cycle, part] : cycles)
    if (const std::string wrong = WrongCycle(part); !wrong.empty())
      return wrong + " in cycle " + std::to_string(cycle.second);
  return "";
}

TEST(records, agree_with_each_other_and_change_nothing_in_figures_that_are_exact)
{
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  for (std::uint64_t seed = 1; seed <= 200; seed++) {
    Call call = RandomCall(seed);
    const ResultPtr plain = Solve(call);
    EXPECT_EQ(WrongIn(call, plain), "") << seed << ", " << call.instance.Literal();
    call.options.records = 1;
    const ResultPtr result = Solve(call);
    const std::vector<kapris_level> levels = LevelsOf(result);
    EXPECT_EQ(FiguresOf(result), FiguresOf(plain)) << seed;
    EXPECT_EQ(plain->ntrials + plain->nlevels, 0);
    EXPECT_EQ(WrongTrials(call, result), "") << seed;
    EXPECT_EQ(WrongLevels(levels), "") << seed;
    EXPECT_EQ(levels.empty(), result->best_start < 0) << seed;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(records, end_with_the_result_and_show_every_cycle)
{
  for (int nparts : {2, 5}) {
    for (kapris_scheme scheme : {KAPRIS_RECURSIVE, KAPRIS_KWAY}) {
      Call call = MakeCall(Circuit(1500), nparts);
      call.options.scheme = scheme;
      call.options.runs = call.options.starts = call.options.threads = 2;
      call.options.records = 1;
      const ResultPtr result = Solve(call);
      const std::vector<kapris_level> levels = LevelsOf(result);
      const bool polished = nparts > 2 && scheme == KAPRIS_RECURSIVE;
      ASSERT_EQ(WrongTrials(call, result) + WrongLevels(levels), "");
      ASSERT_FALSE(levels.empty());
      EXPECT_GE(levels.back().cycle, 2);
      EXPECT_EQ(levels.back().polish, polished);
      EXPECT_EQ(levels[0].polish, 0);
      EXPECT_EQ(levels[0].cells, 1500);
      for (int i = 0; i < result->ntrials; i++)
        if (result->trials[i].best && !polished) {
          EXPECT_EQ(ValueOf(result->trials[i]), result->starts[result->trials[i].start].cut);
        }
      EXPECT_TRUE(std::any_of(levels.begin(), levels.end(),
                              [&](const kapris_level &level) { return level.value == result->cut; }));
      if (polished) {
        EXPECT_NEAR(levels.back().imbalance, result->imbalance, 1e-6);
      }
    }
  }
}

TEST(records, refinement_counts_its_rounds)
{
  Call call = MakeCall(Circuit(200), 3);
  std::vector<int> part(200);

  for (std::size_t cell = 0; cell < part.size(); cell++)
    part[cell] = static_cast<int>(cell % 3);
  call.options.runs = 4;
  call.options.records = 1;
  Connect(&call);
  const ResultPtr result = Refine(call, part);
  ASSERT_EQ(result->status, KAPRIS_OK);
  ASSERT_EQ(result->ntrials, 4);
  EXPECT_EQ(
      std::count_if(result->trials, result->trials + 4, [](const kapris_trial &t) { return t.best == 1; }),
      1);
  ASSERT_GT(result->nlevels, 0);
  EXPECT_EQ(result->levels[0].phase, KAPRIS_REFINING);
  EXPECT_TRUE(std::any_of(result->levels, result->levels + result->nlevels,
                          [&](const kapris_level &level) { return level.value == result->cut; }));
}

// A call can have any number of trials: those beyond what is kept must not hide the best one.
TEST(records, many_trials_keep_the_best)
{
  Call call = MakeCall(Circuit(30), 2);

  call.options.runs = 1500;
  call.options.records = 1;
  const ResultPtr result = Solve(call);
  std::int64_t least = INT64_MAX, best = -1;
  for (int i = 0; i < result->ntrials; i++) {
    least = std::min(least, ValueOf(result->trials[i]));
    best = result->trials[i].best ? ValueOf(result->trials[i]) : best;
  }
  EXPECT_GE(result->ntrials, 1000);
  EXPECT_LT(result->ntrials, 1100);
  EXPECT_EQ(best, least);
  // The bisection may have been repaired after the trials, which costs something.
  EXPECT_LE(best, result->cut);
  EXPECT_GT(result->nlevels, 0);
}
