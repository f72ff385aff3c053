// tests/core/hgraph_test.cpp - validators of the hypergraph record.
// SPDX-License-Identifier: MIT

#include "support/graph.h"

TEST(hgraph, validators_name_the_damaged_field)
{
  HGraph *g = HGraphOf({{0, 1}, {0, 2}, {1, 2}});
  const auto damaged = [g](auto *field, int value, const char *message) {
    ExpectNamed(field, value, message, [g] {
      const char *broken = CheckHGraph(g);
      return broken != nullptr ? broken : CheckIncidence(g);
    });
  };

  damaged(&g->nislands, -1, "hypergraph: a count is negative");
  damaged(&g->netptr[0], 1, "netptr: does not start at 0");
  damaged(&g->netptr[1], 5, "netptr: decreases");
  damaged(&g->netwgt[2], -1, "netwgt: a net weight is negative");
  damaged(&g->netind[5], 3, "netind: a pin is no cell");
  damaged(&g->netind[0], -1, "netind: a pin is no cell");
  damaged(&g->cellwgt[2], -1, "cellwgt: a cell weight is negative");
  damaged(&g->incptr[1], 3, "incptr: a cell's list has another length than its pins");
  damaged(&g->incind[3], 1, "incind: a cell's nets are not those that name it, in increasing order");
  damaged(&g->adjwgt[2], 1, "adjwgt: not the sum of the incident net weights");
  FreeHGraph__(g);
}
