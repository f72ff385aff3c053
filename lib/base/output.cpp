// lib/base/output.cpp - the fatal-error exit and trace output.
// SPDX-License-Identifier: MIT

#include "output.h"

#include "check.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace kapris::engine::base
{

static thread_local constinit int handlers = 0;
static thread_local constinit TraceSink tracesink = {nullptr, nullptr};

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

void FailWith(FatalKind kind, const char *format, ...)
{
  va_list args;

  va_start(args, format);
  Fail(kind, format, args);
}

void PushErrorHandler()
{
  handlers++;
}

void PopErrorHandler()
{
  handlers--;
}

#if KAPRIS_CHECK_LEVEL > 0
void CheckFailed(const char *what, const char *file, int line)
{
  std::fprintf(stderr, "kapris: internal check failed: %s (%s:%d)\n", what, file, line);
  std::abort();
}
#endif

TraceSink UseTraceSink(TraceSink sink)
{
  const TraceSink before = tracesink;

  tracesink = sink;
  return before;
}

void Trace(const char *format, ...)
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

void TraceFlush()
{
  if (tracesink.write == nullptr)
    std::fflush(stdout);
}

} // namespace kapris::engine::base
