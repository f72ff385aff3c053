// tests/api/limits_test.cpp - calls that are cut short: time, cancellation from outside and from callbacks, memory.
// SPDX-License-Identifier: MIT

#include "api/call.h"
#include "support/faults.h"

#include <atomic>
#include <cstring>
#include <numeric>
#include <thread>

// ----------------------------------------------------------------------------------------------------------
// Early ends

// A call that ends only when it is stopped.
static Call Endless(kapris_scheme scheme)
{
  Call call = MakeCall(Circuit(60), 2);

  call.options.scheme = scheme;
  call.options.runs = 2000000000;
  call.options.members = 0;
  return call;
}

TEST(limits, a_call_that_is_stopped_at_once_delivers_a_partition)
{
  static const int now = 1;

  for (std::uint64_t seed = 1; seed <= 40; seed++) {
    Call call = RandomCall(seed);
    call.options.runs = 2000000000;
    call.options.time_limit = 1e-9;
    const ResultPtr late = Solve(call);
    EXPECT_EQ(late->status, KAPRIS_TIME_LIMIT);
    EXPECT_EQ(WrongIn(call, late), "") << seed;
    EXPECT_EQ(late->best_start, -1);

    call.options.time_limit = 0.0;
    call.options.cancel = &now;
    const ResultPtr cancelled = Solve(call);
    EXPECT_EQ(cancelled->status, KAPRIS_CANCELLED);
    EXPECT_EQ(PartOf(cancelled), PartOf(late));
  }
}

// Notes what the callbacks see, and cancels after a number of calls.
struct Watcher {
  std::atomic<int> cancel = 0, inside = 0, overlaps = 0;
  int nprogress = 0, nlines = 0, lastprogress = INT_MAX, lastline = INT_MAX;
  kapris_progress last = {0, 0, -1, 0.0, 0.0, KAPRIS_PREPARING, 0};
  bool backwards = false;

  // Stays for a while, so that other threads of the call come by.
  void Enter(int milliseconds)
  {
    overlaps += inside++ != 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }

  void Leave()
  {
    inside--;
    if (nprogress >= lastprogress || nlines >= lastline)
      cancel = 1;
  }
};

static void Progress(const kapris_progress *progress, void *user)
{
  Watcher *watcher = static_cast<Watcher *>(user);

  watcher->Enter(60);
  watcher->nprogress += progress->starts_done > 0;
  watcher->backwards = watcher->backwards || progress->starts_done < watcher->last.starts_done ||
                       progress->seconds < watcher->last.seconds || progress->done < watcher->last.done ||
                       progress->done > 1.0 || progress->starts_done > progress->starts;
  watcher->last = *progress;
  watcher->Leave();
}

static void Log(const char *text, void *user)
{
  Watcher *watcher = static_cast<Watcher *>(user);

  watcher->Enter(1);
  watcher->nlines += std::strchr(text, '\n') != nullptr;
  watcher->Leave();
}

static void Watch(Call *call, Watcher *watcher)
{
  call->options.cancel = reinterpret_cast<volatile int *>(&watcher->cancel);
  call->options.user = watcher;
  call->options.progress = Progress;
}

TEST(limits, callbacks_come_one_at_a_time_and_can_cancel)
{
  for (kapris_scheme scheme : {KAPRIS_RECURSIVE, KAPRIS_KWAY}) {
    Watcher several;
    several.lastprogress = 3;
    Call call = MakeCall(Circuit(60), 2);
    Watch(&call, &several);
    call.options.scheme = scheme;
    call.options.runs = 1;
    call.options.members = 0;
    call.options.starts = 100000;
    call.options.threads = 3;
    call.options.log = Log;
    call.options.log_level = 16;
    const ResultPtr result = Solve(call);
    EXPECT_EQ(result->status, KAPRIS_CANCELLED);
    EXPECT_EQ(WrongIn(call, result), "");
    EXPECT_GE(several.nprogress, 3);
    EXPECT_GT(several.nlines, 0);
    EXPECT_EQ(several.overlaps, 0);
    EXPECT_FALSE(several.backwards);
    EXPECT_EQ(several.last.starts, 100000);
    EXPECT_LT(result->nstarts, 100000);
    EXPECT_LE(several.last.starts_done, result->nstarts);
    EXPECT_EQ(several.last.best, result->cut);
    EXPECT_GT(result->seconds_phase[KAPRIS_INITIAL], 0.0);
    EXPECT_LE(std::accumulate(result->seconds_phase, result->seconds_phase + 5, 0.0), 3 * result->seconds);

    // The line of the third trial comes after the first has given a partition.
    Watcher trials;
    trials.lastline = 3;
    call = Endless(scheme);
    call.fixed.assign(60, -1);
    call.fixed[0] = 1; // goes through a hypergraph of its own
    Watch(&call, &trials);
    call.options.log = Log;
    call.options.log_level = 16;
    const ResultPtr third = Solve(call);
    EXPECT_EQ(third->status, KAPRIS_CANCELLED);
    EXPECT_EQ(WrongIn(call, third), "");
    EXPECT_EQ(third->best_start, 0);
    EXPECT_EQ(third->starts[0].completed, 0);
  }
}

