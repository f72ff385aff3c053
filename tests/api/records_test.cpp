// tests/api/records_test.cpp - the records of a call: trials and levels that agree with each other and the result.
// SPDX-License-Identifier: MIT

#include "api/call.h"

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>

static std::vector<kapris_level> LevelsOf(const ResultPtr &result)
{
  return std::vector<kapris_level>(result->levels, result->levels + result->nlevels);
}

// What a trial is compared by.
static std::int64_t ValueOf(const kapris_trial &trial)
{
  return trial.cycled >= 0 ? std::min(trial.value, trial.cycled) : trial.value;
}

// The same of the trials of a start with members: those first, then what they are combined to.
static std::string WrongMembers(const Call &call, const std::vector<kapris_trial> &trials)
{
  int nbest = 0;

  if (std::ssize(trials) < call.options.members ||
      std::ssize(trials) > call.options.members + call.options.combinations)
    return "number of members";
  for (int t = 0; t < std::ssize(trials); t++) {
    const kapris_trial &trial = trials[static_cast<std::size_t>(t)];
    const int *parents = trial.parents;
    if (trial.number != t || trial.cycled != -1)
      return "order of members";
    nbest += trial.best;
    const bool made = parents[0] == -1 && parents[1] == -1;
    // Later ones have parents; but into two parts a new one can take the place of combinations.
    if (t < call.options.members || (made && call.problem.nparts == 2)
            ? !made
            : std::min(parents[0], parents[1]) < 0 || std::max(parents[0], parents[1]) >= t ||
                  (parents[0] == parents[1] && call.problem.nparts == 2))
      return "parents of trial " + std::to_string(t);
  }
  return nbest == 1 ? "" : "best member";
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
    if (call.options.members > 0) {
      if (const std::string wrong = WrongMembers(call, trials); !wrong.empty())
        return wrong;
      continue;
    }
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

// A walk through the tree, whose sides weigh what is bisected below.
static std::string WrongBisections(const ResultPtr &result, std::int64_t total)
{
  const kapris_bisection *at = result->bisections, *end = at + result->nbisections;
  const std::function<std::string(int, int, std::int64_t)> walk = [&](int first, int parts,
                                                                      std::int64_t weight) {
    if (at == end || at->first != first || at->parts != parts || at->weights[0] + at->weights[1] != weight ||
        at->cut < 0 || at->seconds < 0.0)
      return "bisection " + std::to_string(at - result->bisections);
    const kapris_bisection *here = at++;
    std::string wrong;
    for (int side = 0, from = first; side < 2 && wrong.empty(); side++) {
      const int half = side == 0 ? parts / 2 : parts - parts / 2;
      if (half > 1)
        wrong = walk(from, half, here->weights[side]);
      from += half;
    }
    return wrong;
  };
  const std::string wrong = walk(0, result->nparts, total);
  return wrong.empty() && at != end ? "bisections that belong to nothing" : wrong;
}

TEST(records, agree_with_each_other_and_change_nothing_in_figures_that_are_exact)
{
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  for (std::uint64_t seed = 1; seed <= 120; seed++) {
    Call call = RandomCall(seed);
    const ResultPtr plain = Solve(call);
    EXPECT_EQ(WrongIn(call, plain), "") << seed << ", " << call.instance.Literal();
    call.options.records = 1;
    const ResultPtr result = Solve(call);
    const std::vector<kapris_level> levels = LevelsOf(result);
    EXPECT_EQ(FiguresOf(result), FiguresOf(plain)) << seed;
    EXPECT_EQ(plain->ntrials + plain->nlevels + plain->nbisections, 0);
    if (call.problem.nparts == 1) {
      EXPECT_EQ(result->ntrials + result->nlevels, 0);
      continue;
    }
    EXPECT_EQ(WrongTrials(call, result), "") << seed;
    EXPECT_EQ(WrongLevels(levels), "") << seed;
    EXPECT_EQ(levels.empty(), result->best_start < 0 || call.options.members > 0) << seed;
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
      call.options.vcycle = KAPRIS_VCYCLE_BEST;
      call.options.members = 0;
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
      if (scheme == KAPRIS_RECURSIVE) {
        EXPECT_EQ(WrongBisections(result, 1500), "");
        const std::int64_t sum = std::accumulate(
            result->bisections, result->bisections + result->nbisections, std::int64_t{0},
            [](std::int64_t cut, const kapris_bisection &bisection) { return cut + bisection.cut; });
        EXPECT_TRUE(polished ? sum >= result->cut : sum == result->cut) << sum;
      } else {
        EXPECT_EQ(result->nbisections, 0);
      }
      EXPECT_TRUE(std::any_of(levels.begin(), levels.end(),
                              [&](const kapris_level &level) { return level.value == result->cut; }));
      if (polished) {
        EXPECT_NEAR(levels.back().imbalance, result->imbalance, 1e-6);
      }
    }
  }
}

TEST(records, the_best_member_has_the_figures_of_its_start)
{
  for (const kapris_objective objective : {KAPRIS_CUT, KAPRIS_SOED, KAPRIS_CONNECTIVITY})
    for (const kapris_scheme scheme : {KAPRIS_RECURSIVE, KAPRIS_KWAY}) {
      Call call = MakeCall(Circuit(300), 5);
      call.options.objective = objective;
      call.options.scheme = scheme;
      call.options.members = 4;
      call.options.combinations = 6;
      call.options.starts = call.options.threads = 2;
      call.options.records = 1;
      const ResultPtr result = Solve(call);
      ASSERT_EQ(WrongTrials(call, result), "");
      for (int i = 0; i < result->ntrials; i++) {
        const kapris_trial &trial = result->trials[i];
        const kapris_start &start = result->starts[trial.start];
        const std::int64_t value = objective == KAPRIS_CUT    ? start.cut
                                   : objective == KAPRIS_SOED ? start.soed
                                                              : start.soed - start.cut;
        EXPECT_TRUE(trial.best ? trial.value == value : trial.value >= value) << i;
      }
    }
}

TEST(records, refinement_counts_its_cycles_or_rounds)
{
  Call call = MakeCall(Circuit(200), 3);
  std::vector<int> part(200);

  for (std::size_t cell = 0; cell < part.size(); cell++)
    part[cell] = static_cast<int>(cell % 3);
  call.options.members = 1;
  call.options.combinations = 5;
  call.options.records = 1;
  Connect(&call);
  const ResultPtr result = Refine(call, part);
  ASSERT_GE(result->ntrials, 2);
  ASSERT_LE(result->ntrials, 1 + 5);
  const kapris_trial *first = result->trials, *best = nullptr;
  for (const kapris_trial *trial = first; trial < first + result->ntrials; trial++) {
    best = trial->best ? trial : best;
    EXPECT_EQ(trial->parents[0], trial->parents[1]);
    EXPECT_TRUE(trial == first ? trial->parents[0] == -1 : trial->parents[0] >= 0);
    EXPECT_LT(trial->parents[0], trial->number);
  }
  ASSERT_NE(best, nullptr);
  EXPECT_EQ(best->value, result->cut);

  // Without members, its rounds.
  call.options.runs = 4;
  call.options.members = 0;
  const ResultPtr alone = Refine(call, part);
  EXPECT_EQ(alone->ntrials, 4);
  ASSERT_GT(alone->nlevels, 0);
  EXPECT_EQ(alone->levels[0].phase, KAPRIS_REFINING);
}

// A call can have any number of trials: those beyond what is kept must not hide the best one.
TEST(records, many_trials_keep_the_best)
{
  Call call = MakeCall(Circuit(30), 2);

  call.options.runs = 1500;
  call.options.members = 0;
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
