// cli/solve/interrupt.cpp - signals while the library runs and its result is written.
// SPDX-License-Identifier: MIT

#include "solve/interrupt.h"

#include <csignal>
#include <cstdint>
#include <ctime>

namespace kapris_cli
{

static const std::uint32_t PATIENCE = 2000; // milliseconds in which no Ctrl-C ends the process

// All that the signal handler touches.
static std::atomic<int> interrupted = 0;
static std::atomic<int> nctrlc = 0;
static std::atomic<std::uint32_t> first = 0; // when the first signal came, in milliseconds
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<std::uint32_t>::is_always_lock_free);

// Of a clock that goes round after weeks, which differences do not mind.
static std::uint32_t Milliseconds()
{
  struct timespec now = {};

  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint32_t>(now.tv_sec) * 1000u + static_cast<std::uint32_t>(now.tv_nsec / 1000000);
}

static void NoteInterrupt(int signal)
{
  const std::uint32_t now = Milliseconds();

  if (interrupted == 0)
    first = now;
  interrupted = 1;
  if (signal == SIGINT && ++nctrlc >= 3 && now - first > PATIENCE) {
    // Takes effect when this function returns, so that the shell sees a program that was ended by Ctrl-C.
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
  }
}

std::atomic<int> *CatchInterrupts()
{
  struct sigaction action = {};

  action.sa_handler = NoteInterrupt;
  action.sa_flags = SA_RESTART;
  sigfillset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGXCPU}) {
    struct sigaction before;
    // What the parent has ignored stays so: Ctrl-C in the background, under nohup the end of the terminal.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      sigaction(signal, &action, nullptr);
  }
  return &interrupted;
}

} // namespace kapris_cli
