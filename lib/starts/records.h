// lib/starts/records.h - collects the trials and levels of one start; for this folder and the safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "kapris_api.h"

#include "base/hooks.h"

#include <map>
#include <mutex>
#include <vector>

namespace kapris::engine::safe
{

using namespace base;

// More trials than this are kept only if they can still become the best: a call can have any number.
inline constexpr int MAX_RECORDED_TRIALS = 1000;

// Only the thread that runs the start's first bisection, k-way run or polish writes here, but for the bisections.
struct Records {
  std::vector<kapris_trial> trials;
  std::map<int, std::vector<kapris_level>> levels; // of the trials that can still become the best
  std::vector<kapris_level> polish;
  int best = -1; // the trial whose partition is the start's

  std::mutex lock;                          // for the next
  std::vector<kapris_bisection> bisections; // as they are done

  // What the levels to come belong to.
  int trial = -1; // -1: the polish
  int cycle = 0;
};

// Notes a step of the start number start of the call.
void NoteStep(Records *records, int start, const Step *step);
// The levels of the best trial and those of the polish; records keeps none.
std::vector<kapris_level> TakeLevels(Records *records);
// The bisections, each before those of its sides, side 0 first; records keeps none.
std::vector<kapris_bisection> TakeBisections(Records *records);

} // namespace kapris::engine::safe
