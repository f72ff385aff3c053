// tests/api/exchange_test.cpp - starts under a time limit that take partitions from elsewhere and tell of their own.
// SPDX-License-Identifier: MIT

#include "api/call.h"

struct Exchange {
  std::vector<int> visitor;
  int nasked = 0;
  std::vector<std::vector<int>> told;
};

static void Tell(const int *part, void *user)
{
  Exchange *exchange = static_cast<Exchange *>(user);

  exchange->told.emplace_back(part, part + exchange->visitor.size());
}

// Once, as if it had just arrived.
static int Arrive(int *part, void *user)
{
  Exchange *exchange = static_cast<Exchange *>(user);

  std::copy(exchange->visitor.begin(), exchange->visitor.end(), part);
  return exchange->nasked++ == 0;
}

TEST(exchange, a_start_goes_on_with_a_partition_that_arrives)
{
  for (const bool fixed : {false, true}) {
    Call call = MakeCall(Circuit(3000), 16);
    for (int i = 0; fixed && i < 3000; i++)
      call.fixed.push_back(i % 10 == 0 ? i / 10 % 16 : -1);
    const ResultPtr better = Solve(call);
    Exchange exchange = {};
    ResultPtr result;
    call.options.seed = 1;
    call.options.user = &exchange;
    call.options.improved = Tell;
    call.options.arrived = Arrive;
    // A slow machine gets no further than the first partition in a short time.
    for (double limit = 1.0; exchange.nasked < 2 && limit < 300.0; limit *= 4.0) {
      exchange = {PartOf(better), 0, {}};
      call.options.time_limit = limit;
      result = Solve(call);
    }

    EXPECT_EQ(WrongIn(call, result), "");
    EXPECT_LE(RankOf(call, result), RankOf(call, better));
    EXPECT_GT(exchange.nasked, 1);
    EXPECT_NE(std::find(exchange.told.begin(), exchange.told.end(), exchange.visitor), exchange.told.end());
    EXPECT_EQ(exchange.told.back(), PartOf(result));
    for (std::size_t i = 1; i < exchange.told.size(); i++)
      EXPECT_NE(exchange.told[i], exchange.told[i - 1]);
  }
}

TEST(exchange, a_partition_that_cannot_be_is_named)
{
  Call call = MakeCall(Circuit(300), 3);
  call.options.time_limit = 60.0;
  call.options.arrived = [](int *part, void *) {
    std::fill_n(part, 300, 3);
    return 1;
  };
  const ResultPtr result = Solve(call);
  EXPECT_EQ(result->status, KAPRIS_INVALID_ARGUMENT);
  EXPECT_STREQ(result->message, "arrived part[0] is 3, but it should be between 0 and 2");
}
