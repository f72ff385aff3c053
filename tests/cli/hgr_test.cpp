// tests/cli/hgr_test.cpp - the .hgr reader: what it accepts, where it finds faults, and that no bytes harm
// it. SPDX-License-Identifier: MIT

#include "failure.h"

#include "io/hgr.h"

#include <gtest/gtest.h>
#include <random>
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
      {"1 3\n1 0 2\n", "2:3", "pin 0: cells are counted from 1"},
      {"2 3\n1\n2\t4\n", "3:3", "pin 4, but there are only 3 cells"},
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

// Between these, all kinds of lines that the reader knows.
static const std::string sound[] = {
    "% nets cells\n3 5\n1 2 3\n\n4 5 5\n",
    "3 5 1\n7 1 2\n2147483647\n0 4 5\n",
    "2 4 10\r\n1 2\r\n% weights\r\n3 4\r\n1\r\n0\r\n2147483647\r\n9",
    "2 3 11\n5 1 2\n6 2 3\n1\n% between\n2\n3\n\n",
};

static void Damage(std::string *text, std::mt19937 *random)
{
  static const std::string bytes("0123456789 \n\t\r%-+.\0\xff", 20);
  const size_t at = text->empty() ? 0 : (*random)() % text->size();
  const size_t length = 1 + (*random)() % 4;

  switch ((*random)() % 4) {
  case 0:
    text->insert(at, 1, bytes[(*random)() % bytes.size()]);
    break;
  case 1:
    text->erase(at, length);
    break;
  case 2:
    text->insert(at, text->substr(at, length));
    break;
  default:
    text->replace(at, 1, 1, bytes[(*random)() % bytes.size()]);
  }
}

// Empty if the record is what kapris.h asks for.
static std::string FirstFlaw(const Hgr &hgr)
{
  if (hgr.ncells < 0 || hgr.nnets < 0 || hgr.netptr.size() != static_cast<size_t>(hgr.nnets) + 1)
    return "counts";
  if (hgr.netptr.front() != 0 || hgr.netptr.back() != static_cast<int>(hgr.netind.size()))
    return "ends of netptr";
  for (size_t n = 0; n + 1 < hgr.netptr.size(); n++)
    if (hgr.netptr[n] > hgr.netptr[n + 1])
      return "order of netptr";
  for (const int pin : hgr.netind)
    if (pin < 0 || pin >= hgr.ncells)
      return "pin";
  if (!hgr.netwgts.empty() && hgr.netwgts.size() != static_cast<size_t>(hgr.nnets))
    return "number of net weights";
  if (!hgr.cellwgts.empty() && hgr.cellwgts.size() != static_cast<size_t>(hgr.ncells))
    return "number of cell weights";
  for (const Ints *weights : {&hgr.netwgts, &hgr.cellwgts})
    for (const int weight : *weights)
      if (weight < 0)
        return "weight";
  return "";
}

TEST(hgr, gives_a_sound_record_or_a_failure_for_damaged_text)
{
  std::mt19937 random(1);
  int nread = 0, nfailed = 0;

  for (int trial = 0; trial < 8000; trial++) {
    std::string text = sound[trial % 4];
    for (int n = trial % 5; n > 0; n--)
      Damage(&text, &random);
    // On the heap and exactly as long as the text: a sanitizer sees a read past its end.
    const std::vector<char> bytes(text.begin(), text.end());
    try {
      const Hgr hgr = ReadHgr("x", std::string_view(bytes.data(), bytes.size()));
      ASSERT_EQ(FirstFlaw(hgr), "") << text;
      nread++;
    } catch (const Failure &failure) {
      ASSERT_EQ(failure.status, EXIT_MALFORMED) << text;
      ASSERT_NE(trial % 5, 0) << "not damaged, but: " << failure.text;
      nfailed++;
    }
  }
  // Otherwise one side of the property was hardly tried.
  EXPECT_GT(nread, 1600 + 500);
  EXPECT_GT(nfailed, 500);
}
