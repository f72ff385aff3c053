// tests/refine/kpass_test.cpp - which moves a k-way pass makes, the records after a move, and how islands are dealt.
// SPDX-License-Identifier: MIT

#include "base/random.h"
#include "refine/kway/state.h"
#include "refine/twoway/twoway.h"
#include "support/graph.h"

typedef std::vector<int> Ints;
typedef void (*Passes)(const Control *ctrl, Level *level, int npasses);

namespace
{

// A level with a partition, one digit per cell, and room for the weights of the parts.
struct Partitioned : TestLevel {
  Control ctrl = TestControl();

  Partitioned(const Instance &instance, const std::string &digits, int nparts, float ubfactor)
      : TestLevel(HGraphOf(instance), digits)
  {
    ctrl.nparts = nparts;
    ctrl.bounds.ubfactor = ubfactor;
    part.kpwgts = wsmalloc(nparts, 0, "test: kpwgts");
  }
};

// Cells 0 1 2 in part 0, 3 4 5 in part 1, 6 7 8 in part 2, 9 10 11 in part 3 stay where they are. V is in part 0.
const int V = 12;

struct Choice {
  Nets nets;         // those of V
  Weights netwgt;    // of each; empty = all 1
  Weights kpwgts;    // of the parts; V weighs 1
  int bycut, bysoed; // where V goes
};

} // namespace

static Instance InstanceOf(const Choice &choice)
{
  Instance instance = {V + 1, choice.nets, Weights(V + 1, 1), choice.netwgt};

  for (std::size_t p = 0; p < 4; p++)
    instance.cellwgt[3 * p] = choice.kpwgts[p] - (p == 0 ? 3 : 2);
  if (choice.netwgt.empty())
    instance.netwgt = Weights(choice.nets.size(), 1);
  instance.cellwgt = Units(instance.cellwgt);
  instance.netwgt = Units(instance.netwgt);
  return instance;
}

TEST(kpass, a_cell_goes_where_it_gains_or_where_a_tie_is_broken)
{
  const Weights even = {10, 10, 10, 10}; // each may weigh between 8 and 12.5
  const Nets gains = {{V, 3}, {V, 4}, {V, 6}}, same = {{0, V}, {3, V}}, either = {{3, V}, {6, V}};
  const Nets pref = {{0, V, 3, 4, 5}}, tie = {{0, V, 3, 4}}, parts = {{3, 6, V}, {7, 9, V}};
  const Choice rows[] = {
      // A gain: by 2 in part 1, by 1 in part 2; less what was whole; a loss.
      {gains, {}, even, 1, 1},
      {same, {1, 2}, even, 1, 1},
      {same, {2, 1}, {12, 8, 10, 10}, 0, 0},
      // The next one where a part has no room; none where part 0 has nothing to spare.
      {gains, {}, {9, 11, 10, 10}, 1, 1},
      {gains, {}, {9, 12, 10, 9}, 2, 2},
      {gains, {}, {9, 12, 12, 7}, 0, 0},
      {gains, {}, {8, 10, 10, 12}, 0, 0},
      // Of equal parts the lighter one, of equally heavy ones that which was met last.
      {either, {}, even, 2, 2},
      {{{6, V}, {3, V}}, {}, even, 1, 1},
      {either, {}, {10, 9, 10, 11}, 1, 1},
      // The cut stays, but a net of three parts has two.
      {{{3, 6, V}}, {}, even, 2, 2},
      {parts, {}, even, 2, 2},
      {parts, {}, {10, 9, 11, 10}, 2, 2},
      // Nor that: more pins there than here, however heavy the part is; as many; fewer, however light.
      {pref, {}, {8 + 1, 11, 10, 10}, 1, 1},
      {{{0, V, 3, 4, 5, 6, 7}}, {}, {10, 11, 8, 11}, 1, 1}, // not part 2, the lighter one
      {{{0, 1, V, 3, 4}}, {}, {12, 8, 10, 10}, 0, 0},
      // As many: if the part is lighter still with the cell.
      {tie, {}, {12, 10, 9, 9}, 1, 1},
      {tie, {}, {11, 10, 9, 10}, 0, 0},
      {same, {1, 1}, {12, 10, 9, 9}, 1, 1},
      {same, {1, 1}, {11, 10, 9, 10}, 0, 0},
      // What counts first: a net less that is cut, or parts that nets touch, less by 2 in 2 and 3 and by 1 in 1.
      {{{3, V}, {6, 9, V}, {7, 10, V}}, {}, even, 1, 3},
      // Three nets with a part less each, but one more that is cut.
      {{{3, 6, V}, {4, 7, V}, {5, 8, V}, {0, V}}, {}, even, 0, 2},
  };

  for (const Choice &row : rows) {
    SCOPED_TRACE(&row - rows);
    for (Passes refine : {RefineCutKway_Random__, RefineSOEDKway_Random__})
      for (int nfixed : {V, V + 1}) {
        const bool bycut = refine == RefineCutKway_Random__;
        const int target = nfixed > V ? 0 : bycut ? row.bycut : row.bysoed;
        Partitioned level(InstanceOf(row), "0001112223330", 4, 1.25f);
        level.owned->nfixed = nfixed;
        refine(&level.ctrl, &level, 1);

        EXPECT_EQ(level.Digits(), "000111222333" + std::to_string(target)) << (bycut ? "cut" : "soed");
        Weights kpwgts = Units(row.kpwgts);
        kpwgts[0] -= UNIT;
        kpwgts[static_cast<std::size_t>(target)] += UNIT;
        EXPECT_EQ(WeightsOf(4, level.part.kpwgts), kpwgts);
        EXPECT_EQ(level.part.mincut, ComputeActualCut__(level.graph, level.part.where));
        EXPECT_EQ(level.part.soed, ComputeActualSOED__(level.graph, level.part.where));
        EXPECT_EQ(level.part.objval, bycut ? level.part.mincut : level.part.soed);
      }
  }
}

