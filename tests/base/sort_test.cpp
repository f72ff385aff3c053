// tests/base/sort_test.cpp - the order in which the key sorts leave equal keys, against their plain form.
// SPDX-License-Identifier: MIT

#include "base/sort.h"
#include "support/build.h"

#include <algorithm>

namespace
{

typedef std::vector<KeyVal> Pairs;

// A quicksort with the median of three that leaves sides of up to 21 to a straight insertion. Works on signed keys.
struct PlainSort {
  Pairs a;

  void Split(int lo, int hi)
  {
    const auto at = [&](int i) -> KeyVal & { return a[static_cast<std::size_t>(i)]; };
    const int mid = lo + (hi - lo) / 2;
    if (at(mid).key < at(lo).key)
      std::swap(at(mid), at(lo));
    if (at(hi).key < at(mid).key) {
      std::swap(at(hi), at(mid));
      if (at(mid).key < at(lo).key)
        std::swap(at(mid), at(lo));
    }
    const int pivot = at(mid).key;
    int l = lo + 1, r = hi - 1;
    while (l <= r) {
      for (; at(l).key < pivot; l++)
        ;
      for (; pivot < at(r).key; r--)
        ;
      if (l < r)
        std::swap(at(l), at(r));
      else if (l > r)
        break;
      l++;
      r--;
    }
    if (r - lo > 20)
      Split(lo, r);
    if (hi - l > 20)
      Split(l, hi);
  }

  // The smallest of the first entries goes to the front before the insertion.
  void Insert(std::size_t nfirst)
  {
    const auto less = [](KeyVal x, KeyVal y) { return x.key < y.key; };
    std::iter_swap(a.begin(), std::min_element(a.begin(), a.begin() + static_cast<long>(nfirst), less));
    std::stable_sort(a.begin() + 1, a.end(), less);
  }
};

Pairs Sorted(Pairs pairs, bool increasing)
{
  const std::size_t n = pairs.size();
  int descents = 0;

  for (std::size_t i = 0; increasing && i + 1 < n; i++)
    descents += pairs[i].key > pairs[i + 1].key;
  const bool nearly = increasing && static_cast<double>(n) * 0.05 > descents;
  if (n == 0 || (nearly && descents == 0))
    return pairs;
  for (KeyVal &pair : pairs)
    pair.key = increasing ? pair.key : ~pair.key;
  PlainSort sort = {pairs};
  if (n > 20 && !nearly)
    sort.Split(0, static_cast<int>(n) - 1);
  sort.Insert(nearly ? n : std::min<std::size_t>(n, 21));
  for (KeyVal &pair : sort.a)
    pair.key = increasing ? pair.key : ~pair.key;
  return sort.a;
}

} // namespace

TEST(sort, equal_keys_come_out_as_from_the_plain_sort)
{
  TestRandom random = {5};

  for (int round = 0; round < 4000; round++) {
    const int n = round < 300 ? round : random.Below(round % 20 == 0 ? 2000 : 150);
    const int range = 1 << random.Below(12), shape = random.Below(3);
    Pairs pairs;
    for (int i = 0; i < n; i++) {
      const int key = random.Below(range) - range / 2;
      pairs.push_back({shape == 0 ? key : shape == 1 ? i / 5 + key % 3 : key * (i % 2), i});
    }
    for (bool increasing : {true, false}) {
      Pairs sorted = pairs;
      (increasing ? ikeysort__ : dkeysort__)(n, sorted.data());
      const Pairs expected = Sorted(pairs, increasing);
      for (std::size_t i = 0; i < sorted.size(); i++)
        ASSERT_EQ(sorted[i].val, expected[i].val) << "entry " << i << " of " << n << " in round " << round;
    }
  }
}

TEST(sort, distinct_values_of_any_number)
{
  TestRandom random = {9};

  for (int n = 0; n < 50; n++)
    for (int round = 0; round < 20; round++) {
      std::vector<int> values(static_cast<std::size_t>(n)), sorted;
      for (int i = 0; i < n; i++)
        values[static_cast<std::size_t>(i)] = i * 40'000'000 - 1'000'000'000;
      sorted = values;
      for (std::size_t i = 1; i < values.size(); i++)
        std::swap(values[i], values[static_cast<std::size_t>(random.Below(static_cast<int>(i) + 1))]);
      SortDistinct(n, values.data());
      ASSERT_EQ(values, sorted) << n;
    }
}
