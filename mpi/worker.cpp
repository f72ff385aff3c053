// mpi/worker.cpp - the threads of a rank that make starts.
// SPDX-License-Identifier: MIT

#include "worker.h"

#include <algorithm>
#include <new>
#include <utility>

namespace kapris_mpi
{

// A search that is busy takes only the newest of those that have come meanwhile.
static constexpr std::size_t MOST_VISITORS = 8;

Worker::Worker(const Job *given) : job(given), nfree(given->options.threads)
{
  reports.push_back({Tag::READY, BytesOf(Ready{nfree})});
}

Worker::~Worker()
{
  Cancel();
  for (std::thread &thread : threads)
    thread.join();
}

void Worker::Begin(const Work &work)
{
  const std::lock_guard<std::mutex> guard(lock);

  std::erase_if(threads, [&](std::thread &thread) {
    const bool gone = std::find(ended.begin(), ended.end(), thread.get_id()) != ended.end();
    if (gone)
      thread.join();
    return gone;
  });
  ended.clear();
  nfree -= work.threads;
  threads.emplace_back([this, work] { MakeStart(work); });
}

void Worker::Cancel()
{
  cancel = 1;
}

std::optional<Report> Worker::TakeReport()
{
  const std::lock_guard<std::mutex> guard(lock);

  if (reports.empty())
    return std::nullopt;
  Report report = std::move(reports.front());
  reports.pop_front();
  return report;
}

std::optional<std::string> Worker::TakeBest()
{
  const std::lock_guard<std::mutex> guard(lock);

  return std::exchange(best, std::nullopt);
}

void Worker::AddVisitor(std::string bytes)
{
  const std::lock_guard<std::mutex> guard(lock);

  visitors.push_back(std::move(bytes));
  if (visitors.size() > MOST_VISITORS)
    visitors.pop_front();
}

void Worker::Wait(double seconds)
{
  std::unique_lock<std::mutex> guard(lock);

  changed.wait_for(guard, std::chrono::duration<double>(seconds), [&] { return !reports.empty(); });
}

// ----------------------------------------------------------------------------------------------------------
// On the threads of the starts

// Those of others that it goes on with are told back to it as its own.
void Worker::NoteBest(std::span<const int> part)
{
  std::string bytes = BytesOfVisitor(*job, part);
  const std::lock_guard<std::mutex> guard(lock);

  if (std::find(known.begin(), known.end(), bytes) == known.end())
    best = std::move(bytes);
}

bool Worker::AskForVisitor(std::span<int> part)
{
  const std::lock_guard<std::mutex> guard(lock);

  if (visitors.empty())
    return false;
  const std::vector<int> visitor = VisitorOf(*job, visitors.front());
  std::copy(visitor.begin(), visitor.end(), part.begin());
  known.push_back(BytesOfVisitor(*job, part));
  visitors.pop_front();
  if (known.size() > MOST_VISITORS)
    known.pop_front();
  return true;
}

kapris::Options Worker::OptionsFor(const Work &work)
{
  kapris::Options options = job->options;

  options.starts = 1;
  options.first_start = work.number;
  options.threads = work.threads;
  options.cancel = &cancel;
  options.time_limit.reset();
  if (job->islands) {
    options.time_limit = std::chrono::duration<double>(work.seconds);
    options.improved = [this](std::span<const int> part) { NoteBest(part); };
    options.arrived = [this](std::span<int> part) { return AskForVisitor(part); };
  }
  return options;
}

// Returns what there is to say of the start.
Report Worker::MakePartition(const Work &work)
{
  Fault fault = {work.number, KAPRIS_INTERNAL, ""};

  try {
    const kapris::Result result = kapris::Partition(job->hypergraph, job->targets, OptionsFor(work));
    const Finished finished = {result.starts[0],
                               result.seconds_phase,
                               result.peak_bytes,
                               result.trials,
                               result.levels,
                               result.bisections,
                               BytesOfVisitor(*job, result.part)};
    return {Tag::FINISHED, BytesOf(finished)};
  } catch (const kapris::Error &error) {
    fault = {work.number, error.status(), error.what()};
  } catch (const std::bad_alloc &) {
    fault = {work.number, KAPRIS_OUT_OF_MEMORY, "out of memory"};
  } catch (const std::exception &error) {
    fault.text = error.what();
  }
  return {Tag::FAILED, BytesOf(fault)};
}

void Worker::MakeStart(const Work &work)
{
  Report report = MakePartition(work);
  const std::lock_guard<std::mutex> guard(lock);

  nfree += work.threads;
  ended.push_back(std::this_thread::get_id());
  reports.push_back(std::move(report));
  reports.push_back({Tag::READY, BytesOf(Ready{nfree})});
  changed.notify_all();
}

} // namespace kapris_mpi
