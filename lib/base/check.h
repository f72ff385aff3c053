// lib/base/check.h - internal checks.
// SPDX-License-Identifier: MIT
//
// 1 light: O(1). 2 normal: O(degree). 3 heavy: may walk the whole level. A check has no side effect, draws no random
// number and does not allocate through the labelled allocators, so a checked run and an unchecked run take the same
// decisions. Because the level is tested in an ordinary condition, checks are always compiled.
#pragma once

#include <cstdint>

#ifndef KAPRIS_CHECK_LEVEL
#define KAPRIS_CHECK_LEVEL 0
#endif

namespace kapris::engine::base
{

// Prints what is broken and aborts: a failed check is a fault of this library, not of its caller.
[[noreturn]] void CheckFailed(const char *what, const char *file, int line);

#define CHECK_AT_LEVEL(level, condition)                                                                     \
  do {                                                                                                       \
    if (KAPRIS_CHECK_LEVEL >= (level) && !(condition))                                                       \
      ::kapris::engine::base::CheckFailed(#condition, __FILE__, __LINE__);                                   \
  } while (0)
#define CHECK_LIGHT(condition)  CHECK_AT_LEVEL(1, condition)
#define CHECK_NORMAL(condition) CHECK_AT_LEVEL(2, condition)

// For validators, which return the first broken invariant or NULL. Those of a whole level look at it after a move n if
// IsSample: after some moves, the fewer the larger it is; after all at check level 4.
#define CHECK_VALID(validator)                                                                               \
  do {                                                                                                       \
    if constexpr (KAPRIS_CHECK_LEVEL >= 3) {                                                                 \
      if (const char *broken_ = (validator))                                                                 \
        ::kapris::engine::base::CheckFailed(broken_, __FILE__, __LINE__);                                    \
    }                                                                                                        \
  } while (0)

inline bool IsSample(int n, int ncells)
{
  const std::int64_t size = ncells / 64;

  return KAPRIS_CHECK_LEVEL >= 4 || n % (16 + size * size) == 0;
}

} // namespace kapris::engine::base
