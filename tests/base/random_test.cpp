// tests/base/random_test.cpp - the generator against that of the C library, and the shuffles.
// SPDX-License-Identifier: MIT

#include "base/random.h"
#include "support/build.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <numeric>
#include <thread>

#ifdef __GLIBC__ // whose generator ours is
static std::vector<int> Draws(int (*draw)())
{
  std::vector<int> draws(3000);
  std::generate(draws.begin(), draws.end(), draw);
  return draws;
}

static std::vector<int> LibraryDraws(std::int64_t seed)
{
  std::srand(static_cast<unsigned>(seed));
  return Draws(std::rand);
}

TEST(random, draws_what_the_C_library_draws_for_the_seed)
{
  for (std::int64_t seed : {0L, 1L, 7L, 2147483647L, 2147483648L, 4294967295L, 4294967296L + 7}) {
    InitRandom__(seed);
    // A new thread draws the sequence of seed 1 and disturbs no other.
    std::thread([] { EXPECT_EQ(Draws(RandomDraw), LibraryDraws(1)); }).join();
    EXPECT_EQ(Draws(RandomDraw), LibraryDraws(seed)) << seed;
  }
  const std::time_t now = std::time(nullptr);
  InitRandom__(-1);
  const std::vector<int> draws = Draws(RandomDraw);
  EXPECT_TRUE(draws == LibraryDraws(now) || draws == LibraryDraws(now + 1));
}
#endif
