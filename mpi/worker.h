// mpi/worker.h - the threads of a rank that make starts, beside the one that talks to other ranks.
// SPDX-License-Identifier: MIT
#pragma once

#include "job.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace kapris_mpi
{

// What a rank has to say to rank 0.
struct Report {
  Tag tag;
  std::string bytes;
};

class Worker
{
public:
  // The job stays as it is while there is a worker.
  explicit Worker(const Job *job);
  // Ends the starts that are being made.
  ~Worker();
  Worker(const Worker &) = delete;
  Worker &operator=(const Worker &) = delete;

  // Begins a start. Its report comes when it has ended.
  void Begin(const Work &work);
  // Starts end with what they have.
  void Cancel();

  // The next report, if there is one.
  std::optional<Report> TakeReport();
  // The best partition that the search has found since the last time, if it is one of its own.
  std::optional<std::string> TakeBest();
  // A partition for the search to go on with.
  void AddVisitor(std::string bytes);

  // Until there is a report, or so many seconds.
  void Wait(double seconds);

private:
  void MakeStart(const Work &work);
  Report MakePartition(const Work &work);
  kapris::Options OptionsFor(const Work &work);
  void NoteBest(std::span<const int> part);
  bool AskForVisitor(std::span<int> part);

  const Job *job;
  std::atomic<int> cancel = 0;
  std::mutex lock; // for the rest
  std::condition_variable changed;
  std::vector<std::thread> threads;
  std::vector<std::thread::id> ended; // threads that can be joined at once
  std::deque<Report> reports;
  int nfree;                       // threads of the job that no start has
  std::optional<std::string> best; // see TakeBest
  std::deque<std::string> visitors;
  std::deque<std::string> known; // the last of those that have been taken
};

} // namespace kapris_mpi
