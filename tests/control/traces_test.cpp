// tests/control/traces_test.cpp - the lines that each trace bit prints.
// SPDX-License-Identifier: MIT

#include "entry.h"

#include "control/ctrl.h"

#include <cctype>
#include <set>
#include <sstream>

namespace
{

typedef std::vector<int> Ints;
} // namespace

// What one trial prints under these trace bits. The partition to refine is two halves.
static std::string Printed(Entry entry, const Instance &instance, int rtype, int vcycle, int bits)
{
  const Ints netptr = instance.NetPtr(), netind = instance.NetInd();
  const Ints options = {1, 1, 5, rtype, vcycle, 0, 0, 1, bits};
  Ints part;
  int cut;

  for (int i = 0; i < instance.ncells; i++)
    part.push_back(2 * i / instance.ncells);
  testing::internal::CaptureStdout();
  entry(instance.ncells, static_cast<int>(instance.nets.size()), nullptr, netptr.data(), netind.data(),
        instance.netwgt.empty() ? nullptr : instance.netwgt.data(), instance.ncells < 10 ? 2 : 3, 25,
        options.data(), part.data(), &cut);
  return testing::internal::GetCapturedStdout();
}

// The text with every number, or row of numbers, and the blanks and the sign before it as one #.
static std::string Shape(const std::string &text)
{
  std::string shape;

  for (char c : text) {
    const bool counted = shape.ends_with('#');
    if (!std::isdigit(c) && !(c == '.' && counted)) {
      shape += c;
    } else if (!counted) {
      shape.erase(shape.find_last_not_of(" -") + 1);
      shape += shape.ends_with('#') ? "" : "#";
    }
  }
  return shape;
}

TEST(traces, each_bit_prints_its_lines_and_no_others)
{
  typedef std::set<std::string> Lines;
  const Lines coarsening = {std::string(58, '-'), "[#,#]", ""};
  const std::string start = "Partitions: [#,#]  [#,#], Initial Cut:# [#] [#]",
                    end = "\tMinimum Cut:# at# [#]";
  const std::string startk = "Partitions: [#,#], Balance: [#,#,#], Init Cut:#, Init SOED:#",
                    endk = "\tCut:#, SOED:#, Nmoves:#, Pwgts: [#]";
  const std::string start1 = "#-way Partitions: [#] Initial Cut:# [#] [#]",
                    end1 = "\tMinimum Cut:# [#] at# [#] [#]";
  const std::string end3 = "\tMinimum Cut:# [#] at# [#]", cycles = "          [# (min =#)]";
  const std::string header = "  Bisecting a hgraph of size [vertices=#, hedges=#, balance=#]";
  const std::string summary = "    The mincut for this bisection =#, (average =#) (balance =#)";
  const std::string headerk = "  Partitioning a hgraph of size [vertices=#, hedges=#, balance=#]";
  const std::string summaryk = "    The mincut for this partitioning =#, (average =#) (balance =#)",
                    summarys = "    The minsoed for this partitioning =#, (average =#) (balance =#)";
  const std::string move = "Gains from moving# from#:#, \tNewcut:#";
  const struct {
    Entry entry;
    int rtype, vcycle, bits;
    Lines lines;
  } rows[] = {
      {RECURSIVE, 1, 1, DBG_COARSEN, coarsening},
      {KWAY, 1, 0, DBG_COARSEN, coarsening},
      {RECURSIVE, 1, 1, DBG_INITPART, {"#", "Bestcut Icut:#"}},
      {KWAY, 1, 1, DBG_INITPART, {"#-way initial cut:#"}},
      {KWAY, 2, 1, DBG_INITPART, {"#-way initial soed:#"}},
      {INTERNAL, 1, 1, DBG_PASSES, {start, end}},
      {RECURSIVE, 2, 1, DBG_PASSES, {start, end, start1, end1, startk, endk}},
      {RECURSIVE, 3, 1, DBG_PASSES, {start, end, end3, startk, endk}},
      {REFINE2, 1, 1, DBG_PASSES, {start, end}},
      {KWAY, 1, 1, DBG_PASSES, {startk, endk}},
      {RECURSIVE, 1, 1, DBG_RUNS, {"", header, summary}},
      {KWAY, 1, 1, DBG_RUNS, {"", headerk, summaryk}},
      {KWAY, 2, 1, DBG_RUNS, {"", headerk, summarys}},
      {RECURSIVE, 1, 1, DBG_TRIALS, {"    Cut of trial#:\t# [#]"}},
      {KWAY, 1, 1, DBG_TRIALS, {"    Cut/SOED of trial#:\t# [#]"}},
      {INTERNAL, 1, 1, DBG_LONG, {"", header, summary, cycles, "    Cut of trial#:\t# [#,#] [#]"}},
      {INTERNAL, 1, 2, DBG_LONG, {"", header, summary, cycles, "    Cut of trial#:\t# [#,#] [#]"}},
      {INTERNAL, 1, 0, DBG_LONG, {"", header, summary, "    Cut of trial#:\t# [#,#] [#]"}},
      {KWAY, 1, 1, DBG_LONG, {"", headerk, summaryk, cycles, "    Cut/SOED of trial#:\t#[#,#] [#]"}},
      {REFINEK, 1, 1, DBG_LONG, {cycles}},
      {REFINE2, 1, 1, DBG_COARSEN | DBG_INITPART | DBG_RUNS | DBG_TRIALS | DBG_LONG, {}},
      {REFINE2, 1, 1, DBG_MOVES, {move + " [#]"}},
      {INTERNAL, 3, 1, DBG_MOVES, {move, move + " [#]"}},
      {KWAY, 1, 1, DBG_MOVES, {"\tMoving#[#] (# ->#) [#]#"}},
  };
  TestRandom random = {2};
  const Instance instance = RandomInstance(&random, 400, 600, ODD_LARGE);

  for (const auto &row : rows) {
    std::istringstream text(Shape(Printed(row.entry, instance, row.rtype, row.vcycle, row.bits)));
    Lines lines;
    for (std::string line; std::getline(text, line);)
      lines.insert(line);
    EXPECT_EQ(lines, row.lines) << &row - rows;
  }
}