// Members are made and combined until the time is up; starts beyond the threads never begin. A slow machine is given
// more time until it comes to that.
TEST(limits, a_search_uses_the_time_that_it_is_given)
{
  for (const bool refines : {false, true})
    for (const int threads : {1, 3}) {
      int ntrials = 0;
      for (double limit = 0.5; limit < 200.0 && ntrials <= 2 * threads; limit *= 4.0) {
        Watcher watcher;
        Call call = MakeCall(Circuit(200), 4);
        std::vector<int> given(200);
        for (std::size_t cell = 0; cell < given.size(); cell++)
          given[cell] = static_cast<int>(cell / 50);
        Watch(&call, &watcher);
        call.options.members = 1;
        call.options.combinations = 0;
        call.options.starts = INT_MAX;
        call.options.threads = threads;
        call.options.time_limit = limit;
        call.options.records = 1;
        Connect(&call);
        const ResultPtr result = refines ? Refine(call, given) : SolveConnected(call);
        EXPECT_EQ(result->status, KAPRIS_TIME_LIMIT);
        EXPECT_EQ(WrongIn(call, result), "");
        EXPECT_EQ(result->nstarts, threads);
        ntrials = result->ntrials;
        if (result->best_start < 0)
          continue;
        EXPECT_GE(watcher.last.best, result->cut);
        EXPECT_FALSE(watcher.backwards);
        EXPECT_NEAR(watcher.last.done, std::min(1.0, watcher.last.seconds / limit), 1e-9);
      }
      EXPECT_GT(ntrials, 2 * threads);
    }
}

// ----------------------------------------------------------------------------------------------------------
// Memory

TEST(limits, a_memory_limit_is_kept_or_the_call_fails_cleanly)
{
  for (int threads : {1, 3}) {
    Call call = MakeCall(Circuit(60), 5);
    call.options.members = 3;
    call.options.combinations = 3;
    const ResultPtr unlimited = Solve(call);
    const std::size_t blocks = CurrentLedger()->blocks;
    int nfailures = 0;

    call.options.threads = threads;
    call.options.records = 1;
    for (std::size_t limit = 1;; limit += 1 + limit / 16) {
      call.options.memory_limit = limit;
      const ResultPtr result = Solve(call);
      EXPECT_EQ(CurrentLedger()->blocks, blocks);
      EXPECT_LE(result->peak_bytes, limit);
      if (result->status == KAPRIS_OK) {
        EXPECT_EQ(FiguresOf(result), FiguresOf(unlimited));
        break;
      }
      ASSERT_EQ(result->status, KAPRIS_MEMORY_LIMIT);
      EXPECT_EQ(std::string(result->message).substr(0, 29), "Memory allocation failed for ");
      nfailures++;
    }
    EXPECT_GT(nfailures, 100);
  }
}

