// lib/starts/run.h - the starts of one call; for this folder and the safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include "candidate.h"
#include "pool.h"
#include "problem.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <vector>

namespace kapris::engine::safe
{

// Why a call ends early.
enum StopReason { GOES_ON, TIME_IS_UP, CANCELLED, FAILED };

// Partitions that the caller has.
struct GivenParts {
  int n; // 0 = none
  const int *const *parts;
  bool combined; // or, of one, improved
};

struct Run {
  const kapris_problem *given; // as the caller has it
  const CleanProblem *problem;
  const kapris_options *options;
  std::int64_t seed;
  std::chrono::steady_clock::time_point began;
  TaskPool *pool;
  double *seconds; // [NPHASES] of all starts that have ended; under lock

  std::mutex *callbacks; // held while progress or log of the options runs
  double lastprogress;   // under callbacks

  std::atomic<int> stop;        // StopReason
  std::atomic<bool> impossible; // no partition keeps the limits
  std::atomic<double> done;     // estimate of the work done, in starts
  std::mutex lock;              // for the rest
  std::exception_ptr error;
  bool outofmemory;                 // a start ended so, after others had ended well
  FatalError shortage;              // why
  std::vector<kapris_start> starts; // those that have begun; the record of one is there when it has ended
  Candidate best;
  int *initial; // [ncells] the partition to improve, or NULL
  int **others; // [nothers] what it is to be combined with
  int nothers;
  Candidate shown; // the best for reports of progress, without its partition
  int nstartsdone;

  // With records, under lock.
  std::vector<std::vector<kapris_trial>> trials; // as starts
  std::vector<kapris_level> levels;              // of the start that made the best partition
  std::vector<kapris_bisection> bisections;      // the same
};

double SecondsSince(std::chrono::steady_clock::time_point began);

// Whether starts go on until the time is up, however much they were asked for.
bool IsEndless(const Run *run);

// Runs all starts, or as far as the limits allow; leaves the best partition in run->best and the figures of each start
// that has begun in run->starts: one at least. They improve or combine the given partitions, if there are any. Throws
// what a start threw, but for want of memory where others had ended before.
void RunStarts(Run *run, const GivenParts *given);

} // namespace kapris::engine::safe
