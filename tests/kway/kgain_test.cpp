// tests/kway/kgain_test.cpp - the validator of the k-way records, which refinement compares with their definitions.
// SPDX-License-Identifier: MIT

#include "control/ctrl.h"
#include "kway/kgain.h"
#include "support/build.h"

TEST(kgain, validator_names_the_damaged_field)
{
  Control ctrl = {};
  HGraph *g = HGraphOf({{0, 1}, {0, 2}, {0, 2, 4}, {0, 1, 2, 3, 5}});

  ctrl.nparts = 3;
  AllocateKwayRefinementMemory__(&ctrl, g);
  SetWhere(g, {0, 0, 1, 1, 2, 1});
  ComputeInitKwayGains__(&ctrl, g);
  for (int i = 0; i < g->ncells; i++)
    CellRecord(&ctrl, g, i);
  const char *cell = "crinfo: not the internal and soloed weight and the number of other parts";
  const std::vector<Damage> damages = {
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

  ExpectNamed(damages, [&] { return CheckKway(&ctrl, g); });
  FreeHGraph__(g);
}
