// tests/base/memory_test.cpp - checked memory: the ledger, refused requests and the fatal exit.
// SPDX-License-Identifier: MIT

#include "support/build.h"

TEST(memory, ledger_counts_live_blocks_and_releases_the_younger_ones)
{
  ResetLedgerPeak();
  void *none = QVmalloc__(0, "none"), *a = QVmalloc__(100, "a"), *b = QVmalloc__(50, "b");
  const std::uint64_t serial = CurrentLedger()->serial;

  EXPECT_EQ(none, nullptr);
  QVfree__(&a, &none);
  EXPECT_EQ(a, nullptr);
  imalloc__(7, "younger");
  imalloc__(3, "youngest");
  EXPECT_EQ(CurrentLedger()->blocks, 3u);
  EXPECT_EQ(CurrentLedger()->bytes, 90u);
  EXPECT_EQ(CurrentLedger()->peak, 150u);
  ReleaseLedger(serial);
  EXPECT_EQ(CurrentLedger()->bytes, 50u);
  QVfree__(&b);
}

TEST(memory, refuses_what_is_above_a_limit_and_names_it)
{
  LimitLedger(0, 1);
  int *first = ismalloc__(5, 3, "first");
  EXPECT_FATAL(imalloc__(10, "two"), "Memory allocation failed for two. Requested size: 40 bytes\n");
  EXPECT_EQ(imalloc__(0, "three"), nullptr); // nothing is no request
  LimitLedger(120, -1);
  void *rest = QVmalloc__(100, "rest");
  EXPECT_FATAL(QVmalloc__(1, "more"), "Memory allocation failed for more. Requested size: 1 bytes\n");
  LimitLedger(0, -1);
  // With its header the block would be larger than the address space.
  EXPECT_FATAL(QVmalloc__(SIZE_MAX, "all"),
               "Memory allocation failed for all. Requested size: " + std::to_string(SIZE_MAX) + " bytes\n");
  EXPECT_EQ(first[0] + first[4], 6);
  QVfree__(&first, &rest);
}

TEST(memory, a_fatal_error_is_thrown_under_a_handler_and_else_ends_the_process_with_status_0)
{
  EXPECT_FATAL(errexit__("cell %d\n", 3), "cell 3\n"); // under two handlers, this one and that of all tests
  EXPECT_THROW(errexit__("under one"), FatalError);
  PopErrorHandler();
  EXPECT_EXIT(errexit__("cell %d\n", 7), testing::ExitedWithCode(0), "^cell 7\n\n$");
  PushErrorHandler();
}
