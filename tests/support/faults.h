// tests/support/faults.h - allocations that fail.
// SPDX-License-Identifier: MIT
//
// In a program that is linked with faults.cpp every operator new counts, that of the C++ library too; malloc and
// calloc count in the objects that the program is linked from if it is linked with --wrap for both.
#pragma once

#include <initializer_list>

enum class Failing { ONCE, ONWARD };

// Of the allocations from here on, that of number n, counted from 0, fails, or it and all after it.
void FailAllocation(long n, Failing failing);
// All succeed again. Returns how many failed.
long StopFailing();

// Runs the call with allocation 0, 1, 2, ... failing, once and from then on, until nothing failed any more;
// check(call's result, n) after each. Above dense, n grows by n / dense, so that long calls are sampled. Returns how
// many calls met a failure.
template <class Attempt, class Check>
long FailEach(Attempt attempt, Check check, long dense = 64)
{
  long ncalls = 0;

  for (const Failing failing : {Failing::ONCE, Failing::ONWARD})
    for (long n = 0;; n += 1 + n / dense) {
      FailAllocation(n, failing);
      const auto result = attempt();
      if (StopFailing() == 0)
        break;
      check(result, n);
      ncalls++;
    }
  return ncalls;
}
