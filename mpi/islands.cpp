// mpi/islands.cpp - what searches send each other.
// SPDX-License-Identifier: MIT

#include "islands.h"

#include <algorithm>

namespace kapris_mpi
{

static constexpr double SEND_INTERVAL = 0.25; // seconds
// So that rank 0 gets no more than 200 partitions in a second.
static constexpr double COPY_INTERVAL = 1.0, COPY_INTERVAL_PER_RANK = 0.005;

double SecondsSince(Clock::time_point began)
{
  return std::chrono::duration<double>(Clock::now() - began).count();
}

Sender::Sender(Link *given, Worker *searching)
    : link(given), worker(searching), random(static_cast<unsigned>(given->rank + 1)), sent(), copied()
{
}

// Of the others.
int Sender::DrawRank()
{
  const int drawn = static_cast<int>(random() % static_cast<unsigned>(link->nranks - 1));

  return drawn < link->rank ? drawn : drawn + 1;
}

void Sender::Send()
{
  const double interval = std::max(COPY_INTERVAL, COPY_INTERVAL_PER_RANK * link->nranks);

  if (link->nranks == 1 || SecondsSince(sent) < SEND_INTERVAL)
    return;
  const std::optional<std::string> best = worker->TakeBest();
  if (!best)
    return;
  sent = Clock::now();
  const int target = DrawRank();
  kapris_mpi::Send(link, target, Tag::VISITOR, *best);
  if (link->rank > 0 && target > 0 && SecondsSince(copied) >= interval) {
    kapris_mpi::Send(link, 0, Tag::COPY, *best);
    copied = sent;
  }
}

} // namespace kapris_mpi
