// cli/solve/interrupt.cpp - Ctrl-C while the library runs.
// SPDX-License-Identifier: MIT

#include "solve/interrupt.h"

#include <csignal>

namespace kapris_cli
{

static std::atomic<int> interrupted = 0; // all that a signal handler may touch
static_assert(std::atomic<int>::is_always_lock_free);

static void NoteInterrupt(int)
{
  interrupted = 1;
}

std::atomic<int> *CatchInterrupts()
{
  struct sigaction action = {};

  action.sa_handler = NoteInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  for (const int signal : {SIGINT, SIGTERM}) {
    struct sigaction before;
    // A job in the background that ignores Ctrl-C goes on ignoring it.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      sigaction(signal, &action, nullptr);
  }
  return &interrupted;
}

} // namespace kapris_cli
