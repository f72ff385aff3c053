// cli/measure/sums.h - sums that say when they leave 64 bits.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace kapris_report
{

// Adds weight x times to the sum; false, with the sum as it was, if that leaves 64 bits.
inline bool AddProduct(std::int64_t *sum, std::int64_t weight, std::int64_t times)
{
  std::int64_t product, added;

  if (__builtin_mul_overflow(weight, times, &product) || __builtin_add_overflow(*sum, product, &added))
    return false;
  *sum = added;
  return true;
}

} // namespace kapris_report
