// tests/core/bounds_test.cpp - what sides and parts may weigh, with numbers worked out by hand.
// SPDX-License-Identifier: MIT

#include "support/graph.h"

namespace
{

const std::int64_t P60 = std::int64_t{1} << 60, P57 = P60 / 8;

// Bounds by shares and limits, which the record only points to.
struct Limited {
  std::vector<double> shares;
  std::vector<Weight> limits;
  Bounds bounds = {};

  Limited(const std::vector<double> &ofparts, const Weights &mostofparts, std::int64_t total = 0)
      : shares(ofparts), limits(mostofparts.begin(), mostofparts.end())
  {
    bounds.shares = shares.empty() ? nullptr : shares.data();
    bounds.limits = limits.empty() ? nullptr : limits.data();
    bounds.total = static_cast<Weight>(total);
  }
  Limited(const Limited &) = delete;
};

} // namespace

TEST(bounds, aiming_by_limits_spreads_their_slack_over_the_bisections_to_come)
{
  const std::vector<double> four = {0.1, 0.2, 0.3, 0.4}, half = {0.5, 0.5};
  const struct {
    std::vector<double> shares;
    Weights limits;
    int nparts, first, nfixed;
    std::int64_t total;
    double part0frac, ubfactor;
    int nanchors0;
  } rows[] = {
      // Side 0 may be 363/300 = 1.21 of its share, side 1 more: 1.1 in each of two bisections.
      {four, {121, 242, 370, 480}, 4, 0, 4, 1000, 0.3, 0.3 * 0.1, 2},
      // Parts 2 and 3 alone: 370/300 and 480/400 = 1.2, in one. Anchors: those of two parts.
      {four, {121, 242, 370, 480}, 2, 2, 2, 700, 3 / 7.0, 3 / 7.0 * 0.2, 1},
      // Three parts take two bisections: 144/100 in two. The smaller side counts: 1/4.
      {{0.25, 0.25, 0.5}, {144, 144, 288}, 3, 0, 0, 400, 0.25, 0.25 * 0.2, 0},
      // Less room than weight, and no weight: none.
      {half, {40, 60}, 2, 0, 0, 100, 0.5, 0.0, 0},
      {half, {40, 60}, 2, 0, 0, 0, 0.5, 0.0, 0},
      {half, {5 * P57, 5 * P57}, 2, 0, 0, P60, 0.5, 0.125, 0},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    if (row.total == P60 && !IS_WIDE)
      continue;
    Limited limited(row.shares, row.limits);
    AimBounds(&limited.bounds, row.nparts, row.first, static_cast<Weight>(row.total), row.nfixed);
    EXPECT_NEAR(limited.bounds.part0frac, row.part0frac, IS_WIDE ? 1e-15 : 1e-7);
    EXPECT_NEAR(limited.bounds.ubfactor, row.ubfactor, IS_WIDE ? 1e-15 : 1e-7);
    EXPECT_EQ(limited.bounds.dealshare, limited.bounds.part0frac);
    EXPECT_EQ(limited.bounds.nanchors0, row.nanchors0);
    EXPECT_TRUE(limited.bounds.inorder);
  }
}

TEST(bounds, sides_may_be_so_far_below_their_shares)
{
  const auto lowest = [](float part0frac, float ubfactor, std::int64_t total) {
    Bounds bounds = {};
    Weight minpwgt[2];
    bounds.part0frac = part0frac;
    bounds.ubfactor = ubfactor;
    SideBounds(&bounds, static_cast<Weight>(total), minpwgt);
    return Weights{minpwgt[0], minpwgt[1]};
  };

  EXPECT_EQ(lowest(0.25f, 0.125f, 80), (Weights{10, 50}));
  EXPECT_EQ(lowest(0.5f, 0.0625f, 9), (Weights{3, 3})); // 3.9 truncated
  EXPECT_EQ(lowest(0.25f, 0.5f, 80), (Weights{-20, 20}));
  // 0.05f is a hair above 0.05: side 0 in single precision does not see it.
  EXPECT_EQ(lowest(0.5f, 0.05f, 100), (Weights{IS_WIDE ? 44 : 45, 44}));
  if (IS_WIDE) { // bits that single precision would drop
    EXPECT_EQ(lowest(0.5f, 0.25f, P60 + 256), (Weights{2 * P57 + 64, 2 * P57 + 64}));
  }
}

