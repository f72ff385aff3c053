// lib/refine/kway/state.h - what k-way refinement knows of nets and cells; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "kway.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// What a net knows of a part that it touches.
struct NetDegree {
  int pid;   // part
  int npins; // its pins there
};

// What a cell knows of a part q other than its own.
struct KDegree {
  int pid;      // q
  int pref;     // nets with more pins in q than in the cell's part, minus nets with fewer
  Weight ed;    // weight of the nets that moving the cell to q makes uncut
  Weight kgain; // fall of the sum over nets of (parts touched - 1) x weight when the cell moves to q
};

struct NetInfo {
  int ndegrees;       // parts that the net touches
  Weight weight;      // that it can add to the cut: 0 for a net of one pin
  NetDegree *degrees; // the net's slice of nrdata, room for one entry per pin
};

struct RInfo {
  int ndegrees;     // entries in use
  bool stale;       // the other fields are not up to date
  Weight id;        // weight of the incident nets that lie wholly in the cell's part
  Weight soloed;    // weight of the incident cut nets that have no other pin in the cell's part
  KDegree *degrees; // the cell's room in crdata, NULL while it has none
};

// Room for the entries of many cells, which follow.
struct KDegreeBlock {
  KDegreeBlock *next;
  std::int64_t size, used; // entries
};

// The storage of one call of a refiner.
struct KwayState {
  const HGraph *graph;
  Partition *part;
  int nparts;
  NetInfo *nrinfo;   // [nnets]
  RInfo *crinfo;     // [ncells]
  NetDegree *nrdata; // [pins]
  KDegreeBlock *crdata;
};

// Needs the incidence arrays; the records are not computed.
KwayState OpenKway(int nparts, Level *level);
void CloseKway(KwayState *state);
// Computes the records, kpwgts, mincut and soed from where.
void ComputeInitKwayGains__(const Control *ctrl, KwayState *state);

// The record of cell i, up to date. Its list is empty when the cell loses by any move (soloed < id).
const RInfo *CellRecord(KwayState *state, int i);
// Brings the records of nets up to date after cell v has changed from part a to part b (where is already changed), and
// makes those of cells stale that it concerns. The record of v must have been up to date.
void KwayUpdateGainInfo__(KwayState *state, int v, int a, int b);

// Validator: the first broken invariant, or NULL.
const char *CheckKway(const KwayState *state);

} // namespace kapris::engine::KAPRIS_ENGINE
