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
static double ImbalanceOf(const Control *ctrl, const HGraph *graph, const int *part)
{
  const int nparts = ctrl->recorded == RECORD_PARTS ? ctrl->nparts : 2;
  Weight *weights = wsmalloc(nparts, 0, "Record: weights");
  double total = 0.0, imbalance = 0.0;

  for (int i = 0; i < graph->ncells + graph->nislands; i++)
    weights[part[i]] += graph->cellwgt[i];
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
  step.imbalance = phase == PHASE_COARSEN ? 0.0 : ImbalanceOf(ctrl, level->graph, level->part.where);
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
  step.imbalance = ImbalanceOf(ctrl, level->graph, level->part.where);
  step.taken = taken;
  step.kept = kept;
  step.nkept = nkept;
  Send(ctrl, &step);
}

void RecordMember(const Control *call, const HGraph *graph, int number, const int parents[2], Weight value,
                  const int *part, bool best)
{
  Control ctrl = *call;
  Step step = {};

  if (ctrl.hooks->record == nullptr)
    return;
  ctrl.recorded = RECORD_PARTS;
  step.kind = STEP_MEMBER;
  step.trial = number;
  step.parents[0] = parents[0];
  step.parents[1] = parents[1];
  step.value = value;
  step.imbalance = ImbalanceOf(&ctrl, graph, part);
  step.taken = best;
  Send(&ctrl, &step);
}

void RecordSplit(const Control *ctrl, const HGraph *graph, const int *side, int first, int nparts, Weight cut,
                 double seconds)
{
  Step step = {};

  if (ctrl->hooks->record == nullptr)
    return;
  step.kind = STEP_SPLIT;
  step.value = cut;
  step.first = first;
  step.nparts = nparts;
  for (int i = 0; i < graph->ncells; i++)
    step.weights[side[i]] += graph->cellwgt[i];
  step.seconds = seconds;
  Send(ctrl, &step);
}

} // namespace kapris::engine::KAPRIS_ENGINE
