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

// Candidates that no start has made.
enum { NO_CANDIDATE = -3, SIMPLE_PARTITION = -2, GIVEN_PARTITION = -1 };

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
  double *seconds;      // [NPHASES] of all starts that have ended; under lock

  std::mutex *callbacks; // held while progress or log of the options runs
  double lastprogress;   // under callbacks

  std::atomic<int> stop;        // StopReason
  std::atomic<bool> impossible; // no partition keeps the limits
  std::atomic<double> done;     // estimate of the work done, in starts
  std::mutex lock;              // for the rest
  std::exception_ptr error;
  Candidate best;
  int *initial;    // [ncells] the partition to improve, or NULL
  Candidate shown; // the best for reports of progress, without its partition
  int nstartsdone;
};

double SecondsSince__(std::chrono::steady_clock::time_point began);

// Runs all starts, or as far as the limits allow; leaves the best partition in run->best and the figures of each start
// in run->starts. With given, [ncells], they improve that partition. Throws what a start threw.
void RunStarts__(Run *run, const int *given);

// Whether a comes before b under the order of partitions.
bool IsBetter__(const Run *run, const Candidate *a, const Candidate *b);
