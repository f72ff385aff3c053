// bench/phases/main.cpp - how fast each phase of the library is, on generated hypergraphs of three sizes.
// SPDX-License-Identifier: MIT
//
// usage: bench_phases [--benchmark_filter=REGEX] [...]; names are PHASE/KIND/CELLS.

#include "problem.h"

#include <cstdio>
#include <exception>

static void RegisterPhases(const std::vector<PhaseTiming> &phases, const std::string &kind, int ncells)
{
  for (const PhaseTiming &phase : phases) {
    const std::string name = std::string(phase.name) + "/" + kind + "/" + std::to_string(ncells);
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
      phase.time(state, ProblemOf(kind, ncells));
    })->Unit(benchmark::kMillisecond);
  }
}

int main(int argc, char **argv)
{
  for (const char *kind : {"circuit", "grid"}) {
    for (int ncells : {10'000, 100'000, 1'000'000}) {
      RegisterPhases(coarsening_phases, kind, ncells);
      RegisterPhases(refinement_phases, kind, ncells);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 2;

  PushErrorHandler();
  try {
    benchmark::RunSpecifiedBenchmarks();
  } catch (const FatalError &error) {
    std::fprintf(stderr, "bench_phases: %s\n", error.message);
    return 1;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "bench_phases: %s\n", error.what());
    return 1;
  }
  PopErrorHandler();
  benchmark::Shutdown();
  return 0;
}
