// lib/core/bounds.h - what the sides of a bisection, or the parts, may weigh.
// SPDX-License-Identifier: MIT
//
// Either interface fills the record once; whatever weighs something asks here. Weights are totals over the cells: where
// cells get several weights each, each of them gets bounds of its own.
#pragma once

#include "weight.h"

namespace kapris::engine::KAPRIS_ENGINE
{

struct Bounds {
  // The parts of the call.
  const double *shares; // [nparts] of the total weight, sum 1; or NULL: all equal
  const Weight *limits; // [nparts] largest weights; or NULL: by ubfactor
  Weight total;         // weight of all cells; with limits

  // The bisection that goes on. Of parts without limits, ubfactor is what a part may weigh over the average.
  Real part0frac;   // share of side 0
  Real ubfactor;    // share of the total that a side may be away from its own
  double dealshare; // share of side 0 by which cells without nets are dealt
  int nanchors0;    // the first so many anchors belong to side 0 ...
  bool inorder;     // ... in the order of their parts; else in random order, before the bisection
};

// Sets the bisection that splits the parts first .. first + nparts - 1, of cells that weigh total together and of which
// nfixed are anchors: the lower half of the parts, rounded down, goes to side 0. With limits also how far the sides may
// be away from their shares: what their parts may weigh together beyond what there is to bisect, spread evenly over the
// bisections still to come.
void AimBounds(Bounds *bounds, int nparts, int first, Weight total, int nfixed);

// The lowest weight of each side in an accepted bisection of cells that weigh total together.
void SideBounds(const Bounds *bounds, Weight total, Weight minpwgt[2]);

// The weights between which each part must stay on a level that weighs total, which can lack cells without nets.
// upper, lower: [nparts].
void PartBounds(const Bounds *bounds, int nparts, Weight total, Weight *upper, Weight *lower);

// The part of the smallest weight in proportion to its share; the lowest number among equals.
int LightestPart(const Bounds *bounds, int nparts, const Weight *kpwgts);
// The side, by the share at which cells without nets are dealt; side 1 among equals.
int LighterSide(const Bounds *bounds, const Weight pwgts[2]);

} // namespace kapris::engine::KAPRIS_ENGINE
