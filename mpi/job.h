// mpi/job.h - what all ranks work on, and what they tell of their starts.
// SPDX-License-Identifier: MIT
#pragma once

#include "link.h"

#include <array>
#include <kapris.hpp>

namespace kapris_mpi
{

// Seconds between signs of life.
inline constexpr double ALIVE_INTERVAL = 1.0;

struct Job {
  kapris::Hypergraph hypergraph;
  kapris::Targets targets;
  kapris::Options options; // without callbacks, but for log and progress
  bool islands;            // starts go on until the time is up, and exchange partitions
  double patience;         // seconds of silence after which a rank counts as lost

  // Of a rank that has got them from another one.
  std::vector<int> net_starts, pins, fixed;
  std::vector<std::int64_t> cell_weights, net_weights;
  std::vector<double> target_weights;
};

// Rank 0 to all others; they call TakeJob for the message.
void SendJob(Link *link, const Job &job);
std::unique_ptr<Job> TakeJob(Link *link, const Message &message);

// One start that is to be made.
struct Work {
  int number;
  int threads;
  double seconds; // left of the time limit, 0: none
};

// What a start came to.
struct Finished {
  kapris::Start start;
  std::array<double, 5> seconds_phase;
  std::uint64_t peak_bytes;
  std::vector<kapris::Trial> trials;
  std::vector<kapris::Level> levels;
  std::vector<kapris::Bisection> bisections;
  std::string part; // as by BytesOfVisitor
};

// How many threads of a rank have nothing to do.
struct Ready {
  int nthreads;
};

// How the ranks end.
struct Farewell {
  bool together;
};

// Why a start failed.
struct Fault {
  int number;
  kapris::Status status;
  std::string text;
};

// Of the records above, for messages.
template <class Record>
std::string BytesOf(const Record &record);
template <class Record>
Record RecordOf(const std::string &bytes);

// A partition, for a message.
std::string BytesOfVisitor(const Job &job, std::span<const int> part);
std::vector<int> VisitorOf(const Job &job, const std::string &bytes);

} // namespace kapris_mpi
