// mpi/cost.cpp - what messages cost, and how long a rank may be silent.
// SPDX-License-Identifier: MIT

#include "ranks.h"

#include <cstdlib>
#include <ctime>
#include <fmt/core.h>

namespace kapris_mpi
{

double Patience()
{
  constexpr double usual = 30.0;
  const char *text = std::getenv("KAPRIS_MPI_PATIENCE");
  const double given = text != nullptr ? std::strtod(text, nullptr) : usual;

  return given > 0.0 ? given : usual;
}

static double SecondsOf(clockid_t clock)
{
  timespec time = {};

  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double MessageSeconds()
{
  return SecondsOf(CLOCK_THREAD_CPUTIME_ID);
}

std::string MessageShare(const Link *link, double before)
{
  return fmt::format("rank {}: {:.3f} of {:.3f} s of CPU time for messages\n", link->rank,
                     MessageSeconds() - before, SecondsOf(CLOCK_PROCESS_CPUTIME_ID));
}

} // namespace kapris_mpi
