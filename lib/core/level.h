// lib/core/level.h - a level of a trial: its hypergraph, how it maps to the coarser one, and its partition.
// SPDX-License-Identifier: MIT
//
// All that changes while a trial runs stands here; the hypergraph of the finest level is shared with other trials.
#pragma once

#include "hgraph.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// A partition of a level, and what refinement knows of it. Islands have an entry in where and count in no weight until
// they are dealt.
struct Partition {
  int *where;      // [ncells+nislands] part of each cell
  Weight pwgts[2]; // two-way: weights of the sides
  Weight *kpwgts;  // k-way: [nparts] weights of the parts
  Weight mincut;
  Weight soed;   // k-way
  Weight objval; // k-way: mincut or soed, whichever is minimised
};

struct Level {
  const HGraph *graph;
  HGraph *own;         // the same if it belongs to the level, else NULL: the finest level without islands
  const HGraph *outer; // finest level: the hypergraph with its islands in their places
  Level *coarser, *finer;
  int level;       // contractions since coarsening began
  Cell *cellmap;   // [ncells] coarse cell of each cell
  Cell *islandmap; // [ncells+nislands] old to new cell number, only on the finest level and with islands
  Partition part;
};

// A finest level over graph, which must outlive it, without a partition.
Level OpenLevel(const HGraph *graph);
// Releases what the level holds; not the record itself, and not the hypergraph of a finest level.
void CloseLevel(Level *level);
// The same but for where: what a V-cycle adds to the level that it starts from.
void CloseCycle(Level *level);
// A level on the heap that owns graph; the coarser neighbour of finer, which is not told. FreeLevel releases it.
Level *CreateLevel(Level *finer, HGraph *graph);
void FreeLevel(Level *level);

// ----------------------------------------------------------------------------------------------------------
// Records of levels and trials (record.cpp); but for the last they do nothing unless ctrl->recorded

// A trial, its later V-cycles, a V-cycle or the polish begins.
void RecordBegin(const Control *ctrl, StepKind kind, int trial);
// What phase has made of a level. value is that of the partition in where, -1 if there is none yet.
void RecordLevel(const Control *ctrl, Phase phase, const Level *level, Weight value);
// A trial, or its later V-cycles, ended with the partition in where. kept, [nkept]: see Step.
void RecordEnd(const Control *ctrl, int trial, const Level *level, Weight value, bool taken, const int *kept,
               int nkept);
// A partition of all parts that a population was offered, with the numbers of its parents or -1.
void RecordMember(const Control *ctrl, const HGraph *graph, int number, const int parents[2], Weight value,
                  const int *part, bool best);
// A bisection of a recursion, with the side of each cell; its cells become nparts parts from first. Needs no recorded.
void RecordSplit(const Control *ctrl, const HGraph *graph, const int *side, int first, int nparts, Weight cut,
                 double seconds);

// ----------------------------------------------------------------------------------------------------------
// Validators (check.cpp): the first broken invariant, or NULL.
const char *CheckLevel(const Level *level);     // its links
const char *CheckBisection(const Level *level); // where, pwgts, mincut

} // namespace kapris::engine::KAPRIS_ENGINE
