// lib/api/run.h - the starts of one call; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "pool.h"
#include "problem.h"

#include <atomic>
#include <chrono>
#include <exception>

// Why a call ends early.
enum StopReason { GOES_ON, TIME_IS_UP, CANCELLED, FAILED };

enum { NO_CANDIDATE = -2, BEFORE_STARTS = -1 };

// A partition that can become the result.
struct Candidate {
  int *part;
  Measures measures;
  int start; // that made it, or one of the above
};

struct Run {
  const CleanProblem *problem;
  const kapris_options *options;
  std::int64_t seed;
  std::chrono::steady_clock::time_point began;
  TaskPool *pool;
  kapris_start *starts; // [options->starts]

  std::mutex *callbacks; // held while progress or log of the options runs
  double lastprogress;   // under callbacks

  std::atomic<int> stop; // StopReason
  std::mutex lock;       // for the rest
  std::exception_ptr error;
  Candidate best;
  int nstartsdone;
};

double SecondsSince__(std::chrono::steady_clock::time_point began);

// Runs all starts, or as far as the limits allow; leaves the best partition in run->best and the figures of each start
// in run->starts. Throws what a start threw.
void RunStarts__(Run *run);
