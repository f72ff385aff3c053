// lib/base/array.h - arrays that grow and release themselves, from the ledger of the thread.
// SPDX-License-Identifier: MIT
#pragma once

#include "memory.h"

#include <vector>

namespace kapris::engine::base
{

template <class T>
struct LedgerAllocator {
  using value_type = T;

  LedgerAllocator() = default;
  template <class U>
  LedgerAllocator(const LedgerAllocator<U> &)
  {
  }

  T *allocate(std::size_t n)
  {
    return static_cast<T *>(QVmalloc__(n * sizeof(T), "Search: array"));
  }

  void deallocate(T *block, std::size_t)
  {
    QVfreeBlock(block);
  }

  template <class U>
  bool operator==(const LedgerAllocator<U> &) const
  {
    return true;
  }
};

template <class T>
using Array = std::vector<T, LedgerAllocator<T>>;

// An index of an array.
inline std::size_t At(int i)
{
  return static_cast<std::size_t>(i);
}

} // namespace kapris::engine::base
