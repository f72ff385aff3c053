// lib/core/vector.cpp - helpers on int arrays.
// SPDX-License-Identifier: MIT

#include "core.h"

#include <algorithm>
#include <cstring>

int iasum__(int n, const int *x)
{
  int sum = 0;

  for (int i = 0; i < n; i++)
    sum = AddWrap__(sum, x[i]);
  return sum;
}

int *iset__(std::int64_t n, int value, int *x)
{
  if (n > 0)
    std::fill_n(x, n, value);
  return x;
}

int *icopy__(std::int64_t n, const int *src, int *dst)
{
  if (n > 0)
    std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof *dst);
  return dst;
}

int iamax__(int n, const int *x)
{
  return n < 2 ? 0 : static_cast<int>(std::max_element(x, x + n) - x);
}

int iamin__(int n, const int *x)
{
  return n < 2 ? 0 : static_cast<int>(std::min_element(x, x + n) - x);
}
