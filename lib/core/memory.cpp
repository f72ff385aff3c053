// lib/core/memory.cpp - checked allocation with a ledger of live blocks, the fatal-error exit, and trace
// output.
// SPDX-License-Identifier: MIT
//
// Every block carries a header that links it into a ledger, newest first, so that a test can see what a call left
// behind, a caller can learn its peak, and after an error everything of the failed call can be released without
// knowing who owned it. Cost: 32 bytes, four pointer writes and an uncontended lock per block.

#include "core.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

struct alignas(16) BlockHeader {
  BlockHeader *newer, *older;
  std::size_t bytes;
  std::uint64_t serial;
};

static thread_local constinit Ledger own;
static thread_local constinit Ledger *current = nullptr; // NULL = own
static thread_local constinit int handlers = 0;
static thread_local constinit TraceSink tracesink = {nullptr, nullptr};

static Ledger *CurrentLedger()
{
  return current != nullptr ? current : &own;
}

[[noreturn]] __attribute__((format(printf, 2, 0))) static void Fail(FatalKind kind, const char *format,
                                                                    va_list args)
{
  FatalError error;

  error.kind = kind;
  std::vsnprintf(error.message, sizeof error.message, format, args);
  if (handlers > 0)
    throw error;

  std::fputs(error.message, stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
  std::exit(0);
}

void errexit__(const char *format, ...)
{
  va_list args;

  va_start(args, format);
  Fail(FATAL_INPUT, format, args);
}

[[noreturn]] __attribute__((format(printf, 2, 3))) static void FailAllocation(FatalKind kind,
                                                                              const char *format, ...)
{
  va_list args;

  va_start(args, format);
  Fail(kind, format, args);
}

void PushErrorHandler__()
{
  handlers++;
}

void PopErrorHandler__()
{
  handlers--;
}

#if KAPRIS_CHECK_LEVEL > 0
void CheckFailed__(const char *what, const char *file, int line)
{
  std::fprintf(stderr, "kapris: internal check failed: %s (%s:%d)\n", what, file, line);
  std::abort();
}
#endif

const Ledger *Ledger__()
{
  return CurrentLedger();
}

Ledger *LedgerUse__(Ledger *ledger)
{
  Ledger *before = current;

  current = ledger;
  return before;
}

void LedgerResetPeak__()
{
  Ledger *ledger = CurrentLedger();
  const std::lock_guard<std::mutex> guard(ledger->lock);

  ledger->peak = ledger->bytes;
}

void LedgerLimit__(std::size_t bytes, long requests)
{
  Ledger *ledger = CurrentLedger();
  const std::lock_guard<std::mutex> guard(ledger->lock);

  ledger->maxbytes = bytes;
  ledger->requests = requests;
}

void LedgerRelease__(std::uint64_t serial)
{
  const Ledger *ledger = CurrentLedger();

  while (ledger->newest != nullptr && ledger->newest->serial > serial)
    QVfreeBlock__(ledger->newest + 1);
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

  Ledger *ledger = CurrentLedger();
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
    FailAllocation(kind, "Memory allocation failed for %s. Requested size: %zu bytes\n", label, nbytes);

  const std::lock_guard<std::mutex> guard(ledger->lock);
  *block = {nullptr, ledger->newest, nbytes, ++ledger->serial};
  if (ledger->newest != nullptr)
    ledger->newest->newer = block;
  ledger->newest = block;
  return block + 1;
}

void QVfreeBlock__(void *pointer)
{
  if (pointer == nullptr)
    return;

  Ledger *ledger = CurrentLedger();
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

int *ismalloc__(std::int64_t n, int value, const char *label)
{
  return iset__(n, value, imalloc__(n, label));
}

TraceSink TraceUse__(TraceSink sink)
{
  const TraceSink before = tracesink;

  tracesink = sink;
  return before;
}

void Trace__(const char *format, ...)
{
  va_list args;

  va_start(args, format);
  if (tracesink.write == nullptr) {
    std::vprintf(format, args);
  } else {
    char text[1024];
    std::vsnprintf(text, sizeof text, format, args);
    tracesink.write(tracesink.owner, text);
  }
  va_end(args);
}

void TraceFlush__()
{
  if (tracesink.write == nullptr)
    std::fflush(stdout);
}
