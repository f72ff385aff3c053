// tests/plain/timers_test.cpp - the report of CPU times: asked for by one bit, it adds up and changes no result.
// SPDX-License-Identifier: MIT

#include "entry.h"

#include "base/random.h"

#include <cstdio>

static double TimeOf(const std::string &report, const std::string &name)
{
  const std::size_t at = report.find(" " + name + ": ");
  double seconds = -1.0;

  EXPECT_NE(at, std::string::npos) << name;
  EXPECT_EQ(std::sscanf(report.c_str() + at + name.size() + 3, "%lf", &seconds), 1) << name;
  return seconds;
}

TEST(timers, report_adds_up_and_changes_no_result)
{
  TestRandom random = {3};
  const Instance instance = RandomInstance(&random, 600, 900, 0);
  const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  const auto run = [&](EntryPoint entry, int dbglvl, std::string *printed) {
    const std::vector<int> options = {1, 4, 2, 1, 1, 0, 0, 7, dbglvl};
    std::vector<int> part(600, 0);
    int cut = -1;
    InitRandom__(1);
    testing::internal::CaptureStdout();
    entry(600, 900, nullptr, netptr.data(), netind.data(), nullptr, 2, 10, options.data(), part.data(), &cut);
    *printed = testing::internal::GetCapturedStdout();
    part.push_back(cut);
    return part;
  };

  for (EntryPoint entry : {RECURSIVE, INTERNAL, REFINE2, REFINEK}) {
    std::string report, nothing;
    const std::vector<int> timed = run(entry, 32, &report), plain = run(entry, 0, &nothing);
    EXPECT_EQ(timed, plain);
    EXPECT_EQ(nothing, "");
    const double parts =
        TimeOf(report, "Coarsening") + TimeOf(report, "Initial Partition") + TimeOf(report, "Uncoarsening");
    // Each is rounded to thousandths.
    EXPECT_LE(parts, TimeOf(report, "Multilevel") + 0.003);
    EXPECT_LE(TimeOf(report, "Multilevel"), TimeOf(report, "Total") + 0.001);
  }
}
