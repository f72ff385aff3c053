// tests/api/recall_test.cpp - starts that one call hands to another.
// SPDX-License-Identifier: MIT

#include "api/call.h"

#include <map>

// What a call told of its starts, for another one.
struct Memory {
  std::map<int, std::pair<kapris_start, std::vector<int>>> starts;
  std::size_t ncells;
  int ntold = 0;
};

static void Remember(const kapris_start *start, const int *part, void *user)
{
  Memory *memory = static_cast<Memory *>(user);

  memory->starts[start->number] = {*start, std::vector<int>(part, part + memory->ncells)};
  memory->ntold++;
}

static int Recall(kapris_start *start, int *part, void *user)
{
  const Memory *memory = static_cast<const Memory *>(user);
  const auto found = memory->starts.find(start->number);

  if (found == memory->starts.end())
    return 0;
  EXPECT_EQ(start->seed, found->second.first.seed);
  std::copy(found->second.second.begin(), found->second.second.end(), part);
  start->seconds = 12345.0;
  return 1;
}

TEST(recall, a_call_that_goes_on_gives_what_an_unbroken_one_gives)
{
  for (std::uint64_t seed = 1; seed <= 60; seed++) {
    Call call = RandomCall(seed);
    TestRandom random = {seed};
    Memory memory = {{}, static_cast<std::size_t>(call.instance.ncells)};
    call.options.starts = 5;
    call.options.first_start = random.Below(3);
    call.options.user = &memory;
    call.options.completed = Remember;
    const ResultPtr whole = Solve(call);
    EXPECT_EQ(memory.ntold, 5);
    for (const auto &[number, made] : memory.starts) {
      const kapris_start *start = &whole->starts[number - call.options.first_start];
      EXPECT_EQ(std::make_tuple(made.first.cut, made.first.soed, made.first.completed),
                std::make_tuple(start->cut, start->soed, 1));
    }
    // Some are forgotten.
    const int nlost = random.Below(6);
    for (int i = 0; i < nlost; i++)
      memory.starts.erase(call.options.first_start + random.Below(5));
    const std::size_t nkept = memory.starts.size();
    memory.ntold = 0;
    call.options.recall = Recall;
    call.options.threads = 1 + random.Below(3);
    const ResultPtr again = Solve(call);
    ASSERT_EQ(FiguresOf(again), FiguresOf(whole)) << seed;
    EXPECT_EQ(memory.ntold, 5 - static_cast<int>(nkept));
    EXPECT_EQ(std::count_if(again->starts, again->starts + again->nstarts,
                            [](const kapris_start &start) { return start.seconds == 12345.0; }),
              static_cast<long>(nkept));
  }
}

// The third start asks for the end, and none of them was completed.
static int RecallPieces(kapris_start *start, int *part, void *user)
{
  int *cancel = static_cast<int *>(user);

  EXPECT_EQ(start->completed, 1);
  std::fill_n(part, 30, 0);
  std::fill_n(part, 10 + start->number % 2, 1);
  std::fill_n(part + 20, 10, 2);
  start->completed = 0;
  *cancel = start->number == 7;
  return 1;
}

TEST(recall, starts_that_were_cut_short_count_as_such_and_a_cancellation_is_heeded_between_starts)
{
  Call call = MakeCall(Circuit(30), 3);
  int cancel = 0, nfinished = 0;
  call.options.starts = 10;
  call.options.first_start = 5;
  call.options.cancel = &cancel;
  call.options.user = &cancel;
  call.options.recall = RecallPieces;
  call.options.completed = [](const kapris_start *, const int *, void *) { ADD_FAILURE() << "completed"; };
  const ResultPtr result = Solve(call);
  EXPECT_EQ(WrongIn(call, result), "");
  EXPECT_EQ(result->status, KAPRIS_CANCELLED);
  ASSERT_EQ(result->nstarts, 3);
  EXPECT_EQ(result->best_start, 1); // ten cells a part
  for (int i = 0; i < result->nstarts; i++)
    nfinished += result->starts[i].completed;
  EXPECT_EQ(nfinished, 0);
}

TEST(recall, a_partition_that_cannot_be_is_named)
{
  Call call = MakeCall(Circuit(30), 3);
  call.options.recall = [](kapris_start *, int *part, void *) {
    std::fill_n(part, 30, 3);
    return 1;
  };
  const ResultPtr result = Solve(call);
  EXPECT_EQ(result->status, KAPRIS_INVALID_ARGUMENT);
  EXPECT_STREQ(result->message, "recalled part[0] is 3, but it should be between 0 and 2");
}
