// lib/bisect/project.cpp - where a bisection is kept, and how it comes from a coarser level.
// SPDX-License-Identifier: MIT

#include "bisect.h"

#include "coarsen/uncoarsen.h"
#include "control/ctrl.h"

void AllocateRefinementMemory__(HGraph *graph)
{
  graph->where = imalloc__(static_cast<std::int64_t>(graph->ncells) + graph->nislands,
                           "AllocateRefinementMemory: where");
}

void ProjectPartition__(Control *ctrl, HGraph *coarse)
{
  StartTimer__(ctrl, &ctrl->ProjectTmr);
  AllocateRefinementMemory__(coarse->finer);
  ProjectWhere__(coarse);
  StopTimer__(ctrl, &ctrl->ProjectTmr);
}
