// tests/cli/hgr_test.cpp - the .hgr reader: what it accepts, and where it finds faults.
// SPDX-License-Identifier: MIT

#include "failure.h"

#include "io/hgr.h"

#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

using namespace kapris_cli;

using Ints = std::vector<int>;
using Nets = std::vector<Ints>;

static Nets NetsOf(const Hgr &hgr)
{
  Nets nets;

  for (size_t n = 0; n + 1 < hgr.netptr.size(); n++)
    nets.emplace_back(hgr.netind.begin() + hgr.netptr[n], hgr.netind.begin() + hgr.netptr[n + 1]);
  return nets;
}

struct GoodCase {
  const char *text;
  int ncells;
  Nets nets;
  Ints netwgts;
  Ints cellwgts;
};

TEST(hgr, reads_every_format_code_and_line_style)
{
  const GoodCase cases[] = {
      // The four codes, and what counts as one of them.
      {"2 3\n1 2\n2 3\n", 3, {{0, 1}, {1, 2}}, {}, {}},
      {"2 3 00\n1 2\n2 3\n", 3, {{0, 1}, {1, 2}}, {}, {}},
      {"2 3 1\n7 1 2\n0 2 3\n", 3, {{0, 1}, {1, 2}}, {7, 0}, {}},
      {"1 3 01\n2147483647 3\n", 3, {{2}}, {2147483647}, {}},
      {"1 3 10\n1 2\n4\n0\n6\n", 3, {{0, 1}}, {}, {4, 0, 6}},
      {"1 2 11\n9 1 2\n4\n5\n", 2, {{0, 1}}, {9}, {4, 5}},
      // Comments before the header, between nets, among the cell weights and at the end; blank lines at both
      // ends.
      {"\n% a\n  % b\n1 2 10\n%1 1\n1 2\n% c\n4\n%5\n6\n\n% d\n \n", 2, {{0, 1}}, {}, {4, 6}},
      // Line ends, separators and the last line.
      {"2 3\r\n1 2\r\n3\r\n", 3, {{0, 1}, {2}}, {}, {}},
      {" 2\t3 \n\t1 \t 2 \n3", 3, {{0, 1}, {2}}, {}, {}},
      {"1 1 10\n1\n5", 1, {{0}}, {}, {5}},
      // Kept as given: repeated pins, nets without pins, nothing at all.
      {"1 3\n2 2 1 2\n", 3, {{1, 1, 0, 1}}, {}, {}},
      {"4 2\n\n1\n\n \n", 2, {{}, {0}, {}, {}}, {}, {}},
      {"2 2 1\n5\n6 1\n", 2, {{}, {0}}, {5, 6}, {}},
      {"0 0", 0, {}, {}, {}},
      {"0 2147483647\n", 2147483647, {}, {}, {}},
  };

  for (const GoodCase &good : cases) {
    SCOPED_TRACE(good.text);
    Hgr hgr;
    try {
      hgr = ReadHgr("x", good.text);
    } catch (const Failure &failure) {
      ADD_FAILURE() << failure.text;
      continue;
    }
    EXPECT_EQ(hgr.ncells, good.ncells);
    EXPECT_EQ(hgr.nnets, static_cast<int>(good.nets.size()));
    EXPECT_EQ(NetsOf(hgr), good.nets);
    EXPECT_EQ(hgr.netwgts, good.netwgts);
    EXPECT_EQ(hgr.cellwgts, good.cellwgts);
  }
}

struct BadCase {
  const char *text;
  const char *place;
  const char *message;
};

