// lib/starts/limits.h - what a part may weigh; for this folder and the safe interface.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace kapris::engine::safe
{

// What one part should have of a total of at most 2^61.
struct Share {
  int nparts;
  double fraction; // or 0: the nparts parts are all the same
};

// floor((1 + epsilon) x ceil(share x total)), exactly; at most INT64_MAX. epsilon >= 0 counts as the decimal that the
// caller wrote: 0.03 of 100 is 3, though the double is a hair less.
std::int64_t PartLimit(std::int64_t total, Share share, double epsilon);
// ceil((1 - epsilon) x floor(share x total)), for an epsilon of 0 .. 1.
std::int64_t PartMinimum(std::int64_t total, Share share, double epsilon);

} // namespace kapris::engine::safe
