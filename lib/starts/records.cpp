// lib/starts/records.cpp - collects the trials and levels of one start.
// SPDX-License-Identifier: MIT
//
// A trial can become the best long after it ended, by V-cycles that come after the last trial. So the levels of the
// best one and of those that can still get V-cycles are kept, and of no others.

#include "records.h"

#include <algorithm>
#include <utility>

namespace kapris::engine::safe
{

static void Begin(Records *records, const Step *step)
{
  records->trial = step->kind == STEP_POLISH ? -1 : step->trial;
  // V-cycles that a trial gets later go on where its own ended.
  const auto earlier = records->levels.find(records->trial);
  records->cycle =
      earlier == records->levels.end() || earlier->second.empty() ? 0 : earlier->second.back().cycle;
}

static void NoteLevel(Records *records, const Step *step)
{
  const bool polish = records->trial < 0;
  std::vector<kapris_level> *levels = polish ? &records->polish : &records->levels[records->trial];

  levels->push_back({static_cast<kapris_phase>(step->phase), records->cycle, polish, step->ncells,
                     step->nnets, step->npins, step->value, step->imbalance});
}

// Drops the levels of trials that neither are the best nor can get V-cycles.
static void DropLevels(Records *records, const Step *step)
{
  const int *end = step->kept + step->nkept;

  std::erase_if(records->levels, [&](const auto &entry) {
    return entry.first != records->best && std::find(step->kept, end, entry.first) == end;
  });
}

static void NoteEnd(Records *records, int start, const Step *step)
{
  std::vector<kapris_trial> *trials = &records->trials;
  // The ones that end again are kept: they were among the best.
  const auto earlier = std::find_if(trials->rbegin(), trials->rend(),
                                    [&](const kapris_trial &trial) { return trial.number == step->trial; });

  if (step->taken) {
    for (kapris_trial &trial : *trials)
      trial.best = 0;
    records->best = step->trial;
  }
  DropLevels(records, step);
  if (earlier != trials->rend()) {
    earlier->cycled = step->value;
    earlier->best = records->best == step->trial;
    if (step->taken)
      earlier->imbalance = step->imbalance;
  } else if (trials->size() < MAX_RECORDED_TRIALS || records->levels.contains(step->trial)) {
    trials->push_back({start, step->trial, step->value, -1, step->imbalance, step->taken, {-1, -1}});
  }
}

static void NoteMember(Records *records, int start, const Step *step)
{
  std::vector<kapris_trial> *trials = &records->trials;

  if (step->taken)
    for (kapris_trial &trial : *trials)
      trial.best = 0;
  if (trials->size() < MAX_RECORDED_TRIALS || step->taken)
    trials->push_back({start,
                       step->trial,
                       step->value,
                       -1,
                       step->imbalance,
                       step->taken,
                       {step->parents[0], step->parents[1]}});
}

static void NoteSplit(Records *records, const Step *step)
{
  const std::lock_guard<std::mutex> guard(records->lock);

  records->bisections.push_back(
      {step->first, step->nparts, step->value, {step->weights[0], step->weights[1]}, step->seconds});
}

void NoteStep(Records *records, int start, const Step *step)
{
  switch (step->kind) {
  case STEP_TRIAL:
  case STEP_POLISH:
    Begin(records, step);
    break;
  case STEP_CYCLE:
    records->cycle++;
    break;
  case STEP_LEVEL:
    NoteLevel(records, step);
    break;
  case STEP_END:
    NoteEnd(records, start, step);
    break;
  case STEP_MEMBER:
    NoteMember(records, start, step);
    break;
  case STEP_SPLIT:
    NoteSplit(records, step);
    break;
  }
}

std::vector<kapris_level> TakeLevels(Records *records)
{
  const auto best = records->levels.find(records->best);
  std::vector<kapris_level> levels;

  if (best != records->levels.end())
    levels = std::move(best->second);
  levels.insert(levels.end(), records->polish.begin(), records->polish.end());
  records->levels.clear();
  records->polish.clear();
  return levels;
}

std::vector<kapris_bisection> TakeBisections(Records *records)
{
  std::vector<kapris_bisection> bisections = std::move(records->bisections);

  std::sort(bisections.begin(), bisections.end(), [](const kapris_bisection &a, const kapris_bisection &b) {
    return a.first != b.first ? a.first < b.first : a.parts > b.parts;
  });
  return bisections;
}

} // namespace kapris::engine::safe
