// tests/kway/kgain_test.cpp - the k-way records of nets and cells, from scratch and after moves.
// SPDX-License-Identifier: MIT

#include "control/ctrl.h"
#include "kway/kgain.h"
#include "support/build.h"

#include <tuple>

static Control ctrl; // only nparts is read

// With its records for the given partition.
static HGraph *Partitioned(const Instance &instance, const std::vector<int> &part, int nparts)
{
  HGraph *graph = HGraphOf(instance);

  ctrl.nparts = nparts;
  AllocateKwayRefinementMemory__(&ctrl, graph);
  SetWhere(graph, part);
  ComputeInitKwayGains__(&ctrl, graph);
  for (int i = 0; i < graph->ncells; i++)
    CellRecord__(&ctrl, graph, i);
  EXPECT_VALID(CheckKway__(&ctrl, graph));
  return graph;
}

// Moves v as refinement does: the parts and the objectives first, then the records.
static void Move(HGraph *graph, int v, const KDegree &target)
{
  const int a = graph->where[v], id = graph->crinfo[v].id;

  graph->mincut -= target.ed - id;
  graph->soed -= target.ed + target.kgain - id;
  graph->kpwgts[a] -= graph->cellwgt[v];
  graph->kpwgts[target.pid] += graph->cellwgt[v];
  graph->where[v] = target.pid;
  KwayUpdateGainInfo__(&ctrl, graph, v, a, target.pid);
  for (int i = 0; i < graph->ncells; i++)
    CellRecord__(&ctrl, graph, i);
  EXPECT_VALID(CheckKway__(&ctrl, graph));
}

TEST(kgain, records_of_a_cell_tell_what_a_move_gains)
{
  const Nets nets = {{0, 1}, {0, 2}, {0, 2, 4}, {0, 1, 2, 3, 5}, {0, 1, 4}, {0}}; // the last counts nowhere
  HGraph *graph = Partitioned({6, nets, {}, {2, 3, 5, 7, 1, 11}}, {0, 0, 1, 1, 2, 1}, 3);
  const RInfo &cell = graph->crinfo[0];
  Nets entries;

  for (int d = 0; d < cell.ndegrees; d++)
    entries.push_back({cell.degrees[d].pid, cell.degrees[d].ed, cell.degrees[d].pref, cell.degrees[d].kgain});
  EXPECT_EQ(cell.id, 2);         // net 0
  EXPECT_EQ(cell.soloed, 3 + 5); // nets 1 and 2
  // kgain: the nets that touch the part, plus soloed, minus all 18.
  EXPECT_EQ(entries, (Nets{{1, 3, 1, 3 + 5 + 7 + 8 - 18}, {2, 0, -1, 5 + 1 + 8 - 18}}));
  EXPECT_EQ(graph->mincut, 3 + 5 + 7 + 1);
  EXPECT_EQ(graph->soed, 2 * 3 + 3 * 5 + 2 * 7 + 2 * 1);
  EXPECT_EQ(std::vector<int>(graph->kpwgts, graph->kpwgts + 3), (std::vector<int>{2, 3, 1}));
  Move(graph, 0, cell.degrees[0]);
  EXPECT_EQ(graph->mincut, 2 + 5 + 7 + 1);
  EXPECT_EQ(graph->soed, 2 * 2 + 2 * 5 + 2 * 7 + 3 * 1);
  FreeHGraph__(graph);
}

TEST(kgain, validator_names_the_damaged_field)
{
  HGraph *g = Partitioned({6, {{0, 1}, {0, 2}, {0, 2, 4}, {0, 1, 2, 3, 5}}, {}, {}}, {0, 0, 1, 1, 2, 1}, 3);
  const char *cell = "crinfo: not the internal and soloed weight and the number of other parts";
  const std::tuple<int *, int, const char *> damages[] = {
      {&g->where[3], 3, "where: a cell is in no part"},
      {&g->kpwgts[1], 4, "kpwgts: not the sums of the parts"},
      {&g->nrinfo[2].ndegrees, 2, "nrinfo: not the number of parts that the net touches"},
      {&g->nrinfo[3].degrees[0].npins, 3, "nrdata: not the pins of the net in its parts"},
      {&g->nrinfo[3].degrees[1].pid, 2, "nrdata: not the pins of the net in its parts"},
      {&g->mincut, 4, "mincut, soed: not those of where"},
      {&g->soed, 8, "mincut, soed: not those of where"},
      {&g->crinfo[1].id, 2, cell},
      {&g->crinfo[0].soloed, 1, cell},
      {&g->crinfo[0].ndegrees, 1, cell},
      {&g->crinfo[0].degrees[1].ed, 1, "crdata: not the gains of a move"},
      {&g->crinfo[2].degrees[0].kgain, 9, "crdata: not the gains of a move"},
      {&g->crinfo[2].degrees[1].pid, 1, "crdata: not the gains of a move"},
  };

  for (auto [field, value, message] : damages) {
    std::swap(*field, value);
    EXPECT_STREQ(CheckKway__(&ctrl, g), message);
    std::swap(*field, value);
    EXPECT_VALID(CheckKway__(&ctrl, g));
  }
  FreeHGraph__(g);
}
