// tests/support/faults.cpp - allocations that fail.
// SPDX-License-Identifier: MIT

#include "support/faults.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

static std::atomic<bool> active = false, onward = false;
static std::atomic<long> left = 0, refused = 0;

void FailAllocation(long n, Failing failing)
{
  left = n;
  refused = 0;
  onward = failing == Failing::ONWARD;
  active = true;
}

long StopFailing()
{
  active = false;
  return refused;
}

static bool IsRefused()
{
  if (!active)
    return false;
  const long before = left--;
  const bool fails = before == 0 || (before < 0 && onward);
  refused += fails;
  return fails;
}

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t n, std::size_t size);
void *__wrap_malloc(std::size_t size);
void *__wrap_calloc(std::size_t n, std::size_t size);

void *__wrap_malloc(std::size_t size)
{
  return IsRefused() ? nullptr : __real_malloc(size);
}

void *__wrap_calloc(std::size_t n, std::size_t size)
{
  return IsRefused() ? nullptr : __real_calloc(n, size);
}
}

// The other forms of new come here by default. Each form of delete is given, as a sanitizer has its own.
void *operator new(std::size_t size)
{
  void *block = IsRefused() ? nullptr : __real_malloc(size > 0 ? size : 1);

  if (block == nullptr)
    throw std::bad_alloc();
  return block;
}

void *operator new[](std::size_t size)
{
  return operator new(size);
}

void operator delete(void *block) noexcept
{
  std::free(block);
}

void operator delete(void *block, std::size_t) noexcept
{
  std::free(block);
}

void operator delete[](void *block) noexcept
{
  std::free(block);
}

void operator delete[](void *block, std::size_t) noexcept
{
  std::free(block);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
  return IsRefused() ? nullptr : __real_malloc(size > 0 ? size : 1);
}

void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
  return operator new(size, std::nothrow);
}
