// lib/core/sort.cpp - the sorts of the library.
// SPDX-License-Identifier: MIT
//
// Which of two identical nets is kept, and the order of net-based matching, follow the order in which the key
// sorts leave equal keys. That order is therefore part of the results: the partition loop below is spelled
// out and must not be replaced by another sort.

#include "core.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

// A side that is no longer than this (last index - first index) is left to the final insertion pass.
constexpr int SMALL_SIDE = 20;

struct IncreasingKey {
  bool operator()(const KeyVal &a, const KeyVal &b) const
  {
    return a.key < b.key;
  }
};

struct DecreasingKey {
  bool operator()(const KeyVal &a, const KeyVal &b) const
  {
    return a.key > b.key;
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

// Exchanges, outermost first, the entries of a[*left..] that belong to the right with those of a[..*right] that belong to
// the left, while there are two blocks to look at. Which entries do is collected without a branch: it cannot be foretold.
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

// Splits a[lo..hi] around its pivot; afterwards a[lo..*right] and a[*left..hi] are the two sides.
template <class Less>
void Partition(KeyVal *a, int lo, int hi, int *left, int *right, Less less)
{
  const KeyVal pivot = a[OrderThree(a, lo, hi, less)];
  int l = lo + 1, r = hi - 1;

  PartitionBlocks(a, pivot, &l, &r, less);
  do {
    while (less(a[l], pivot))
      l++;
    while (less(pivot, a[r]))
      r--;
    if (l < r) {
      std::swap(a[l], a[r]);
      l++;
      r--;
    } else if (l == r) {
      l++;
      r--;
      break;
    }
  } while (l <= r);
  *left = l;
  *right = r;
}

// Sorts a[0..n-1] up to sides of at most SMALL_SIDE + 1 elements.
template <class Less>
void QuickSort(KeyVal *a, int n, Less less)
{
  // The larger side is pushed and the smaller continued, so the depth is at most log2 of n.
  struct {
    int lo, hi;
  } stack[8 * sizeof(int)], *top = stack;
  int lo = 0, hi = n - 1;

  for (;;) {
    int left, right;

    Partition(a, lo, hi, &left, &right, less);
    if (right - lo <= SMALL_SIDE && hi - left <= SMALL_SIDE) {
      if (top == stack)
        return;
      --top;
      lo = top->lo;
      hi = top->hi;
    } else if (right - lo <= SMALL_SIDE) {
      lo = left;
    } else if (hi - left <= SMALL_SIDE) {
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

// Straight insertion; the smallest of the first elements goes to the front and stops every later walk.
template <class Less>
void InsertionSort(KeyVal *a, int n, Less less)
{
  if (n < 2)
    return;
  std::swap(*a, *std::min_element(a, a + std::min(n, SMALL_SIDE + 1), less));
  for (int i = 1; i < n; i++) {
    KeyVal x = a[i];
    int j = i;
    for (; less(x, a[j - 1]); j--)
      a[j] = a[j - 1];
    a[j] = x;
  }
}

template <class Less>
void SortKeys(KeyVal *a, int n, Less less)
{
  if (n > SMALL_SIDE)
    QuickSort(a, n, less);
  InsertionSort(a, n, less);
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

// Ints that are few enough for a comparison of each with each, so many at a time.
constexpr int MAX_RANKED = 32, LANES = 4;
typedef int Lanes __attribute__((vector_size(LANES * sizeof(int)))); // of gcc and clang, for all machines

// Writes each to the place that the number of smaller ones gives it.
static void SortByRank(int n, int *a)
{
  Lanes values[MAX_RANKED / LANES];
  int b[MAX_RANKED];

  for (int i = 0; i < n; i++)
    b[i] = a[i];
  for (int i = n; i % LANES != 0; i++)
    b[i] = INT_MAX; // smaller than none
  std::memcpy(values, b, sizeof values);
  for (int i = 0; i < n; i++) {
    Lanes smaller = {0, 0, 0, 0};
    for (int j = 0; j < n; j += LANES)
      smaller -= values[j / LANES] < b[i];
    a[smaller[0] + smaller[1] + smaller[2] + smaller[3]] = b[i];
  }
}

static void Exchange(int *a, int low, int high)
{
  const int x = a[low], y = a[high], both = (x ^ y) & -static_cast<int>(y < x);

  a[low] = x ^ both;
  a[high] = y ^ both;
}

void SortDistinct__(int n, int *a)
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