// What holds of a partition that is delivered though memory ran out.
static void ExpectEarlier(const Call &call, const ResultPtr &result, const Figures &whole)
{
  const std::vector<StartFigures> &starts = std::get<std::vector<StartFigures>>(whole);
  int ncompleted = 0;

  EXPECT_EQ(WrongIn(call, result), "");
  for (std::size_t i = 0; i < static_cast<std::size_t>(result->nstarts); i++)
    if (result->starts[i].completed) {
      ncompleted++;
      EXPECT_EQ(std::get<1>(starts[i]), result->starts[i].cut);
      EXPECT_EQ(result->starts[i].number, static_cast<int>(i));
    }
  const std::string count = " after " + std::to_string(ncompleted) + " of " + std::to_string(starts.size());
  EXPECT_EQ(std::string(result->message).find(kapris_status_name(result->status) + count), 0u);
  EXPECT_TRUE(ncompleted > 0 || result->best_start >= 0);
}

TEST(limits, memory_that_runs_out_costs_no_partition_that_was_made)
{
  constexpr int nstarts = 4;
  int nearlier = 0;

  for (int seed = 0; seed < 12; seed++) {
    std::vector<std::size_t> peaks;
    Call call = MakeCall(Circuit(60), 5);
    call.options.seed = seed;
    call.options.members = 0;
    call.options.runs = 1;
    Connect(&call);
    for (int number = 0; number < nstarts; number++) {
      call.options.first_start = number;
      peaks.push_back(SolveConnected(call)->peak_bytes);
    }
    call.options.first_start = 0;
    call.options.starts = nstarts;
    const ResultPtr whole = SolveConnected(call);
    // Too little for some start.
    call.options.memory_limit = *std::max_element(peaks.begin(), peaks.end()) - 1;
    const ResultPtr result = SolveConnected(call);
    ASSERT_EQ(result->status, KAPRIS_MEMORY_LIMIT);
    EXPECT_EQ(result->part != nullptr, peaks[0] <= call.options.memory_limit);
    if (result->part == nullptr)
      continue;
    ExpectEarlier(call, result, FiguresOf(whole));
    nearlier++;
  }
  EXPECT_GT(nearlier, 3);
}

TEST(limits, any_allocation_may_fail)
{
  long ncalls = 0, nearlier = 0;

  for (const int threads : {1, 3})
    for (int variant = 0; variant < 10; variant++) {
      const bool refines = variant & 1, wide = variant & 2, searches = variant & 4, combines = variant & 8;
      Call call = MakeCall(Circuit(30), 4);
      if (combines && refines) // around anchors
        call.fixed = {0};
      call.fixed.resize(call.fixed.empty() ? 0 : 30, -1);
      if (wide) // weights for the engine of 64 bits
        call.instance.cellwgt.assign(30, std::int64_t{1} << 40);
      call.options.runs = 1;
      call.options.members = searches ? 3 : 0;
      call.options.combinations = 2;
      call.options.starts = 3;
      call.options.threads = threads;
      call.options.records = 1;
      Connect(&call);
      const std::vector<int> given(30, 0);
      std::vector<int> other(30, 1);
      other[0] = 0;
      const int *const both[] = {given.data(), other.data()};
      const auto attempt = [&] {
        kapris_result *result = nullptr;
        const kapris_status status = combines ? kapris_combine(&call.problem, &call.options, 2, both, &result)
                                     : refines
                                         ? kapris_refine(&call.problem, &call.options, given.data(), &result)
                                         : kapris_partition(&call.problem, &call.options, &result);
        return std::make_pair(status, ResultPtr(result));
      };
      const Figures usual = FiguresOf(attempt().second);

      const auto check = [&](const auto &made, long n) {
        const auto &[status, result] = made;
        // The call can do with fewer threads.
        if (status == KAPRIS_OK && threads > 1)
          EXPECT_EQ(FiguresOf(result), usual) << "allocation " << n;
        else
          ASSERT_EQ(status, KAPRIS_OUT_OF_MEMORY) << "allocation " << n;
        if (status != KAPRIS_OK && result != nullptr && result->part != nullptr) {
          ExpectEarlier(call, result, usual);
          nearlier++;
        }
        EXPECT_EQ(CurrentLedger()->blocks, 0u);
      };
      ncalls += FailEach(attempt, check, 24);
      EXPECT_EQ(FiguresOf(attempt().second), usual);
    }
  std::printf("%ld calls met a failing allocation, %ld of them kept a partition\n", ncalls, nearlier);
  EXPECT_GT(ncalls, 1000);
  EXPECT_GT(nearlier, 100);
}
