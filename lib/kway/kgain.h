// lib/kway/kgain.h - upkeep of the k-way records and projection; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "kway.h"

// Brings the records up to date after cell v has changed from part a to part b (where is already changed).
// marker and updind have room for ncells entries; no entry of marker equals v on entry.
void KwayUpdateGainInfo__(HGraph *graph, int v, int a, int b, int *marker, int *updind);
// Recomputes the records of the listed cells from those of the nets.
void ComputeKwayGainsSet__(HGraph *graph, int n, const int *cells);
// Gives coarse->finer its k-way memory and the partition of coarse, and frees coarse.
void ProjectKwayPartition__(Control *ctrl, HGraph *coarse);
