// tests/cli/bounds_test.cpp - the limits of parts, and the sums that must fit the library.
// SPDX-License-Identifier: MIT

#include "bounds.h"
#include "failure.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace kapris_cli;

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
