// tests/multilevel/uncoarsen_test.cpp - the way up through the levels and V-cycles, with a refiner that keeps to a
// script.
// SPDX-License-Identifier: MIT

#include "coarsen/coarsen.h"
#include "multilevel/uncoarsen.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

namespace
{

// Call n of the refiner notes what it finds, puts cell n into part 3 + n and sets the value n.
struct Script {
  Weights values;
  std::vector<std::string> found; // level, level of the first partition, partition
};

} // namespace

static Script script;

static void Initialise(const Control *, Level *level)
{
  level->part.where = imalloc__(level->graph->ncells + level->graph->nislands, "test: where");
}

static void Refine(const Control *, Level *level, int coarsest)
{
  const std::size_t n = script.found.size();
  std::string found = std::to_string(level->level) + " " + std::to_string(coarsest) + " ";

  EXPECT_EQ(level->coarser, nullptr); // gone, with its partition
  for (int i = 0; i < level->graph->ncells; i++)
    found += static_cast<char>('0' + level->part.where[i]);
  script.found.push_back(found);
  level->part.where[n] = static_cast<int>(3 + n);
  level->part.soed = static_cast<Weight>(script.values.at(n) * UNIT);
}

static void DealIslands(const Control *, Level *level)
{
  for (int i = 0; i < level->graph->nislands; i++)
    level->part.where[level->graph->ncells + i] = 6 + i;
}

static const Refiner scripted = {"scripted", Initialise, Refine, DealIslands, &Partition::soed, false};

TEST(uncoarsen, projects_refines_and_deals_level_by_level)
{
  // nets {0,2} {3,5} {6,0}; 1 and 4 are on none and go behind:  0 2 3 5 6 | 4 1
  // groups A = 0 2, B = 3 5, C = 6; only {6,0} is left, so B goes behind:  A C | B
  // on the coarsest level cell 0 is C, cell 1 is A
  const Control ctrl = TestControl();
  TestLevel top(HGraphOf({{0, 2}, {3, 5}, {6, 0}}));
  SeparateIslands__(&top);
  top.cellmap = CopyOf<Cell>(Ints{0, 0, 1, 1, 2});
  Level *middle = top.coarser = CreateLevel(&top, HGraphOf({{0, 2}}));
  SeparateIslands__(middle);
  middle->cellmap = CopyOf<Cell>(Ints{1, 0});
  Level *coarsest = middle->coarser = CreateLevel(middle, HGraphOf({{0, 1}}));
  coarsest->part.where = CopyOf<int>(Ints{1, 2});

  script = {{8, 7}, {}};
  Uncoarsen(&ctrl, &scripted, &top, coarsest);
  // A is in part 2, C in part 1, then A in 3 and B in 6; then cell 2 in part 4, cells 4 and 1 in 6 and 7.
  EXPECT_EQ(script.found, (std::vector<std::string>{"1 2 21", "0 2 33661"}));
  EXPECT_EQ(top.graph, top.owned);
  EXPECT_EQ(top.Digits(), "3746661");
  EXPECT_EQ(top.part.soed, 7 * UNIT);

  Uncoarsen(&ctrl, &scripted, &top, &top); // nothing to do
  EXPECT_EQ(script.found.size(), 2u);
  EXPECT_EQ(top.Digits(), "3746661");
}

TEST(uncoarsen, cycles_end_after_two_without_a_better_value_and_the_last_one_stays)
{
  const struct {
    std::int64_t before;
    Weights values; // of as many cycles as there should be
    int ncycles;
  } rows[] = {
      {10, {10, 10}, 9},     {10, {11, 12}, 9},          // a worse partition stays
      {10, {9, 8, 8, 8}, 9}, {10, {9, 11, 8, 12, 8}, 9}, // 8 is better than 9, then not than 8
      {10, {11, 10, 9}, 2},  {10, {9, 8, 7}, 3},         {10, {}, 0},
  };
  // A path of 1100 cells, and one on no net; one step is enough to a level that a cycle starts from.
  const int n = 1100;
  Instance path = {n + 1, {}, {}, {}};
  for (int i = 0; i + 1 < n; i++)
    path.nets.push_back({i, i + 1});

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    const std::size_t ncalls = std::min(row.values.size(), static_cast<std::size_t>(row.ncycles));
    Control ctrl = TestControl();
    std::string digits = std::string(n / 2, '0') + std::string(n / 2, '1') + "2";
    TestLevel top(HGraphOf(path), digits);
    const std::string before = BytesOf(top.owned);
    ctrl.maxcellwgt = 20;
    top.part.soed = static_cast<Weight>(row.before * UNIT);
    script = {row.values, {}};

    const std::int64_t last = ncalls == 0 ? row.before : row.values[ncalls - 1];
    EXPECT_EQ(RunVCycles(&ctrl, &scripted, &top, row.ncycles), last * UNIT);
    EXPECT_EQ(top.part.soed, last * UNIT);
    ASSERT_EQ(script.found.size(), ncalls);
    // Each begins with the partition of the one before.
    for (std::size_t k = 0; k < ncalls; k++) {
      EXPECT_EQ(script.found[k], "0 1 " + digits.substr(0, n));
      digits[k] = static_cast<char>('3' + k);
      digits[n] = '6';
    }
    EXPECT_EQ(top.Digits(), digits);
    EXPECT_EQ(top.graph, top.owned);
    EXPECT_EQ(top.cellmap, nullptr);
    EXPECT_EQ(BytesOf(top.owned), before);
  }
}
