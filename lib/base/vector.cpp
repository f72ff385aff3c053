// lib/base/vector.cpp - helpers on arrays of numbers.
// SPDX-License-Identifier: MIT

#include "memory.h"

#include <algorithm>
#include <cstring>

namespace kapris::engine::base
{

template <class T>
T *iset__(std::int64_t n, std::type_identity_t<T> value, T *x)
{
  if (n > 0)
    std::fill_n(x, n, value);
  return x;
}

template <class T>
T *icopy__(std::int64_t n, const std::type_identity_t<T> *src, T *dst)
{
  if (n > 0)
    std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof *dst);
  return dst;
}

template <class T>
int iamax__(int n, const T *x)
{
  return n < 2 ? 0 : static_cast<int>(std::max_element(x, x + n) - x);
}

template <class T>
int iamin__(int n, const T *x)
{
  return n < 2 ? 0 : static_cast<int>(std::min_element(x, x + n) - x);
}

template std::int32_t *iset__(std::int64_t, std::int32_t, std::int32_t *);
template std::int64_t *iset__(std::int64_t, std::int64_t, std::int64_t *);
template std::int32_t *icopy__(std::int64_t, const std::int32_t *, std::int32_t *);
template std::int64_t *icopy__(std::int64_t, const std::int64_t *, std::int64_t *);
template int iamax__(int, const std::int32_t *);
template int iamax__(int, const std::int64_t *);
template int iamin__(int, const std::int32_t *);
template int iamin__(int, const std::int64_t *);

} // namespace kapris::engine::base
