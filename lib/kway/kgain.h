// lib/kway/kgain.h - upkeep of the k-way records and projection; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "kway.h"

// The record of cell i, up to date. Its list is empty when the cell loses by any move (soloed < id).
const RInfo *CellRecord__(const Control *ctrl, HGraph *graph, int i);
// Brings the records of nets up to date after cell v has changed from part a to part b (where is already changed), and
// makes those of cells stale that it concerns. The record of v must have been up to date.
void KwayUpdateGainInfo__(const Control *ctrl, HGraph *graph, int v, int a, int b);
// Gives coarse->finer its k-way memory and the partition of coarse, and frees coarse.
void ProjectKwayPartition__(Control *ctrl, HGraph *coarse);
