// tests/property/sweep_test.cpp - what must hold for every call: many small random hypergraphs, all entry points,
// all option values.
// SPDX-License-Identifier: MIT
//
// KAPRIS_SWEEP_CALLS sets the number of calls and KAPRIS_SWEEP_SEED the first seed; a failure prints the smallest
// call that still fails, as source text.

#include "property/run.h"

static Call RandomCall(std::uint64_t seed)
{
  TestRandom random = {seed};
  Call call = {};
  const int ncells = random.Chance(5) ? random.Below(4) : 4 + random.Below(random.Chance(15) ? 400 : 60);
  const int oddities = random.Chance(30) ? 0 : random.Below(ODD_ALL + 1);

  call.entry = Entry(random.Below(NENTRIES));
  call.instance = RandomInstance(&random, ncells, random.Below(2 * ncells + 1), oddities);
  const bool kway = call.entry == PART_KWAY || call.entry == REFINE_KWAY;
  const bool recursive = call.entry == PART_RECURSIVE || call.entry == PART_RECURSIVE_INTERNAL;
  call.nparts = call.entry == REFINE_2WAY ? 2 : random.Chance(4) ? 70 : 2 + random.Below(9);
  call.UBfactor = kway ? 5 + random.Below(60) : 1 + random.Below(49);
  call.options = {random.Chance(90),
                  random.Chance(10) ? 12 : 1 + random.Below(4),
                  1 + random.Below(5),
                  1 + random.Below(kway ? 2 : 3),
                  random.Below(4),
                  random.Below(2),
                  recursive && random.Chance(40),
                  random.Chance(20) ? -1 : random.Below(1000),
                  0};
  if (!recursive && call.entry != PART_KWAY)
    call.part = RandomParts(&random, ncells, call.nparts, 0);
  else if (call.options[0] && call.options[6])
    call.part = RandomParts(&random, ncells, call.nparts, 10 * random.Below(11));
  return call;
}

// Drops nets as long as the call still fails.
static Call Shrunk(Call call)
{
  for (std::size_t j = call.instance.nets.size(); j-- > 0;) {
    Call smaller = call;
    smaller.instance.nets.erase(smaller.instance.nets.begin() + static_cast<std::ptrdiff_t>(j));
    if (!smaller.instance.netwgt.empty())
      smaller.instance.netwgt.erase(smaller.instance.netwgt.begin() + static_cast<std::ptrdiff_t>(j));
    if (!Broken(smaller).empty())
      call = smaller;
  }
  return call;
}

TEST(sweep, every_call_gives_a_valid_partition_with_the_reported_objective)
{
  const long first = Setting("KAPRIS_SWEEP_SEED", 1), ncalls = Setting("KAPRIS_SWEEP_CALLS", 600);

  for (long seed = first; seed < first + ncalls; seed++) {
    const Call call = RandomCall(static_cast<std::uint64_t>(seed));
    const std::string broken = Broken(call);
    if (!broken.empty())
      FAIL() << "seed " << seed << ": " << broken << "\n" << Literal(Shrunk(call));
  }
}
