// tests/core/sort_test.cpp - the sorts.
// SPDX-License-Identifier: MIT

#include "support/build.h"

#include <algorithm>
#include <numeric>

typedef std::vector<KeyVal> Pairs; // val is the place before sorting

// The first smallest pair to the front, then insertion: what small and nearly sorted arrays get.
static Pairs Inserted(Pairs a, bool (*before)(const KeyVal &, const KeyVal &))
{
  if (!a.empty())
    std::iter_swap(a.begin(), std::min_element(a.begin(), a.end(), before));
  for (std::size_t i = 2; i < a.size(); i++)
    for (std::size_t j = i; before(a[j], a[j - 1]); j--)
      std::swap(a[j], a[j - 1]);
  return a;
}

TEST(sort, keys_end_in_order_and_small_or_nearly_sorted_arrays_as_by_insertion)
{
  TestRandom random = {2};

  for (int n : {0, 1, 2, 3, 20, 21, 22, 23, 44, 100, 1000}) {
    for (int run = 0; run < 240; run++) {
      Pairs given(n);
      std::vector<int> ints(n);
      int descents = 0;
      for (int i = 0; i < n; i++) {
        // few and many random keys, signed; sorted; reversed; all equal; sorted but for a few
        const int keys[] = {random.Below(4),
                            (random.Below(2001) - 1000) * 2000000,
                            i / 3,
                            -i / 2,
                            7,
                            random.Below(40) == 0 ? random.Below(n) / 4 : i / 4};
        given[i] = {ints[i] = keys[run % 6], i};
        descents += i > 0 && ints[i - 1] > ints[i];
      }
      const bool up = run % 12 < 6;
      const auto before = up ? [](const KeyVal &a, const KeyVal &b) { return a.key < b.key; }
                             : [](const KeyVal &a, const KeyVal &b) { return a.key > b.key; };
      const auto same = [](const KeyVal &a, const KeyVal &b) { return a.key == b.key && a.val == b.val; };
      Pairs sorted = given;
      (up ? ikeysort__ : dkeysort__)(n, sorted.data());
      const Pairs inserted = n <= 20 || (up && n * 0.05 > descents) ? Inserted(given, before) : sorted;
      ASSERT_TRUE(std::equal(sorted.begin(), sorted.end(), inserted.begin(), same)) << n << " " << run;
      ASSERT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), before)) << n << " " << run;
      iintsort__(n, ints.data());
      for (int i = 0; i < n; i++)
        ASSERT_EQ(ints[i], sorted[up ? i : n - 1 - i].key);
      std::sort(sorted.begin(), sorted.end(), [](const KeyVal &a, const KeyVal &b) { return a.val < b.val; });
      ASSERT_TRUE(std::equal(sorted.begin(), sorted.end(), given.begin(), same)) << n << " " << run;
    }
  }
}
