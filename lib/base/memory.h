// lib/base/memory.h - checked memory with a ledger of live blocks, and helpers on arrays.
// SPDX-License-Identifier: MIT
//
// Every block of the library comes from QVmalloc__ and is recorded in a ledger: that of the calling thread, or one that
// the threads of a call share. A block must be freed under the ledger that it was allocated under.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <type_traits>

namespace kapris::engine::base
{

struct BlockHeader;

struct Ledger {
  std::size_t blocks = 0;   // live blocks
  std::size_t bytes = 0;    // live bytes, as requested
  std::size_t peak = 0;     // largest value of bytes since ResetLedgerPeak
  std::uint64_t serial = 0; // number of the newest block, live or not
  std::size_t maxbytes = 0; // limit of bytes, 0 = none
  long requests = -1;       // that still succeed, negative = all
  BlockHeader *newest = nullptr;
  std::mutex lock = {};
};

const Ledger *CurrentLedger(); // of the calling thread
// From here on the calling thread uses this ledger, or its own again when it is NULL; returns the one before.
Ledger *UseLedger(Ledger *ledger);
void ResetLedgerPeak();
// Frees every live block that is younger than the given serial number.
void ReleaseLedger(std::uint64_t serial);
// A limit on the live bytes (0 = none), and the number of requests that still succeed (negative = all).
void LimitLedger(std::size_t bytes, long requests);

// A block of nbytes; NULL when nbytes is 0. label names the requesting function and the object; it appears in
// the message when memory runs out.
void *QVmalloc__(std::size_t nbytes, const char *label);
void QVfreeBlock(void *block);

// The same for n entries of a type.
template <class T>
T *QVarray(std::int64_t n, const char *label)
{
  static_assert(std::is_trivially_copyable_v<T>);
  return static_cast<T *>(QVmalloc__(static_cast<std::size_t>(n) * sizeof(T), label));
}

// Releases the blocks behind the given pointers and sets the pointers to NULL; a NULL pointer is passed over.
template <class... T>
void QVfree__(T **...pointers)
{
  ((QVfreeBlock(*pointers), *pointers = nullptr), ...);
}

// ----------------------------------------------------------------------------------------------------------
// Arrays of numbers, of 32 and of 64 bits (vector.cpp)

template <class T>
T *iset__(std::int64_t n, std::type_identity_t<T> value, T *x); // returns x
template <class T>
T *icopy__(std::int64_t n, const std::type_identity_t<T> *src, T *dst); // returns dst
template <class T>
int iamax__(int n, const T *x); // index of the first largest entry, 0 for n < 2
template <class T>
int iamin__(int n, const T *x); // index of the first smallest entry, 0 for n < 2

inline int *imalloc__(std::int64_t n, const char *label)
{
  return QVarray<int>(n, label);
}

inline float *fmalloc__(std::int64_t n, const char *label)
{
  return QVarray<float>(n, label);
}

// The same with every entry set.
template <class T>
T *QVarrayOf(std::int64_t n, T value, const char *label)
{
  return iset__(n, value, QVarray<T>(n, label));
}

inline int *ismalloc__(std::int64_t n, int value, const char *label)
{
  return QVarrayOf<int>(n, value, label);
}

} // namespace kapris::engine::base
