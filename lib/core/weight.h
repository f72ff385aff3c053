// lib/core/weight.h - the numbers of the engine, and the namespace of the form that is being compiled.
// SPDX-License-Identifier: MIT
//
// The engine is compiled twice from one source, for weights of 32 and of 64 bits. A call takes the narrow form where
// its sums fit: it is faster and needs less memory. Each form has a namespace of its own, so both can be linked
// together.
#pragma once

#include "base/memory.h"
#include "base/output.h"

#include <climits>
#include <cstdint>
#include <limits>
#include <type_traits>

#ifndef KAPRIS_WEIGHT_BITS
#define KAPRIS_WEIGHT_BITS 32
#endif
#if KAPRIS_WEIGHT_BITS == 64
#define KAPRIS_ENGINE wide
#else
#define KAPRIS_ENGINE narrow
#endif

namespace kapris::engine::KAPRIS_ENGINE
{

using namespace base;

constexpr bool IS_WIDE = KAPRIS_WEIGHT_BITS == 64;

// Cells, nets and pins are counted by int; records and interfaces say which of them a number counts.
using Cell = int;
using Net = int;
using Pin = int;

// The weight of a cell or net, a sum of weights, a gain, a cut.
using Weight = std::conditional_t<IS_WIDE, std::int64_t, std::int32_t>;
using UWeight = std::make_unsigned_t<Weight>;
constexpr Weight MAX_WEIGHT = std::numeric_limits<Weight>::max();

// What bounds of weights are computed in. The narrow form rounds to single precision on purpose: that decides the last
// unit of its bounds, which its results depend on. In the wide form 24 bits would not do.
using Real = std::conditional_t<IS_WIDE, double, float>;

// Sums that may leave the range on hostile input wrap around instead of being undefined.
inline Weight AddWrap(Weight a, Weight b)
{
  return static_cast<Weight>(static_cast<UWeight>(a) + static_cast<UWeight>(b));
}

inline Weight SubWrap(Weight a, Weight b)
{
  return static_cast<Weight>(static_cast<UWeight>(a) - static_cast<UWeight>(b));
}

inline Weight MulWrap(Weight a, Weight b)
{
  return static_cast<Weight>(static_cast<UWeight>(a) * static_cast<UWeight>(b));
}

inline Weight AbsDiff(Weight a, Weight b)
{
  const Weight d = SubWrap(a, b);
  return d < 0 ? SubWrap(0, d) : d;
}

// Toward zero; NaN and what lies outside the range give the smallest number, as the conversion of x86-64 does.
inline int Truncate(double x)
{
  return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int>(x) : INT_MIN;
}

inline Weight TruncateWeight(double x)
{
  constexpr double limit = 9223372036854775808.0; // 2^63

  if constexpr (IS_WIDE)
    return x >= -limit && x < limit ? static_cast<Weight>(x) : std::numeric_limits<Weight>::min();
  else
    return Truncate(x);
}

inline Weight iasum__(int n, const Weight *x) // 0 for n < 1; wraps
{
  Weight sum = 0;

  for (int i = 0; i < n; i++)
    sum = AddWrap(sum, x[i]);
  return sum;
}

inline Weight *wmalloc(std::int64_t n, const char *label)
{
  return QVarray<Weight>(n, label);
}

inline Weight *wsmalloc(std::int64_t n, Weight value, const char *label)
{
  return QVarrayOf<Weight>(n, value, label);
}

// For formats of traces, which are the same for both widths.
inline long long Shown(Weight weight)
{
  return weight;
}

} // namespace kapris::engine::KAPRIS_ENGINE
