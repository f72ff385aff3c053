// tests/core/hgraph_test.cpp - validators of the hypergraph record.
// SPDX-License-Identifier: MIT

#include "support/build.h"

TEST(hgraph, validators_name_the_damaged_field)
{
  HGraph *g = HGraphOf({{0, 1}, {0, 2}, {1, 2}});
  const std::vector<Damage> damages = {
      {&g->nislands, -1, "hypergraph: a count is negative"},
      {&g->netptr[0], 1, "netptr: does not start at 0"},
      {&g->netptr[1], 5, "netptr: decreases"},
      {&g->netwgt[2], -1, "netwgt: a net weight is negative"},
      {&g->netind[5], 3, "netind: a pin is no cell"},
      {&g->netind[0], -1, "netind: a pin is no cell"},
      {&g->cellwgt[2], -1, "cellwgt: a cell weight is negative"},
      {&g->incptr[1], 3, "incptr: a cell's list has another length than its pins"},
      {&g->incind[3], 1, "incind: a cell's nets are not those that name it, in increasing order"},
      {&g->adjwgt[2], 1, "adjwgt: not the sum of the incident net weights"},
  };

  ExpectNamed(damages, [&] {
    const char *broken = CheckHGraph(g);
    return broken != nullptr ? broken : CheckIncidence(g);
  });
  g->coarser = g;
  EXPECT_STREQ(CheckHGraph(g), "coarser: its finer level is another record");
  FreeHGraph__(g);
}
