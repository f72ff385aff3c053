// mpi/main.cpp - the kapris-mpi command: kapris partition on the ranks of MPI.
// SPDX-License-Identifier: MIT
//
//   main       the command line, on rank 0; the others wait
//   root       rank 0: hands out starts, takes what they give in their order
//   others     the other ranks
//   worker     the threads that make starts, on every rank
//   islands    what searches under a time limit send each other
//   job, link  records and messages

#include "entry.h"
#include "libraries.h"
#include "ranks.h"

#include "formats/failure.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

using namespace kapris_mpi;

static int RunRankZero(Link *link, int argc, char **argv)
{
  const kapris_cli::Engine engine = {
      [link](const kapris_cli::LibraryCall &call) { return RunOnRanks(link, call); }, link->nranks};
  const int status = kapris_cli::RunCommand(
      argc, argv, [&](CLI::App *app, kapris_cli::Run *run, kapris_cli::ColorWhen *color) {
        kapris_cli::DescribeMpiCommand(app, run, color, engine);
      });

  LeaveTogether(link);
  return status;
}

static int RunOther(Link *link)
{
  try {
    ServeRankZero(link);
    return kapris_cli::EXIT_DONE;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "kapris: rank %d: %s\n", link->rank, error.what());
    return kapris_cli::EXIT_INTERNAL;
  }
}

int main(int argc, char **argv)
{
  Link link(&argc, &argv);

  const int status = link.rank == 0 ? RunRankZero(&link, argc, argv) : RunOther(&link);
  if (!link.whole) {
    // Without the functions that MPI has left for the end, which may wait, too.
    std::fflush(nullptr);
    std::_Exit(status);
  }
  return status;
}
