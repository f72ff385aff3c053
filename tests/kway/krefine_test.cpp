// tests/kway/krefine_test.cpp - k-way refinement passes.
// SPDX-License-Identifier: MIT

#include "control/ctrl.h"
#include "kway/kway.h"
#include "support/build.h"

#include <algorithm>
#include <numeric>
#include <tuple>

typedef std::vector<int> Ints;

struct krefine : testing::Test {
  Control ctrl = {};

  krefine()
  {
    ctrl.maxnetsize = 50;
    ctrl.nparts = 4;
    ctrl.rtype = 1;
    ctrl.ubfactor = 9;
  }

  // The part of the last cell after passes in which only it may move.
  int Refined(const Instance &instance, const Ints &part, int rtype, int npasses)
  {
    HGraph *graph = HGraphOf(instance);

    AllocateKwayRefinementMemory__(&ctrl, graph);
    SetWhere(graph, part);
    graph->nfixed = instance.ncells - 1;
    ctrl.rtype = rtype;
    RefineObjectiveKway__(&ctrl, graph, npasses);
    const Ints where = Where(graph);
    EXPECT_TRUE(std::equal(part.begin(), part.end() - 1, where.begin()));
    FreeHGraph__(graph);
    return where.back();
  }
};

TEST_F(krefine, passes_move_a_cell_to_the_best_part)
{
  // Nets, weights of cells and nets, parts, tolerance; where the last cell ends in cut and in SOED passes.
  const std::tuple<const char *, Nets, Ints, Ints, Ints, float, int, int> choices[] = {
      {"equal: the part listed later", {{2, 0}, {2, 1}}, {}, {}, {2, 1, 0}, 9, 1, 1},
      {"equal: the lighter part", {{2, 0}, {2, 1}}, {1, 2, 1}, {}, {2, 1, 0}, 9, 2, 2},
      {"preference before weight", {{3, 0, 1}, {3, 2}}, {2, 2, 2, 1}, {}, {2, 2, 1, 0}, 9, 2, 2},
      {"ed 2, 0, 0 and kgain 2, 3, 3", {{3, 0}, {3, 1, 2}}, {}, {2, 3}, {1, 2, 3, 0}, 9, 1, 3},
      {"equal kgain and ed 0, 0, 1", {{3, 0, 1}, {3, 2}}, {1, 1, 9, 1}, {}, {1, 2, 3, 0}, 9, 3, 3},
      {"a gain although the cut rises", {{3, 0}, {3, 1, 2}}, {}, {1, 2}, {0, 1, 2, 0}, 9, 0, 2},
      {"no gain, equal weights to be", {{2, 0}, {2, 1}}, {1, 1, 1}, {}, {0, 1, 0}, 9, 0, 0},
      {"no gain, more even weights", {{2, 0}, {2, 1}}, {2, 1, 1}, {}, {0, 1, 0}, 9, 1, 1},
      {"no gain, preference 1", {{3, 0}, {3, 1, 2}}, {}, {}, {0, 1, 1, 0}, 9, 1, 1},
      {"no gain, preference -1", {{3, 0, 1, 2}}, {9, 9, 1, 1}, {}, {0, 0, 1, 0}, 9, 0, 0},
      {"internal weight above ed", {{2, 0}, {2, 1}}, {9, 1, 1}, {2, 1}, {0, 1, 0}, 9, 0, 0},
      {"kgain 0, ed below id", {{3, 0}, {3, 1, 2}}, {9, 1, 1, 1}, {}, {0, 1, 2, 0}, 9, 0, 0},
      {"kgain 0, ed above id", {{3, 2}, {3, 0, 1}}, {1, 1, 9, 1}, {}, {0, 2, 1, 0}, 9, 1, 1},
      {"kgain -1, ed as id", {{3, 0}, {3, 1}, {3, 0, 2}}, {9, 1, 1, 1}, {}, {0, 1, 2, 0}, 9, 0, 0},
      {"a net of one pin is no loss", {{1, 0}, {1}}, {}, {1, 5}, {1, 0}, 9, 1, 1},
      // Of 12 in three parts, 3.2 and 5 are the limits.
      {"as much as the limits allow", {{3, 1}}, {3, 4, 4, 1}, {}, {0, 1, 2, 0}, 1.25, 1, 1},
      {"one too many in the target", {{3, 1}}, {3, 5, 3, 1}, {}, {0, 1, 2, 0}, 1.25, 0, 0},
      {"one too few left", {{3, 1}}, {2, 4, 5, 1}, {}, {0, 1, 2, 0}, 1.25, 0, 0},
      {"leaving a part above the limit", {{3, 1}}, {6, 2, 3, 1}, {}, {0, 1, 2, 0}, 1.25, 1, 1},
      {"next best where there is room", {{3, 0}, {3, 1}}, {5, 2, 3, 2}, {2, 1}, {1, 2, 0, 0}, 1.25, 2, 2},
  };

  for (const auto &[why, nets, cellwgt, netwgt, part, ubfactor, cut, soed] : choices) {
    ctrl.nparts = ubfactor < 9 ? 3 : 4;
    ctrl.ubfactor = ubfactor;
    const Instance instance = {static_cast<int>(part.size()), nets, cellwgt, netwgt};
    EXPECT_EQ(Refined(instance, part, 1, 1), cut) << why;
    EXPECT_EQ(Refined(instance, part, 2, 1), soed) << why;
  }
}
