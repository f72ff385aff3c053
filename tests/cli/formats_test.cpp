// tests/cli/formats_test.cpp - the readers of .hgr, .patoh, .mtx, .cnf, .wcnf and .graph: what they make of a text, and
// where faults are.
// SPDX-License-Identifier: MIT

#include "formats/failure.h"
#include "formats/formats.h"

#include <gtest/gtest.h>
#include <iterator>
#include <string>

using namespace kapris_formats;

static Hgr Read(const std::string &format, Model model, const std::string &text)
{
  if (format == "hgr")
    return ReadHgr("a", text);
  if (format == "patoh")
    return ReadPatoh("a", text);
  if (format == "graph")
    return ReadGraph("a", text);
  if (format == "wcnf" || format == "wcnf-unit")
    return ReadWcnf("a", text, model, format == "wcnf-unit");
  return format == "cnf" ? ReadCnf("a", text, model) : ReadMtx("a", text, model, format == "unit");
}

struct GoodCase {
  const char *format;
  Model model;
  const char *text;
  const char *hgr; // as FormatHgr writes it
};

#define MTX "%%MatrixMarket matrix coordinate "

TEST(formats, give_the_nets_and_weights_that_the_text_means)
{
  const Model any = Model::BY_FORMAT;
  const GoodCase cases[] = {
      // The four codes, and what counts as one of them.
      {"hgr", any, "2 3\n1 2\n2 3\n", "2 3\n1 2\n2 3\n"},
      {"hgr", any, "2 3 00\n1 2\n2 3\n", "2 3\n1 2\n2 3\n"},
      {"hgr", any, "2 3 1\n7 1 2\n0 2 3\n", "2 3 1\n7 1 2\n0 2 3\n"},
      {"hgr", any, "1 3 01\n2147483648 3\n", "1 3 1\n2147483648 3\n"},
      {"hgr", any, "2 2 11\n2305843009213693951 1\n1 2\n1099511627776\n00000000000000000000001\n",
       "2 2 11\n2305843009213693951 1\n1 2\n1099511627776\n1\n"},
      {"hgr", any, "0 2 10\n0\n2305843009213693952", "0 2 10\n0\n2305843009213693952\n"},
      {"hgr", any, "1 3 10\n1 2\n4\n0\n6\n", "1 3 10\n1 2\n4\n0\n6\n"},
      {"hgr", any, "1 2 11\n9 1 2\n4\n5\n", "1 2 11\n9 1 2\n4\n5\n"},
      // Comments before the header, between nets, among the cell weights and at the end; blank lines at both ends.
      {"hgr", any, "\n% a\n  % b\n1 2 10\n%1 1\n1 2\n% c\n4\n%5\n6\n\n% d\n \n", "1 2 10\n1 2\n4\n6\n"},
      // Line ends, separators and the last line.
      {"hgr", any, "2 3\r\n1 2\r\n3\r\n", "2 3\n1 2\n3\n"},
      {"hgr", any, " 2\t3 \n\t1 \t 2 \n3", "2 3\n1 2\n3\n"},
      {"hgr", any, "1 1 10\n1\n5", "1 1 10\n1\n5\n"},
      // Kept as given: repeated pins, nets without pins, nothing at all.
      {"hgr", any, "1 3\n2 2 1 2\n", "1 3\n2 2 1 2\n"},
      {"hgr", any, "4 2\n\n1\n\n \n", "4 2\n\n1\n\n\n"},
      {"hgr", any, "2 2 1\n5\n6 1\n", "2 2 1\n5\n6 1\n"},
      {"hgr", any, "0 0", "0 0\n"},
      {"hgr", any, "0 2147483647\n", "0 2147483647\n"},

      {"patoh", any, "% c\n0 4 3 4\n0 3\n\n2 1", "3 4\n1 4\n\n3 2\n"},
      {"patoh", any, "1 4 2 3 0\r\n1 4\r\n2\r\n", "2 4\n1 4\n2\n"},
      {"patoh", any, "1 3 2 3 3 1\n7 1 3\n0 2\n4 0\n%\n\n6\n", "2 3 11\n7 1 3\n0 2\n4\n0\n6\n"},
      {"patoh", any, "0 2 1 1 1\n1\n5 6\n", "1 2 10\n2\n5\n6\n"},
      {"patoh", any, "0 2 1 1 2\n5 1\n", "1 2 1\n5 2\n"},
      {"patoh", any, "0 2 1 1 3\n2305843009213693952 1\n2305843009213693951 1",
       "1 2 11\n2305843009213693952 2\n2305843009213693951\n1\n"},
      // Rectangular, with an empty row and an empty column, in any order, an entry twice.
      {"mtx", any, MTX "pattern general\n3 4 4\n3 4\n1 3\n1 1\n1 3\n", "3 4 10\n1 3\n\n4\n1\n0\n1\n1\n"},
      {"mtx", Model::COLUMN_NET, MTX "real general\n%\n3 4 3\n3 4 .5\n1 3 -1e9\n1 1 0\n",
       "4 3 10\n1\n\n1\n3\n2\n0\n1\n"},
      {"unit", any, MTX "integer general\n2 2147483647 1\n1 2147483647 -5\n", "2 2147483647\n2147483647\n\n"},
      // One triangle stands for both.
      {"unit", any, MTX "complex Hermitian\n3 3 3\n1 1 1 0\n3 1 2 3\n2 1 0 1\n", "3 3\n1 2 3\n1\n1\n"},
      {"unit", any, MTX "real skew-symmetric\n3 3 1\n3 2 -inf\n", "3 3\n\n3\n2\n"},
      {"mtx", any, MTX "pattern symmetric\n2 2 2\n2 1\n2 2\n", "2 2 10\n2\n1 2\n1\n2\n"},
      // Variable 2 is unused; the last clause names 3 and its negation.
      {"cnf", any, "c x\np cnf 4 3\n1 -4 0 4\n0\nc y\n3 -3 1 0\n", "3 4\n1 4\n4\n1 3\n"},
      {"cnf", Model::DUAL, "p cnf 4 3\n1 -4 0 4\n0\n3 -3 1 0\n", "4 3\n1 3\n\n3\n1 2\n"},
      {"cnf", Model::LITERAL, "p cnf 4 3\n1 -4 0 4\n0\n3 -3 1 0\n", "3 8\n1 8\n7\n1 5 6\n"},
      {"cnf", any, "p cnf 2000000 1\n0\n%\n0\n", "1 2000000\n\n"},

      // A hard clause outweighs all soft ones, in the new form and in the old, which may name no weight for them.
      {"wcnf", any, "c x\nh 1 2 0\n3 -1 -4 0 4\n2 0\nh 0\n", "4 4 1\n8 1 2\n3 1 4\n4 2\n8\n"},
      {"wcnf", any, "p wcnf 5 3 18446744073709551615\n18446744073709551615 1 0 6 2 0\n7 3 0\n",
       "3 5 1\n14 1\n6 2\n7 3\n"},
      {"wcnf", Model::DUAL, "p wcnf 2 2\n5 1 -2 0\n6 2 0\n", "2 2 10\n1\n1 2\n5\n6\n"},
      {"wcnf-unit", Model::LITERAL, "5 1 -2 0\n6 2 0\n", "2 4\n1 4\n3\n"},

      {"graph", any, "% c\n4 3\n2 3\n1\n1 4\n3\n", "3 4\n1 2\n1 3\n3 4\n"},
      {"graph", any, "3 1 010 1\n5\n0 3\n1 2", "1 3 10\n2 3\n5\n0\n1\n"},
      {"graph", any, "3 2 1 0\n3 7\n3 9\n2 9 1 7\n", "2 3 1\n7 1 3\n9 2 3\n"},
      {"graph", any, "2 0\n\n\n", "0 2\n"},
  };

  for (const GoodCase &good : cases) {
    SCOPED_TRACE(good.text);
    try {
      EXPECT_EQ(FormatHgr(Read(good.format, good.model, good.text)), good.hgr);
    } catch (const Failure &failure) {
      ADD_FAILURE() << failure.text;
    }
  }
}

