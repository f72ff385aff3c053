// lib/base/memory.cpp - checked allocation with a ledger of live blocks.
// SPDX-License-Identifier: MIT
//
// Every block carries a header that links it into a ledger, newest first, so that a test can see what a call left
// behind, a caller can learn its peak, and after an error everything of the failed call can be released without
// knowing who owned it. Cost: 32 bytes, four pointer writes and an uncontended lock per block.

#include "memory.h"

#include "output.h"

#include <cstdlib>

namespace kapris::engine::base
{

struct alignas(16) BlockHeader {
  BlockHeader *newer, *older;
  std::size_t bytes;
  std::uint64_t serial;
};

static thread_local constinit Ledger own;
static thread_local constinit Ledger *current = nullptr; // NULL = own

static Ledger *LedgerInUse()
{
  return current != nullptr ? current : &own;
}

const Ledger *CurrentLedger()
{
  return LedgerInUse();
}

Ledger *UseLedger(Ledger *ledger)
{
  Ledger *before = current;

  current = ledger;
  return before;
}

void ResetLedgerPeak()
{
  Ledger *ledger = LedgerInUse();
  const std::lock_guard<std::mutex> guard(ledger->lock);

  ledger->peak = ledger->bytes;
}

void LimitLedger(std::size_t bytes, long requests)
{
  Ledger *ledger = LedgerInUse();
  const std::lock_guard<std::mutex> guard(ledger->lock);

  ledger->maxbytes = bytes;
  ledger->requests = requests;
}

void ReleaseLedger(std::uint64_t serial)
{
  const Ledger *ledger = LedgerInUse();

  while (ledger->newest != nullptr && ledger->newest->serial > serial)
    QVfreeBlock(ledger->newest + 1);
}

// Enters a block of nbytes at the newest end; refuses, before it is allocated, what exceeds the limits.
static bool Reserve(Ledger *ledger, std::size_t nbytes, FatalKind *kind)
{
  const std::lock_guard<std::mutex> guard(ledger->lock);

  *kind = FATAL_MEMORY;
  if (ledger->requests == 0)
    return false;
  if (ledger->requests > 0)
    ledger->requests--;
  if (ledger->maxbytes != 0 && (nbytes > ledger->maxbytes || ledger->bytes > ledger->maxbytes - nbytes)) {
    *kind = FATAL_MEMORY_LIMIT;
    return false;
  }
  ledger->blocks++;
  ledger->bytes += nbytes;
  if (ledger->bytes > ledger->peak)
    ledger->peak = ledger->bytes;
  return true;
}

static void Unreserve(Ledger *ledger, std::size_t nbytes)
{
  ledger->blocks--;
  ledger->bytes -= nbytes;
}

void *QVmalloc__(std::size_t nbytes, const char *label)
{
  if (nbytes == 0)
    return nullptr;

  Ledger *ledger = LedgerInUse();
  BlockHeader *block = nullptr;
  FatalKind kind;
  if (Reserve(ledger, nbytes, &kind)) {
    if (nbytes <= SIZE_MAX - sizeof(BlockHeader))
      block = static_cast<BlockHeader *>(std::malloc(nbytes + sizeof(BlockHeader)));
    if (block == nullptr) {
      const std::lock_guard<std::mutex> guard(ledger->lock);
      Unreserve(ledger, nbytes);
    }
  }
  if (block == nullptr)
    FailWith(kind, "Memory allocation failed for %s. Requested size: %zu bytes\n", label, nbytes);

  const std::lock_guard<std::mutex> guard(ledger->lock);
  *block = {nullptr, ledger->newest, nbytes, ++ledger->serial};
  if (ledger->newest != nullptr)
    ledger->newest->newer = block;
  ledger->newest = block;
  return block + 1;
}

void QVfreeBlock(void *pointer)
{
  if (pointer == nullptr)
    return;

  Ledger *ledger = LedgerInUse();
  BlockHeader *block = static_cast<BlockHeader *>(pointer) - 1;
  {
    const std::lock_guard<std::mutex> guard(ledger->lock);
    if (block->newer != nullptr)
      block->newer->older = block->older;
    else
      ledger->newest = block->older;
    if (block->older != nullptr)
      block->older->newer = block->newer;
    Unreserve(ledger, block->bytes);
  }
  std::free(block);
}

} // namespace kapris::engine::base
