// lib/base/random.cpp - the random generator and the two shuffles.
// SPDX-License-Identifier: MIT
//
// The generator is the additive feedback generator of degree 31 behind srand and rand of the GNU C library,
// so a seed gives the run that a program linked with that library would see, on every platform. Each thread
// has its own.
//   word i = word i-3 + word i-31 (mod 2^32);  draw = word / 2
// The 31 words of a seed come from a multiplicative congruential generator; the first 310 draws are thrown
// away.

#include "random.h"

#include <ctime>
#include <utility>

namespace kapris::engine::base
{

namespace
{

constexpr int DEGREE = 31;
constexpr int LAG = 3;
constexpr int WARMUP = 310;
constexpr double PER_DRAW = 4.656612873077393e-10; // 2^-31: turns a draw into a fraction of 1

// next is the position of word i-31, which word i replaces.
typedef RandomState Generator;
static_assert(sizeof(Generator::words) == DEGREE * sizeof(std::uint32_t));

constexpr std::uint32_t DrawWord(Generator *g)
{
  int lagged = g->next >= LAG ? g->next - LAG : g->next + DEGREE - LAG;
  std::uint32_t word = g->words[g->next] += g->words[lagged];

  g->next = g->next + 1 < DEGREE ? g->next + 1 : 0;
  return word;
}

constexpr Generator Seeded(std::uint32_t seed)
{
  Generator g = {};
  // Signed on purpose: for seeds from 2^31 on the remainder is taken of a negative number.
  std::int64_t word = static_cast<std::int32_t>(seed == 0 ? 1 : seed);

  g.words[0] = static_cast<std::uint32_t>(word);
  for (int i = 1; i < DEGREE; i++) {
    word = 16807 * word % 2147483647;
    if (word < 0)
      word += 2147483647;
    g.words[i] = static_cast<std::uint32_t>(word);
  }
  g.next = LAG;
  for (int i = 0; i < WARMUP; i++)
    DrawWord(&g);
  return g;
}

// A thread that never seeds draws the sequence of seed 1.
thread_local constinit Generator generator = Seeded(1);

} // namespace

void InitRandom__(std::int64_t seed)
{
  generator =
      Seeded(static_cast<std::uint32_t>(seed < 0 ? static_cast<std::int64_t>(std::time(nullptr)) : seed));
}

RandomState SaveRandom()
{
  return generator;
}

void RestoreRandom(const RandomState *saved)
{
  generator = *saved;
}

int RandomDraw()
{
  return static_cast<int>(DrawWord(&generator) >> 1);
}

// A random index below n. The products are taken from left to right; another order rounds differently.
static int RandomIndex(int n)
{
  return static_cast<int>(static_cast<double>(RandomDraw()) * n * PER_DRAW);
}

static void FillIdentity(int *p, int n, int init)
{
  if (init == 1)
    for (int i = 0; i < n; i++)
      p[i] = i;
}

void RandomPermute__(int *p, int n, int init)
{
  FillIdentity(p, n, init);
  for (int count = n / 16; count > 0; count--) {
    int i = RandomIndex(n - 8);
    int j = RandomIndex(n - 8);
    // One by one: the two blocks may overlap.
    for (int k = 0; k < 4; k++)
      std::swap(p[i + k], p[j + k]);
  }
}

void RandomPermuteFine__(int *p, int n, int init)
{
  FillIdentity(p, n, init);
  for (int count = 0; count < n; count++) {
    int i = RandomIndex(n);
    int j = RandomIndex(n);
    std::swap(p[i], p[j]);
  }
}

} // namespace kapris::engine::base