TEST(kpass, passes_keep_anchors_and_limits_and_never_lose)
{
  TestRandom random = {5};

  for (int t = 0; t < 40; t++) {
    SCOPED_TRACE(t);
    const int nparts = 2 + random.Below(5), ncells = 30 + random.Below(90), nfixed = nparts;
    const Instance instance =
        RandomInstance(&random, ncells, 2 * ncells, ODD_WEIGHTS | ODD_DUPLICATES | (IS_WIDE ? ODD_WIDE : 0));
    std::string digits;
    for (int i = 0; i < ncells; i++)
      digits += static_cast<char>('0' + (i < nfixed ? i : random.Below(nparts)));
    for (Passes refine : {RefineCutKway_Random__, RefineSOEDKway_Random__}) {
      Partitioned level(instance, digits, nparts, 1.25f);
      Partition *part = &level.part;
      std::vector<Weight> upper(8), lower(8), before(8);
      level.owned->nfixed = nfixed;
      InitRandom__(t);
      refine(&level.ctrl, &level, 0); // figures only
      PartBounds(&level.ctrl.bounds, nparts, iasum__(nparts, part->kpwgts), upper.data(), lower.data());

      for (int pass = 0; pass < 4; pass++) {
        const Weight oldcut = part->mincut, oldsoed = part->soed;
        std::copy_n(part->kpwgts, nparts, before.begin());
        refine(&level.ctrl, &level, 1);
        // The passes for the SOED count the parts that a net touches beyond the first.
        if (refine == RefineCutKway_Random__) {
          EXPECT_LE(part->mincut, oldcut);
        } else {
          EXPECT_LE(part->soed - part->mincut, oldsoed - oldcut);
        }
        EXPECT_EQ(part->mincut, ComputeActualCut__(level.graph, part->where));
        EXPECT_EQ(part->soed, ComputeActualSOED__(level.graph, part->where));
        for (int p = 0; p < nparts; p++) {
          EXPECT_LE(part->kpwgts[p],
                    std::max(upper[static_cast<std::size_t>(p)], before[static_cast<std::size_t>(p)]));
          EXPECT_GE(part->kpwgts[p],
                    std::min(lower[static_cast<std::size_t>(p)], before[static_cast<std::size_t>(p)]));
        }
        EXPECT_EQ(level.Digits().substr(0, static_cast<std::size_t>(nfixed)),
                  digits.substr(0, static_cast<std::size_t>(nfixed)));
      }
    }
  }
}