struct BadCase {
  const char *format;
  const char *text;
  const char *fault;
};

TEST(formats, name_the_place_of_every_fault)
{
  const BadCase cases[] = {
      {"hgr", "", "a:1:1: the header is missing"},
      {"hgr", "% only a comment\n\n", "a:3:1: the header is missing"},
      {"hgr", "5\n", "a:1:2: the number of cells is missing"},
      {"hgr", "1 2 3 4\n", "a:1:5: the format code is '3', not 0"},
      {"hgr", "1 2 12\n1\n", "a:1:5: the format code is '12'"},
      {"hgr", "1 2 100\n1\n", "a:1:5: the format code is '100'"},
      {"hgr", "1 2 1 7\n1\n", "a:1:7: '7' is left over after the header"},
      {"hgr", "-1 2\n", "a:1:1: the number of nets: '-1' is negative"},
      {"hgr", "1 4294967297\n1\n", "a:1:3: the number of cells: '4294967297' is above 2147483647"},
      // Counts that the bytes cannot hold fail before memory is taken for them.
      {"hgr", "2000000000 5\n1 2\n",
       "a:1:1: 2000000000 nets need at least 1999999999 bytes, but only 4 follow"},
      {"hgr", "4 5 1\n1 2\n3\n", "a:1:1: 4 nets with weights need at least 7 bytes, but only 6 follow"},
      {"hgr", "1 2000000000 10\n1 2\n",
       "a:1:1: 1 nets and 2000000000 cell weights need at least 4000000000 bytes"},
      {"hgr", "3 3\n1 2\n2 3\n", "a:4:1: the text ends after 2 of 3 nets"},
      {"hgr", "1 3 10\n1 2\n1111\n", "a:4:1: the text ends after 1 of 3 cell weights"},
      // Pins.
      {"hgr", "1 3\n1 0 2\n", "a:2:3: pin 0 in net 1 (line 2): pins count from 1"},
      {"hgr", "2 3\n1\n2\t4\n", "a:3:3: pin 4 in net 2 (line 3): there are only 3 cells"},
      {"hgr", "1 3\n-0\n", "a:2:1: pin: '-0' is negative"},
      {"hgr", "1 3\n1 99999999999999999999999\n",
       "a:2:3: pin: '99999999999999999999999' is above 2147483647"},
      {"hgr", "1 3\n1 2,3\n", "a:2:3: pin: '2,3' is not a whole number"},
      {"hgr", "1 3\n1 2.0\n", "a:2:3: pin: '2.0'"},
      {"hgr", "1 3\n1 +2\n", "a:2:3: pin: '+2'"},
      {"hgr", "1 3\n1 2 % pins\n", "a:2:5: pin: '%' is not a whole number"},
      {"hgr", "1 3\n1 \x01\xff\n", "a:2:3: pin: '\\x01\\xff'"},
      // Weights.
      {"hgr", "1 3 1\n\n", "a:2:1: the weight of net 1 is missing"},
      {"hgr", "1 3 1\n-2 1\n", "a:2:1: net weight: '-2' is negative"},
      {"hgr", "1 2 10\n1\n1\n\n3\n", "a:4:1: the weight of cell 2 is missing"},
      {"hgr", "1 2 10\n1\n1\nx\n", "a:4:1: cell weight: 'x' is not a whole number"},
      {"hgr", "1 2 10\n1\n1 2\n", "a:3:3: '2' is left over after the cell weight"},
      {"hgr", "1 3 1\n 2305843009213693953 1\n",
       "a:2:2: net weight: '2305843009213693953' is above 2305843009213693952"},
      {"hgr", "1 2 10\n1\n1\n9223372036854775808\n",
       "a:4:1: cell weight: '9223372036854775808' is above 2305843009213693952"},
      {"hgr", "1 2 10\n1\n1\n184467440737095516150\n",
       "a:4:1: cell weight: '184467440737095516150' is above 2305843009213693952"},
      {"hgr", "3 3 1\n2305843009213693951 1\n1 1\n1 2\n",
       "a:4:1: net weight: 1 takes the total to 2305843009213693953, above 2305843009213693952"},
      {"hgr", "0 2 10\n2305843009213693952\n%\n2305843009213693952\n",
       "a:4:1: cell weight: 2305843009213693952 takes the total to 4611686018427387904, above"},
      // After the end; the line counts comments and Windows line ends.
      {"hgr", "% c\r\n1 2\r\n% d\r\n1 2\r\n\r\n  2\r\n", "a:6:3: '2' is left over after the last net"},
      {"hgr", "1 1 10\n1\n1\n1\n", "a:4:1: '1' is left over after the last cell weight"},

      {"patoh", "2 1 1 1\n1\n", "a:1:1: the number of the first cell is 2, not 0 to 1"},
      {"patoh", "1 1 1\n1\n", "a:1:6: the number of pins is missing"},
      {"patoh", "1 1 1 1 4\n1\n", "a:1:9: the weight scheme is 4, not 0 to 3"},
      {"patoh", "1 1 1 1 1 2\n1\n3 4\n", "a:1:11: 2 weights per cell: only one is supported"},
      {"patoh", "1 9 1 2000000000\n1\n", "a:1:1: 1 nets, 2000000000 pins and their weights need at least"},
      {"patoh", "1 2000000000 1 1 1\n1\n1",
       "a:1:1: 1 nets, 1 pins and their weights need at least 4000000001"},
      {"patoh", "0 3 1 3\n0 1 3\n", "a:2:5: pin 3 in net 1 (line 2): there are only 3 cells, counted from 0"},
      {"patoh", "1 3 1 2\n1 2 3\n", "a:2:1: the header says 2 pins, but the nets have 3"},
      {"patoh", "0 3 1 1 1\n0\n4 5\n % end\n", "a:5:1: the text ends after 2 of 3 cell weights"},
      {"patoh", "0 1 1 1 1\n0\n4 5\n", "a:3:3: '5' is left over after the last cell weight"},
      {"patoh", "0 2 1 1 1\n0\n2305843009213693952 1\n",
       "a:3:21: cell weight: 1 takes the total to 2305843009213693953, above 2305843009213693952"},

      {"mtx", "3 3 1\n1 1\n", "a:1:1: the first line must begin with %%MatrixMarket"},
      {"mtx", "%%MatrixMarket vector coordinate real general\n",
       "a:1:16: the object is 'vector', not matrix"},
      {"mtx", "%%MatrixMarket matrix array real general\n1 1\n1\n",
       "a:1:23: the layout 'array' has no pattern"},
      {"mtx", MTX "boolean general\n", "a:1:34: the kind of values is 'boolean', not pattern, real"},
      {"mtx", MTX "real triangular\n", "a:1:39: the symmetry is 'triangular', not general"},
      {"mtx", MTX "real symmetric\n2 3 1\n1 1 1\n", "a:2:1: a symmetric matrix of 2 x 3 is not square"},
      {"mtx", MTX "real general\n2 3 2000000000\n1 1 1\n", "a:2:1: 2000000000 entries need at least 119999"},
      {"mtx", MTX "pattern general\n2000000000 3 1\n1 1\n", "a:2:1: 2000000000 nets are too many"},
      {"mtx", MTX "pattern general\n3 2000000000 1\n1 1\n",
       "a:2:1: 2000000000 cells with weights are too many"},
      {"mtx", MTX "pattern general\n3 3 1\n1 0\n", "a:3:3: column 0 (line 3): columns count from 1"},
      {"mtx", MTX "pattern general\n3 3 1\n4 1\n", "a:3:1: row 4 (line 3): there are only 3 rows"},
      {"mtx", MTX "pattern general\n3 3 1\n1 1 1\n", "a:3:5: '1' is left over after the entry"},
      {"mtx", MTX "real general\n3 3 1\n1 1  \n", "a:3:6: the value of the entry is missing"},
      {"mtx", MTX "integer general\n3 3 1\n1 1 1.5\n", "a:3:5: value: '1.5' is not a whole number"},
      {"mtx", MTX "complex general\n3 3 1\n1 1 1 i\n", "a:3:7: value: 'i' is not a number"},
      {"mtx", MTX "real skew-symmetric\n3 3 1\n2 2 1\n", "a:3:1: a skew-symmetric matrix has no entries"},
      {"mtx", MTX "pattern general\n3 3 2\n1 1\n%..\n", "a:5:1: the text ends after 1 of 2 entries"},

      {"cnf", "c\n1 2 0\n", "a:2:1: the first line that is no comment must be 'p cnf VARIABLES CLAUSES'"},
      {"cnf", "c p cnf 1 1\n", "a:2:1: the line 'p cnf VARIABLES CLAUSES' is missing"},
      {"cnf", "p cnf 2 2000000000\n1 0\n", "a:1:1: 2000000000 clauses need at least 3999999999 bytes"},
      {"cnf", "p cnf 2000000000 1\n1 0\n", "a:1:1: more than 1073741823 variables"},
      {"cnf", "p cnf 2 2\n1 0\n -3 0\n",
       "a:3:2: literal -3 in clause 2 (line 3): there are only 2 variables"},
      {"cnf", "p cnf 2 1\n1 -2147483648 0\n", "a:2:3: literal: '-2147483648' is below -2147483647"},
      {"cnf", "p cnf 2 1\n1 --2 0\n", "a:2:3: literal: '--2' is not a whole number"},
      {"cnf", "p cnf 2 1\n1 0 2 0\n", "a:2:5: '2' is left over after the last clause"},
      {"cnf", "p cnf 2 2\n1 0\n2", "a:3:2: clause 2 does not end with 0"},
      {"cnf", "p cnf 2 3\n1 0 0 \n", "a:3:1: the text ends after 2 of 3 clauses"},
      {"dual", "p cnf 1073741823 1\n1 0\n", "a:1:1: 1073741823 nets are too many"},

      {"wcnf", "c\n", "a:2:1: there is neither a header nor a clause"},
      {"wcnf", "p cnf 1 1\n1 0\n", "a:1:1: the header must be 'p wcnf VARIABLES CLAUSES', or none"},
      {"wcnf", "p wcnf 1 1 x\n1 1 0\n", "a:1:12: the weight of hard clauses: 'x' is not a whole number"},
      {"wcnf", "p wcnf 2 1\nh 1 0\n", "a:2:1: clause weight: 'h' is not a whole number"},
      {"wcnf", "p wcnf 2 2\n1 1 0\n", "a:1:1: the header says 2 clauses, but there are 1"},
      {"wcnf", "p wcnf 2 1\n1 3 0\n", "a:2:3: literal 3 in clause 1 (line 2): there are only 2 variables"},
      {"wcnf", "1 1 2", "a:1:6: clause 1 does not end with 0"},
      {"wcnf", "1 1073741824 0\n",
       "a:1:3: literal 1073741824 in clause 1 (line 1): there are only 1073741823"},
      {"wcnf", "h 1 0\nh 2 0\n2000000000000000000 1 0\n",
       "a:1:1: 2 hard clauses, each heavier than all soft"},

      {"graph", "2 1 100\n2\n1\n", "a:1:5: the format code asks for sizes of vertices"},
      {"graph", "2 1 20\n2\n1\n", "a:1:5: the format code is '20': its digits are 0 or 1"},
      {"graph", "2 1 11 2\n1 1 2 1\n1 1 1 1\n", "a:1:8: 2 weights per vertex: only one is supported"},
      {"graph", "2000000000 1\n2\n1\n",
       "a:1:1: 2000000000 vertices and 1 edges need at least 1999999999 bytes"},
      {"graph", "2 1\n2\n\n", "a:2:1: vertices 1 and 2: only one of them lists the other as its neighbour"},
      {"graph", "3 1\n2\n1\n2\n", "a:4:1: vertices 3 and 2: only one of them lists the other"},
      {"graph", "2 2\n2 2\n1 1\n", "a:3:3: vertices 1 and 2: there is more than one edge between them"},
      {"graph", "2 1 1\n2 5\n1 6\n",
       "a:3:1: vertices 1 and 2: the edge weighs 5 in one line and 6 in the other"},
      {"graph", "2 1\n1\n1\n", "a:2:1: vertex 1 cannot be its own neighbour"},
      {"graph", "2 1\n3\n1\n", "a:2:1: neighbour 3 of vertex 1: vertices count from 1 to 2"},
      {"graph", "2 1 1\n2\n1 1  \n", "a:2:2: the weight of the edge is missing"},
      {"graph", "2 2\n2\n1    \n", "a:1:1: the header says 2 edges, but there are 1"},
      {"graph", "2 1\n2\n1\n1\n", "a:4:1: '1' is left over after the last vertex"},
  };

  for (const BadCase &bad : cases) {
    SCOPED_TRACE(bad.text);
    const bool dual = std::string(bad.format) == "dual";
    try {
      Read(dual ? "cnf" : bad.format, dual ? Model::DUAL : Model::BY_FORMAT, bad.text);
      ADD_FAILURE() << "was read";
    } catch (const Failure &failure) {
      EXPECT_EQ(failure.status, EXIT_MALFORMED);
      EXPECT_EQ(failure.text.rfind(bad.fault, 0), 0u) << failure.text;
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
