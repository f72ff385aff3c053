// tests/refine/fm_test.cpp - the bounds and the decisions of every kind of pass; gains are compared with their
// definition wherever the internal checks are on.
// SPDX-License-Identifier: MIT

#include "refine/twoway/fm.h"
#include "support/graph.h"

#include <sstream>

namespace
{

typedef std::vector<int> Ints;
typedef void (*Routine)(const Control *ctrl, Level *level, int npasses);

// A level with a bisection, one digit per cell.
struct Bisected : TestLevel {
  Control ctrl = TestControl();

  Bisected(const Instance &instance, const std::string &sides, float ubfactor)
      : TestLevel(HGraphOf(instance), sides)
  {
    ctrl.bounds.ubfactor = ubfactor;
    for (std::size_t i = 0; i < sides.size(); i++)
      part.pwgts[part.where[i]] += graph->cellwgt[i];
    part.mincut = ComputeActualCut__(graph, part.where);
  }

  // The cells in the order of their moves, undone or not; a bar ends a pass; B is a balancing.
  std::string Moves(Routine refine, int npasses)
  {
    std::string moves;
    ctrl.dbglvl = DBG_PASSES | DBG_MOVES;
    testing::internal::CaptureStdout();
    refine(&ctrl, this, npasses);
    std::istringstream lines(testing::internal::GetCapturedStdout());
    for (std::string line; std::getline(lines, line);)
      moves += line[0] == 'G' ? line.substr(25, 1) : line[0] == '\t' ? "|" : line[10] == '[' ? "B" : "";
    return moves;
  }
};

} // namespace

template <int percent>
static void EarlyExit(const Control *ctrl, Level *level, int npasses)
{
  Refine_EEFM__(ctrl, level, npasses, percent / 100.0f);
}

static void EarlyExit2(const Control *ctrl, Level *level, int npasses)
{
  Refine_EEFM2__(ctrl, level, npasses, 1.0f);
}

static void Balance(const Control *ctrl, Level *level, int)
{
  Balance__(ctrl, level);
}

TEST(fm, passes_decide_by_gain_room_and_balance)
{
  const Instance none4 = {4, {}, {}, {}}, none6 = {6, {}, {}, {}}, pairs = {4, {{0, 1}, {2, 3}}, {}, {}};
  const Instance gain0 = {4, {{0, 2, 3}}, {}, {}}, gain2 = {4, {{2, 0, 1}}, {}, {}}; // of cell 0, of cell 2
  const Instance gain3 = {6, {{3, 0, 1}}, {}, {}}, gain7 = {8, {{0, 7}}, {}, {}};
  const Instance heavy = {4, {{0, 2}, {1, 2}}, {5000, 600, 5000, 600}, {5, 2}};
  const struct {
    Routine refine;
    Instance instance;
    std::string sides;
    float ubfactor;
    int npasses;
    std::string moves, after;
  } rows[] = {
      // Queues are filled in cell order, so of equal gains the last cell comes first.
      // Of equal cuts the smaller difference, of equal differences the earlier; no pass after it.
      {Refine_FM__, none4, "0001", 0.25f, 10, "2130|", "0011"},
      // Equal gains: out of the side with more room, else out of side 0.
      {Refine_FM__, none6, "011111", 0.25f, 10, "540321|", "011100"},
      // No better prefix: everything is undone.
      {Refine_FM__, pairs, "0011", 0.25f, 10, "1302|", "0011"},
      // The higher gain is on side 0, which can or cannot spare the cell; then on side 1.
      {Refine_FM__, gain0, "0011", 0.25f, 10, "0312|3120|", "1011"},
      {Refine_FM__, gain0, "0011", 0.0f, 10, "3012|", "0011"},
      {Refine_FM__, gain2, "0011", 0.25f, 10, "2103|2130|", "0001"},
      {Refine_FM__, gain0, "0011", 0.25f, 0, "", "0011"},
      // Cell 0 has the highest gain of side 0 but does not fit into its room; cell 1 does.
      {Refine_FM2__, heavy, "0011", 0.2f, 1, "1203|", "0111"},
      {EarlyExit2, heavy, "0011", 0.2f, 1, "1203|", "0111"},

      // A worse move ends the pass at once; or if it comes more than one move after the best point.
      {EarlyExit<10>, pairs, "0011", 0.25f, 10, "|", "0011"},
      {EarlyExit<25>, pairs, "0011", 0.25f, 10, "10|", "0011"},
      // An equal cut is no better point, whatever the balance. Equal gains go on with the last side ...
      {EarlyExit<10>, none4, "0001", 0.25f, 10, "2103|", "0001"},
      {EarlyExit<10>, gain3, "000111", 0.25f, 1, "3542|", "000011"},
      // ... unless a side is low. It is the weight before the move that counts.
      {EarlyExit<10>, none4, "0001", 0.0f, 10, "2130|", "0001"},
      {EarlyExit<10>, none4, "0111", 0.0f, 10, "3201|", "0111"},
      {EarlyExit<10>, gain0, "0011", 0.0f, 10, "0321|", "0011"},
      {EarlyExit<10>, gain2, "0011", 0.0f, 10, "2103|", "0011"},
      {EarlyExit2, gain0, "0011", 0.0f, 10, "3012|", "0011"},

      // Out of side 0 first, or out of the heavier side; the second of a pair of passes may be the last.
      {Refine_OneWayFM__, gain0, "0011", 0.25f, 1, "0|", "1011"},
      {Refine_OneWayFM__, none4, "0111", 0.25f, 1, "32|", "0110"},
      {Refine_OneWayFM__, gain2, "0011", 0.25f, 1, "1|", "0011"},
      {Refine_OneWayFM__, gain2, "0011", 0.25f, 10, "1|2|21||", "0001"},
      // After cell 3, cell 1 has a gain.
      {Refine_OneWayFM__, {8, {{1, 3}, {0, 2}}, {}, {}}, "00001111", 0.25f, 1, "31|", "00001111"},
      // Cell 0 cannot be spared: skipped for its gain. Cell 1 cannot either: without a gain, the end.
      {Refine_OneWayFM__, {4, {{0, 2}, {1, 3}}, {5, 1, 3, 3}, {2, 1}}, "0011", 0.25f, 1, "1|", "0111"},
      {Refine_OneWayFM__, {4, {}, {1, 5, 3, 3}, {}}, "0011", 0.25f, 1, "|", "0011"},

      // The best gain of the other side; not a cell that would leave that side low itself, but one that
      // leaves it at its bound; nothing to do.
      {Balance, gain7, "00000001", 0.25f, 0, "B", "10000001"},
      {Balance, {8, {{0, 7}}, {30, 1, 1, 1, 1, 1, 1, 1}, {}}, "00000001", 0.25f, 0, "B", "01111111"},
      {Balance, {3, {}, {2, 5, 1}, {}}, "001", 0.25f, 0, "B", "011"},
      {Balance, gain7, "11111100", 0.25f, 0, "", "11111100"},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    Bisected level(row.instance, row.sides, row.ubfactor);
    EXPECT_EQ(level.Moves(row.refine, row.npasses), row.moves);
    EXPECT_EQ(level.Digits(), row.after);
    EXPECT_VALID(CheckBisection(&level));
  }
}
