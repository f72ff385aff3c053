// lib/base/output.h - all that the library may print, and the only way in which it can end the process.
// SPDX-License-Identifier: MIT
#pragma once

namespace kapris::engine::base
{

// ----------------------------------------------------------------------------------------------------------
// Errors

enum FatalKind { FATAL_INPUT, FATAL_MEMORY, FATAL_MEMORY_LIMIT };

// A fatal error, thrown instead of ending the process while a handler is active on this thread.
struct FatalError {
  FatalKind kind;
  char message[512];
};

// Prints the message and a newline on standard error and ends the process with status 0, unless a handler is
// active on the calling thread: then throws FatalError.
[[noreturn]] void errexit__(const char *format, ...) __attribute__((format(printf, 1, 2)));
// The same with another kind of error.
[[noreturn]] void FailWith(FatalKind kind, const char *format, ...) __attribute__((format(printf, 2, 3)));

// While at least one handler is pushed on a thread, errexit__ throws there. Whoever pushes must catch
// FatalError and give the blocks of the failed call back with ReleaseLedger.
void PushErrorHandler();
void PopErrorHandler();

// ----------------------------------------------------------------------------------------------------------
// Traces: everything that the library prints on standard output goes through these two.

void Trace(const char *format, ...) __attribute__((format(printf, 1, 2)));
void TraceFlush();

// Where the traces of a thread go instead of standard output; write NULL = standard output.
struct TraceSink {
  void (*write)(void *owner, const char *text);
  void *owner;
};
TraceSink UseTraceSink(TraceSink sink); // returns the one before

} // namespace kapris::engine::base
