// tests/refine/kway_test.cpp - the validator of the k-way records, which refinement compares with their definitions.
// SPDX-License-Identifier: MIT

#include "refine/kway/state.h"
#include "support/graph.h"

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
