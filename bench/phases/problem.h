// bench/phases/problem.h - the hypergraphs on which the phases are timed, and the frame of a timing.
// SPDX-License-Identifier: MIT
#pragma once

#include "base/random.h"
#include "coarsen/coarsen.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

// The form for weights of 32 bits, which calls of these sizes take.
using namespace kapris::engine::narrow;

// A generated hypergraph as a trial of the library finds it.
struct Problem {
  std::string name; // kind and size, "circuit/10000"
  std::string text; // the .hgr file
  HGraph *graph;    // without large nets, with its incidence; no timing changes it
  int npins;        // of graph
  // A bisection and a partition into KWAY_PARTS parts of the next coarser level, projected: what refinement of the
  // finest level starts from.
  std::vector<int> halves, kparts;
};

enum { KWAY_PARTS = 8 };

// The options of a call for so many parts with the defaults of a two-way or of a k-way run.
Control ControlFor(const HGraph *graph, int nparts);

// Times one phase on one problem: work() is timed, setup() and finish() are not; the random sequence starts anew before
// each work(). finish() cleans up and returns what came out - a cut, a number of cells -, shown as "result": equal
// results of two builds say that both did the same work.
template <class Setup, class Work, class Finish>
void Time(benchmark::State &state, const Problem &problem, Setup setup, Work work, Finish finish)
{
  int result = -1;

  for (auto _ : state) {
    state.PauseTiming();
    setup();
    InitRandom__(1);
    state.ResumeTiming();
    work();
    state.PauseTiming();
    result = finish();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * problem.npins); // pins per second
  state.counters["result"] = result;
}

inline void NoSetup()
{
}

// A phase: its name, and what times it.
struct PhaseTiming {
  const char *name;
  void (*time)(benchmark::State &state, const Problem &problem);
};

extern const std::vector<PhaseTiming> coarsening_phases, refinement_phases;

// One problem is kept at a time, so the timings of a problem should follow each other.
const Problem &ProblemOf(const std::string &kind, int ncells);

// One contraction of a finest level by the default matching, for set-up; its result is the same each time.
Level *ContractOnce(Level *top);
// Frees the levels from the given one up to the finest, and what coarsening and refinement have left in that.
void FreeLevels(Level *top, Level *coarsest);

// The partition of a level, whose room must be there.
void SetWhere(Level *level, const std::vector<int> &part);