TEST(bounds, parts_stay_between_their_limits)
{
  typedef std::vector<Weights> Both; // upper, lower
  const auto bounded = [](const Limited &limited, int nparts, std::int64_t total) {
    Weight upper[4], lower[4];
    PartBounds(&limited.bounds, nparts, static_cast<Weight>(total), upper, lower);
    return Both{WeightsOf(nparts, upper), WeightsOf(nparts, lower)};
  };

  // By ubfactor: 1.25 x 100/4 = 31.25 and 100/4 / 1.25.
  Limited even({}, {});
  even.bounds.ubfactor = 1.25f;
  EXPECT_EQ(bounded(even, 4, 100), (Both{{31, 31, 31, 31}, {20, 20, 20, 20}}));
  // Half of the weight is in cells without nets: limits halved and rounded up. As far below a share as the limit is
  // above, 5 x 5/6, 10 x 10/11, 15 x 15/17, 20 x 20/22 ...
  const Limited four({0.1, 0.2, 0.3, 0.4}, {12, 22, 33, 44}, 100);
  EXPECT_EQ(bounded(four, 4, 50), (Both{{6, 11, 17, 22}, {4, 9, 13, 18}}));
  // ... but at least by 5 %, and not to 0.
  EXPECT_EQ(bounded(Limited({0.5, 0.5}, {50, 50}, 100), 2, 100), (Both{{50, 50}, {47, 47}}));
  EXPECT_EQ(bounded(Limited({0.5, 0.5}, {1, 1}, 2), 2, 2), (Both{{1, 1}, {1, 1}}));
  EXPECT_EQ(bounded(Limited({0.5, 0.5}, {0, 0}, 0), 2, 0), (Both{{0, 0}, {1, 1}}));
  if (IS_WIDE) {
    even.bounds.ubfactor = 2.0f;
    EXPECT_EQ(bounded(even, 4, P60 + 1024), (Both{Weights(4, 4 * P57 + 512), Weights(4, P57 + 128)}));
    // Half of the weight again: limits of 2^60 for shares of 2^59.
    const Limited twice({0.5, 0.5}, {2 * P60, 2 * P60}, 2 * P60);
    EXPECT_EQ(bounded(twice, 2, P60), (Both{{P60, P60}, {2 * P57, 2 * P57}}));
  }
}

TEST(bounds, the_lightest_part_and_side_are_the_lightest_for_their_shares)
{
  const auto part = [](const std::vector<double> &shares, const Weights &wgts) {
    const Limited limited(shares, {});
    const std::vector<Weight> kpwgts(wgts.begin(), wgts.end());
    return LightestPart(&limited.bounds, static_cast<int>(wgts.size()), kpwgts.data());
  };
  const auto side = [](double share0, std::int64_t wgt0, std::int64_t wgt1) {
    const Weight pwgts[2] = {static_cast<Weight>(wgt0), static_cast<Weight>(wgt1)};
    Bounds bounds = {};
    bounds.dealshare = share0;
    return LighterSide(&bounds, pwgts);
  };

  EXPECT_EQ(part({}, {3, 1, 1}), 1);
  EXPECT_EQ(part({0.25, 0.25, 0.5}, {10, 10, 20}), 0); // 40 each: the first
  EXPECT_EQ(part({0.25, 0.25, 0.5}, {10, 9, 20}), 1);
  EXPECT_EQ(part({0.25, 0.25, 0.5}, {10, 10, 19}), 2);
  EXPECT_EQ(side(0.5, 4, 5), 0);
  EXPECT_EQ(side(0.5, 5, 5), 1); // the second
  EXPECT_EQ(side(0.25, 10, 30), 1);
  EXPECT_EQ(side(0.25, 9, 30), 0);
  EXPECT_EQ(side(0.25, 10, 29), 1);
  if (IS_WIDE) {
    EXPECT_EQ(part({}, {P60 + 1, P60, P60 + 1}), 1);
    EXPECT_EQ(part({0.25, 0.75}, {P60 + 256, 3 * P60}), 1);
    EXPECT_EQ(side(0.5, P60, P60 + 256), 0);
    EXPECT_EQ(side(0.5, P60 + 256, P60), 1);
  }
}
