// tests/cli/bounds_test.cpp - the limits of parts, and the sums that must fit the library.
// SPDX-License-Identifier: MIT

#include "bounds.h"
#include "failure.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace kapris_cli;

TEST(bounds, leaves_a_side_what_the_lower_bound_of_the_other_does_not_claim)
{
  // Each value is the weight less the bound of the other side, as in 153 - trunc(0.3 * 153).
  EXPECT_EQ(PartLimit(153, 2, 20, 0), 108);
  EXPECT_EQ(PartLimit(153, 2, 20, 1), 108);
  EXPECT_EQ(PartLimit(3, 2, 5, 0), 2);
  EXPECT_EQ(PartLimit(10007, 4, 5, 3), 3028); // 10007 - 4503 = 5504, 5504 - 2476
  EXPECT_EQ(PartLimit(0, 2, 5, 1), 0);
  // 0.45 * 100 is 45 in single precision and just below it in double: the sides differ.
  EXPECT_EQ(PartLimit(100, 2, 5, 0), 56);
  EXPECT_EQ(PartLimit(100, 2, 5, 1), 55);
}

TEST(bounds, has_one_limit_for_all_parts_where_they_are_polished)
{
  // One of three: 3001 - 1700 = 1301. The others: 3001 - 700 = 2301, 2301 - 920 = 1381.
  for (int part = 0; part < 3; part++)
    EXPECT_EQ(PartLimit(3001, 3, 10, part), 1381);
  // 1/3 - 0.49 claims nothing for the first part: 301 - trunc(0.01 * 301).
  EXPECT_EQ(PartLimit(301, 3, 49, 0), 298);
  // 65 = 32 + 33, and the last of 33 = 16 + 17 is one bisection deeper than the first.
  EXPECT_EQ(PartLimit(1000003, 65, 5, 0), 27295);
  EXPECT_EQ(PartLimit(1000003, 65, 5, 64), 28335);
}

struct SumCase {
  const char *what; // part of the message, empty if the sums fit
  int nparts;
  std::string text;
};

TEST(bounds, accepts_sums_up_to_the_last_bit_and_no_further)
{
  const SumCase cases[] = {
      {"", 2, "0 2 10\n1073741822\n1\n"},
      {"twice the total cell weight is 2147483648", 2, "0 2 10\n1073741823\n1\n"},
      {"", 2, "0 1073741823\n"},
      {"twice the total cell weight", 2, "0 1073741824\n"},
      {"", 2, "2 2 1\n2147483645 1\n1 2\n"},
      {"the total net weight plus one is 2147483648", 2, "2 2 1\n2147483646 1\n1 2\n"},
      {"ten times the total net weight plus one is 2147483651", 3, "1 2 1\n214748365 1\n"},
      {"ten times", 64, "1 2 1\n214748365 1\n"},
      {"", 64, "1 2 1\n214748364 1\n"},
      {"", 65, "1 2 1\n214748365 1\n"},
      {"net weight x parts", 12, "1 12 1\n200000000 1 2 3 4 5 6 7 8 9 10 11 12\n"},
      {"", 10, "1 12 1\n200000000 1 2 3 4 5 6 7 8 9 10 11 12\n"},
      {"the nets of cell 2 is 2200000000", 2, "2 3 1\n1000000000 2 2 1\n200000000 2 3\n"},
      {"", 2, "2 3 1\n1000000000 2 2 1\n147483647 2 3\n"},
  };

  for (const SumCase &sum : cases) {
    SCOPED_TRACE(sum.text);
    const Hgr hgr = ReadHgr("x", sum.text);
    try {
      CheckSums("a.hgr", hgr, sum.nparts);
      EXPECT_STREQ(sum.what, "");
    } catch (const Failure &failure) {
      EXPECT_EQ(failure.status, EXIT_MALFORMED);
      EXPECT_STRNE(sum.what, "") << failure.text;
      EXPECT_NE(failure.text.find(sum.what), std::string::npos) << failure.text;
    }
  }
}