TEST(hgr, names_place_and_value_of_every_fault)
{
  const BadCase cases[] = {
      {"", "1:1", "the header is missing"},
      {"% only a comment\n\n", "3:1", "the header is missing"},
      {"5\n", "1:2", "the number of cells is missing"},
      {"1 2 3 4\n", "1:5", "the format code is '3', not 0"},
      {"1 2 12\n1\n", "1:5", "'12'"},
      {"1 2 100\n1\n", "1:5", "'100'"},
      {"1 2 1 7\n1\n", "1:7", "'7' is left over after the header"},
      {"-1 2\n", "1:1", "the number of nets: '-1' is negative"},
      {"1 4294967297\n1\n", "1:3", "the number of cells: '4294967297' is above 2147483647"},
      // Counts that the bytes cannot hold fail before memory is taken for them.
      {"2000000000 5\n1 2\n", "1:1", "need at least 1999999999 bytes, but only 4 follow"},
      {"4 5 1\n1 2\n3\n", "1:1", "4 nets with weights need at least 7 bytes, but only 6 follow"},
      {"1 2000000000 10\n1 2\n", "1:1", "1 nets and 2000000000 cell weights need at least 4000000000 bytes"},
      {"3 3\n1 2\n2 3\n", "4:1", "the text ends after 2 of 3 nets"},
      {"1 3 10\n1 2\n1111\n", "4:1", "the text ends after 1 of 3 cell weights"},
      // Pins.
      {"1 3\n1 0 2\n", "2:3", "pin 0 in net 1 (line 2): pins count from 1"},
      {"2 3\n1\n2\t4\n", "3:3", "pin 4 in net 2 (line 3): there are only 3 cells"},
      {"1 3\n-0\n", "2:1", "pin: '-0' is negative"},
      {"1 3\n1 99999999999999999999999\n", "2:3", "is above 2147483647"},
      {"1 3\n1 2,3\n", "2:3", "pin: '2,3' is not a whole number"},
      {"1 3\n1 2.0\n", "2:3", "'2.0'"},
      {"1 3\n1 +2\n", "2:3", "'+2'"},
      {"1 3\n1 2 % pins\n", "2:5", "'%' is not a whole number"},
      {"1 3\n1 \x01\xff\n", "2:3", "'\\x01\\xff'"},
      // Weights.
      {"1 3 1\n\n", "2:1", "the weight of net 1 is missing"},
      {"1 3 1\n-2 1\n", "2:1", "net weight: '-2' is negative"},
      {"1 2 10\n1\n1\n\n3\n", "4:1", "the weight of cell 2 is missing"},
      {"1 2 10\n1\n1\nx\n", "4:1", "cell weight: 'x' is not a whole number"},
      {"1 2 10\n1\n1 2\n", "3:3", "'2' is left over after the cell weight"},
      // After the end; the line counts comments and Windows line ends.
      {"% c\r\n1 2\r\n% d\r\n1 2\r\n\r\n  2\r\n", "6:3", "'2' is left over after the last net"},
      {"1 1 10\n1\n1\n1\n", "4:1", "'1' is left over after the last cell weight"},
  };

  for (const BadCase &bad : cases) {
    SCOPED_TRACE(bad.text);
    try {
      ReadHgr("a.hgr", bad.text);
      ADD_FAILURE() << "was read";
    } catch (const Failure &failure) {
      EXPECT_EQ(failure.status, EXIT_MALFORMED);
      const std::string start = "a.hgr:" + std::string(bad.place) + ": ";
      EXPECT_EQ(failure.text.substr(0, start.size()), start) << failure.text;
      EXPECT_NE(failure.text.find(bad.message), std::string::npos) << failure.text;
    }
  }
}

TEST(hgr, lists_every_fault_and_oddity_that_it_can_go_on_after)
{
  Problems problems;

  ReadHgr("a", "5 4 11\n0 1 2 2 2\n5 0 9 x 3 1\n\n7\n1 4\n-1\n2 2\n\n3\n4\n", &problems);
  const char *const expected[] = {"a:2:1: warning: net 1 has the weight 0",
                                  "a:2:7: warning: pin 2 is repeated in net 1 (line 2)",
                                  "a:2:9: warning: pin 2 is repeated in net 1 (line 2)",
                                  "a:3:3: pin 0 in net 2 (line 3): pins count from 1",
                                  "a:3:5: pin 9 in net 2 (line 3): there are only 4 cells",
                                  "a:3:7: pin: 'x' is not a whole number",
                                  "a:4:1: the weight of net 3 is missing",
                                  "a:4:1: warning: net 3 has no pins",
                                  "a:5:1: warning: net 4 has no pins",
                                  "a:7:1: cell weight: '-1' is negative",
                                  "a:8:3: '2' is left over after the cell weight",
                                  "a:9:1: the weight of cell 3 is missing",
                                  "a:11:1: '4' is left over after the last cell weight"};
  ASSERT_EQ(problems.kept.size(), std::size(expected));
  for (size_t i = 0; i < std::size(expected); i++)
    EXPECT_EQ(problems.kept[i].text.rfind(expected[i], 0), 0u) << problems.kept[i].text;
  EXPECT_EQ(problems.nerrors, 8);
  EXPECT_EQ(problems.nwarnings, 5);

  Problems many;
  std::string text = "1 1\n";
  for (int i = 0; i < 1500; i++)
    text += "2 ";
  ReadHgr("a", text, &many);
  EXPECT_EQ(many.kept.size(), 1000u);
  EXPECT_EQ(many.nerrors, 1500);
}

// Lines 1 to 4 name their neighbours. Once more edges than lines make every number a valid pin.
TEST(hgr, recognises_a_graph_that_was_taken_for_a_hypergraph)
{
  const struct {
    const char *text;
    bool graph;
  } cases[] = {{"4 4\n2 3\n1 3\n1 2 4\n3\n", true},  {"4 6\n2 3 4\n1 3 4\n1 2 4\n1 2 3\n", true},
               {"3 2\n3\n3\n1 2\n", true},           {"4 4\n2 3\n1 3\n1 2 4\n2\n", false},
               {"4 3\n2 3\n1 3\n1 2 4\n3\n", false}, {"2 1\n1\n1\n", false}};

  for (const auto &one : cases) {
    Problems problems;
    bool found = false;
    ReadHgr("a", one.text, &problems);
    for (const Problem &problem : problems.kept)
      found |= problem.text.rfind("a:2:1: warning: this looks like an adjacency list", 0) == 0;
    EXPECT_EQ(found, one.graph) << one.text;
  }
}
