// mpi/islands.h - what searches send each other.
// SPDX-License-Identifier: MIT
#pragma once

#include "worker.h"

#include <random>

namespace kapris_mpi
{

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point began);

// Sends what the search of this rank finds to one of the others, drawn anew each time, and now and then to rank 0.
class Sender
{
public:
  Sender(Link *link, Worker *worker);
  // To be called again and again.
  void Send();

private:
  int DrawRank();

  Link *link;
  Worker *worker;
  std::minstd_rand random;
  Clock::time_point sent, copied; // when last
};

} // namespace kapris_mpi
