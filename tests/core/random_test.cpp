// tests/core/random_test.cpp - the generator against that of the C library, and the shuffles.
// SPDX-License-Identifier: MIT

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
    std::thread([] { EXPECT_EQ(Draws(RandomDraw__), LibraryDraws(1)); }).join();
    EXPECT_EQ(Draws(RandomDraw__), LibraryDraws(seed)) << seed;
  }
  const std::time_t now = std::time(nullptr);
  InitRandom__(-1);
  const std::vector<int> draws = Draws(RandomDraw__);
  EXPECT_TRUE(draws == LibraryDraws(now) || draws == LibraryDraws(now + 1));
}
#endif

TEST(random, shuffles_swap_what_the_draws_name)
{
  // A draw x n x 2^-31, which is exact in 64 bits.
  const auto below = [](std::int64_t n) { return (RandomDraw__() * n) >> 31; };

  for (int n : {0, 1, 2, 15, 16, 31, 32, 100, 1000}) {
    for (int kind = 0; kind < 4; kind++) {
      const int fine = kind / 2, init = kind % 2;
      std::vector<int> p(n), expected(n);
      std::iota(p.rbegin(), p.rend(), 0);
      expected = init ? std::vector<int>(p.rbegin(), p.rend()) : p;
      InitRandom__(n);
      (fine ? RandomPermuteFine__ : RandomPermute__)(p.data(), n, init);
      const int next = RandomDraw__();
      InitRandom__(n);
      for (int count = fine ? n : n / 16; count > 0; count--) { // no block below 16, one at 16
        const auto i = below(fine ? n : n - 8), j = below(fine ? n : n - 8);
        for (int k = 0; k < (fine ? 1 : 4); k++)
          std::swap(expected[i + k], expected[j + k]);
      }
      EXPECT_EQ(p, expected) << n << " " << kind;
      EXPECT_EQ(next, RandomDraw__()); // as many draws
    }
  }
}
