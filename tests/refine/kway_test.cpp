// tests/refine/kway_test.cpp - the records of k-way refinement after a move, their validator, and how islands are
// dealt.
// SPDX-License-Identifier: MIT

#include "refine/kway/state.h"
#include "refine/twoway/twoway.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

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

} // namespace

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

TEST(kgain, validator_names_the_damaged_field)
{
  Control ctrl = TestControl();
  TestLevel level(HGraphOf({{0, 1}, {0, 2}, {0, 2, 4}, {0, 1, 2, 3, 5}}), "001121");
  Partition *p = &level.part;

  ctrl.nparts = 3;
  p->kpwgts = wmalloc(3, "test: kpwgts");
  KwayState s = OpenKway(3, &level);
  ComputeInitKwayGains__(&ctrl, &s);
  for (int i = 0; i < level.graph->ncells; i++)
    CellRecord(&s, i);
  const auto damaged = [&s](auto *field, int value, const char *message) {
    ExpectNamed(field, value, message, [&s] { return CheckKway(&s); });
  };
  const char *cell = "crinfo: not the internal and soloed weight and the number of other parts";
  const char *gains = "crdata: not the gains of a move", *figures = "mincut, soed: not those of where";

  damaged(&p->where[3], 3, "where: a cell is in no part");
  damaged(&p->kpwgts[1], 4, "kpwgts: not the sums of the parts");
  damaged(&s.nrinfo[2].ndegrees, 2, "nrinfo: not the number of parts that the net touches");
  damaged(&s.nrinfo[3].degrees[0].npins, 3, "nrdata: not the pins of the net in its parts");
  damaged(&s.nrinfo[3].degrees[1].pid, 2, "nrdata: not the pins of the net in its parts");
  damaged(&p->mincut, 4, figures);
  damaged(&p->soed, 8, figures);
  damaged(&s.crinfo[1].id, 2, cell);
  damaged(&s.crinfo[0].soloed, 1, cell);
  damaged(&s.crinfo[0].ndegrees, 1, cell);
  damaged(&s.crinfo[0].degrees[1].ed, 1, gains);
  damaged(&s.crinfo[2].degrees[0].kgain, 9, gains);
  damaged(&s.crinfo[2].degrees[1].pid, 1, gains);
  CloseKway(&s);
}
