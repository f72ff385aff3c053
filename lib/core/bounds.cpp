// lib/core/bounds.cpp - what the sides of a bisection, or the parts, may weigh.
// SPDX-License-Identifier: MIT

#include "bounds.h"

#include "constants.h"

#include <algorithm>
#include <cmath>

namespace kapris::engine::KAPRIS_ENGINE
{

// Half and half, but for an odd number of parts.
static void AimAtCounts(Bounds *bounds, int nparts, int nfixed)
{
  bounds->part0frac = static_cast<Real>(nparts / 2 / static_cast<double>(nparts));
  // Cells without nets go by weight alone.
  bounds->dealshare = 0.5;
  // The product in single precision, the sum in double.
  const Real share = static_cast<Real>(nfixed) * bounds->part0frac;
  bounds->nanchors0 = Truncate(static_cast<double>(share) + WHOLE_MARGIN);
  bounds->inorder = false;
}

static void AimAtLimits(Bounds *bounds, int nparts, int first, Weight total, int nfixed)
{
  const int nparts0 = nparts / 2;
  double shares[2] = {0.0, 0.0}, limits[2] = {0.0, 0.0};

  for (int p = 0; p < nparts; p++) {
    shares[p >= nparts0] += bounds->shares[first + p];
    limits[p >= nparts0] += static_cast<double>(bounds->limits[first + p]);
  }
  const double share0 = shares[0] / (shares[0] + shares[1]), share1 = 1.0 - share0;
  const double weight = static_cast<double>(total);
  double slack = 1.0; // factor by which the tighter side may grow in all bisections together
  if (weight > 0.0)
    slack = std::max(1.0, std::min(limits[0] / (share0 * weight), limits[1] / (share1 * weight)));
  const double growth = std::pow(slack, 1.0 / std::ceil(std::log2(nparts))) - 1.0;

  bounds->part0frac = static_cast<Real>(share0);
  bounds->ubfactor = static_cast<Real>(std::min(share0, share1) * growth);
  bounds->dealshare = bounds->part0frac;
  bounds->nanchors0 = nfixed > 0 ? nparts0 : 0;
  bounds->inorder = true;
}

void AimBounds(Bounds *bounds, int nparts, int first, Weight total, int nfixed)
{
  if (bounds->limits == nullptr)
    AimAtCounts(bounds, nparts, nfixed);
  else
    AimAtLimits(bounds, nparts, first, total, nfixed);
}

void SideBounds(const Bounds *bounds, Weight total, Weight minpwgt[2])
{
  // For side 0 in the precision of bounds and for side 1 in double, on purpose: the bounds of an even split differ by
  // one.
  minpwgt[0] = TruncateWeight((bounds->part0frac - bounds->ubfactor) * static_cast<Real>(total));
  minpwgt[1] = TruncateWeight((1.0 - bounds->part0frac - bounds->ubfactor) * static_cast<double>(total));
}

void PartBounds(const Bounds *bounds, int nparts, Weight total, Weight *upper, Weight *lower)
{
  if (bounds->limits == nullptr) {
    const Real wgt = static_cast<Real>(total), n = static_cast<Real>(nparts);
    iset__(nparts, TruncateWeight((bounds->ubfactor * wgt) / n), upper);
    iset__(nparts, TruncateWeight(wgt / (n * bounds->ubfactor)), lower);
    return;
  }
  const double weight = static_cast<double>(total);
  const double ratio = bounds->total > 0 ? weight / static_cast<double>(bounds->total) : 1.0;
  for (int p = 0; p < nparts; p++) {
    upper[p] = TruncateWeight(std::ceil(static_cast<double>(bounds->limits[p]) * ratio));
    // As far below its share as it may be above, but not so near that nothing can move: no part runs empty.
    const double share = bounds->shares[p] * weight,
                 limit = static_cast<double>(std::max<Weight>(1, upper[p]));
    lower[p] = std::max<Weight>(1, TruncateWeight(std::min(share / LEAST_FACTOR, share * share / limit)));
  }
}

int LightestPart(const Bounds *bounds, int nparts, const Weight *kpwgts)
{
  if (bounds->shares == nullptr)
    return iamin__(nparts, kpwgts);

  int lightest = 0;
  for (int p = 1; p < nparts; p++)
    if (static_cast<double>(kpwgts[p]) * bounds->shares[lightest] <
        static_cast<double>(kpwgts[lightest]) * bounds->shares[p])
      lightest = p;
  return lightest;
}

int LighterSide(const Bounds *bounds, const Weight pwgts[2])
{
  return static_cast<double>(pwgts[0]) * (1.0 - bounds->dealshare) >=
                 static_cast<double>(pwgts[1]) * bounds->dealshare
             ? 1
             : 0;
}

} // namespace kapris::engine::KAPRIS_ENGINE
