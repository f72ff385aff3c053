// tests/base/sort_test.cpp - when the order of equal keys is kept, and distinct values. What else becomes of equal keys
// is in every recorded result.
// SPDX-License-Identifier: MIT

#include "base/sort.h"
#include "support/build.h"

#include <algorithm>

TEST(sort, equal_keys_stay_in_order_while_less_than_a_twentieth_of_the_keys_fall)
{
  for (const int nfalls : {4, 5}) {
    std::vector<KeyVal> pairs;
    for (int i = 0; i < 100;
         i++) // tens of equal keys, in so many of them one that is less than the one before
      pairs.push_back({i / 10 - (i % 10 == 5 && i / 10 > 0 && i / 10 <= nfalls), i});
    ikeysort__(100, pairs.data());
    EXPECT_EQ(std::is_sorted(pairs.begin(), pairs.end(),
                             [](KeyVal a, KeyVal b) {
                               return std::make_pair(a.key, a.val) < std::make_pair(b.key, b.val);
                             }),
              nfalls < 5);
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
