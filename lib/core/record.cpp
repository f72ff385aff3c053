// lib/core/record.cpp - tells the caller of a run what its levels and trials came to.
// SPDX-License-Identifier: MIT

#include "level.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

static double ShareOf(const Control *ctrl, int p)
{
  if (ctrl->recorded == RECORD_PARTS)
    return ctrl->bounds.shares[p];
  const double share0 = ctrl->bounds.part0frac;
  return p == 0 ? share0 : 1.0 - share0;
}

// From where, because the weights that refinement maintains are not valid on every level that is recorded.
static double ImbalanceOf(const Control *ctrl, const Level *level)
{
  const HGraph *graph = level->graph;
  const int nparts = ctrl->recorded == RECORD_PARTS ? ctrl->nparts : 2;
  Weight *weights = wsmalloc(nparts, 0, "Record: weights");
  double total = 0.0, imbalance = 0.0;

  for (int i = 0; i < graph->ncells + graph->nislands; i++)
    weights[level->part.where[i]] += graph->cellwgt[i];
  for (int p = 0; p < nparts; p++)
    total += static_cast<double>(weights[p]);
  for (int p = 0; total > 0.0 && p < nparts; p++)
    imbalance = std::max(imbalance, static_cast<double>(weights[p]) / (ShareOf(ctrl, p) * total) - 1.0);
  QVfree__(&weights);
  return imbalance;
}

static void Send(const Control *ctrl, const Step *step)
{
  ctrl->hooks->record(ctrl->hooks->owner, step);
}

void RecordBegin(const Control *ctrl, StepKind kind, int trial)
{
  Step step = {};

  if (ctrl->recorded == RECORD_NOTHING)
    return;
  step.kind = kind;
  step.trial = trial;
  Send(ctrl, &step);
}

void RecordLevel(const Control *ctrl, Phase phase, const Level *level, Weight value)
{
  Step step = {};

  if (ctrl->recorded == RECORD_NOTHING)
    return;
  const HGraph *graph = level->graph;
  step.kind = STEP_LEVEL;
  step.phase = phase;
  step.ncells = graph->ncells + graph->nislands;
  step.nnets = graph->nnets;
  step.npins = graph->netptr[graph->nnets];
  step.value = phase == PHASE_COARSEN ? -1 : value;
  step.imbalance = phase == PHASE_COARSEN ? 0.0 : ImbalanceOf(ctrl, level);
  Send(ctrl, &step);
}

void RecordEnd(const Control *ctrl, int trial, const Level *level, Weight value, bool taken, const int *kept,
               int nkept)
{
  Step step = {};

  if (ctrl->recorded == RECORD_NOTHING)
    return;
  step.kind = STEP_END;
  step.trial = trial;
  step.value = value;
  step.imbalance = ImbalanceOf(ctrl, level);
  step.taken = taken;
  step.kept = kept;
  step.nkept = nkept;
  Send(ctrl, &step);
}

} // namespace kapris::engine::KAPRIS_ENGINE
