// cli/solve/interrupt.h - Ctrl-C while the library runs.
// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

namespace kapris_cli
{

// From here on the first interrupt (Ctrl-C, or the signal with which batch systems end a job) only makes *flag
// non-zero; a second one ends the process.
std::atomic<int> *CatchInterrupts();

} // namespace kapris_cli
