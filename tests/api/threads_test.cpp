// tests/api/threads_test.cpp - calls on several threads at once give what they give alone.
// SPDX-License-Identifier: MIT

#include "api/call.h"
#include "plain/entry.h"

#include <thread>

namespace
{

struct Outcome {
  std::vector<int> part;
  long cut;

  bool operator==(const Outcome &) const = default;
};

} // namespace

static const Instance circuit = Circuit(70);
static const EntryPoint entries[] = {REFINE2, REFINEK, RECURSIVE, INTERNAL, KWAY};
static const int NREFINING = 2, NPLAIN = 5, NSAFE = 16;

static Outcome CallPlain(int number)
{
  const std::vector<int> netptr = circuit.NetPtr(), netind = circuit.NetInd();
  const int nparts = number == 0 ? 2 : 5, options[9] = {1, 2, 1, 1, 1, 0, 0, 7, 0};
  std::vector<int> part;
  int cut = -1;

  for (int i = 0; i < circuit.ncells; i++)
    part.push_back(i % nparts);
  entries[number](circuit.ncells, static_cast<int>(circuit.nets.size()), nullptr, netptr.data(),
                  netind.data(), nullptr, nparts, 5, options, part.data(), &cut);
  return {part, cut};
}

// The bits of number choose scheme, threads, fixed cells and members.
static Outcome CallSafe(int number)
{
  Call call = MakeCall(circuit, 5);

  call.options.scheme = number & 1 ? KAPRIS_KWAY : KAPRIS_RECURSIVE;
  call.options.threads = number & 2 ? 3 : 1;
  call.options.starts = 2;
  call.options.runs = 2;
  call.options.members = number & 8 ? 3 : 0;
  call.options.combinations = 2;
  if (number & 4)
    for (int i = 0; i < circuit.ncells; i++)
      call.fixed.push_back(i % 14 == 0 ? i / 14 : -1);
  const ResultPtr result = Solve(call);
  EXPECT_EQ(WrongIn(call, result), "");
  return {PartOf(result), static_cast<long>(result->cut)};
}

// All calls on the current thread, which must be fresh: the refining entries, which come first, go on from its random
// sequence. The others begin at a number that differs from thread to thread.
static void CallAll(std::vector<Outcome> *outcomes, int first)
{
  const int nothers = NPLAIN - NREFINING + NSAFE;

  for (int i = 0; i < NREFINING; i++)
    outcomes->push_back(CallPlain(i));
  outcomes->resize(NPLAIN + NSAFE);
  for (int i = 0; i < nothers; i++) {
    const int which = NREFINING + (first + i) % nothers;
    (*outcomes)[static_cast<std::size_t>(which)] =
        which < NPLAIN ? CallPlain(which) : CallSafe(which - NPLAIN);
  }
}

TEST(threads, calls_at_once_give_what_they_give_alone)
{
  std::vector<Outcome> alone;
  std::thread(CallAll, &alone, 0).join();

  std::vector<Outcome> outcomes[8];
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; t++)
    threads.emplace_back(CallAll, &outcomes[t], t);
  for (std::thread &thread : threads)
    thread.join();

  for (std::vector<Outcome> &outcome : outcomes) {
    // Seeded from the clock.
    const Outcome kway = std::exchange(outcome[NPLAIN - 1], alone[NPLAIN - 1]);
    EXPECT_EQ(kway.cut, CutOf(circuit, kway.part));
    EXPECT_LT(*std::max_element(kway.part.begin(), kway.part.end()), 5);
    EXPECT_GE(*std::min_element(kway.part.begin(), kway.part.end()), 0);
    EXPECT_EQ(outcome, alone);
  }
}
