// lib/base/sort.cpp - the sorts of the library.
// SPDX-License-Identifier: MIT
//
// Which of two identical nets is kept, and the order of net-based matching, follow the order in which the key
// sorts leave equal keys. That order is therefore part of the results: the partition loop below is spelled
// out and must not be replaced by another sort.

#include "sort.h"

#include "memory.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <utility>

namespace kapris::engine::base
{

namespace
{

// A side that is no longer than this (last index - first index) is not split any more.
constexpr int SMALL_SIDE = 20;

struct IncreasingKey {
  static int Of(const KeyVal &a)
  {
    return a.key;
  }
  bool operator()(const KeyVal &a, const KeyVal &b) const
  {
    return Of(a) < Of(b);
  }
};

struct DecreasingKey {
  static int Of(const KeyVal &a)
  {
    return ~a.key;
  }
  bool operator()(const KeyVal &a, const KeyVal &b) const
  {
    return Of(a) < Of(b);
  }
};

// Brings the median of a[lo], the middle and a[hi] to the middle; the three end up in order, except that the
// first two are compared again only when the last two were exchanged. Returns the middle.
template <class Less>
int OrderThree(KeyVal *a, int lo, int hi, Less less)
{
  int mid = lo + (hi - lo) / 2;

  if (less(a[mid], a[lo]))
    std::swap(a[mid], a[lo]);
  if (less(a[hi], a[mid])) {
    std::swap(a[hi], a[mid]);
    if (less(a[mid], a[lo]))
      std::swap(a[mid], a[lo]);
  }
  return mid;
}

// Entries that Partition takes at a time from either end.
constexpr int BLOCK = 32;

// Exchanges, outermost first, the entries of a[*left..] that belong to the right with those of a[..*right] that
// belong to the left, while there are two blocks to look at. Which entries do is collected without a branch: it
// cannot be foretold.
template <class Less>
void PartitionBlocks(KeyVal *a, KeyVal pivot, int *left, int *right, Less less)
{
  unsigned char high[BLOCK], low[BLOCK]; // their distances from l and r
  int nhigh = 0, nlow = 0, firsthigh = 0, firstlow = 0;
  int l = *left, r = *right;

  while (r - l >= 2 * BLOCK) {
    if (firsthigh == nhigh) {
      firsthigh = nhigh = 0;
      for (int i = 0; i < BLOCK; i++) {
        high[nhigh] = static_cast<unsigned char>(i);
        nhigh += !less(a[l + i], pivot);
      }
    }
    if (firstlow == nlow) {
      firstlow = nlow = 0;
      for (int i = 0; i < BLOCK; i++) {
        low[nlow] = static_cast<unsigned char>(i);
        nlow += !less(pivot, a[r - i]);
      }
    }
    for (int n = std::min(nhigh - firsthigh, nlow - firstlow); n > 0; n--)
      std::swap(a[l + high[firsthigh++]], a[r - low[firstlow++]]);
    l += firsthigh == nhigh ? BLOCK : 0;
    r -= firstlow == nlow ? BLOCK : 0;
  }
  // What lies before the next entry to be exchanged is where it belongs.
  *left = firsthigh < nhigh ? l + high[firsthigh] : l;
  *right = firstlow < nlow ? r - low[firstlow] : r;
}

// The rest of the work: the same exchanges in a[l..r], of at most 64 entries, until l and r have passed each other.
template <class Less>
void PartitionRest(KeyVal *a, KeyVal pivot, int *left, int *right, Less less)
{
  const int first = *left, n = *right - first + 1;
  std::uint64_t high = 0, low = 0; // those that may not stay on the left, on the right

  for (int i = 0; i < n; i++) {
    high |= static_cast<std::uint64_t>(!less(a[first + i], pivot)) << i;
    low |= static_cast<std::uint64_t>(!less(pivot, a[first + i])) << i;
  }
  for (;;) {
    const int l = high == 0 ? n : std::countr_zero(high), r = 63 - std::countl_zero(low);
    if (l < r)
      std::swap(a[first + l], a[first + r]);
    if (l + 1 >= r) {
      *left = first + l + (l <= r);
      *right = first + r - (l <= r);
      return;
    }
    // What has been exchanged stops the next look.
    high = (high & (high - 1)) | std::uint64_t{1} << r;
    low = (low ^ std::uint64_t{1} << r) | std::uint64_t{1} << l;
  }
}

// Keys that are few enough for a comparison of each with each, so many at a time.
constexpr int MAX_RANKED = 32, LANES = 4;
typedef int Lanes __attribute__((vector_size(LANES * sizeof(int)))); // of gcc and clang, for all machines

struct Ranked {
  Lanes values[MAX_RANKED / LANES];
  int n;
};

// A copy of n keys.
template <class KeyAt>
Ranked Rank(int n, KeyAt keyat)
{
  int keys[MAX_RANKED];
  Ranked ranked;

  for (int i = 0; i < n; i++)
    keys[i] = keyat(i);
  for (int i = n; i % LANES != 0; i++)
    keys[i] = INT_MAX; // less than none
  std::memcpy(ranked.values, keys, sizeof keys);
  ranked.n = n;
  return ranked;
}

// The number of keys that are less.
inline int RankOf(const Ranked *ranked, int key)
{
  Lanes smaller = {0, 0, 0, 0};

  for (int j = 0; j < ranked->n; j += LANES)
    smaller -= ranked->values[j / LANES] < key;
  return smaller[0] + smaller[1] + smaller[2] + smaller[3];
}

// Splits a[lo..hi] around its pivot; afterwards a[lo..*right] and a[*left..hi] are the two sides.
template <class Less>
void Partition(KeyVal *a, int lo, int hi, int *left, int *right, Less less)
{
  const KeyVal pivot = a[OrderThree(a, lo, hi, less)];
  int l = lo + 1, r = hi - 1;

  PartitionBlocks(a, pivot, &l, &r, less);
  PartitionRest(a, pivot, &l, &r, less);
  *left = l;
  *right = r;
}

// Sorts a small side of the sorted array, a[lo..hi]; equal keys stay in their order. But the smallest of the first side
// changes places with its first entry before that.
template <class Less>
void SortSide(KeyVal *a, int lo, int hi, Less less)
{
  const int n = hi - lo + 1;
  KeyVal copy[SMALL_SIDE + 1];
  unsigned char nequal[SMALL_SIDE + 1] = {}; // entries already written that have so many smaller ones

  static_assert(SMALL_SIDE < MAX_RANKED);
  if (lo == 0)
    std::swap(*a, *std::min_element(a, a + n, less));
  std::copy(a + lo, a + hi + 1, copy);
  const Ranked ranked = Rank(n, [&](int i) { return Less::Of(copy[i]); });
  for (int i = 0; i < n; i++) {
    const int rank = RankOf(&ranked, Less::Of(copy[i]));
    a[lo + rank + nequal[rank]++] = copy[i];
  }
}

template <class Less>
void SortKeys(KeyVal *a, int n, Less less)
{
  // The larger side is pushed and the smaller continued, so the depth is at most log2 of n.
  struct {
    int lo, hi;
  } stack[8 * sizeof(int)], *top = stack;
  int lo = 0, hi = n - 1;

  if (n <= SMALL_SIDE) {
    if (n > 1)
      SortSide(a, lo, hi, less);
    return;
  }
  for (;;) {
    int left, right;

    Partition(a, lo, hi, &left, &right, less);
    const bool lowissmall = right - lo <= SMALL_SIDE, highissmall = hi - left <= SMALL_SIDE;
    if (lowissmall)
      SortSide(a, lo, right, less);
    if (highissmall)
      SortSide(a, left, hi, less);
    if (lowissmall && highissmall) {
      if (top == stack)
        return;
      --top;
      lo = top->lo;
      hi = top->hi;
    } else if (lowissmall) {
      lo = left;
    } else if (highissmall) {
      hi = right;
    } else if (right - lo > hi - left) {
      *top++ = {lo, right};
      lo = left;
    } else {
      *top++ = {left, hi};
      hi = right;
    }
  }
}

} // namespace

void BucketSortKeysInc(int n, int maxkey, const int *keys, const int *order, int *out)
{
  int *counts = ismalloc__(static_cast<std::int64_t>(maxkey) + 2, 0, "BucketSortKeysInc: counts");

  for (int i = 0; i < n; i++)
    counts[keys[i] + 1]++;
  for (int k = 1; k <= maxkey; k++)
    counts[k] += counts[k - 1];
  for (int i = 0; i < n; i++)
    out[counts[keys[order[i]]]++] = order[i];

  QVfree__(&counts);
}

// Writes each to the place that the number of smaller ones gives it.
static void SortByRank(int n, int *a)
{
  int copy[MAX_RANKED];

  std::copy(a, a + n, copy);
  const Ranked ranked = Rank(n, [&](int i) { return copy[i]; });
  for (int i = 0; i < n; i++)
    a[RankOf(&ranked, copy[i])] = copy[i];
}

static void Exchange(int *a, int low, int high)
{
  const int x = a[low], y = a[high], both = (x ^ y) & -static_cast<int>(y < x);

  a[low] = x ^ both;
  a[high] = y ^ both;
}

void SortDistinct(int n, int *a)
{
  if (n > MAX_RANKED) {
    std::sort(a, a + n);
  } else if (n > 4) {
    SortByRank(n, a);
  } else if (n == 4) {
    Exchange(a, 0, 2), Exchange(a, 1, 3);
    Exchange(a, 0, 1), Exchange(a, 2, 3);
    Exchange(a, 1, 2);
  } else if (n == 3) {
    Exchange(a, 0, 2), Exchange(a, 0, 1), Exchange(a, 1, 2);
  } else if (n == 2) {
    Exchange(a, 0, 1);
  }
}

void iintsort__(int n, int *a)
{
  std::sort(a, a + n);
}

void ikeysort__(int n, KeyVal *pairs)
{
  int descents = 0;

  for (int i = 0; i + 1 < n; i++)
    descents += pairs[i].key > pairs[i + 1].key;

  if (n * 0.05 > descents) {
    // Nearly sorted: the order of an insertion sort behind the first smallest pair, which is a stable order.
    // A merge gives the same without the quadratic case of two long sorted runs.
    if (descents > 0) {
      std::swap(*pairs, *std::min_element(pairs, pairs + n, IncreasingKey()));
      std::stable_sort(pairs + 1, pairs + n, IncreasingKey());
    }
  } else {
    SortKeys(pairs, n, IncreasingKey());
  }
}

void dkeysort__(int n, KeyVal *pairs)
{
  SortKeys(pairs, n, DecreasingKey());
}

} // namespace kapris::engine::base
