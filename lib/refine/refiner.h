// lib/refine/refiner.h - the shape that every refinement of a level has, so that the road through the levels can take
// any.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/level.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// A way to improve the partition of a level. Its state lives as long as one call of refine.
struct Refiner {
  const char *name;
  // Gives the level room for a partition and what belongs to it, uninitialised.
  void (*initialise)(const Control *ctrl, Level *level);
  // Improves the partition in where and sets the figures of Partition that value names. coarsest = number of the
  // level on which the first partition was made.
  void (*refine)(const Control *ctrl, Level *level, int coarsest);
  // Puts the cells that have been set aside into parts.
  void (*dealislands)(const Control *ctrl, Level *level);
  Weight Partition::*value; // what is minimised
  bool tracesbefore;        // the trace of V-cycles begins with the value before them
};

} // namespace kapris::engine::KAPRIS_ENGINE