// The example of kgain.cpp: u 0, v 1, w 2 are in part 0 and x 3, y 4, z 5 in part 1, all on one net; t 6 is in part 0.
TEST(kgain, a_net_that_keeps_enough_pins_leaves_pref_as_it_was)
{
  const Nets net = {{0, 1, 2, 3, 4, 5}}, with_ut = {net[0], {0, 6}}, with_uv = {net[0], {0, 1}};
  const struct {
    Nets nets;
    bool uptodate; // the record of u, before the moves
    Ints moves;    // from part 0 to part 1
    int pref;
    std::int64_t ed;
  } rows[] = {
      {net, true, {1}, 0, 0},
      {net, false, {1}, 0, 0},
      // The other net makes the record of u stale before v moves, or when it does: only then it sees four pins.
      {with_ut, true, {6, 1}, 0, 1},
      {with_uv, true, {1}, 1, 1},
      // A net that keeps one pin, here after w has moved too.
      {net, true, {1, 2}, 1, 1},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    Partitioned level(Instance{7, row.nets, {}, Units(Weights(row.nets.size(), 1))}, "0001110", 2, 2.0f);
    KwayState state = OpenKway(2, &level);
    ComputeInitKwayGains__(&level.ctrl, &state);
    if (row.uptodate)
      CellRecord(&state, 0);
    for (int v : row.moves) {
      CellRecord(&state, v);
      level.part.where[v] = 1;
      level.part.kpwgts[0]--;
      level.part.kpwgts[1]++;
      level.part.mincut = ComputeActualCut__(level.graph, level.part.where);
      level.part.soed = ComputeActualSOED__(level.graph, level.part.where);
      KwayUpdateGainInfo__(&state, v, 0, 1);
      EXPECT_VALID(CheckKway(&state));
    }
    const RInfo *u = CellRecord(&state, 0);
    ASSERT_EQ(u->ndegrees, 1);
    EXPECT_EQ(u->degrees[0].pref, row.pref);
    EXPECT_EQ(u->degrees[0].ed, row.ed * UNIT);
    CloseKway(&state);
  }
}

TEST(islands, go_one_by_one_to_the_side_or_part_that_is_lightest_for_its_share)
{
  // Three islands of weight 2, 2, 1 behind one cell of weight 9, which is in the weights already.
  const struct {
    std::vector<double> shares; // empty = equal
    Weights before;
    std::string dealt;
    Weights after;
  } rows[] = {
      {{}, {5, 3, 4}, "120", {6, 5, 6}}, // 3, then 4, then the first 5
      {{0.5, 0.25, 0.25}, {5, 3, 4}, "010", {8, 5, 4}},
      {{}, {5, 4}, "101", {7, 7}}, // of equal sides the second
      {{0.25, 0.75}, {3, 8}, "101", {5, 11}},
      {{0.25, 0.75}, {2, 8}, "011", {4, 11}},
  };

  for (const auto &row : rows) {
    SCOPED_TRACE(&row - rows);
    const int nparts = static_cast<int>(row.before.size());
    Partitioned level(Instance{4, {}, Units({9, 2, 2, 1}), {}}, "0999", nparts, 0.0f);
    level.owned->ncells = 1;
    level.owned->nislands = 3;
    if (!row.shares.empty()) {
      level.ctrl.bounds.shares = row.shares.data();
      level.ctrl.bounds.dealshare = row.shares[0];
    }
    Weight *wgts = nparts == 2 ? level.part.pwgts : level.part.kpwgts;
    for (int p = 0; p < nparts; p++)
      wgts[p] = static_cast<Weight>(row.before[static_cast<std::size_t>(p)] * UNIT);
    (nparts == 2 ? PartitionIslands__ : PartitionIslandsKway__)(&level.ctrl, &level);
    EXPECT_EQ(level.Digits(), "0" + row.dealt);
    EXPECT_EQ(WeightsOf(nparts, wgts), Units(row.after));
  }
}
